// The device module: information, local and remote ports, read-only opening, acquisition start
// and stop under TLParamsLocked, data stream IDs, device-level events and device loss.
#include "QvApi_TL/QvDevice.h"

#include <atomic>
#include <cstring>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <GenApi/EventAdapterU3V.h>
#include <GenApi/GenApi.h>

#include "FaultPortFixture.h"
#include "ModuleRecorders.h"
#include "ModuleTestSupport.h"
#include "QvApi_TL/QvDeviceInside.h"
#include "QvApi_TL/QvInterface.h"
#include "QvApi_TL/QvSystem.h"
#include "QvGenTLCommon/QvGenTLLib.h"

using namespace QvApi;
using QvModuleTest::Catch;
using QvModuleTest::Eventually;

namespace
{
// The fault camera's registers.
constexpr uint64_t kRegWidth = 0x00;
constexpr uint64_t kRegHeight = 0x04;
constexpr uint64_t kRegTLParamsLocked = 0x10;
constexpr uint64_t kRegAcquisitionActive = 0x1C;

bool Matches(const std::string& text, const char* pattern)
{
    return std::regex_match(text, std::regex(pattern));
}

// A local device description that reports device loss as the module event D001.
const char* kDeviceLostFeatures =
    "  <Enumeration Name=\"EventSelector\"><EnumEntry Name=\"DeviceLost\"><Value>3</Value></EnumEntry>"
    "<pValue>EventSelectorReg</pValue></Enumeration>\n"
    "  <IntReg Name=\"EventSelectorReg\"><Address>0x10</Address><Length>4</Length><AccessMode>RW</AccessMode>"
    "<pPort>TLPort</pPort><Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>\n"
    "  <Enumeration Name=\"EventNotification\"><EnumEntry Name=\"Off\"><Value>0</Value></EnumEntry>"
    "<EnumEntry Name=\"On\"><Value>1</Value></EnumEntry><pValue>EventNotificationReg</pValue></Enumeration>\n"
    "  <IntReg Name=\"EventNotificationReg\"><Address>0x14</Address><Length>4</Length><AccessMode>RW</AccessMode>"
    "<pPort>TLPort</pPort><Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>\n"
    "  <Port Name=\"EventDeviceLostPort\"><EventID>D001</EventID></Port>\n"
    "  <IntReg Name=\"EventDeviceLost\"><Address>2</Address><Length>2</Length><AccessMode>RO</AccessMode>"
    "<pPort>EventDeviceLostPort</pPort><Cachable>NoCache</Cachable><Sign>Unsigned</Sign>"
    "<Endianess>LittleEndian</Endianess></IntReg>\n";

class Device : public QvModuleTest::CFaultModuleTest
{
protected:
    IQvDeviceReleasable* Open(GenTL::DEVICE_ACCESS_FLAGS flags = GenTL::DEVICE_ACCESS_CONTROL)
    {
        m_device.Reset();
        m_system.Reset(); // one open system per producer
        m_system.Reset(CreateIQvSystem());
        m_device.Reset(m_system->GetIQvInterface(0)->CreateIQvDevice(0, flags));
        return m_device.Get();
    }
    void TearDown() override
    {
        m_device.Reset();
        m_system.Reset();
        QvModuleTest::CFaultModuleTest::TearDown();
    }
    uint32_t Register(QvFaultModule module, uint64_t address)
    {
        uint32_t value = 0;
        EXPECT_EQ(m_pControl->ReadPortMemory(module, address, &value, sizeof(value)), 0);
        return value;
    }
    uint32_t Camera(uint64_t address) { return Register(QV_FAULT_MODULE_REMOTE_DEVICE, address); }
    GenApi::INodeMap& Remote() { return *m_device->GetRemoteIQvPort()->GetINodeMap(); }
    void* DeviceHandle() { return m_pControl->GetModuleHandle(QV_FAULT_MODULE_DEVICE); }
    void Describe(QvFaultModule module, const std::string& xml)
    {
        ASSERT_EQ(m_pControl->SetPortDescription(module, xml.data(), xml.size()), 0);
    }

    CIQvSystemPtr m_system;
    CIQvDevicePtr m_device;
};
} // namespace

