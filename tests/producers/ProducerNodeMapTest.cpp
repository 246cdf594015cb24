// libqvgentl.cti's descriptions loaded with our GenApi engine and driven through ports over
// GCReadPort/GCWritePort: every feature reads, the camera behaves as its description says,
// and chunks and events reach their features through the engine's chunk and event adapters,
// exactly as the SDK uses them.

#include <cstring>

#include <GenApi/ChunkAdapterGEV.h>
#include <GenApi/ChunkAdapterGeneric.h>
#include <GenApi/ChunkAdapterU3V.h>
#include <GenApi/EventAdapterGEV.h>
#include <GenApi/EventAdapterGeneric.h>
#include <GenApi/EventAdapterU3V.h>
#include <GenApi/GenApi.h>
#include <GenApi/PortImpl.h>

#include <QvGenTL/VirtualCamera.h>

#include "tests/producers/ProducerFixture.h"

using namespace GenTL;
using namespace GenApi;
using namespace QvGenTLTest;

namespace {

/// A GenApi port over a GenTL port handle.
class CGenTLPort : public CPortImpl
{
public:
    CGenTLPort(CGenTLProducer& gentl, PORT_HANDLE port, bool writable)
        : m_gentl(gentl), m_port(port), m_writable(writable)
    {
    }
    EAccessMode GetAccessMode() const override { return m_writable ? RW : RO; }
    void Read(void* pBuffer, int64_t address, int64_t length) override
    {
        size_t size = static_cast<size_t>(length);
        const GC_ERROR result = m_gentl.GCReadPort(m_port, static_cast<uint64_t>(address), pBuffer, &size);
        if (result != GC_ERR_SUCCESS)
            throw RUNTIME_EXCEPTION("GCReadPort at 0x%llx failed: %d", static_cast<long long>(address), result);
    }
    void Write(const void* pBuffer, int64_t address, int64_t length) override
    {
        size_t size = static_cast<size_t>(length);
        const GC_ERROR result = m_gentl.GCWritePort(m_port, static_cast<uint64_t>(address), pBuffer, &size);
        if (result != GC_ERR_SUCCESS)
            throw RUNTIME_EXCEPTION("GCWritePort at 0x%llx failed: %d", static_cast<long long>(address), result);
    }

private:
    CGenTLProducer& m_gentl;
    const PORT_HANDLE m_port;
    const bool m_writable;
};

/// A module's node map connected to its port.
struct NodeMap_t
{
    std::unique_ptr<CGenTLPort> port;
    CNodeMapRef map;

    INode* Node(const char* name) const { return map._GetNode(name); }
    CIntegerPtr Integer(const char* name) const { return map._GetNode(name); }
    CFloatPtr Float(const char* name) const { return map._GetNode(name); }
    CEnumerationPtr Enumeration(const char* name) const { return map._GetNode(name); }
    CCommandPtr Command(const char* name) const { return map._GetNode(name); }
    CBooleanPtr Boolean(const char* name) const { return map._GetNode(name); }
    CStringPtr String(const char* name) const { return map._GetNode(name); }
};

class ProducerNodeMap : public ProducerTest
{
protected:
    std::unique_ptr<NodeMap_t> Load(PORT_HANDLE port)
    {
        auto nodeMap = std::make_unique<NodeMap_t>();
        const std::string url = QueryInfo([&](INFO_DATATYPE* t, void* d, size_t* s) {
                                    return m_gentl->GCGetPortURLInfo(port, 0, URL_INFO_URL, t, d, s);
                                }).Text();
        const uint64_t address = QueryInfo([&](INFO_DATATYPE* t, void* d, size_t* s) {
                                     return m_gentl->GCGetPortURLInfo(port, 0, URL_INFO_FILE_REGISTER_ADDRESS, t, d, s);
                                 }).As<uint64_t>();
        std::string bytes(QueryInfo([&](INFO_DATATYPE* t, void* d, size_t* s) {
                              return m_gentl->GCGetPortURLInfo(port, 0, URL_INFO_FILE_SIZE, t, d, s);
                          }).As<uint64_t>(), '\0');
        size_t size = bytes.size();
        EXPECT_EQ(m_gentl->GCReadPort(port, address, bytes.data(), &size), GC_ERR_SUCCESS);
        if (url.find(".zip;") != std::string::npos)
            nodeMap->map._LoadXMLFromZIPData(bytes.data(), bytes.size());
        else
            nodeMap->map._LoadXMLFromString(GenICam::gcstring(bytes.c_str()));
        const bool writable = QueryInfo([&](INFO_DATATYPE* t, void* d, size_t* s) {
                                  return m_gentl->GCGetPortInfo(port, PORT_INFO_ACCESS_WRITE, t, d, s);
                              }).As<uint8_t>() != 0;
        const std::string portName = QueryInfo([&](INFO_DATATYPE* t, void* d, size_t* s) {
                                         return m_gentl->GCGetPortInfo(port, PORT_INFO_PORTNAME, t, d, s);
                                     }).Text();
        nodeMap->port = std::make_unique<CGenTLPort>(*m_gentl, port, writable);
        EXPECT_TRUE(nodeMap->map._Connect(nodeMap->port.get(), portName.c_str())) << portName;
        return nodeMap;
    }

