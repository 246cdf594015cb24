// The system module and CreateIQvSystem(): vendor and mask rules, loading failures, the
// interface list and its first-update rule, the loose TL type matching, teardown.
#include "QvApi_TL/QvSystem.h"

#include <regex>
#include <string>

#include <gtest/gtest.h>

#include <GenApi/GenApi.h>

#include "QvApi_TL/QvInterface.h"
#include "QvApi_TL/QvInterfaceInside.h"

#include "ModuleRecorders.h"
#include "ModuleTestSupport.h"

using namespace QvApi;
using QvModuleTest::Catch;
using QvModuleTest::CFaultModuleTest;
using QvModuleTest::Format;

namespace
{
using System = CFaultModuleTest;
using CreateSystem = QvModuleTest::CModuleTest;

bool Matches(const std::string& text, const char* pattern)
{
    return std::regex_match(text, std::regex(pattern));
}
} // namespace

TEST_F(CreateSystem, ChecksTheVendorAndTheInterfaceMaskBeforeLoadingAnything)
{
    EXPECT_EQ(Catch<GenICam::OutOfRangeException>([] {
                  CreateIQvSystem(static_cast<_EQvSystemVendor_t>(4), QvInterfaceType_All);
              }).description,
              "eQvSystemVendor = 4 must be smaller than Max = 4");
    // Vendors 1 to 3 keep only the CoaXPress bit: USB3 and GigE Vision leave nothing.
    EXPECT_EQ(Catch<GenICam::OutOfRangeException>([] {
                  CreateIQvSystem(QvSystemVendor_Coaxlink, static_cast<_EQvInterfaceType_t>(3));
              }).description,
              "eTargetInterface = 0 must be equal or greater than Min = 1");
    EXPECT_EQ(Catch<GenICam::OutOfRangeException>([] {
                  CreateIQvSystem(QvSystemVendor_Default, static_cast<_EQvInterfaceType_t>(0));
              }).description,
              "eTargetInterface = 0 must be equal or greater than Min = 1");
    EXPECT_EQ(Catch<GenICam::OutOfRangeException>([] {
                  CreateIQvSystem(QvSystemVendor_Default, static_cast<_EQvInterfaceType_t>(0x80000000u));
              }).description,
              "eTargetInterface = -2147483648 must be equal or greater than Min = 1");
}

TEST(CreateSystemUninitialised, RefusesToWork)
{
    EXPECT_EQ(Catch<GenICam::RuntimeException>([] { CreateIQvSystem(); }).description, "QvApi is not initialized.");
}

TEST_F(CreateSystem, NamesAMissingProducer)
{
    QvModuleTest::CProducerFolder folder; // an empty folder first on the path
    QvTest::CScopedEnvironment path("GENICAM_GENTL64_PATH", folder.Path().c_str());
    EXPECT_EQ(Catch<GenICam::RuntimeException>([] { CreateIQvSystem(QvSystemVendor_SiSo); }).description,
              "File siso_gentl.cti not found.");
}

