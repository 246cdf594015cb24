// The interface module: its information, device list, availability rules and device factory.
#include "QvApi_TL/QvInterface.h"

#include <regex>
#include <string>

#include <gtest/gtest.h>

#include "ModuleRecorders.h"
#include "ModuleTestSupport.h"

using namespace QvApi;
using QvModuleTest::Catch;

namespace
{
class Interface : public QvModuleTest::CFaultModuleTest
{
protected:
    IQvInterface* Open(_EQvSystemVendor_t vendor = QvSystemVendor_Default)
    {
        m_system.Reset(); // one open system per producer
        m_system.Reset(CreateIQvSystem(vendor));
        EXPECT_EQ(m_system->GetInterfaceCount(), 1u);
        return m_system->GetIQvInterface(0);
    }
    void SetAccessStatus(int32_t status)
    {
        ASSERT_EQ(m_pControl->SetModuleInfo(QV_FAULT_MODULE_DEVICE, GenTL::DEVICE_INFO_ACCESS_STATUS,
                                            GenTL::INFO_DATATYPE_INT32, &status, sizeof(status)),
                  0);
    }
    void TearDown() override
    {
        m_system.Reset();
        QvModuleTest::CFaultModuleTest::TearDown();
    }

    CIQvSystemPtr m_system;
};

bool Matches(const std::string& text, const char* pattern)
{
    return std::regex_match(text, std::regex(pattern));
}
} // namespace

TEST_F(Interface, AnswersItsInformationAndThatOfItsListedDevice)
{
    IQvInterface* pInterface = Open();
    IQvInterfaceInfo* pInfo = pInterface->GetIQvInterfaceInfo();
    EXPECT_STREQ(pInfo->GetID().c_str(), "QvFaultIF0");
    EXPECT_STREQ(pInfo->GetDisplayName().c_str(), "QvApi fault-injection interface");
    EXPECT_STREQ(pInfo->GetTLType().c_str(), "U3V");
    EXPECT_STREQ(pInterface->GetIQvPort()->GetINodeMap()->GetDeviceName().c_str(), "Interface_QvFaultIF0");

    ASSERT_EQ(pInterface->GetDeviceCount(), 1u);
    IQvDeviceInfo* pDevice = pInterface->GetIQvDeviceInfo(0);
    EXPECT_STREQ(pDevice->GetID().c_str(), "QvFaultDevice0");
    EXPECT_STREQ(pDevice->GetVendor().c_str(), "QvApi");
    EXPECT_STREQ(pDevice->GetModel().c_str(), "QvFaultCamera");
    EXPECT_STREQ(pDevice->GetTLType().c_str(), "U3V");
    EXPECT_STREQ(pDevice->GetDisplayName().c_str(), "QvApi fault-injection camera");
    EXPECT_EQ(pDevice->GetAccessStatus(), GenTL::DEVICE_ACCESS_STATUS_READWRITE);
    EXPECT_STREQ(pDevice->GetUserDefinedName().c_str(), "fault");
    EXPECT_STREQ(pDevice->GetSerialNumber().c_str(), "QVF0001");
    EXPECT_STREQ(pDevice->GetVersion().c_str(), "1.0");
    EXPECT_EQ(pDevice->GetTimestampFrequency(), 1000000000u);
    EXPECT_EQ(Catch<GenICam::OutOfRangeException>([&] { pInterface->GetIQvDeviceInfo(1); }).description,
              "nIndex = 1 must be smaller than Max = 1");

    Fail(QV_FAULT_IFGetInfo, GenTL::GC_ERR_INVALID_HANDLE);
    auto caught = Catch<CQvGenTLErrorException>([&] { pInfo->GetDisplayName(); });
    EXPECT_TRUE(Matches(caught.description, "-1006 = IFGetInfo\\(0x0x[0-9a-f]+, 1, 0x0x[0-9a-f]+, 0x\\(nil\\), 0x0x[0-9a-f]+\\).*"))
        << caught.description;
    Fail(QV_FAULT_IFGetDeviceInfo, GenTL::GC_ERR_INVALID_ID);
    caught = Catch<CQvGenTLErrorException>([&] { pDevice->GetModel(); });
    EXPECT_EQ(caught.function, "IFGetDeviceInfo");
    EXPECT_TRUE(Matches(caught.description,
                        "-1007 = IFGetDeviceInfo\\(0x0x[0-9a-f]+, 0x0x[0-9a-f]+, 2, 0x0x[0-9a-f]+, 0x\\(nil\\), 0x0x[0-9a-f]+\\).*"))
        << caught.description;
}