TEST_F(Device, AnswersItsInformationAndHasALocalAndARemotePort)
{
    IQvDevice* pDevice = Open();
    IQvDeviceInfo* pInfo = pDevice->GetIQvDeviceInfo();
    EXPECT_STREQ(pInfo->GetID().c_str(), "QvFaultDevice0");
    EXPECT_STREQ(pInfo->GetVendor().c_str(), "QvApi");
    EXPECT_STREQ(pInfo->GetModel().c_str(), "QvFaultCamera");
    EXPECT_STREQ(pInfo->GetTLType().c_str(), "U3V");
    EXPECT_STREQ(pInfo->GetDisplayName().c_str(), "QvApi fault-injection camera");
    EXPECT_EQ(pInfo->GetAccessStatus(), GenTL::DEVICE_ACCESS_STATUS_OPEN_READWRITE);
    EXPECT_STREQ(pInfo->GetUserDefinedName().c_str(), "fault");
    EXPECT_STREQ(pInfo->GetSerialNumber().c_str(), "QVF0001");
    EXPECT_STREQ(pInfo->GetVersion().c_str(), "1.0");
    EXPECT_EQ(pInfo->GetTimestampFrequency(), 1000000000u);
    EXPECT_EQ(pDevice->GetDataStreamCount(), 1u);
    EXPECT_FALSE(pDevice->IsDeviceLost());

    EXPECT_STREQ(pDevice->GetLocalIQvPort()->GetINodeMap()->GetDeviceName().c_str(), "LocalDevice_QvFaultDevice0");
    EXPECT_STREQ(Remote().GetDeviceName().c_str(), "RemoteDevice_QvFaultDevice0");
    GenApi::CIntegerPtr width(Remote().GetNode("Width"));
    width->SetValue(640);
    EXPECT_EQ(Camera(kRegWidth), 640u);

    Fail(QV_FAULT_DevGetInfo, GenTL::GC_ERR_INVALID_HANDLE);
    const auto caught = Catch<CQvGenTLErrorException>([&] { pInfo->GetModel(); });
    EXPECT_EQ(caught.function, "DevGetInfo");
    EXPECT_TRUE(Matches(caught.description, "-1006 = DevGetInfo\\(0x0x[0-9a-f]+, 2, 0x0x[0-9a-f]+, 0x\\(nil\\), 0x0x[0-9a-f]+\\).*"))
        << caught.description;
}

TEST_F(Device, OpenedReadOnlyRefusesCameraWritesWithoutCallingTheProducer)
{
    IQvDevice* pDevice = Open(GenTL::DEVICE_ACCESS_READONLY);
    auto* pRemotePort = dynamic_cast<GenApi::IPort*>(pDevice->GetRemoteIQvPort());
    ASSERT_NE(pRemotePort, nullptr);
    EXPECT_EQ(pRemotePort->GetAccessMode(), GenApi::RO);
    EXPECT_EQ(dynamic_cast<GenApi::IPort*>(pDevice->GetLocalIQvPort())->GetAccessMode(), GenApi::RW);
    GenApi::CIntegerPtr width(Remote().GetNode("Width"));
    const uint32_t original = Camera(kRegWidth);
    EXPECT_EQ(width->GetValue(), static_cast<int64_t>(original));
    const uint32_t writes = m_pControl->GetCallCount(QV_FAULT_GCWritePort);
    // The node map sees a read-only port; the port itself refuses whoever writes anyway.
    EXPECT_FALSE(GenApi::IsWritable(width));
    EXPECT_THROW(width->SetValue(640), GenICam::AccessException);
    const uint32_t value = 640;
    EXPECT_EQ(Catch<GenICam::RuntimeException>([&] { pRemotePort->Write(&value, kRegWidth, 4); }).description,
              "Port is not writable.");
    EXPECT_EQ(m_pControl->GetCallCount(QV_FAULT_GCWritePort), writes);
    EXPECT_EQ(Camera(kRegWidth), original);
}

TEST_F(Device, LocksTheTransportLayerBeforeStartingAndUnlocksAfterStopping)
{
    Open();
    std::vector<std::string> order;
    std::vector<GenApi::CallbackHandleType> callbacks;
    for (const char* name : {"TLParamsLocked", "AcquisitionStart", "AcquisitionStop"})
    {
        callbacks.push_back(GenApi::Register(Remote().GetNode(name), [&order](GenApi::INode* pNode) {
            order.push_back(pNode->GetName().c_str());
        }));
    }
    const uint32_t writes = m_pControl->GetCallCount(QV_FAULT_GCWritePort);
    m_device->AcquisitionStop(); // never started: nothing reaches the camera
    EXPECT_EQ(m_pControl->GetCallCount(QV_FAULT_GCWritePort), writes);

    m_device->AcquisitionStart();
    EXPECT_EQ(Camera(kRegTLParamsLocked), 1u);
    EXPECT_EQ(Camera(kRegAcquisitionActive) & 0xFF, 1u);
    m_device->AcquisitionStop();
    EXPECT_EQ(Camera(kRegTLParamsLocked), 0u);
    EXPECT_EQ(Camera(kRegAcquisitionActive) & 0xFF, 0u);
    const std::vector<std::string> expected = {"TLParamsLocked", "AcquisitionStart", "AcquisitionStop", "TLParamsLocked"};
    EXPECT_EQ(order, expected);
    m_device->AcquisitionStop(); // stopped already
    EXPECT_EQ(order.size(), 4u);
    for (GenApi::CallbackHandleType hCallback : callbacks)
        GenApi::Deregister(hCallback); // before order goes out of scope
}