TEST_F(System, OpensTheTransportLayerWithItsInformationPortAndInterfaces)
{
    CIQvSystemPtr system(CreateIQvSystem());
    EXPECT_EQ(system->GetQvSystemVendor(), QvSystemVendor_Default);
    IQvSystemInfo* pInfo = system->GetIQvSystemInfo();
    EXPECT_STREQ(pInfo->GetID().c_str(), "QvFaultTL");
    EXPECT_STREQ(pInfo->GetVendor().c_str(), "QvApi");
    EXPECT_STREQ(pInfo->GetModel().c_str(), "Fault-injection producer");
    EXPECT_STREQ(pInfo->GetVersion().c_str(), "1.0");
    EXPECT_STREQ(pInfo->GetTLType().c_str(), "Mixed");
    EXPECT_STREQ(pInfo->GetName().c_str(), "libqvfault.cti");
    EXPECT_STREQ(pInfo->GetPathName().c_str(), "libqvfault.cti");
    EXPECT_STREQ(pInfo->GetDisplayName().c_str(), "QvApi fault-injection producer");
    EXPECT_EQ(pInfo->GetCharEncoding(), GenTL::TL_CHAR_ENCODING_ASCII);
    EXPECT_EQ(pInfo->GetGenTLVersionMajor(), 1u);
    EXPECT_EQ(pInfo->GetGenTLVersionMinor(), 5u);
    GenApi::INodeMap* pNodeMap = system->GetIQvPort()->GetINodeMap();
    ASSERT_NE(pNodeMap, nullptr);
    EXPECT_STREQ(pNodeMap->GetDeviceName().c_str(), "System_QvFaultTL");
    EXPECT_NE(pNodeMap->GetNode("QvFaultModuleValue"), nullptr);
    ASSERT_EQ(system->GetInterfaceCount(), 1u);
    EXPECT_EQ(system->GetIQvInterface(0)->GetIQvSystem(), static_cast<IQvSystem*>(system.Get()));
    EXPECT_EQ(system->GetIQvInterface(0)->GetDeviceCount(), 1u);
    // The producer reports no change on a second update: the list stays as it was.
    EXPECT_FALSE(system->UpdateInterfaceList());

    Fail(QV_FAULT_TLGetInfo, GenTL::GC_ERR_INVALID_HANDLE);
    const auto caught = Catch<CQvGenTLErrorException>([&] { pInfo->GetVendor(); });
    EXPECT_EQ(caught.function, "TLGetInfo");
    EXPECT_TRUE(Matches(caught.description, "-1006 = TLGetInfo\\(0x0x[0-9a-f]+, 1, 0x0x[0-9a-f]+, 0x\\(nil\\), 0x0x[0-9a-f]+\\).*"))
        << caught.description;
}

TEST_F(System, ReportsAMissingTLOpenAsNotImplementedAndClosesTheProducerAgain)
{
    m_folder.Link("libqvgentl.cti", "libqvfault_notlopen.cti");
    const QvFaultControl* pControl = QvTest::FaultControl("libqvfault_notlopen.cti");
    ASSERT_NE(pControl, nullptr);
    const auto caught = Catch<CQvGenTLErrorException>([] { CreateIQvSystem(); });
    ASSERT_TRUE(caught.thrown);
    EXPECT_EQ(caught.code, GenTL::GC_ERR_NOT_IMPLEMENTED);
    EXPECT_EQ(caught.function, "TLOpen");
    EXPECT_TRUE(Matches(caught.description, "-1003 = TLOpen\\(0x0x[0-9a-f]+\\).*")) << caught.description;
    EXPECT_EQ(caught.sourceFile, "QvApi_TL/QvSystem.cpp");
    EXPECT_EQ(pControl->GetInitCount(), 0);
}

TEST_F(System, AppendsTheProducersTextToAFailedTLOpen)
{
    QvFaultRule rule = QvTest::FailWith(GenTL::GC_ERR_ACCESS_DENIED, "Another host holds the transport layer.");
    m_pControl->SetRule(QV_FAULT_TLOpen, &rule);
    const auto caught = Catch<CQvGenTLErrorException>([] { CreateIQvSystem(); });
    EXPECT_TRUE(Matches(caught.description, "-1005 = TLOpen\\(0x0x[0-9a-f]+\\) Another host holds the transport layer\\."))
        << caught.description;
    EXPECT_EQ(m_pControl->GetInitCount(), 0);
}

TEST_F(System, FailsWithoutGCRegisterEventAndTakesEverythingDown)
{
    m_folder.Link("libqvgentl.cti", "libqvfault_noregisterevent.cti");
    const QvFaultControl* pControl = QvTest::FaultControl("libqvfault_noregisterevent.cti");
    const auto caught = Catch<CQvGenTLErrorException>([] { CreateIQvSystem(); });
    EXPECT_EQ(caught.code, 0);
    EXPECT_EQ(caught.function, "GCRegisterEvent");
    EXPECT_EQ(pControl->GetCallCount(QV_FAULT_TLClose), 1u);
    EXPECT_EQ(pControl->GetInitCount(), 0);
}

