// The module tree on the SDK's own producer (libqvgentl.cti, loaded with dlopen): enumeration
// with every mask and vendor rule, opening, information, node maps, features, acquisition lock,
// saved descriptions, error callbacks of each module and device loss.
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <GenApi/GenApi.h>
#include <QvApi_TL.h>

#include "QvApi_TL/QvDeviceInside.h"
#include "QvSDKCommon/QvXMLFile.h"
#include "tests/QvApi_TL/Modules/ModuleRecorders.h"
#include "tests/QvApi_TL/Modules/ModuleTestSupport.h"

using namespace QvApi;
using QvModuleTest::Catch;
using QvModuleTest::Eventually;

namespace
{
// Three interfaces with six cameras between them.
constexpr const char* kVirtualCameras = "U3V:2,GEV:1,CXP:3";

class ModuleTree : public QvModuleTest::CModuleTest
{
protected:
    void SetUp() override
    {
        QvModuleTest::CModuleTest::SetUp();
        m_folder.Link("coaxlink.cti", "libqvgentl.cti");
        m_folder.Link("KYFGLibGenTL.cti", "libqvgentl.cti");
        m_folder.Link("siso_gentl.cti", "libqvgentl.cti");
    }
    void TearDown() override
    {
        m_device.Reset();
        m_system.Reset();
        QvModuleTest::CModuleTest::TearDown();
    }
    IQvSystemReleasable* Open(_EQvSystemVendor_t vendor = QvSystemVendor_Default,
                              uint32_t mask = QvInterfaceType_All)
    {
        m_device.Reset();
        m_system.Reset(); // one open system per producer
        m_system.Reset(CreateIQvSystem(vendor, static_cast<_EQvInterfaceType_t>(mask)));
        return m_system.Get();
    }
    IQvDeviceReleasable* OpenFirstCamera(GenTL::DEVICE_ACCESS_FLAGS flags = GenTL::DEVICE_ACCESS_CONTROL)
    {
        Open();
        m_device.Reset(m_system->CreateFirstIQvDevice(flags));
        return m_device.Get();
    }
    GenApi::INodeMap& Remote() { return *m_device->GetRemoteIQvPort()->GetINodeMap(); }

    QvTest::CScopedEnvironment m_cameras{"QVGENTL_VIRTUAL", kVirtualCameras};
    QvModuleTest::CProducerFolder m_folder;
    CIQvSystemPtr m_system;
    CIQvDevicePtr m_device;
};

std::string ReadFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

std::string TLTypesOf(IQvSystem* pSystem)
{
    std::string types;
    for (size_t i = 0; i < pSystem->GetInterfaceCount(); ++i)
    {
        IQvInterface* pInterface = pSystem->GetIQvInterface(i);
        types += std::string(pInterface->GetIQvInterfaceInfo()->GetTLType().c_str()) + ":" +
                 std::to_string(pInterface->GetDeviceCount()) + " ";
    }
    return types;
}

// Every port property and URL property of a port, checked for plausibility.
void CheckPort(IQvPort* pPort, const char* portName)
{
    SCOPED_TRACE(portName);
    IQvPortInfo* pInfo = pPort->GetIQvPortInfo();
    EXPECT_FALSE(pInfo->GetID().empty());
    EXPECT_STREQ(pInfo->GetVendor().c_str(), "QvApi");
    EXPECT_FALSE(pInfo->GetModel().empty());
    EXPECT_FALSE(pInfo->GetTLType().empty());
    EXPECT_FALSE(pInfo->GetModule().empty());
    EXPECT_NE(pInfo->IsLittleEndian(), pInfo->IsBigEndian());
    EXPECT_TRUE(pInfo->IsAccessRead());
    pInfo->IsAccessWrite();
    EXPECT_FALSE(pInfo->IsAccessNA());
    EXPECT_FALSE(pInfo->IsAccessNI());
    pInfo->GetVersion();
    EXPECT_STREQ(pInfo->GetPortName().c_str(), portName);

    ASSERT_GE(pPort->GetPortURLCount(), 1u);
    IQvPortURLInfo* pURL = pPort->GetIQvPortURLInfo();
    const GenICam::gcstring url = pURL->GetURL();
    EXPECT_EQ(CQvXMLFile::ParseURLLocation(url), 0) << url;
    EXPECT_EQ(pURL->GetScheme(), GenTL::URL_SCHEME_LOCAL);
    EXPECT_EQ(pURL->GetFileRegisterAddress(), CQvXMLFile::ParseURLLocalAddress(url)) << url;
    EXPECT_EQ(pURL->GetFileSize(), CQvXMLFile::ParseURLLocalLength(url)) << url;
    EXPECT_GE(pURL->GetSchemaVerMajor(), 1);
    EXPECT_GE(pURL->GetSchemaVerMinor(), 0);
    EXPECT_GE(pURL->GetFileVerMajor(), 0);
    EXPECT_GE(pURL->GetFileVerMinor(), 0);
    EXPECT_GE(pURL->GetFileVerSubMinor(), 0);
    uint8_t hash[32] = {};
    size_t hashSize = sizeof(hash);
    try
    {
        pURL->GetSha1HashBuffer(hash, &hashSize);
        EXPECT_EQ(hashSize, 20u);
    }
    catch (const CQvGenTLErrorException& e)
    {
        // A producer without hashes says so with its code.
        EXPECT_NE(e.GetError(), 0);
    }
    ASSERT_NE(pPort->GetINodeMap(), nullptr);
    EXPECT_NE(pPort->GetINodeMap()->GetNode("Root"), nullptr);
}

void CheckDeviceInfo(IQvDeviceInfo* pInfo)
{
    EXPECT_FALSE(pInfo->GetID().empty());
    EXPECT_STREQ(pInfo->GetVendor().c_str(), "QvApi");
    EXPECT_FALSE(pInfo->GetModel().empty());
    EXPECT_FALSE(pInfo->GetDisplayName().empty());
    pInfo->GetUserDefinedName();
    EXPECT_FALSE(pInfo->GetSerialNumber().empty());
    EXPECT_FALSE(pInfo->GetVersion().empty());
    EXPECT_EQ(pInfo->GetTimestampFrequency(), 1000000000u);
}
} // namespace

