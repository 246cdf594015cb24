// The data stream and its buffers against the fault-injection producer: the failure templates of
// every GenTL call of the acquisition path, the payload-size fall-back, listener failures,
// buffer counts, delivery order and rates, chunk fall-backs of the image geometry, the CoaXPress
// pixel formats and the teardown order.
#include "QvApi_TL/QvDataStream.h"

#include <dlfcn.h>

#include <cstring>
#include <mutex>
#include <regex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <GenApi/GenApi.h>

#include "QvApi_TL/QvStreamBufferImage.h"
#include "tests/QvApi_TL/Acquisition/AcquisitionTestSupport.h"
#include "tests/QvApi_TL/Modules/ModuleRecorders.h"
#include "tests/QvApi_TL/Modules/ModuleTestSupport.h"

using namespace QvApi;
using QvModuleTest::Catch;
using QvModuleTest::Eventually;

namespace
{
bool Matches(const std::string& text, const char* pattern)
{
    return std::regex_match(text, std::regex(pattern));
}

// A camera with the fault producer's registers, chunk mode and two chunk features (U3V layout).
std::string ChunkCameraDescription()
{
    auto intReg = [](const char* name, const char* address, const char* access, const char* port) {
        return std::string("  <IntReg Name=\"") + name + "\"><Address>" + address + "</Address><Length>4</Length>" +
               "<AccessMode>" + access + "</AccessMode><pPort>" + port +
               "</pPort><Cachable>NoCache</Cachable><Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>\n";
    };
    return std::string("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                       "<RegisterDescription ModelName=\"QvFaultChunkCamera\" VendorName=\"QvApi\" "
                       "StandardNameSpace=\"None\" SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\" "
                       "SchemaSubMinorVersion=\"0\" MajorVersion=\"1\" MinorVersion=\"0\" SubMinorVersion=\"0\" "
                       "ProductGuid=\"2C0E1B7A-6F3D-4E52-9A1B-5D7C3E9F0A20\" "
                       "VersionGuid=\"8B4D2F61-0C7A-4E3B-B5D9-1E6A7C2F3D45\" "
                       "xmlns=\"http://www.genicam.org/GenApi/Version_1_1\">\n"
                       "  <Category Name=\"Root\"><pFeature>Width</pFeature><pFeature>ChunkModeActive</pFeature>"
                       "<pFeature>ChunkData</pFeature></Category>\n") +
           intReg("Width", "0x0", "RW", "Device") + intReg("Height", "0x4", "RW", "Device") +
           intReg("PayloadSize", "0xC", "RO", "Device") + intReg("TLParamsLocked", "0x10", "RW", "Device") +
           "  <Boolean Name=\"ChunkModeActive\"><pValue>ChunkModeActiveReg</pValue></Boolean>\n" +
           intReg("ChunkModeActiveReg", "0x40", "RW", "Device") +
           "  <Category Name=\"ChunkData\"><pFeature>ChunkWidth</pFeature><pFeature>ChunkPixelFormat</pFeature>"
           "</Category>\n"
           "  <Port Name=\"ChunkWidthPort\"><ChunkID>00000004</ChunkID></Port>\n"
           "  <Port Name=\"ChunkPixelFormatPort\"><ChunkID>00000008</ChunkID></Port>\n" +
           intReg("ChunkWidth", "0x0", "RO", "ChunkWidthPort") +
           "  <Enumeration Name=\"ChunkPixelFormat\"><EnumEntry Name=\"Mono8\"><Value>0x01080001</Value></EnumEntry>"
           "<EnumEntry Name=\"Mono16\"><Value>0x01100007</Value></EnumEntry>"
           "<pValue>ChunkPixelFormatReg</pValue></Enumeration>\n" +
           intReg("ChunkPixelFormatReg", "0x0", "RO", "ChunkPixelFormatPort") +
           "  <Port Name=\"Device\"/>\n</RegisterDescription>\n";
}

void StoreLE32(uint8_t* p, uint32_t value)
{
    std::memcpy(p, &value, 4);
}

class DataStream : public QvModuleTest::CFaultModuleTest
{
protected:
    IQvDataStreamReleasable* Open(IQvAllocator* pAllocator = nullptr)
    {
        m_stream.Reset();
        m_device.Reset();
        m_system.Reset(); // one open system per producer
        m_system.Reset(CreateIQvSystem());
        m_device.Reset(m_system->GetIQvInterface(0)->CreateIQvDevice(0, GenTL::DEVICE_ACCESS_CONTROL));
        m_stream.Reset(m_device->CreateIQvDataStream(0, pAllocator));
        return m_stream.Get();
    }
    void TearDown() override
    {
        for (int f = 0; f < QV_FAULT_FUNCTION_COUNT; ++f)
            m_pControl->ClearRule(static_cast<QvFaultFunction>(f));
        m_stream.Reset();
        m_device.Reset();
        m_system.Reset();
        QvModuleTest::CFaultModuleTest::TearDown();
    }
    /// Overrides a buffer information answer with \a size bytes of \a value.
    template <typename T>
    void SetBufferInfo(int32_t command, int32_t type, T value)
    {
        ASSERT_EQ(m_pControl->SetModuleInfo(QV_FAULT_MODULE_BUFFER, command, type, &value, sizeof(value)), 0);
    }
    /// Makes a buffer information command fail: its answer no longer fits the caller's buffer.
    void BreakBufferInfo(int32_t command)
    {
        const uint8_t oversized[16] = {};
        ASSERT_EQ(m_pControl->SetModuleInfo(QV_FAULT_MODULE_BUFFER, command, GenTL::INFO_DATATYPE_BUFFER, oversized,
                                            sizeof(oversized)),
                  0);
    }
    uint32_t Calls(QvFaultFunction function) { return m_pControl->GetCallCount(function); }
    void* StreamHandle() { return m_pControl->GetModuleHandle(QV_FAULT_MODULE_STREAM); }