TEST_F(System, ReadsTheFirstListsOfFrameGrabberVendorsEvenWhenTheProducerReportsNoChange)
{
    ASSERT_EQ(m_pControl->SetListChanged(QV_FAULT_MODULE_SYSTEM, 0), 0);
    ASSERT_EQ(m_pControl->SetListChanged(QV_FAULT_MODULE_INTERFACE, 0), 0);
    SetInfoText(QV_FAULT_MODULE_INTERFACE, GenTL::INTERFACE_INFO_TLTYPE, "CXP");
    {
        CIQvSystemPtr system(CreateIQvSystem(QvSystemVendor_Default));
        EXPECT_EQ(system->GetInterfaceCount(), 0u);
        EXPECT_FALSE(system->UpdateInterfaceList());
        EXPECT_EQ(system->GetInterfaceCount(), 0u);
    }
    CIQvSystemPtr system(CreateIQvSystem(QvSystemVendor_Coaxlink));
    EXPECT_EQ(system->GetQvSystemVendor(), QvSystemVendor_Coaxlink);
    ASSERT_EQ(system->GetInterfaceCount(), 1u);
    EXPECT_EQ(system->GetIQvInterface(0)->GetDeviceCount(), 1u);
    // Only the first update is read regardless.
    EXPECT_FALSE(system->UpdateInterfaceList());
    EXPECT_FALSE(system->GetIQvInterface(0)->UpdateDeviceList());
}

TEST_F(System, MatchesInterfaceTypeTextsLooselyAgainstTheMask)
{
    struct SCase_
    {
        const char* tlType;
        uint32_t mask;
        size_t interfaces;
        uint32_t type;
    } cases[] = {
        {"U3V", QvInterfaceType_USB3Vision, 1, 1}, {"U3V", QvInterfaceType_GigEVision, 0, 1},
        {"gev", QvInterfaceType_GigEVision, 1, 2}, {"ge", QvInterfaceType_GigEVision, 1, 2},
        {"G", QvInterfaceType_GigEVision, 1, 2},   {"", QvInterfaceType_USB3Vision, 1, 1},
        {"", QvInterfaceType_GigEVision, 0, 1},    {"cX", QvInterfaceType_CoaXPress, 1, 4},
        {"GEVX", QvInterfaceType_All, 0, 0},       {"Mixed", QvInterfaceType_All, 0, 0},
        {"CXP", 6, 1, 4},
    };
    for (const SCase_& c : cases)
    {
        SCOPED_TRACE(std::string("\"") + c.tlType + "\" mask " + std::to_string(c.mask));
        SetInfoText(QV_FAULT_MODULE_INTERFACE, GenTL::INTERFACE_INFO_TLTYPE, c.tlType);
        const uint32_t opened = m_pControl->GetCallCount(QV_FAULT_TLOpenInterface);
        CIQvSystemPtr system(CreateIQvSystem(QvSystemVendor_Default, static_cast<_EQvInterfaceType_t>(c.mask)));
        ASSERT_EQ(system->GetInterfaceCount(), c.interfaces);
        EXPECT_EQ(m_pControl->GetCallCount(QV_FAULT_TLOpenInterface) - opened, c.interfaces);
        EXPECT_EQ(static_cast<uint32_t>(CQvInterface::InterfaceTypeOf(c.tlType)), c.type);
        if (c.interfaces == 1)
        {
            auto* pInside = dynamic_cast<IQvInterfaceInside*>(system->GetIQvInterface(0));
            ASSERT_NE(pInside, nullptr);
            EXPECT_EQ(static_cast<uint32_t>(pInside->GetQvInterfaceType()), c.type);
        }
    }
}