TEST_F(ModuleTree, ListsTheInterfacesOfEachMaskAndVendor)
{
    struct SCase_
    {
        _EQvSystemVendor_t vendor;
        uint32_t mask;
        const char* types;
    } cases[] = {
        {QvSystemVendor_Default, QvInterfaceType_All, "U3V:2 GEV:1 CXP:3 "},
        {QvSystemVendor_Default, QvInterfaceType_USB3Vision, "U3V:2 "},
        {QvSystemVendor_Default, QvInterfaceType_GigEVision, "GEV:1 "},
        {QvSystemVendor_Default, QvInterfaceType_CoaXPress, "CXP:3 "},
        {QvSystemVendor_Default, 3, "U3V:2 GEV:1 "},
        {QvSystemVendor_Default, 6, "GEV:1 CXP:3 "},
        {QvSystemVendor_Coaxlink, QvInterfaceType_All, "CXP:3 "},
        {QvSystemVendor_KYFG, QvInterfaceType_CoaXPress, "CXP:3 "},
        {QvSystemVendor_SiSo, 5, "CXP:3 "},
    };
    for (const SCase_& c : cases)
    {
        SCOPED_TRACE("vendor " + std::to_string(c.vendor) + " mask " + std::to_string(c.mask));
        IQvSystem* pSystem = Open(c.vendor, c.mask);
        EXPECT_EQ(pSystem->GetQvSystemVendor(), c.vendor);
        EXPECT_EQ(TLTypesOf(pSystem), c.types);
    }
}