    QvAcquisitionTest::CCountingAllocator m_allocator; // outlives the stream
    CIQvSystemPtr m_system;
    CIQvDevicePtr m_device;
    CIQvDataStreamPtr m_stream;
};
} // namespace

TEST_F(DataStream, DeliversFilledBuffersOldestFirstAndReleaseQueuesThemAgain)
{
    IQvDataStreamReleasable* pStream = Open();
    EXPECT_STREQ(pStream->GetIQvPort()->GetINodeMap()->GetDeviceName().c_str(), "DataStream_0_QvFaultDevice0");
    EXPECT_EQ(pStream->GetIQvDevice(), m_device.Get());
    pStream->SetStreamBufferCount(4);
    pStream->StartAcquisition();
    EXPECT_EQ(pStream->GetIQvDataStreamInfo()->GetNumAnnounced(), 4u);
    EXPECT_EQ(pStream->GetIQvDataStreamInfo()->GetNumQueued(), 4u);
    ASSERT_EQ(m_pControl->DeliverBuffers(3), 3);
    std::vector<IQvStreamBufferReleasable*> held;
    for (uint64_t expected = 0; expected < 3; ++expected) // this producer counts frames from 0
    {
        IQvStreamBufferReleasable* pBuffer = pStream->RetrieveBuffer(2000, QvTimeoutHandling_Throw);
        ASSERT_NE(pBuffer, nullptr);
        IQvStreamBufferInfo* pInfo = pBuffer->GetIQvStreamBufferInfo();
        EXPECT_EQ(pInfo->GetFrameID(), expected);
        EXPECT_FALSE(pInfo->IsQueued());
        // The producer's fill pattern: byte i = frame ID + i.
        const uint8_t* pBytes = static_cast<const uint8_t*>(pBuffer->GetIQvImage()->GetImageBuffer());
        EXPECT_EQ(pBytes[0], static_cast<uint8_t>(expected));
        EXPECT_EQ(pBytes[100], static_cast<uint8_t>(expected + 100));
        EXPECT_EQ(pBuffer->GetIQvDataStream(), pStream);
        EXPECT_EQ(pBuffer->GetChunkINodeMap(), nullptr);
        held.push_back(pBuffer);
    }
    EXPECT_EQ(pStream->RetrieveBuffer(20), nullptr);
    for (IQvStreamBufferReleasable* pBuffer : held)
    {
        pBuffer->Release();
        EXPECT_TRUE(pBuffer->GetIQvStreamBufferInfo()->IsQueued());
    }
    EXPECT_EQ(pStream->GetIQvDataStreamInfo()->GetNumQueued(), 4u);
    CQvDataStream* pImpl = dynamic_cast<CQvDataStream*>(pStream);
    ASSERT_NE(pImpl, nullptr);
    EXPECT_EQ(pImpl->GetDeliveredCount(), 3u);
    EXPECT_GT(pStream->GetCurrentFPS(), 0.0);
}