TEST_F(System, ChecksInterfaceIndexesUnderTheOperationsName)
{
    CIQvSystemPtr system(CreateIQvSystem());
    EXPECT_EQ(Catch<GenICam::OutOfRangeException>([&] { system->GetIQvInterface(1); }).description,
              "GetInterface = 1 must be smaller than Max = 1");
    EXPECT_EQ(Catch<GenICam::OutOfRangeException>([&] { system->GetIQvInterface(static_cast<size_t>(-1)); }).description,
              "GetInterface = -1 must be equal or greater than Min = 0");
}

TEST_F(System, HasNoFirstDeviceWithoutInterfaces)
{
    CIQvSystemPtr system(CreateIQvSystem(QvSystemVendor_Default, QvInterfaceType_GigEVision));
    EXPECT_EQ(Catch<GenICam::RuntimeException>([&] { system->CreateFirstIQvDevice(GenTL::DEVICE_ACCESS_CONTROL); }).description,
              "There is no available device.");
    EXPECT_EQ(m_pControl->GetCallCount(QV_FAULT_IFOpenDevice), 0u);
}

TEST_F(System, KeepsListedInterfacesReleasesGoneOnesAndOpensNewOnes)
{
    CIQvSystemPtr system(CreateIQvSystem());
    ASSERT_EQ(m_pControl->SetListChanged(QV_FAULT_MODULE_SYSTEM, 1), 0);
    IQvInterface* pInterface = system->GetIQvInterface(0);
    EXPECT_TRUE(system->UpdateInterfaceList());
    EXPECT_EQ(system->GetIQvInterface(0), pInterface);
    EXPECT_EQ(m_pControl->GetCallCount(QV_FAULT_TLOpenInterface), 1u);

    ASSERT_EQ(m_pControl->SetListHidden(QV_FAULT_MODULE_SYSTEM, 1), 0);
    EXPECT_TRUE(system->UpdateInterfaceList());
    EXPECT_EQ(system->GetInterfaceCount(), 0u);
    EXPECT_EQ(m_pControl->GetCallCount(QV_FAULT_IFClose), 1u);

    ASSERT_EQ(m_pControl->SetListHidden(QV_FAULT_MODULE_SYSTEM, 0), 0);
    EXPECT_TRUE(system->UpdateInterfaceList());
    ASSERT_EQ(system->GetInterfaceCount(), 1u);
    EXPECT_EQ(m_pControl->GetCallCount(QV_FAULT_TLOpenInterface), 2u);
    EXPECT_STREQ(system->GetIQvInterface(0)->GetIQvInterfaceInfo()->GetID().c_str(), "QvFaultIF0");
}

TEST_F(System, ReportsEachFailingCallOfTheListUpdate)
{
    struct SCase_
    {
        QvFaultFunction function;
        const char* pattern;
    } cases[] = {
        {QV_FAULT_TLUpdateInterfaceList, "-1011 = TLUpdateInterfaceList\\(0x0x[0-9a-f]+, 0x0x[0-9a-f]+, +250\\).*"},
        {QV_FAULT_TLGetNumInterfaces, "-1011 = TLGetNumInterfaces\\(0x0x[0-9a-f]+, 0x0x[0-9a-f]+\\).*"},
        {QV_FAULT_TLGetInterfaceID, "-1011 = TLGetInterfaceID\\(0x0x[0-9a-f]+, 0, 0x\\(nil\\), 0x0x[0-9a-f]+\\).*"},
        {QV_FAULT_TLGetInterfaceInfo,
         "-1011 = TLGetInterfaceInfo\\(0x0x[0-9a-f]+, 0x0x[0-9a-f]+, 2, 0x0x[0-9a-f]+, 0x\\(nil\\), 0x0x[0-9a-f]+\\).*"},
        {QV_FAULT_TLOpenInterface, "-1011 = TLOpenInterface\\(0x0x[0-9a-f]+, QvFaultIF0, 0x0x[0-9a-f]+\\).*"},
    };
    for (const SCase_& c : cases)
    {
        m_pControl->Reset();
        Fail(c.function, GenTL::GC_ERR_TIMEOUT);
        const auto caught = Catch<CQvGenTLErrorException>([] { CreateIQvSystem(); });
        EXPECT_EQ(caught.code, GenTL::GC_ERR_TIMEOUT);
        EXPECT_TRUE(Matches(caught.description, c.pattern)) << caught.description;
        // The failed system took its transport layer and the producer down again.
        EXPECT_EQ(m_pControl->GetCallCount(QV_FAULT_TLClose), 1u) << caught.function;
        EXPECT_EQ(m_pControl->GetInitCount(), 0) << caught.function;
    }
}