TEST_F(ModuleTree, AnswersEveryInformationRecordAndLoadsEveryNodeMap)
{
    IQvSystem* pSystem = Open();
    IQvSystemInfo* pTL = pSystem->GetIQvSystemInfo();
    EXPECT_STREQ(pTL->GetVendor().c_str(), "QvApi");
    EXPECT_FALSE(pTL->GetModel().empty());
    EXPECT_FALSE(pTL->GetVersion().empty());
    EXPECT_FALSE(pTL->GetTLType().empty());
    EXPECT_STREQ(pTL->GetName().c_str(), "libqvgentl.cti");
    EXPECT_NE(std::string(pTL->GetPathName().c_str()).find("libqvgentl.cti"), std::string::npos);
    EXPECT_FALSE(pTL->GetDisplayName().empty());
    pTL->GetCharEncoding();
    EXPECT_EQ(pTL->GetGenTLVersionMajor(), 1u);
    EXPECT_GE(pTL->GetGenTLVersionMinor(), 5u);
    CheckPort(pSystem->GetIQvPort(), pSystem->GetIQvPort()->GetIQvPortInfo()->GetPortName().c_str());
    GenApi::CStringPtr tlID(pSystem->GetIQvPort()->GetINodeMap()->GetNode("TLID"));
    ASSERT_TRUE(tlID.IsValid());
    EXPECT_EQ(tlID->GetValue(), pTL->GetID());

    size_t cameras = 0;
    for (size_t i = 0; i < pSystem->GetInterfaceCount(); ++i)
    {
        IQvInterface* pInterface = pSystem->GetIQvInterface(i);
        IQvInterfaceInfo* pIF = pInterface->GetIQvInterfaceInfo();
        SCOPED_TRACE(pIF->GetID().c_str());
        EXPECT_FALSE(pIF->GetDisplayName().empty());
        CheckPort(pInterface->GetIQvPort(), pInterface->GetIQvPort()->GetIQvPortInfo()->GetPortName().c_str());
        GenApi::CStringPtr interfaceID(pInterface->GetIQvPort()->GetINodeMap()->GetNode("InterfaceID"));
        ASSERT_TRUE(interfaceID.IsValid());
        EXPECT_EQ(interfaceID->GetValue(), pIF->GetID());
        for (size_t d = 0; d < pInterface->GetDeviceCount(); ++d, ++cameras)
        {
            IQvDeviceInfo* pListed = pInterface->GetIQvDeviceInfo(d);
            CheckDeviceInfo(pListed);
            EXPECT_EQ(pListed->GetTLType(), pIF->GetTLType());
            EXPECT_EQ(pListed->GetAccessStatus(), GenTL::DEVICE_ACCESS_STATUS_READWRITE);
            CIQvDevicePtr device(pInterface->CreateIQvDevice(d, GenTL::DEVICE_ACCESS_CONTROL));
            IQvDeviceInfo* pOpen = device->GetIQvDeviceInfo();
            CheckDeviceInfo(pOpen);
            EXPECT_EQ(pOpen->GetID(), pListed->GetID());
            EXPECT_EQ(pOpen->GetModel(), pListed->GetModel());
            EXPECT_EQ(pOpen->GetSerialNumber(), pListed->GetSerialNumber());
            EXPECT_EQ(pOpen->GetAccessStatus(), GenTL::DEVICE_ACCESS_STATUS_OPEN_READWRITE);
            EXPECT_EQ(pListed->GetAccessStatus(), GenTL::DEVICE_ACCESS_STATUS_OPEN_READWRITE);
            EXPECT_FALSE(pInterface->IsDeviceAvailable(d, GenTL::DEVICE_ACCESS_READONLY));
            EXPECT_EQ(device->GetDataStreamCount(), 1u);
            EXPECT_FALSE(device->IsDeviceLost());
            CheckPort(device->GetLocalIQvPort(), device->GetLocalIQvPort()->GetIQvPortInfo()->GetPortName().c_str());
            CheckPort(device->GetRemoteIQvPort(), "Device");
            GenApi::CStringPtr model(device->GetRemoteIQvPort()->GetINodeMap()->GetNode("DeviceModelName"));
            ASSERT_TRUE(model.IsValid());
            EXPECT_EQ(model->GetValue(), pOpen->GetModel());
            GenApi::CStringPtr localID(device->GetLocalIQvPort()->GetINodeMap()->GetNode("DeviceID"));
            ASSERT_TRUE(localID.IsValid());
            EXPECT_EQ(localID->GetValue(), pOpen->GetID());
        }
    }
    EXPECT_EQ(cameras, 6u);
}