    EVENT_HANDLE m_newBuffer = nullptr;
};

TEST_F(ProducerNodeMap, EveryDescriptionLoadsAndEveryReadableFeatureReads)
{
    OpenSystem();
    for (const char* type : {"U3V", "GEV", "CXP"})
    {
        SCOPED_TRACE(type);
        OpenCamera(type);
        const BUFFER_HANDLE buffer = AnnounceAndQueue(1)[0];
        for (PORT_HANDLE port : {m_system, m_interface, m_device, m_remote, m_stream, buffer})
        {
            auto nodeMap = Load(port);
            NodeList_t nodes;
            nodeMap->map._GetNodes(nodes);
            int read = 0, written = 0;
            for (INode* node : nodes)
            {
                CValuePtr value(node);
                if (!value.IsValid() || !IsReadable(value) || node->GetPrincipalInterfaceType() == intfICommand)
                    continue;
                GenICam::gcstring text;
                EXPECT_NO_THROW(text = value->ToString()) << node->GetName();
                ++read;
                // Writing back what was read must be accepted by the module too.
                if (IsWritable(value) && node->GetPrincipalInterfaceType() != intfIEnumEntry)
                {
                    EXPECT_NO_THROW(value->FromString(text)) << node->GetName() << " = " << text;
                    ++written;
                }
            }
            EXPECT_GT(read, 5);
            EXPECT_GT(written, 0);
            // Selectors of the modules select what the features below them show.
            if (CIntegerPtr selector = nodeMap->map._GetNode("InterfaceSelector"))
            {
                EXPECT_EQ(selector->GetMax(), 2);
                selector->SetValue(1);
                EXPECT_EQ(CStringPtr(nodeMap->map._GetNode("InterfaceID"))->GetValue(), "QvVirtual-GEV0");
            }
        }
        ASSERT_EQ(m_gentl->DevClose(m_device), GC_ERR_SUCCESS);
        ASSERT_EQ(m_gentl->IFClose(m_interface), GC_ERR_SUCCESS);
    }
}

TEST_F(ProducerNodeMap, CameraRangesAvailabilityLocksAndSelectorsFollowTheDescription)
{
    OpenSystem("GEV:1@1024x768");
    OpenCamera("GEV");
    auto camera = Load(m_remote);
    CIntegerPtr width = camera->Integer("Width");
    CIntegerPtr offsetX = camera->Integer("OffsetX");
    EXPECT_EQ(width->GetMax(), 1024);
    width->SetValue(640);
    offsetX->SetValue(100);
    EXPECT_EQ(width->GetMax(), 924);
    EXPECT_EQ(offsetX->GetMax(), 384);
    EXPECT_THROW(width->SetValue(926), GenICam::OutOfRangeException);

    // Mono10p is available only while the width holds whole groups of four pixels.
    CEnumerationPtr pixelFormat = camera->Enumeration("PixelFormat");
    width->SetValue(642);
    EXPECT_FALSE(IsAvailable(pixelFormat->GetEntryByName("Mono10p")));
    width->SetValue(640);
    EXPECT_TRUE(IsAvailable(pixelFormat->GetEntryByName("Mono10p")));
    pixelFormat->FromString("Mono10p");
    EXPECT_EQ(width->GetInc(), 4);
    EXPECT_EQ(camera->Integer("PayloadSize")->GetValue(), 640 * 768 * 10 / 8);
    pixelFormat->FromString("Mono8");

    // TLParamsLocked makes the payload features read-only; offsets stay writable.
    camera->Integer("TLParamsLocked")->SetValue(1);
    EXPECT_FALSE(IsWritable(width));
    EXPECT_FALSE(IsWritable(pixelFormat));
    EXPECT_TRUE(IsWritable(offsetX));
    EXPECT_THROW(width->SetValue(320, false), GenICam::GenericException) << "the camera refuses it too";
    camera->Integer("TLParamsLocked")->SetValue(0);
    EXPECT_TRUE(IsWritable(width));

    // Selected features follow their selectors.
    CEnumerationPtr triggerSelector = camera->Enumeration("TriggerSelector");
    CEnumerationPtr triggerMode = camera->Enumeration("TriggerMode");
    triggerSelector->FromString("AcquisitionStart");
    triggerMode->FromString("On");
    triggerSelector->FromString("FrameStart");
    EXPECT_EQ(triggerMode->ToString(), "Off");
    triggerSelector->FromString("AcquisitionStart");
    EXPECT_EQ(triggerMode->ToString(), "On");
    CEnumerationPtr chunkSelector = camera->Enumeration("ChunkSelector");
    CBooleanPtr chunkEnable = camera->Boolean("ChunkEnable");
    chunkSelector->FromString("Height");
    chunkEnable->SetValue(false);
    chunkSelector->FromString("Width");
    EXPECT_TRUE(chunkEnable->GetValue());

    // The frame rate cannot exceed 1 / ExposureTime.
    camera->Float("ExposureTime")->SetValue(2000.0);
    EXPECT_DOUBLE_EQ(camera->Float("AcquisitionFrameRate")->GetMax(), 500.0);
    EXPECT_THROW(camera->Float("AcquisitionFrameRate")->SetValue(600.0), GenICam::OutOfRangeException);

    // The local device's PayloadSize and TLParamsLocked are the camera's.
    auto device = Load(m_device);
    EXPECT_EQ(device->Integer("PayloadSize")->GetValue(), camera->Integer("PayloadSize")->GetValue());
    device->Integer("TLParamsLocked")->SetValue(1);
    camera->map._InvalidateNodes();
    EXPECT_FALSE(IsWritable(width));
    device->Integer("TLParamsLocked")->SetValue(0);
}

class ProducerNodeMapPerTransport : public ProducerNodeMap, public ::testing::WithParamInterface<const char*>
{
};

/// Chunks through the adapter a consumer picks for the transport, ExposureEnd events through
/// the transport's event adapter and through the generic one.
TEST_P(ProducerNodeMapPerTransport, ChunkAndEventAdaptersReadWhatTheBuffersAndEventsCarry)
{
    const std::string tlType = GetParam();
    OpenSystem();
    OpenCamera(tlType);
    auto camera = Load(m_remote);
    camera->Integer("Width")->SetValue(320);
    camera->Integer("Height")->SetValue(240);
    camera->Integer("OffsetX")->SetValue(64);
    camera->Enumeration("PixelFormat")->FromString("BayerGB12");
    camera->Boolean("AcquisitionFrameRateEnable")->SetValue(false);
    camera->Boolean("ChunkModeActive")->SetValue(true);
    camera->Enumeration("EventSelector")->FromString("ExposureEnd");
    camera->Enumeration("EventNotification")->FromString("On");
    ASSERT_EQ(m_gentl->GCRegisterEvent(m_stream, EVENT_NEW_BUFFER, &m_newBuffer), GC_ERR_SUCCESS);
    EVENT_HANDLE events = nullptr;
    ASSERT_EQ(m_gentl->GCRegisterEvent(m_device, EVENT_REMOTE_DEVICE, &events), GC_ERR_SUCCESS);
    AnnounceAndQueue(3);
    ASSERT_EQ(m_gentl->DSStartAcquisition(m_stream, ACQ_START_FLAGS_DEFAULT, 3), GC_ERR_SUCCESS);
    camera->Command("AcquisitionStart")->Execute();

    std::unique_ptr<CChunkAdapter> adapter;
    if (tlType == "U3V")
        adapter = std::make_unique<CChunkAdapterU3V>(camera->map._Ptr);
    else if (tlType == "GEV")
        adapter = std::make_unique<CChunkAdapterGEV>(camera->map._Ptr);
    else
        adapter = std::make_unique<CChunkAdapterGeneric>(camera->map._Ptr);
    for (int i = 0; i < 3; ++i)
    {
        EVENT_NEW_BUFFER_DATA data{};
        size_t size = sizeof(data);
        ASSERT_EQ(m_gentl->EventGetData(m_newBuffer, &data, &size, 2000), GC_ERR_SUCCESS);
        uint8_t* base = BufferInfo<uint8_t*>(data.BufferHandle, BUFFER_INFO_BASE);
        const size_t chunkPayload = BufferInfo<size_t>(data.BufferHandle, BUFFER_INFO_DELIVERED_CHUNKPAYLOADSIZE);
        if (tlType == "CXP")
        {
            size_t count = 0;
            ASSERT_EQ(m_gentl->DSGetBufferChunkData(m_stream, data.BufferHandle, nullptr, &count), GC_ERR_SUCCESS);
            std::vector<SINGLE_CHUNK_DATA> chunks(count);
            ASSERT_EQ(m_gentl->DSGetBufferChunkData(m_stream, data.BufferHandle, chunks.data(), &count), GC_ERR_SUCCESS);
            std::vector<SingleChunkData_t> list;
            for (const SINGLE_CHUNK_DATA& chunk : chunks)
                list.push_back(SingleChunkData_t{chunk.ChunkID, chunk.ChunkOffset, chunk.ChunkLength});
            static_cast<CChunkAdapterGeneric&>(*adapter).AttachBuffer(base, int64_t(chunkPayload), list.data(),
                                                                      int64_t(list.size()));
        }
        else
        {
            ASSERT_TRUE(adapter->CheckBufferLayout(base, int64_t(chunkPayload)));
            adapter->AttachBuffer(base, int64_t(chunkPayload));
        }
        EXPECT_EQ(camera->Integer("ChunkWidth")->GetValue(), 320);
        EXPECT_EQ(camera->Integer("ChunkHeight")->GetValue(), 240);
        EXPECT_EQ(camera->Integer("ChunkOffsetX")->GetValue(), 64);
        EXPECT_EQ(camera->Enumeration("ChunkPixelFormat")->ToString(), "BayerGB12");
        EXPECT_EQ(uint64_t(camera->Integer("ChunkFrameID")->GetValue()),
                  BufferInfo<uint64_t>(data.BufferHandle, BUFFER_INFO_FRAMEID));
        EXPECT_EQ(uint64_t(camera->Integer("ChunkTimestamp")->GetValue()),
                  BufferInfo<uint64_t>(data.BufferHandle, BUFFER_INFO_TIMESTAMP_NS));
        adapter->DetachBuffer();
        ASSERT_EQ(m_gentl->DSQueueBuffer(m_stream, data.BufferHandle), GC_ERR_SUCCESS);
    }

    // Events: the SDK hands GEV packets and U3V messages to the transport's adapter, anything
    // else (and any consumer that prefers it) EVENT_DATA_VALUE with EVENT_DATA_ID to the
    // generic adapter. Each adapter feeds its own node map, as one consumer would.
    auto genericCamera = Load(m_remote);
    CEventAdapterGeneric generic(genericCamera->map._Ptr);
    std::unique_ptr<CEventAdapter> transportAdapter;
    if (tlType == "GEV")
        transportAdapter = std::make_unique<CEventAdapterGEV>(camera->map._Ptr);
    else if (tlType == "U3V")
        transportAdapter = std::make_unique<CEventAdapterU3V>(camera->map._Ptr);
    int callbacks = 0;
    CallbackHandleType callback =
        Register(genericCamera->Node("EventExposureEndFrameID"), [&](INode*) { ++callbacks; });
    for (int i = 0; i < 3; ++i)
    {
        uint8_t record[512];
        size_t size = sizeof(record);
        ASSERT_EQ(m_gentl->EventGetData(events, record, &size, 1000), GC_ERR_SUCCESS);
        const std::string id = QueryInfo([&](INFO_DATATYPE* t, void* d, size_t* s) {
                                   return m_gentl->EventGetDataInfo(events, record, size, EVENT_DATA_ID, t, d, s);
                               }).Text();
        InfoAnswer_t value = QueryInfo([&](INFO_DATATYPE* t, void* d, size_t* s) {
            return m_gentl->EventGetDataInfo(events, record, size, EVENT_DATA_VALUE, t, d, s);
        });
        const int before = callbacks;
        generic.DeliverMessage(value.bytes.data(), uint32_t(value.bytes.size()), GenICam::gcstring(id.c_str()));
        EXPECT_GT(callbacks, before) << "the callback of the event data fires";
        EXPECT_EQ(genericCamera->Integer("EventExposureEndFrameID")->GetValue(), i + 1);
        EXPECT_EQ(genericCamera->Integer("EventExposureEnd")->GetValue(), QvVirtualCamera::kEventIdExposureEnd);
        EXPECT_GT(genericCamera->Integer("EventExposureEndTimestamp")->GetValue(), 0);
        if (transportAdapter)
        {
            transportAdapter->DeliverMessage(record, uint32_t(size));
            EXPECT_EQ(camera->Integer("EventExposureEndFrameID")->GetValue(), i + 1);
            EXPECT_EQ(camera->Integer("EventExposureEndTimestamp")->GetValue(),
                      genericCamera->Integer("EventExposureEndTimestamp")->GetValue());
        }
    }
    Deregister(callback);
    ASSERT_EQ(m_gentl->DSStopAcquisition(m_stream, ACQ_STOP_FLAGS_DEFAULT), GC_ERR_SUCCESS);
}

INSTANTIATE_TEST_SUITE_P(Transports, ProducerNodeMapPerTransport, ::testing::Values("U3V", "GEV", "CXP"));

/// The SDK's device-loss detection: EventSelector DeviceLost, EventNotification On, a callback
/// on EventDeviceLost, and the module event delivered to the local device's node map.
TEST_F(ProducerNodeMap, DeviceLossFiresTheEventDeviceLostCallbackOfTheLocalDevice)
{
    OpenSystem("U3V:1");
    OpenCamera("U3V");
    auto device = Load(m_device);
    auto camera = Load(m_remote);
    CEnumerationPtr selector = device->Enumeration("EventSelector");
    ASSERT_TRUE(selector.IsValid());
    ASSERT_NE(selector->GetEntryByName("DeviceLost"), nullptr);
    selector->SetIntValue(selector->GetEntryByName("DeviceLost")->GetValue());
    CEnumerationPtr notification = device->Enumeration("EventNotification");
    notification->SetIntValue(notification->GetEntryByName("On")->GetValue());
    int lost = 0;
    CallbackHandleType callback = Register(device->Node("EventDeviceLost"), [&](INode*) { ++lost; });
    CEventAdapterGeneric adapter(device->map._Ptr);
    EVENT_HANDLE moduleEvent = nullptr;
    ASSERT_EQ(m_gentl->GCRegisterEvent(m_device, EVENT_MODULE, &moduleEvent), GC_ERR_SUCCESS);

    camera->Command("TestDeviceLost")->Execute();

    uint8_t record[256];
    size_t size = sizeof(record);
    ASSERT_EQ(m_gentl->EventGetData(moduleEvent, record, &size, 1000), GC_ERR_SUCCESS);
    const std::string id = QueryInfo([&](INFO_DATATYPE* t, void* d, size_t* s) {
                               return m_gentl->EventGetDataInfo(moduleEvent, record, size, EVENT_DATA_ID, t, d, s);
                           }).Text();
    InfoAnswer_t value = QueryInfo([&](INFO_DATATYPE* t, void* d, size_t* s) {
        return m_gentl->EventGetDataInfo(moduleEvent, record, size, EVENT_DATA_VALUE, t, d, s);
    });
    lost = 0; // attaching the adapter touched the event port; count from here
    adapter.DeliverMessage(value.bytes.data(), uint32_t(value.bytes.size()), GenICam::gcstring(id.c_str()));
    EXPECT_GE(lost, 1);
    EXPECT_EQ(device->Integer("EventDeviceLost")->GetValue(), QvVirtualCamera::kEventIdDeviceLost);
    EXPECT_GT(device->Integer("EventDeviceLostTimestamp")->GetValue(), 0);
    // The camera no longer answers through its node map either.
    EXPECT_THROW(camera->Integer("Width")->GetValue(false, true), GenICam::GenericException);
    Deregister(callback);
}

} // namespace