TEST_F(DataStream, CallbacksGetTheStreamAndMayRetrieveOnTheListenerThread)
{
    struct CRetrieve : IQvCallback
    {
        void Invoke(IQvCallbackParamBase* param) override
        {
            type = param->GetCallbackType();
            auto* pParam = dynamic_cast<IQvCallbackParamGenTLEventNewBuffer*>(param);
            pStream = pParam != nullptr ? pParam->GetIQvDataStream() : nullptr;
            if (IQvStreamBufferReleasable* pBuffer = pStream != nullptr ? pStream->RetrieveBuffer(0) : nullptr)
            {
                ids.push_back(pBuffer->GetIQvStreamBufferInfo()->GetFrameID());
                pBuffer->Release();
            }
        }
        void Release() override {}
        EQvCallbackType_t type = QvCallbackTypeGenTLEventErrorTL;
        IQvDataStream* pStream = nullptr;
        std::vector<uint64_t> ids;
    } callback;
    IQvDataStreamReleasable* pStream = Open();
    void* hCallback = pStream->RegisterCallback(&callback);
    pStream->StartAcquisition();
    ASSERT_EQ(m_pControl->DeliverBuffers(5), 5);
    ASSERT_TRUE(Eventually([&] { return dynamic_cast<CQvDataStream*>(pStream)->GetDeliveredCount() == 5; }));
    pStream->StopAcquisition(); // joins the listener: every callback has run
    EXPECT_EQ(callback.type, QvCallbackTypeGenTLEventNewBuffer);
    EXPECT_EQ(callback.pStream, pStream);
    EXPECT_EQ(callback.ids, (std::vector<uint64_t>{0, 1, 2, 3, 4}));
    pStream->DeregisterCallback(hCallback);
}

TEST_F(DataStream, StartFailuresNameTheirCallAndLeaveNothingBehind)
{
    struct SCase_
    {
        QvFaultFunction function;
        const char* name;
        const char* pattern;
    };
    const SCase_ cases[] = {
        {QV_FAULT_DSStartAcquisition, "DSStartAcquisition", "-1007 = DSStartAcquisition\\(0x0x[0-9a-f]+, 0, +-1\\).*"},
        {QV_FAULT_DSQueueBuffer, "DSQueueBuffer", "-1007 = DSQueueBuffer\\(0x0x[0-9a-f]+, 0x0x[0-9a-f]+\\).*"},
        {QV_FAULT_DSAllocAndAnnounceBuffer, "DSAllocAndAnnounceBuffer",
         "-1007 = DSAllocAndAnnounceBuffer\\(0x0x[0-9a-f]+, 3072, 0x0x[0-9a-f]+, 0x0x[0-9a-f]+\\).*"},
    };
    for (const SCase_& c : cases)
    {
        IQvDataStreamReleasable* pStream = Open();
        Fail(c.function, GenTL::GC_ERR_INVALID_ID);
        const auto caught = Catch<CQvGenTLErrorException>([&] { pStream->StartAcquisition(); });
        m_pControl->ClearRule(c.function);
        ASSERT_TRUE(caught.thrown) << c.name;
        EXPECT_EQ(caught.function, c.name);
        EXPECT_EQ(caught.code, GenTL::GC_ERR_INVALID_ID);
        EXPECT_TRUE(Matches(caught.description, c.pattern)) << caught.description;
        EXPECT_EQ(pStream->GetIQvDataStreamInfo()->GetNumAnnounced(), 0u) << c.name;
        EXPECT_EQ(dynamic_cast<CQvDataStream*>(pStream)->GetNewBufferEvent(), nullptr);
        EXPECT_EQ(pStream->RetrieveBuffer(1000, QvTimeoutHandling_Throw), nullptr); // still stopped
        // A later start works.
        pStream->StartAcquisition();
        EXPECT_EQ(pStream->GetIQvDataStreamInfo()->GetNumAnnounced(), 6u);
        m_stream.Reset();
    }
}