TEST_F(ModuleTree, OpensCamerasByIndexByIDAndAsTheFirstAvailableOne)
{
    IQvSystem* pSystem = Open(QvSystemVendor_Default, QvInterfaceType_USB3Vision);
    IQvInterface* pInterface = pSystem->GetIQvInterface(0);
    ASSERT_EQ(pInterface->GetDeviceCount(), 2u);
    const GenICam::gcstring first = pInterface->GetIQvDeviceInfo(0)->GetID();
    const GenICam::gcstring second = pInterface->GetIQvDeviceInfo(1)->GetID();
    CIQvDevicePtr byIndex(pInterface->CreateIQvDevice(0, GenTL::DEVICE_ACCESS_CONTROL));
    EXPECT_EQ(byIndex->GetIQvDeviceInfo()->GetID(), first);
    // The first one is busy now: the next one is the first available.
    CIQvDevicePtr firstAvailable(pInterface->CreateFirstIQvDevice(GenTL::DEVICE_ACCESS_CONTROL));
    EXPECT_EQ(firstAvailable->GetIQvDeviceInfo()->GetID(), second);
    EXPECT_EQ(Catch<GenICam::RuntimeException>([&] { pSystem->CreateFirstIQvDevice(GenTL::DEVICE_ACCESS_CONTROL); }).description,
              "There is no available device.");
    firstAvailable.Reset();
    CIQvDevicePtr byID(pInterface->CreateIQvDevice(second, GenTL::DEVICE_ACCESS_EXCLUSIVE));
    EXPECT_EQ(byID->GetIQvDeviceInfo()->GetID(), second);
}

TEST_F(ModuleTree, ReadsAndWritesCameraFeatures)
{
    OpenFirstCamera();
    GenApi::CIntegerPtr width(Remote().GetNode("Width"));
    GenApi::CIntegerPtr height(Remote().GetNode("Height"));
    GenApi::CEnumerationPtr pixelFormat(Remote().GetNode("PixelFormat"));
    GenApi::CIntegerPtr payloadSize(Remote().GetNode("PayloadSize"));
    ASSERT_TRUE(width.IsValid() && height.IsValid() && pixelFormat.IsValid() && payloadSize.IsValid());
    width->SetValue(640);
    height->SetValue(480);
    pixelFormat->FromString("Mono8");
    EXPECT_EQ(width->GetValue(true, true), 640);
    EXPECT_EQ(height->GetValue(true, true), 480);
    EXPECT_STREQ(pixelFormat->ToString().c_str(), "Mono8");
    EXPECT_EQ(payloadSize->GetValue(), 640 * 480);
    // A second device object on the same camera would be refused; the same one sees its values.
    m_device.Reset();
    m_device.Reset(m_system->CreateFirstIQvDevice(GenTL::DEVICE_ACCESS_READONLY));
    EXPECT_EQ(GenApi::CIntegerPtr(Remote().GetNode("Width"))->GetValue(), 640);
}

TEST_F(ModuleTree, ReadOnlyCamerasRefuseWrites)
{
    OpenFirstCamera(GenTL::DEVICE_ACCESS_READONLY);
    GenApi::CIntegerPtr width(Remote().GetNode("Width"));
    EXPECT_GT(width->GetValue(), 0);
    EXPECT_FALSE(GenApi::IsWritable(width));
    EXPECT_THROW(width->SetValue(640), GenICam::AccessException);
    auto* pRemotePort = dynamic_cast<GenApi::IPort*>(m_device->GetRemoteIQvPort());
    ASSERT_NE(pRemotePort, nullptr);
    const uint32_t value = 0;
    EXPECT_EQ(Catch<GenICam::RuntimeException>([&] { pRemotePort->Write(&value, 0, 4); }).description,
              "Port is not writable.");
    EXPECT_THROW(m_device->AcquisitionStart(), GenICam::GenericException);
}

TEST_F(ModuleTree, LocksTheTransportLayerParametersWhileAcquiring)
{
    OpenFirstCamera();
    GenApi::CIntegerPtr locked(Remote().GetNode("TLParamsLocked"));
    GenApi::CIntegerPtr width(Remote().GetNode("Width"));
    ASSERT_TRUE(locked.IsValid());
    EXPECT_EQ(locked->GetValue(), 0);
    m_device->AcquisitionStart();
    EXPECT_EQ(locked->GetValue(true, true), 1);
    EXPECT_FALSE(GenApi::IsWritable(width));
    m_device->AcquisitionStop();
    EXPECT_EQ(locked->GetValue(true, true), 0);
    EXPECT_TRUE(GenApi::IsWritable(width));
}