TEST_F(Device, LeavesTheParametersLockedWhenTheCameraCannotStart)
{
    const std::string extra = "  <IntReg Name=\"TLParamsLocked\"><Address>0x10</Address><Length>4</Length>"
                              "<AccessMode>RW</AccessMode><pPort>Device</pPort><Sign>Unsigned</Sign>"
                              "<Endianess>LittleEndian</Endianess></IntReg>\n";
    Describe(QV_FAULT_MODULE_REMOTE_DEVICE, QvModuleTest::OneRegisterDescription("Width", "Device", extra.c_str()));
    Open();
    EXPECT_EQ(Catch<GenICam::RuntimeException>([&] { m_device->AcquisitionStart(); }).description,
              "Node AcquisitionStart not found.");
    EXPECT_EQ(Camera(kRegTLParamsLocked), 1u);
    const uint32_t writes = m_pControl->GetCallCount(QV_FAULT_GCWritePort);
    m_device->AcquisitionStop();
    EXPECT_EQ(m_pControl->GetCallCount(QV_FAULT_GCWritePort), writes);
    EXPECT_EQ(Camera(kRegTLParamsLocked), 1u);
}

TEST_F(Device, NeedsTLParamsLockedToStart)
{
    Describe(QV_FAULT_MODULE_REMOTE_DEVICE, QvModuleTest::OneRegisterDescription("Width", "Device"));
    Open();
    EXPECT_EQ(Catch<GenICam::LogicalErrorException>([&] { m_device->AcquisitionStart(); }).description,
              "NULL pointer dereferenced");
}

TEST_F(Device, IsLostAtOnceWhenTheCameraCannotBeReadWhileOpening)
{
    QvFaultRule rule = QvTest::FailWith(GenTL::GC_ERR_IO);
    rule.module = QV_FAULT_MODULE_REMOTE_DEVICE;
    rule.skipCalls = 1; // the description itself is read
    m_pControl->SetRule(QV_FAULT_GCReadPort, &rule);
    IQvDevice* pDevice = Open();
    EXPECT_TRUE(pDevice->IsDeviceLost());
    auto* pInside = dynamic_cast<IQvDeviceInside*>(pDevice);
    ASSERT_NE(pInside, nullptr);
    EXPECT_EQ(WaitForSingleObject(pInside->GetDeviceLostEventHandle(), 0), 0u);
}

TEST_F(Device, ChecksTheDataStreamIndexAndNamesAFailingOpen)
{
    IQvDevice* pDevice = Open();
    EXPECT_EQ(Catch<GenICam::OutOfRangeException>([&] { pDevice->CreateIQvDataStream(1, nullptr); }).description,
              "nIndex = 1 must be smaller than Max = 1");
    EXPECT_EQ(Catch<GenICam::OutOfRangeException>([&] { pDevice->CreateIQvDataStream(static_cast<size_t>(-1), nullptr); }).description,
              "nIndex = -1 must be equal or greater than Min = 0");
    EXPECT_EQ(m_pControl->GetCallCount(QV_FAULT_DevOpenDataStream), 0u);
    Fail(QV_FAULT_DevOpenDataStream, GenTL::GC_ERR_RESOURCE_IN_USE);
    const auto caught = Catch<CQvGenTLErrorException>([&] { pDevice->CreateIQvDataStream(0, nullptr); });
    EXPECT_EQ(caught.function, "DevOpenDataStream");
    EXPECT_TRUE(Matches(caught.description, "-1004 = DevOpenDataStream\\(0x0x[0-9a-f]+, 0x0x[0-9a-f]+, 0x0x[0-9a-f]+\\).*"))
        << caught.description;
}