TEST_F(Interface, DecidesAvailabilityFromTheAccessStatusAndTheFlags)
{
    IQvInterface* pInterface = Open();
    EXPECT_EQ(Catch<GenICam::OutOfRangeException>([&] { pInterface->IsDeviceAvailable(0, 1); }).description,
              "eDeviceAccessFlags = 1 must be equal or greater than Min = 2");
    EXPECT_EQ(Catch<GenICam::OutOfRangeException>([&] { pInterface->IsDeviceAvailable(0, 5); }).description,
              "eDeviceAccessFlags = 5 must be equal or smaller than Max = 4");
    struct SCase_
    {
        int32_t status;
        bool readOnly, control, exclusive;
    } cases[] = {
        {GenTL::DEVICE_ACCESS_STATUS_UNKNOWN, false, false, false},
        {GenTL::DEVICE_ACCESS_STATUS_READWRITE, true, true, true},
        {GenTL::DEVICE_ACCESS_STATUS_READONLY, true, false, false},
        {GenTL::DEVICE_ACCESS_STATUS_NOACCESS, false, false, false},
        {GenTL::DEVICE_ACCESS_STATUS_BUSY, false, false, false},
        {GenTL::DEVICE_ACCESS_STATUS_OPEN_READWRITE, false, false, false},
        {GenTL::DEVICE_ACCESS_STATUS_OPEN_READONLY, false, false, false},
    };
    for (const SCase_& c : cases)
    {
        SCOPED_TRACE(c.status);
        SetAccessStatus(c.status);
        EXPECT_EQ(pInterface->IsDeviceAvailable(0, GenTL::DEVICE_ACCESS_READONLY), c.readOnly);
        EXPECT_EQ(pInterface->IsDeviceAvailable(0, GenTL::DEVICE_ACCESS_CONTROL), c.control);
        EXPECT_EQ(pInterface->IsDeviceAvailable(0, GenTL::DEVICE_ACCESS_EXCLUSIVE), c.exclusive);
    }
}

TEST_F(Interface, KeepsItsDeviceRecordsWhileTheProducerReportsNoChange)
{
    IQvInterface* pInterface = Open();
    IQvDeviceInfo* pRecord = pInterface->GetIQvDeviceInfo(0);
    EXPECT_FALSE(pInterface->UpdateDeviceList());
    EXPECT_EQ(pInterface->GetIQvDeviceInfo(0), pRecord);
    ASSERT_EQ(m_pControl->SetListChanged(QV_FAULT_MODULE_INTERFACE, 1), 0);
    EXPECT_TRUE(pInterface->UpdateDeviceList());
    EXPECT_EQ(pInterface->GetDeviceCount(), 1u);
    ASSERT_EQ(m_pControl->SetListHidden(QV_FAULT_MODULE_INTERFACE, 1), 0);
    EXPECT_TRUE(pInterface->UpdateDeviceList());
    EXPECT_EQ(pInterface->GetDeviceCount(), 0u);
}

TEST_F(Interface, ReportsAFailingDeviceIDUnderTheNameOfTheDeviceCount)
{
    IQvInterface* pInterface = Open();
    ASSERT_EQ(m_pControl->SetListChanged(QV_FAULT_MODULE_INTERFACE, 1), 0);
    Fail(QV_FAULT_IFGetDeviceID, GenTL::GC_ERR_INVALID_INDEX);
    auto caught = Catch<CQvGenTLErrorException>([&] { pInterface->UpdateDeviceList(); });
    EXPECT_EQ(caught.code, GenTL::GC_ERR_INVALID_INDEX);
    EXPECT_EQ(caught.function, "IFGetNumDevices");
    EXPECT_TRUE(Matches(caught.description, "-1017 = IFGetNumDevices\\(0x0x[0-9a-f]+, 0, 0x\\(nil\\), 0x0x[0-9a-f]+\\).*"))
        << caught.description;
    m_pControl->ClearRule(QV_FAULT_IFGetDeviceID);
    Fail(QV_FAULT_IFGetNumDevices, GenTL::GC_ERR_IO);
    caught = Catch<CQvGenTLErrorException>([&] { pInterface->UpdateDeviceList(); });
    EXPECT_TRUE(Matches(caught.description, "-1010 = IFGetNumDevices\\(0x0x[0-9a-f]+, 0x0x[0-9a-f]+\\).*"))
        << caught.description;
    EXPECT_EQ(pInterface->GetDeviceCount(), 0u);
    Fail(QV_FAULT_IFUpdateDeviceList, GenTL::GC_ERR_IO);
    caught = Catch<CQvGenTLErrorException>([&] { pInterface->UpdateDeviceList(); });
    EXPECT_TRUE(Matches(caught.description, "-1010 = IFUpdateDeviceList\\(0x0x[0-9a-f]+, 0x0x[0-9a-f]+, +500\\).*"))
        << caught.description;
}

TEST_F(Interface, GivesTheSDKsOwnUSB3InterfacesALongerDiscoveryTime)
{
    EXPECT_EQ(Open()->GetUpdateDeviceListTimeout(), 500u);
    SetInfoText(QV_FAULT_MODULE_INTERFACE, GenTL::INTERFACE_INFO_TLTYPE, "GEV");
    IQvInterface* pInterface = Open();
    EXPECT_EQ(pInterface->GetUpdateDeviceListTimeout(), 250u);
    pInterface->SetUpdateDeviceListTimeout(1000);
    EXPECT_EQ(pInterface->GetUpdateDeviceListTimeout(), 1000u);
    m_system.Reset();
    SetInfoText(QV_FAULT_MODULE_INTERFACE, GenTL::INTERFACE_INFO_TLTYPE, "CXP");
    EXPECT_EQ(Open(QvSystemVendor_Coaxlink)->GetUpdateDeviceListTimeout(), 250u);
}