TEST_F(ModuleTree, SavesDescriptionsAsTheyLieInThePort)
{
    OpenFirstCamera();
    const std::string zipPath = "/tmp/qvmodules_camera_" + std::to_string(getpid()) + ".zip";
    IQvPort* pRemote = m_device->GetRemoteIQvPort();
    pRemote->SaveXMLFile(zipPath.c_str());
    const std::string saved = ReadFile(zipPath);
    unlink(zipPath.c_str());
    const GenICam::gcstring url = pRemote->GetIQvPortURLInfo()->GetURL();
    ASSERT_TRUE(CQvXMLFile::IsZipFileName(CQvXMLFile::ParseURLFilePath(url))) << url;
    EXPECT_EQ(saved.size(), CQvXMLFile::ParseURLLocalLength(url));
    EXPECT_EQ(saved.compare(0, 4, "PK\x03\x04"), 0);
    std::string raw(saved.size(), '\0');
    dynamic_cast<GenApi::IPort*>(pRemote)->Read(raw.data(), static_cast<int64_t>(CQvXMLFile::ParseURLLocalAddress(url)),
                                                static_cast<int64_t>(raw.size()));
    EXPECT_EQ(saved, raw);

    const std::string xmlPath = "/tmp/qvmodules_system_" + std::to_string(getpid()) + ".xml";
    m_system->GetIQvPort()->SaveXMLFile(xmlPath.c_str());
    const std::string xml = ReadFile(xmlPath);
    unlink(xmlPath.c_str());
    EXPECT_EQ(xml.compare(0, 5, "<?xml"), 0);
    EXPECT_NE(xml.find("RegisterDescription"), std::string::npos);
    EXPECT_NE(xml.back(), '\0');
}

TEST_F(ModuleTree, RunsTheErrorCallbacksOfEachModuleWhenTheProducerReportsAnError)
{
    OpenFirstCamera();
    IQvInterface* pInterface = m_device->GetIQvInterface();
    struct SModule_
    {
        IQvRegisterCallback* pCallbacks;
        IQvEventCtrl* pControl;
        IQvPort* pPort;
        EQvCallbackType_t type;
        void* pModule;
    } modules[] = {
        {m_system.Get(), m_system.Get(), m_system->GetIQvPort(), QvCallbackTypeGenTLEventErrorTL,
         static_cast<IQvSystem*>(m_system.Get())},
        {pInterface, pInterface, pInterface->GetIQvPort(), QvCallbackTypeGenTLEventErrorIF, pInterface},
        {m_device.Get(), m_device.Get(), m_device->GetLocalIQvPort(), QvCallbackTypeGenTLEventErrorDEV,
         static_cast<IQvDevice*>(m_device.Get())},
    };
    for (const SModule_& module : modules)
    {
        SCOPED_TRACE(module.type);
        QvModuleTest::CErrorRecorder recorder;
        void* hCallback = module.pCallbacks->RegisterCallback(&recorder);
        module.pControl->StartEventAcquisitionThread();
        GenApi::INodeMap* pNodeMap = module.pPort->GetINodeMap();
        GenApi::CIntegerPtr code(pNodeMap->GetNode("TestErrorEventCode"));
        GenApi::CCommandPtr generate(pNodeMap->GetNode("TestErrorEventGenerate"));
        ASSERT_TRUE(code.IsValid() && generate.IsValid());
        code->SetValue(GenTL::GC_ERR_IO);
        generate->Execute();
        ASSERT_TRUE(recorder.Wait());
        EXPECT_EQ(recorder.m_type, module.type);
        EXPECT_EQ(recorder.m_code, GenTL::GC_ERR_IO);
        EXPECT_FALSE(recorder.m_description.empty());
        EXPECT_EQ(recorder.m_pModule, module.pModule);
        module.pControl->StopEventAcquisitionThread();
        module.pCallbacks->DeregisterCallback(hCallback);
    }
}

TEST_F(ModuleTree, DetectsTheLossOfACameraAndWakesAWaitingThread)
{
    IQvDevice* pDevice = OpenFirstCamera();
    pDevice->StartEventAcquisitionThread();
    auto* pInside = dynamic_cast<IQvDeviceInside*>(pDevice);
    ASSERT_NE(pInside, nullptr);
    unsigned waitResult = kWaitFailed;
    std::thread waiter([&] { waitResult = WaitForSingleObject(pInside->GetDeviceLostEventHandle(), 5000); });
    GenApi::CCommandPtr disconnect(Remote().GetNode("TestDeviceLost"));
    ASSERT_TRUE(disconnect.IsValid());
    disconnect->Execute(false);
    waiter.join();
    EXPECT_EQ(waitResult, kWaitObject0);
    EXPECT_TRUE(pDevice->IsDeviceLost());
    // Closing is left to the application, and it works.
    m_device.Reset();
    EXPECT_NO_THROW(m_system.Reset());
}