TEST_F(Device, FailsToOpenWhenItsPortsOrStreamsCannotBeReadAndLeavesTheHandleOpen)
{
    m_system.Reset(CreateIQvSystem());
    IQvInterface* pInterface = m_system->GetIQvInterface(0);
    struct SCase_
    {
        QvFaultFunction function;
        uint32_t skipCalls;
        const char* pattern;
    } cases[] = {
        {QV_FAULT_DevGetPort, 0, "-1010 = DevGetPort\\(0x0x[0-9a-f]+, 0x0x[0-9a-f]+\\).*"},
        {QV_FAULT_DevGetNumDataStreams, 0, "-1010 = DevGetNumDataStreams\\(0x0x[0-9a-f]+, 0x0x[0-9a-f]+\\).*"},
        {QV_FAULT_DevGetDataStreamID, 0, "-1010 = DevGetDataStreamID\\(0x0x[0-9a-f]+, 0, 0x\\(nil\\), 0x0x[0-9a-f]+\\).*"},
        {QV_FAULT_DevGetDataStreamID, 1, "-1010=DevGetDataStreamID\\(0x0x[0-9a-f]+, 0, 0x0x[0-9a-f]+, 0x0x[0-9a-f]+\\).*"},
    };
    for (const SCase_& c : cases)
    {
        QvFaultRule rule = QvTest::FailWith(GenTL::GC_ERR_IO);
        rule.skipCalls = c.skipCalls;
        m_pControl->SetRule(c.function, &rule);
        const auto caught =
            Catch<CQvGenTLErrorException>([&] { pInterface->CreateIQvDevice(0, GenTL::DEVICE_ACCESS_CONTROL); });
        EXPECT_TRUE(Matches(caught.description, c.pattern)) << caught.description;
        m_pControl->ClearRule(c.function);
        EXPECT_EQ(dynamic_cast<CQvInterface*>(pInterface)->GetRefCount(), 1);
        // The handle stayed open in the producer; close it as its opener would.
        ASSERT_EQ(m_pControl->GetModuleHandle(QV_FAULT_MODULE_DEVICE) != nullptr, true);
        CQvGenTLLib* pLib = dynamic_cast<CQvSystem*>(m_system.Get())->GetGenTLLib();
        EXPECT_EQ(pLib->DevClose(m_pControl->GetModuleHandle(QV_FAULT_MODULE_DEVICE)), 0);
    }
}

TEST_F(Device, AppliesFeatureChangeAndInvalidateEventsToTheRemoteNodeMap)
{
    Open();
    m_device->StartEventAcquisitionThread();
    GenApi::CIntegerPtr width(Remote().GetNode("Width"));
    EXPECT_NE(width->GetValue(), 640);

    const char change[] = "Width\0" "640";
    ASSERT_EQ(m_pControl->PushEvent(DeviceHandle(), GenTL::EVENT_FEATURE_CHANGE, change, sizeof(change)), 0);
    EXPECT_TRUE(Eventually([&] { return Camera(kRegWidth) == 640; }));

    // A feature the camera lacks changes nothing; the listener goes on.
    const char unknown[] = "NoSuchFeature\0" "1";
    const char height[] = "Height\0" "480";
    ASSERT_EQ(m_pControl->PushEvent(DeviceHandle(), GenTL::EVENT_FEATURE_CHANGE, unknown, sizeof(unknown)), 0);
    ASSERT_EQ(m_pControl->PushEvent(DeviceHandle(), GenTL::EVENT_FEATURE_CHANGE, height, sizeof(height)), 0);
    EXPECT_TRUE(Eventually([&] { return Camera(kRegHeight) == 480; }));

    // Behind the node map's back: the cached value stays until the producer invalidates it.
    EXPECT_EQ(width->GetValue(), 640);
    const uint32_t changed = 800;
    ASSERT_EQ(m_pControl->WritePortMemory(QV_FAULT_MODULE_REMOTE_DEVICE, kRegWidth, &changed, 4), 0);
    EXPECT_EQ(width->GetValue(), 640);
    const char invalidate[] = "Width";
    ASSERT_EQ(m_pControl->PushEvent(DeviceHandle(), GenTL::EVENT_FEATURE_INVALIDATE, invalidate, sizeof(invalidate)), 0);
    EXPECT_TRUE(Eventually([&] { return width->GetValue() == 800; }));
}