TEST_F(DataStream, UserMemoryIsAnnouncedAndGivenBackWhenAnnouncingFails)
{
    QvAcquisitionTest::CCountingAllocator& allocator = m_allocator;
    IQvDataStreamReleasable* pStream = Open(&allocator);
    QvFaultRule rule = QvTest::FailWith(GenTL::GC_ERR_INVALID_PARAMETER);
    rule.skipCalls = 2;
    m_pControl->SetRule(QV_FAULT_DSAnnounceBuffer, &rule);
    const auto caught = Catch<CQvGenTLErrorException>([&] { pStream->StartAcquisition(); });
    m_pControl->ClearRule(QV_FAULT_DSAnnounceBuffer);
    EXPECT_EQ(caught.function, "DSAnnounceBuffer");
    EXPECT_TRUE(Matches(caught.description,
                        "-1009 = DSAnnounceBuffer\\(0x0x[0-9a-f]+, 0x0x[0-9a-f]+, 3072, 0x0x[0-9a-f]+, 0x0x[0-9a-f]+\\).*"))
        << caught.description;
    EXPECT_EQ(allocator.m_allocated, 3);
    EXPECT_EQ(allocator.m_deallocated, 3); // the failed block and the two revoked ones
    EXPECT_EQ(allocator.m_badContexts, 0);
    pStream->StartAcquisition();
    ASSERT_EQ(m_pControl->DeliverBuffers(1), 1);
    IQvStreamBufferReleasable* pBuffer = pStream->RetrieveBuffer(2000, QvTimeoutHandling_Throw);
    ASSERT_NE(pBuffer, nullptr);
    EXPECT_EQ(pBuffer->GetIQvImage()->GetUserContext(),
              reinterpret_cast<void*>(reinterpret_cast<uintptr_t>(pBuffer->GetIQvStreamBufferInfo()->GetBaseAddress()) ^
                                      QvAcquisitionTest::CCountingAllocator::kContextKey));
    pBuffer->Release();
    m_stream.Reset();
    EXPECT_EQ(allocator.m_deallocated, allocator.m_allocated);
    EXPECT_EQ(allocator.m_deregistered.load(), 1);
}

TEST_F(DataStream, FlushRevokeAndStopFailuresUseTheirTemplates)
{
    IQvDataStreamReleasable* pStream = Open();
    pStream->StartAcquisition();
    pStream->StopAcquisition();
    pStream->SetStreamBufferCount(2); // fewer buffers: the next start reallocates

    Fail(QV_FAULT_DSFlushQueue, GenTL::GC_ERR_ERROR);
    auto caught = Catch<CQvGenTLErrorException>([&] { pStream->StartAcquisition(); });
    m_pControl->ClearRule(QV_FAULT_DSFlushQueue);
    EXPECT_EQ(caught.function, "DSFlushQueue");
    EXPECT_TRUE(Matches(caught.description, "-1001 = DSFlushQueue\\(0x0x[0-9a-f]+, 4\\).*")) << caught.description;

    Fail(QV_FAULT_DSRevokeBuffer, GenTL::GC_ERR_RESOURCE_IN_USE);
    caught = Catch<CQvGenTLErrorException>([&] { pStream->StartAcquisition(); });
    m_pControl->ClearRule(QV_FAULT_DSRevokeBuffer);
    EXPECT_EQ(caught.function, "DSRevokeBuffer");
    EXPECT_TRUE(Matches(caught.description,
                        "-1004 = DSRevokeBuffer\\(0x0x[0-9a-f]+, 0x0x[0-9a-f]+, 0x0x[0-9a-f]+, 0x0x[0-9a-f]+\\).*"))
        << caught.description;
    pStream->StartAcquisition();
    EXPECT_EQ(pStream->GetIQvDataStreamInfo()->GetNumAnnounced(), 2u);

    // A failed stop still ends the listener and wakes the waiters; the producer's answer is reported.
    Fail(QV_FAULT_DSStopAcquisition, GenTL::GC_ERR_ERROR);
    caught = Catch<CQvGenTLErrorException>([&] { pStream->StopAcquisition(); });
    m_pControl->ClearRule(QV_FAULT_DSStopAcquisition);
    EXPECT_EQ(caught.function, "DSStopAcquisition");
    EXPECT_TRUE(Matches(caught.description, "-1001 = DSStopAcquisition\\(0x0x[0-9a-f]+, 0\\).*")) << caught.description;
    EXPECT_EQ(dynamic_cast<CQvDataStream*>(pStream)->GetNewBufferEvent(), nullptr);
    EXPECT_EQ(pStream->RetrieveBuffer(1000, QvTimeoutHandling_Throw), nullptr);
}

TEST_F(DataStream, ReleaseStopsFlushesRevokesAndClosesInThatOrder)
{
    IQvDataStreamReleasable* pStream = Open();
    pStream->StartAcquisition();
    const uint32_t stops = Calls(QV_FAULT_DSStopAcquisition);
    const uint32_t revokes = Calls(QV_FAULT_DSRevokeBuffer);
    const uint32_t closes = Calls(QV_FAULT_DSClose);
    m_stream.Reset();
    EXPECT_EQ(Calls(QV_FAULT_DSStopAcquisition), stops + 1);
    EXPECT_EQ(Calls(QV_FAULT_DSRevokeBuffer), revokes + 6);
    EXPECT_EQ(Calls(QV_FAULT_DSClose), closes + 1);
    EXPECT_EQ(m_pControl->GetModuleHandle(QV_FAULT_MODULE_STREAM), nullptr);
    // A failing DSClose is not reported.
    pStream = Open();
    Fail(QV_FAULT_DSClose, GenTL::GC_ERR_ERROR);
    m_stream.Reset();
}