TEST_F(Interface, OpensDevicesByIndexByIDAndAsTheFirstAvailableOne)
{
    IQvInterface* pInterface = Open();
    auto* pInside = dynamic_cast<IQvInterfaceInside*>(pInterface);
    ASSERT_NE(pInside, nullptr);
    EXPECT_EQ(pInside->AddRef(), 2); // the system's list entry and ours
    {
        CIQvDevicePtr device(pInterface->CreateIQvDevice(0, GenTL::DEVICE_ACCESS_CONTROL));
        EXPECT_STREQ(device->GetIQvDeviceInfo()->GetID().c_str(), "QvFaultDevice0");
        EXPECT_EQ(device->GetIQvInterface(), pInterface);
        EXPECT_EQ(pInside->AddRef(), 4); // the device holds one
        pInside->Release();
        // Open already: neither by ID nor as the first available one.
        EXPECT_EQ(Catch<CQvGenTLErrorException>([&] {
                      pInterface->CreateIQvDevice("QvFaultDevice0", GenTL::DEVICE_ACCESS_CONTROL);
                  }).code,
                  GenTL::GC_ERR_RESOURCE_IN_USE);
        EXPECT_EQ(Catch<GenICam::RuntimeException>([&] { pInterface->CreateFirstIQvDevice(GenTL::DEVICE_ACCESS_CONTROL); }).description,
                  "There is no available device.");
    }
    CIQvDevicePtr device(pInterface->CreateIQvDevice("QvFaultDevice0", GenTL::DEVICE_ACCESS_READONLY));
    device.Reset();
    device.Reset(pInterface->CreateFirstIQvDevice(GenTL::DEVICE_ACCESS_EXCLUSIVE));
    EXPECT_TRUE(device);
    device.Reset();
    pInside->Release();
    EXPECT_EQ(Catch<GenICam::OutOfRangeException>([&] { pInterface->CreateIQvDevice(1, GenTL::DEVICE_ACCESS_CONTROL); }).description,
              "nIndex = 1 must be smaller than Max = 1");
}

TEST_F(Interface, NamesTheFailingOpenAndSkipsDevicesThatDoNotOpen)
{
    IQvInterface* pInterface = Open();
    Fail(QV_FAULT_IFOpenDevice, GenTL::GC_ERR_ACCESS_DENIED);
    const auto caught =
        Catch<CQvGenTLErrorException>([&] { pInterface->CreateIQvDevice(0, GenTL::DEVICE_ACCESS_CONTROL); });
    EXPECT_EQ(caught.function, "IFOpenDevice");
    EXPECT_TRUE(Matches(caught.description, "-1005 = IFOpenDevice\\(0x0x[0-9a-f]+, 0x0x[0-9a-f]+, 0x3, 0x0x[0-9a-f]+\\).*"))
        << caught.description;
    EXPECT_EQ(Catch<GenICam::RuntimeException>([&] { pInterface->CreateFirstIQvDevice(GenTL::DEVICE_ACCESS_CONTROL); }).description,
              "There is no available device.");
    SetAccessStatus(GenTL::DEVICE_ACCESS_STATUS_BUSY);
    const uint32_t opens = m_pControl->GetCallCount(QV_FAULT_IFOpenDevice);
    EXPECT_THROW(pInterface->CreateFirstIQvDevice(GenTL::DEVICE_ACCESS_CONTROL), GenICam::RuntimeException);
    EXPECT_EQ(m_pControl->GetCallCount(QV_FAULT_IFOpenDevice), opens); // a busy device is not even tried
}

TEST_F(Interface, SwallowsAFailingCloseAndRunsItsErrorCallbacks)
{
    IQvInterface* pInterface = Open();
    QvModuleTest::CErrorRecorder recorder;
    pInterface->RegisterCallback(&recorder);
    pInterface->StartEventAcquisitionThread();
    ASSERT_EQ(m_pControl->PushErrorEvent(m_pControl->GetModuleHandle(QV_FAULT_MODULE_INTERFACE), GenTL::GC_ERR_IO, "IF"),
              0);
    ASSERT_TRUE(recorder.Wait());
    EXPECT_EQ(recorder.m_type, QvCallbackTypeGenTLEventErrorIF);
    EXPECT_EQ(recorder.m_description, "IF");
    EXPECT_EQ(recorder.m_pModule, static_cast<void*>(pInterface));
    Fail(QV_FAULT_IFClose, GenTL::GC_ERR_IO);
    EXPECT_NO_THROW(m_system.Reset());
    EXPECT_EQ(recorder.m_released, 1);
    EXPECT_EQ(m_pControl->GetCallCount(QV_FAULT_IFClose), 1u);
}