TEST_F(Device, DeliversCameraEventsToTheRemoteNodeMap)
{
    const std::string extra = "  <Port Name=\"EventExposureEndPort\"><EventID>9001</EventID></Port>\n"
                              "  <IntReg Name=\"EventExposureEndTimestamp\"><Address>4</Address><Length>8</Length>"
                              "<AccessMode>RO</AccessMode><pPort>EventExposureEndPort</pPort><Cachable>NoCache</Cachable>"
                              "<Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>\n";
    Describe(QV_FAULT_MODULE_REMOTE_DEVICE, QvModuleTest::OneRegisterDescription("Width", "Device", extra.c_str()));
    Open();
    m_device->StartEventAcquisitionThread();
    GenApi::CIntegerPtr timestamp(Remote().GetNode("EventExposureEndTimestamp"));
    GenApi::U3V_EVENT_MESSAGE message{};
    message.CommandHeader.Prefix = U3V_EVENT_PREFIX;
    message.CommandHeader.CommandId = GENCP_EVENT_CMD_ID;
    message.CommandHeader.Length = GENCP_EVENT_BASIC_SIZE;
    message.EventData.EventId = 0x9001;
    message.EventData.Timestamp = 123456789;
    ASSERT_EQ(m_pControl->PushEvent(DeviceHandle(), GenTL::EVENT_REMOTE_DEVICE, &message, sizeof(message)), 0);
    EXPECT_TRUE(Eventually([&] {
        try
        {
            return timestamp->GetValue() == 123456789;
        }
        catch (const GenICam::GenericException&)
        {
            return false; // not available before the first event
        }
    }));
}

TEST_F(Device, IsLostWhenItsModuleEventReportsItAndWakesAWaitingThread)
{
    Describe(QV_FAULT_MODULE_DEVICE, QvModuleTest::OneRegisterDescription("Value", "TLPort", kDeviceLostFeatures));
    IQvDevice* pDevice = Open();
    // The device asked its local module for the loss notification.
    EXPECT_EQ(Register(QV_FAULT_MODULE_DEVICE, 0x10), 3u);
    EXPECT_EQ(Register(QV_FAULT_MODULE_DEVICE, 0x14), 1u);
    // The node's callback fired by somebody else's thread is not a loss.
    GenApi::INode* pLostNode = pDevice->GetLocalIQvPort()->GetINodeMap()->GetNode("EventDeviceLost");
    ASSERT_NE(pLostNode, nullptr);
    std::atomic<int> fired{0};
    const GenApi::CallbackHandleType hCallback = GenApi::Register(pLostNode, [&fired](GenApi::INode*) { ++fired; });
    pLostNode->InvalidateNode();
    EXPECT_FALSE(pDevice->IsDeviceLost());

    pDevice->StartEventAcquisitionThread();
    auto* pInside = dynamic_cast<IQvDeviceInside*>(pDevice);
    unsigned waitResult = kWaitFailed;
    std::thread waiter([&] { waitResult = WaitForSingleObject(pInside->GetDeviceLostEventHandle(), 5000); });
    uint8_t record[8 + 16] = {};
    const uint64_t eventID = 0xD001;
    std::memcpy(record, &eventID, sizeof(eventID));
    record[8 + 2] = 0x01, record[8 + 3] = 0xD0;
    ASSERT_EQ(m_pControl->PushEvent(DeviceHandle(), GenTL::EVENT_MODULE, record, sizeof(record)), 0);
    waiter.join();
    EXPECT_EQ(waitResult, kWaitObject0);
    EXPECT_TRUE(pDevice->IsDeviceLost());
    EXPECT_GE(fired.load(), 1);
    // The listener may still be dispatching the node's callbacks: stop it, then deregister
    // ours before fired goes out of scope.
    pDevice->StopEventAcquisitionThread();
    GenApi::Deregister(hCallback);
}

TEST_F(Device, RunsItsErrorCallbacksAndStopsItsListenersWhenReleased)
{
    IQvDevice* pDevice = Open();
    QvModuleTest::CErrorRecorder recorder;
    pDevice->RegisterCallback(&recorder);
    const int threadsBefore = QvModuleTest::ThreadCount();
    pDevice->StartEventAcquisitionThread();
    EXPECT_EQ(QvModuleTest::ThreadCount(), threadsBefore + 5);
    ASSERT_EQ(m_pControl->PushErrorEvent(DeviceHandle(), GenTL::GC_ERR_IO, "DEV"), 0);
    ASSERT_TRUE(recorder.Wait());
    EXPECT_EQ(recorder.m_type, QvCallbackTypeGenTLEventErrorDEV);
    EXPECT_EQ(recorder.m_pModule, static_cast<void*>(static_cast<IQvDevice*>(pDevice)));
    m_device.Reset();
    EXPECT_EQ(QvModuleTest::ThreadCount(), threadsBefore);
    EXPECT_EQ(recorder.m_released, 1);
    EXPECT_EQ(m_pControl->GetCallCount(QV_FAULT_DevClose), 1u);
    EXPECT_EQ(dynamic_cast<CQvInterface*>(m_system->GetIQvInterface(0))->GetRefCount(), 1);
}