TEST_F(DataStream, BufferCountIsCheckedAgainstTheProducersMinimumAnd65535)
{
    IQvDataStreamReleasable* pStream = Open();
    const size_t minimum = 4;
    ASSERT_EQ(m_pControl->SetModuleInfo(QV_FAULT_MODULE_STREAM, GenTL::STREAM_INFO_BUF_ANNOUNCE_MIN,
                                        GenTL::INFO_DATATYPE_SIZET, &minimum, sizeof(minimum)),
              0);
    auto caught = Catch<GenICam::OutOfRangeException>([&] { pStream->SetStreamBufferCount(3); });
    EXPECT_EQ(caught.description, "nCount = 3 must be equal or greater than Min = 4");
    caught = Catch<GenICam::OutOfRangeException>([&] { pStream->SetStreamBufferCount(65536); });
    EXPECT_EQ(caught.description, "nCount = 65536 must be equal or smaller than Max = 65535");
    EXPECT_EQ(pStream->GetStreamBufferCount(), 6u);
    pStream->SetStreamBufferCount(4);
    EXPECT_EQ(pStream->GetStreamBufferCount(), 4u);
    Fail(QV_FAULT_DSGetInfo, GenTL::GC_ERR_ERROR);
    const auto failed = Catch<CQvGenTLErrorException>([&] { pStream->SetStreamBufferCount(5); });
    EXPECT_EQ(failed.function, "DSGetInfo");
    EXPECT_TRUE(Matches(failed.description, "-1001 = DSGetInfo\\(0x0x[0-9a-f]+, 12, 0x0x[0-9a-f]+, 0x0x[0-9a-f]+, 0x0x[0-9a-f]+\\).*"))
        << failed.description;
}

TEST_F(DataStream, PayloadSizeFallsBackToTheCamerasFeatureWhenTheProducerDoesNotKnow)
{
    IQvDataStreamReleasable* pStream = Open();
    IQvDataStreamInfo* pInfo = pStream->GetIQvDataStreamInfo();
    EXPECT_EQ(pInfo->GetPayloadSize(), 3072u); // 64 x 48 Mono8
    // The producer answers "not implemented": the camera's PayloadSize register is read instead.
    Fail(QV_FAULT_DSGetInfo, GenTL::GC_ERR_NOT_IMPLEMENTED);
    const uint32_t cameraReads = Calls(QV_FAULT_GCReadPort);
    EXPECT_EQ(pInfo->GetPayloadSize(), 3072u);
    EXPECT_GT(Calls(QV_FAULT_GCReadPort), cameraReads);
    Fail(QV_FAULT_DSGetInfo, GenTL::GC_ERR_ERROR);
    const auto caught = Catch<CQvGenTLErrorException>([&] { pInfo->GetPayloadSize(); });
    EXPECT_TRUE(Matches(caught.description, "-1001 = DSGetInfo\\(0x0x[0-9a-f]+, 7, 0x0x[0-9a-f]+, 0x0x[0-9a-f]+, 0x0x[0-9a-f]+\\).*"))
        << caught.description;
}

TEST_F(DataStream, AListenerFailureIsReportedOnceByRetrieveBuffer)
{
    IQvDataStreamReleasable* pStream = Open();
    QvFaultRule rule = QvTest::FailWith(GenTL::GC_ERR_IO);
    rule.module = QV_FAULT_MODULE_STREAM;
    rule.fireCalls = 1;
    m_pControl->SetRule(QV_FAULT_EventGetData, &rule);
    pStream->StartAcquisition();
    const auto caught = Catch<CQvGenTLErrorException>([&] { pStream->RetrieveBuffer(3000, QvTimeoutHandling_Throw); });
    ASSERT_TRUE(caught.thrown);
    EXPECT_EQ(caught.function, "EventGetData");
    EXPECT_EQ(caught.code, GenTL::GC_ERR_IO);
    // Sizes print through "%I64u", which glibc reads as a flag and a field width of 64.
    EXPECT_TRUE(Matches(caught.description, "-1010 = EventGetData\\(0x0x[0-9a-f]+ 0x(0x[0-9a-f]+|\\(nil\\)), +16, +500\\).*"))
        << caught.description;
    EXPECT_EQ(caught.sourceFile, "QvApi_TL/QvDataStream.cpp");
    // Reported once; the listener goes on and delivers.
    EXPECT_EQ(pStream->RetrieveBuffer(50), nullptr);
    ASSERT_EQ(m_pControl->DeliverBuffers(1), 1);
    IQvStreamBufferReleasable* pBuffer = pStream->RetrieveBuffer(2000, QvTimeoutHandling_Throw);
    ASSERT_NE(pBuffer, nullptr);
    pBuffer->Release();
}