TEST_F(System, SwallowsFailingClosesAtTeardown)
{
    Fail(QV_FAULT_IFClose, GenTL::GC_ERR_INVALID_HANDLE);
    IQvSystemReleasable* pSystem = CreateIQvSystem();
    EXPECT_NO_THROW(pSystem->Release());
    EXPECT_EQ(m_pControl->GetCallCount(QV_FAULT_IFClose), 1u);
    EXPECT_EQ(m_pControl->GetCallCount(QV_FAULT_TLClose), 1u);
    EXPECT_EQ(m_pControl->GetInitCount(), 0);

    // A transport layer that refuses to close keeps its producer loaded and initialised.
    m_pControl->Reset();
    Fail(QV_FAULT_TLClose, GenTL::GC_ERR_RESOURCE_IN_USE);
    pSystem = CreateIQvSystem();
    EXPECT_NO_THROW(pSystem->Release());
    EXPECT_EQ(m_pControl->GetCallCount(QV_FAULT_GCCloseLib), 0u);
    EXPECT_EQ(m_pControl->GetInitCount(), 1);
}

TEST_F(System, SwallowsMissingCloseEntryPoints)
{
    m_folder.Link("libqvgentl.cti", "libqvfault_noclose.cti");
    const QvFaultControl* pControl = QvTest::FaultControl("libqvfault_noclose.cti");
    IQvSystemReleasable* pSystem = CreateIQvSystem();
    ASSERT_EQ(pSystem->GetInterfaceCount(), 1u);
    EXPECT_NO_THROW(pSystem->Release());
    EXPECT_EQ(pControl->GetInitCount(), 1); // TLClose "failed" with -1003: the binding is kept
}

TEST_F(System, CountsReferencesAndClosesOnTheLast)
{
    IQvSystemReleasable* pSystem = CreateIQvSystem();
    EXPECT_EQ(pSystem->AddRef(), 2);
    pSystem->Release();
    EXPECT_EQ(m_pControl->GetCallCount(QV_FAULT_TLClose), 0u);
    EXPECT_EQ(pSystem->GetInterfaceCount(), 1u);
    pSystem->Release();
    EXPECT_EQ(m_pControl->GetCallCount(QV_FAULT_TLClose), 1u);
    EXPECT_EQ(m_pControl->GetInitCount(), 0);
}

TEST_F(System, RunsItsErrorCallbacksOnceItsListenerRuns)
{
    CIQvSystemPtr system(CreateIQvSystem());
    QvModuleTest::CErrorRecorder recorder;
    void* hCallback = system->RegisterCallback(&recorder);
    system->StartEventAcquisitionThread();
    ASSERT_EQ(m_pControl->PushErrorEvent(m_pControl->GetModuleHandle(QV_FAULT_MODULE_SYSTEM), GenTL::GC_ERR_IO, "TL"), 0);
    ASSERT_TRUE(recorder.Wait());
    EXPECT_EQ(recorder.m_type, QvCallbackTypeGenTLEventErrorTL);
    EXPECT_EQ(recorder.m_code, GenTL::GC_ERR_IO);
    EXPECT_EQ(recorder.m_description, "TL");
    EXPECT_EQ(recorder.m_pModule, static_cast<void*>(static_cast<IQvSystem*>(system.Get())));
    system->StopEventAcquisitionThread();
    system->DeregisterCallback(hCallback);
    EXPECT_EQ(recorder.m_released, 1);
}