TEST_F(DataStream, ALostDeviceRefusesToStart)
{
    QvFaultRule rule = QvTest::FailWith(GenTL::GC_ERR_IO);
    rule.module = QV_FAULT_MODULE_REMOTE_DEVICE;
    rule.skipCalls = 1; // the description is read, the device's probe fails
    m_pControl->SetRule(QV_FAULT_GCReadPort, &rule);
    IQvDataStreamReleasable* pStream = Open();
    m_pControl->ClearRule(QV_FAULT_GCReadPort);
    ASSERT_TRUE(m_device->IsDeviceLost());
    const auto caught = Catch<GenICam::AccessException>([&] { pStream->StartAcquisition(); });
    EXPECT_EQ(caught.description, "The device is lost.");
    EXPECT_EQ(Calls(QV_FAULT_DSStartAcquisition), 0u);
}

TEST_F(DataStream, GeometryFallsBackToChunkFeaturesThenToZero)
{
    ASSERT_EQ(m_pControl->SetPortDescription(QV_FAULT_MODULE_REMOTE_DEVICE, ChunkCameraDescription().data(),
                                             ChunkCameraDescription().size()),
              0);
    IQvDataStreamReleasable* pStream = Open(&m_allocator);
    GenApi::CBooleanPtr(m_device->GetRemoteIQvPort()->GetINodeMap()->GetNode("ChunkModeActive"))->SetValue(true);
    BreakBufferInfo(GenTL::BUFFER_INFO_WIDTH);
    BreakBufferInfo(GenTL::BUFFER_INFO_PIXELFORMAT);
    SetBufferInfo<uint8_t>(GenTL::BUFFER_INFO_CONTAINS_CHUNKDATA, GenTL::INFO_DATATYPE_BOOL8, 1);
    SetBufferInfo<size_t>(GenTL::BUFFER_INFO_DELIVERED_CHUNKPAYLOADSIZE, GenTL::INFO_DATATYPE_SIZET, 24);
    pStream->SetStreamBufferCount(2);
    pStream->StartAcquisition();
    ASSERT_EQ(m_pControl->DeliverBuffers(1), 1);
    ASSERT_TRUE(Eventually([&] { return dynamic_cast<CQvDataStream*>(pStream)->GetDeliveredCount() == 1; }));
    // The chunk payload (U3V trailers) at the start of the buffer: width 1234 (chunk 4), pixel
    // format Mono16 (chunk 8). Written into both announced blocks before the filled one is
    // retrieved, which attaches it.
    uint8_t chunks[24];
    StoreLE32(&chunks[0], 1234);
    StoreLE32(&chunks[4], 4);
    StoreLE32(&chunks[8], 4);
    StoreLE32(&chunks[12], QvPFNC_Mono16);
    StoreLE32(&chunks[16], 8);
    StoreLE32(&chunks[20], 4);
    void* hProducer = dlopen(QvTest::ProducerPath("libqvfault.cti").c_str(), RTLD_LAZY | RTLD_NOLOAD);
    ASSERT_NE(hProducer, nullptr);
    auto pDSGetBufferInfo = reinterpret_cast<GenTL::PDSGetBufferInfo>(dlsym(hProducer, "DSGetBufferInfo"));
    dlclose(hProducer);
    ASSERT_NE(pDSGetBufferInfo, nullptr);
    for (uint32_t index = 0; index < 2; ++index)
    {
        void* pBase = nullptr;
        size_t size = sizeof(pBase);
        GenTL::INFO_DATATYPE type = GenTL::INFO_DATATYPE_UNKNOWN;
        ASSERT_EQ(pDSGetBufferInfo(StreamHandle(), m_pControl->GetBufferHandle(index), GenTL::BUFFER_INFO_BASE, &type,
                                   &pBase, &size),
                  0);
        std::memcpy(pBase, chunks, sizeof(chunks));
    }
    IQvStreamBufferReleasable* pBuffer = pStream->RetrieveBuffer(2000, QvTimeoutHandling_Throw);
    ASSERT_NE(pBuffer, nullptr);
    ASSERT_NE(pBuffer->GetChunkINodeMap(), nullptr);
    EXPECT_EQ(GenApi::CIntegerPtr(pBuffer->GetChunkINodeMap()->GetNode("ChunkWidth"))->GetValue(), 1234);
    EXPECT_EQ(pBuffer->GetIQvImage()->GetImageWidth(), 1234u);
    EXPECT_EQ(pBuffer->GetIQvImage()->GetImagePixelFormat(), QvPFNC_Mono16);
    EXPECT_EQ(pBuffer->GetIQvImage()->GetImageHeight(), 48u);
    pBuffer->Release();

    // Without chunk data the width is unknown: 0.
    SetBufferInfo<uint8_t>(GenTL::BUFFER_INFO_CONTAINS_CHUNKDATA, GenTL::INFO_DATATYPE_BOOL8, 0);
    ASSERT_EQ(m_pControl->DeliverBuffers(1), 1);
    pBuffer = pStream->RetrieveBuffer(2000, QvTimeoutHandling_Throw);
    ASSERT_NE(pBuffer, nullptr);
    EXPECT_EQ(pBuffer->GetIQvImage()->GetImageWidth(), 0u);
    pBuffer->Release();
    m_stream.Reset();
}

// Pixel access asks the producer for the geometry once per fill, not at every pixel; a new fill
// of the same buffer is read with its own geometry.
TEST_F(DataStream, PixelAccessAsksForTheGeometryOncePerFill)
{
    IQvDataStreamReleasable* pStream = Open();
    SetBufferInfo<uint64_t>(GenTL::BUFFER_INFO_PIXELFORMAT_NAMESPACE, GenTL::INFO_DATATYPE_UINT64,
                            GenTL::PIXELFORMAT_NAMESPACE_PFNC_32BIT);
    SetBufferInfo<uint64_t>(GenTL::BUFFER_INFO_PIXELFORMAT, GenTL::INFO_DATATYPE_UINT64, QvPFNC_Mono8);
    SetBufferInfo<size_t>(GenTL::BUFFER_INFO_WIDTH, GenTL::INFO_DATATYPE_SIZET, 16);
    SetBufferInfo<size_t>(GenTL::BUFFER_INFO_HEIGHT, GenTL::INFO_DATATYPE_SIZET, 8);
    pStream->SetStreamBufferCount(1); // every fill is the same buffer
    pStream->StartAcquisition();

    ASSERT_EQ(m_pControl->DeliverBuffers(1), 1);
    IQvStreamBufferReleasable* pBuffer = pStream->RetrieveBuffer(2000, QvTimeoutHandling_Throw);
    ASSERT_NE(pBuffer, nullptr);
    IQvImage* pImage = pBuffer->GetIQvImage();
    uint8_t* pPixels = static_cast<uint8_t*>(pImage->GetImageBuffer());
    for (int i = 0; i < 16 * 8; ++i)
        pPixels[i] = static_cast<uint8_t>(i);
    EXPECT_EQ(pImage->GetIQvPixelComponentValue(0, 0)->GetValue(0), 0u);
    const uint32_t before = Calls(QV_FAULT_DSGetBufferInfo);
    uint64_t sum = 0;
    for (size_t y = 0; y < 8; ++y)
        for (size_t x = 0; x < 16; ++x)
            sum += pImage->GetIQvPixelComponentValue(x, y)->GetValue(0);
    EXPECT_EQ(sum, 127u * 128u / 2);
    IQvImage* pROI = pImage->GetROIImage(4, 2, 8, 4);
    EXPECT_EQ(pROI->GetIQvPixelComponentValue(1, 1)->GetValue(0), 3u * 16 + 5);
    EXPECT_EQ(Calls(QV_FAULT_DSGetBufferInfo), before) << "answered from the first pixel's questions";
    EXPECT_THROW(pImage->GetIQvPixelComponentValue(16, 0), GenICam::GenericException);
    pBuffer->Release();

    // The next fill is Mono16, 8 pixels wide: both the image and its ROI view read it so.
    SetBufferInfo<uint64_t>(GenTL::BUFFER_INFO_PIXELFORMAT, GenTL::INFO_DATATYPE_UINT64, QvPFNC_Mono16);
    SetBufferInfo<size_t>(GenTL::BUFFER_INFO_WIDTH, GenTL::INFO_DATATYPE_SIZET, 8);
    ASSERT_EQ(m_pControl->DeliverBuffers(1), 1);
    pBuffer = pStream->RetrieveBuffer(2000, QvTimeoutHandling_Throw);
    ASSERT_NE(pBuffer, nullptr);
    ASSERT_EQ(pBuffer->GetIQvImage(), pImage);
    for (int i = 0; i < 16 * 8; ++i)
        pPixels[i] = static_cast<uint8_t>(i);
    EXPECT_EQ(pImage->GetIQvPixelComponentValue(1, 0)->GetValue(0), 0x0302u); // little-endian bytes 2, 3
    EXPECT_EQ(pROI->GetIQvPixelComponentValue(1, 1)->GetValue(0), 0x3b3au) << "(5, 3): bytes 3 * 16 + 10";
    EXPECT_THROW(pImage->GetIQvPixelComponentValue(8, 0), GenICam::GenericException);
    pBuffer->Release();
    m_stream.Reset();
}

TEST_F(DataStream, CoaXPressPixelFormatsAreMappedOnACoaXPressInterfaceOnly)
{
    const char* cxp = "CXP";
    ASSERT_EQ(m_pControl->SetModuleInfo(QV_FAULT_MODULE_INTERFACE, GenTL::INTERFACE_INFO_TLTYPE,
                                        GenTL::INFO_DATATYPE_STRING, cxp, 4),
              0);
    IQvDataStreamReleasable* pStream = Open();
    SetBufferInfo<uint64_t>(GenTL::BUFFER_INFO_PIXELFORMAT_NAMESPACE, GenTL::INFO_DATATYPE_UINT64,
                            GenTL::PIXELFORMAT_NAMESPACE_CUSTOM_ID);
    SetBufferInfo<uint64_t>(GenTL::BUFFER_INFO_PIXELFORMAT, GenTL::INFO_DATATYPE_UINT64, 0x0325); // Bayer RG, 16 bit
    pStream->StartAcquisition();
    ASSERT_EQ(m_pControl->DeliverBuffers(1), 1);
    IQvStreamBufferReleasable* pBuffer = pStream->RetrieveBuffer(2000, QvTimeoutHandling_Throw);
    ASSERT_NE(pBuffer, nullptr);
    EXPECT_EQ(pBuffer->GetIQvImage()->GetImagePixelFormat(), QvPFNC_BayerRG16);
    SetBufferInfo<uint64_t>(GenTL::BUFFER_INFO_PIXELFORMAT, GenTL::INFO_DATATYPE_UINT64, 0x0314); // no 14-bit Bayer
    EXPECT_EQ(pBuffer->GetIQvImage()->GetImagePixelFormat(), QvPFNC_Invalid);
    // The PFNC namespace is taken as it is.
    SetBufferInfo<uint64_t>(GenTL::BUFFER_INFO_PIXELFORMAT_NAMESPACE, GenTL::INFO_DATATYPE_UINT64,
                            GenTL::PIXELFORMAT_NAMESPACE_PFNC_32BIT);
    SetBufferInfo<uint64_t>(GenTL::BUFFER_INFO_PIXELFORMAT, GenTL::INFO_DATATYPE_UINT64, QvPFNC_Mono12);
    EXPECT_EQ(pBuffer->GetIQvImage()->GetImagePixelFormat(), QvPFNC_Mono12);
    pBuffer->Release();
}

TEST(CoaXPressPixelFormat, MapsEachClassVariantAndSize)
{
    struct SRow_
    {
        uint64_t cxp;
        uint32_t pfnc;
    };
    const SRow_ rows[] = {
        {0x101, QvPFNC_Mono8},      {0x102, QvPFNC_Mono10},          {0x103, QvPFNC_Mono12},
        {0x104, QvPFNC_Mono14},     {0x105, QvPFNC_Mono16},          {0x1F1, QvPFNC_Mono8}, // any variant
        {0x311, QvPFNC_BayerGR8},   {0x312, QvPFNC_BayerGR10},       {0x313, QvPFNC_BayerGR12},
        {0x314, QvPFNC_Invalid},    {0x315, QvPFNC_BayerGR16},       {0x321, QvPFNC_BayerRG8},
        {0x325, QvPFNC_BayerRG16},  {0x331, QvPFNC_BayerGB8},        {0x333, QvPFNC_BayerGB12},
        {0x341, QvPFNC_BayerBG8},   {0x345, QvPFNC_BayerBG16},       {0x351, QvPFNC_Invalid},
        {0x301, QvPFNC_Invalid},    {0x401, QvPFNC_RGB8},            {0x402, QvPFNC_Invalid},
        {0x411, QvPFNC_Invalid},    {0x501, QvPFNC_RGBa8},           {0x721, QvPFNC_YCbCr601_422_8},
        {0x821, QvPFNC_YCbCr709_422_8}, {0x711, QvPFNC_Invalid},     {0x100, QvPFNC_Invalid},
        {0x106, QvPFNC_Invalid},    {0x201, QvPFNC_Invalid},         {0x10101, QvPFNC_Mono8},
    };
    for (const SRow_& row : rows)
        EXPECT_EQ(static_cast<uint32_t>(CQvStreamBufferImage::MapCoaXPressPixelFormat(row.cxp)), row.pfnc)
            << std::hex << row.cxp;
}
