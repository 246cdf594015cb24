// Acquisition on the SDK's own producer (libqvgentl.cti, loaded with dlopen) for each transport:
// polling and callbacks, image content and chunk data per buffer, buffer counts, restarts,
// time-outs, a stop that wakes a blocked caller, device loss, three cameras at once and an
// application allocator.
#include <algorithm>
#include <atomic>
#include <map>
#include <chrono>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <GenApi/GenApi.h>
#include <QvApi_TL.h>
#include <QvGenTL/VirtualCamera.h>

#include "ScopedEnvironment.h"
#include "tests/QvApi_TL/Acquisition/AcquisitionTestSupport.h"

using namespace QvApi;
using namespace QvAcquisitionTest;

namespace
{
constexpr const char* kVirtualCameras = "U3V:1@320x240,GEV:1@320x240,CXP:1@320x240";
constexpr double kSustainableRateHz = 1000.0;
constexpr uint32_t kRetrieveTimeoutMs = 3000;

uint32_t MaskOf(const std::string& tlType)
{
    return tlType == "U3V" ? QvInterfaceType_USB3Vision
                           : tlType == "GEV" ? QvInterfaceType_GigEVision : QvInterfaceType_CoaXPress;
}

class Acquisition : public ::testing::TestWithParam<std::string>
{
protected:
    void SetUp() override
    {
        m_pSession = std::make_unique<CCameraSession>(MaskOf(GetParam()));
        ASSERT_EQ(m_pSession->GetDeviceCount(), 1u);
        m_pDevice = m_pSession->Device(0);
        m_stream.Reset(m_pDevice->CreateIQvDataStream(0, nullptr));
    }
    void TearDown() override
    {
        m_stream.Reset();
        m_pSession.reset();
    }
    void StartBoth()
    {
        m_stream->StartAcquisition();
        m_pDevice->AcquisitionStart();
    }
    void StopBoth()
    {
        m_pDevice->AcquisitionStop();
        m_stream->StopAcquisition();
    }

    QvTest::CScopedEnvironment m_cameras{"QVGENTL_VIRTUAL", kVirtualCameras};
    std::unique_ptr<CCameraSession> m_pSession;
    IQvDeviceReleasable* m_pDevice = nullptr;
    CIQvDataStreamPtr m_stream;
};

TEST_P(Acquisition, PollsAThousandFramesInOrderWithTheirStampsAndNoneLost)
{
    PaceCamera(m_pDevice, kSustainableRateHz);
    m_stream->SetStreamBufferCount(16);
    StartBoth();
    EXPECT_TRUE(m_stream->IsGrabbing());
    uint64_t previous = 0;
    for (int i = 0; i < 1000; ++i)
    {
        IQvStreamBufferReleasable* pBuffer = m_stream->RetrieveBuffer(kRetrieveTimeoutMs, QvTimeoutHandling_Throw);
        ASSERT_NE(pBuffer, nullptr);
        IQvStreamBufferInfo* pInfo = pBuffer->GetIQvStreamBufferInfo();
        const uint64_t frameId = pInfo->GetFrameID();
        ASSERT_EQ(frameId, previous + 1) << "frame " << i;
        ASSERT_FALSE(pInfo->IsIncomplete());
        ASSERT_EQ(StampOf(pBuffer), frameId);
        previous = frameId;
        pBuffer->Release();
    }
    EXPECT_GT(m_stream->GetCurrentFPS(), 50.0); // paced at 1000 Hz; a loaded machine renders slower
    EXPECT_NEAR(m_stream->GetCurrentBPS(), m_stream->GetCurrentFPS() * 320 * 240, 320 * 240 * 50.0);
    StopBoth();
    EXPECT_EQ(m_stream->GetIQvDataStreamInfo()->GetNumUnderrun(), 0u);
}

// Delivers on the listener thread: the callback retrieves and releases each buffer itself.
class CRetrievingCallback : public IQvCallback
{
public:
    void Invoke(IQvCallbackParamBase* param) override
    {
        ASSERT_EQ(param->GetCallbackType(), QvCallbackTypeGenTLEventNewBuffer);
        IQvDataStream* pStream = static_cast<IQvCallbackParamGenTLEventNewBuffer*>(param)->GetIQvDataStream();
        IQvStreamBufferReleasable* pBuffer = pStream->RetrieveBuffer(0);
        if (pBuffer == nullptr)
            return;
        const uint64_t frameId = pBuffer->GetIQvStreamBufferInfo()->GetFrameID();
        if (frameId <= m_last || StampOf(pBuffer) != frameId)
            ++m_outOfOrder;
        else
            m_skipped += frameId - m_last - 1;
        m_last = frameId;
        m_threadSeen = std::this_thread::get_id();
        pBuffer->Release();
        ++m_count;
    }
    void Release() override { ++m_released; }

    std::atomic<int> m_count{0};
    std::atomic<int> m_outOfOrder{0};
    std::atomic<uint64_t> m_skipped{0}; // frame IDs the producer could not fill (underruns)
    uint64_t m_last = 0;
    std::thread::id m_threadSeen;
    int m_released = 0;
};

TEST_P(Acquisition, CallbacksReceiveAThousandFramesInOrderOnTheListenerThread)
{
    PaceCamera(m_pDevice, kSustainableRateHz);
    m_stream->SetStreamBufferCount(16);
    CRetrievingCallback callback;
    void* hCallback = m_stream->RegisterCallback(&callback);
    StartBoth();
    for (int waited = 0; callback.m_count < 1000 && waited < 10000; waited += 5)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    StopBoth();
    EXPECT_GE(callback.m_count.load(), 1000);
    EXPECT_EQ(callback.m_outOfOrder.load(), 0);
    // Nothing lost at this rate; and whatever the producer might lose, the library loses nothing more.
    EXPECT_EQ(callback.m_skipped.load(), m_stream->GetIQvDataStreamInfo()->GetNumUnderrun());
    EXPECT_EQ(callback.m_skipped.load(), 0u);
    EXPECT_NE(callback.m_threadSeen, std::this_thread::get_id());
    m_stream->DeregisterCallback(hCallback);
    EXPECT_EQ(callback.m_released, 1);
}

TEST_P(Acquisition, ImageMatchesTheMovingRampThroughBufferViewsAndPixelAccess)
{
    PaceCamera(m_pDevice, kSustainableRateHz, "GreyDiagonalRampMoving");
    StartBoth();
    for (int frame = 0; frame < 5; ++frame)
    {
        IQvStreamBufferReleasable* pBuffer = m_stream->RetrieveBuffer(kRetrieveTimeoutMs, QvTimeoutHandling_Throw);
        ASSERT_NE(pBuffer, nullptr);
        const uint64_t frameId = pBuffer->GetIQvStreamBufferInfo()->GetFrameID();
        IQvImage* pImage = pBuffer->GetIQvImage();
        ASSERT_EQ(pImage->GetImageWidth(), 320u);
        ASSERT_EQ(pImage->GetImageHeight(), 240u);
        ASSERT_EQ(pImage->GetImagePixelFormat(), QvPFNC_Mono8);
        ASSERT_EQ(pImage->GetImageLinePitch(), 320u);
        ASSERT_EQ(pImage->GetImagePlanePitch(), 320u * 240u);
        const uint8_t* pPixels = static_cast<const uint8_t*>(pImage->GetImageBuffer());
        int mismatches = 0;
        for (uint32_t y = 0; y < 240; ++y)
            for (uint32_t x = 0; x < 320; ++x)
                mismatches += pPixels[y * 320 + x] != QvVirtualCamera::GradientLevel(x, y, frameId);
        EXPECT_EQ(mismatches, 0);
        // Views and the component accessor read the same memory.
        IQvImage* pView = pImage->GetROIImage(100, 50, 64, 32);
        EXPECT_EQ(pView->GetImageBuffer(), pPixels + 50 * 320 + 100);
        EXPECT_EQ(pView->GetImageLinePitch(), 320u);
        EXPECT_EQ(pView->GetIQvPixelComponentValue(3, 2)->GetValue(0), QvVirtualCamera::GradientLevel(103, 52, frameId));
        EXPECT_EQ(pImage->GetIQvPixelComponentValue(7, 9)->GetValue(0), QvVirtualCamera::GradientLevel(7, 9, frameId));
        // A copy into an image buffer accepts the stream buffer's image.
        CIQvImageBufferPtr copy(CreateIQvImageBuffer());
        copy->CopyImage(pImage);
        EXPECT_EQ(static_cast<const uint8_t*>(copy->GetIQvImage()->GetImageBuffer())[17 * 320 + 11],
                  QvVirtualCamera::GradientLevel(11, 17, frameId));
        pBuffer->Release();
    }
    StopBoth();
}

TEST_P(Acquisition, ChunkValuesAreDecodedPerBuffer)
{
    PaceCamera(m_pDevice, kSustainableRateHz);
    EnableAllChunks(m_pDevice);
    m_stream->SetStreamBufferCount(8);
    StartBoth();
    // Two buffers held at once keep their own chunk values.
    IQvStreamBufferReleasable* pFirst = m_stream->RetrieveBuffer(kRetrieveTimeoutMs, QvTimeoutHandling_Throw);
    IQvStreamBufferReleasable* pSecond = m_stream->RetrieveBuffer(kRetrieveTimeoutMs, QvTimeoutHandling_Throw);
    ASSERT_NE(pFirst, nullptr);
    ASSERT_NE(pSecond, nullptr);
    for (IQvStreamBufferReleasable* pBuffer : {pFirst, pSecond, pFirst})
    {
        GenApi::INodeMap* pChunks = pBuffer->GetChunkINodeMap();
        ASSERT_NE(pChunks, nullptr);
        IQvStreamBufferInfo* pInfo = pBuffer->GetIQvStreamBufferInfo();
        EXPECT_TRUE(pInfo->HasChunkData());
        EXPECT_EQ(static_cast<uint64_t>(GenApi::CIntegerPtr(pChunks->GetNode("ChunkFrameID"))->GetValue()),
                  pInfo->GetFrameID());
        EXPECT_EQ(static_cast<uint64_t>(GenApi::CIntegerPtr(pChunks->GetNode("ChunkTimestamp"))->GetValue()),
                  pInfo->GetTimestampNS());
        EXPECT_EQ(GenApi::CIntegerPtr(pChunks->GetNode("ChunkWidth"))->GetValue(), 320);
        EXPECT_EQ(GenApi::CIntegerPtr(pChunks->GetNode("ChunkHeight"))->GetValue(), 240);
        EXPECT_EQ(GenApi::CEnumerationPtr(pChunks->GetNode("ChunkPixelFormat"))->GetIntValue(), QvPFNC_Mono8);
        EXPECT_EQ(StampOf(pBuffer), pInfo->GetFrameID());
    }
    EXPECT_EQ(pSecond->GetIQvStreamBufferInfo()->GetFrameID(), pFirst->GetIQvStreamBufferInfo()->GetFrameID() + 1);
    pFirst->Release();
    pSecond->Release();
    for (int i = 0; i < 50; ++i)
    {
        IQvStreamBufferReleasable* pBuffer = m_stream->RetrieveBuffer(kRetrieveTimeoutMs, QvTimeoutHandling_Throw);
        ASSERT_NE(pBuffer, nullptr);
        ASSERT_EQ(static_cast<uint64_t>(
                      GenApi::CIntegerPtr(pBuffer->GetChunkINodeMap()->GetNode("ChunkFrameID"))->GetValue()),
                  pBuffer->GetIQvStreamBufferInfo()->GetFrameID());
        pBuffer->Release();
    }
    StopBoth();
}

TEST_P(Acquisition, BufferCountAndPayloadChangesReallocateOnlyWhenNeeded)
{
    PaceCamera(m_pDevice, kSustainableRateHz);
    IQvDataStreamInfo* pInfo = m_stream->GetIQvDataStreamInfo();
    EXPECT_EQ(m_stream->GetStreamBufferCount(), 6u);
    auto runAndCollectBases = [&](int frames) {
        std::set<void*> bases;
        StartBoth();
        for (int i = 0; i < frames; ++i)
        {
            IQvStreamBufferReleasable* pBuffer = m_stream->RetrieveBuffer(kRetrieveTimeoutMs, QvTimeoutHandling_Throw);
            EXPECT_NE(pBuffer, nullptr);
            if (pBuffer == nullptr)
                break;
            bases.insert(pBuffer->GetIQvStreamBufferInfo()->GetBaseAddress());
            EXPECT_EQ(StampOf(pBuffer), pBuffer->GetIQvStreamBufferInfo()->GetFrameID());
            pBuffer->Release();
        }
        StopBoth();
        while (IQvStreamBufferReleasable* pLeft = m_stream->RetrieveBuffer(0))
            pLeft->Release();
        return bases;
    };
    const std::set<void*> six = runAndCollectBases(30);
    EXPECT_EQ(pInfo->GetNumAnnounced(), 6u);
    EXPECT_EQ(six.size(), 6u);

    m_stream->SetStreamBufferCount(3); // fewer: reallocated
    const std::set<void*> three = runAndCollectBases(20);
    EXPECT_EQ(pInfo->GetNumAnnounced(), 3u);
    EXPECT_EQ(three.size(), 3u);

    m_stream->SetStreamBufferCount(5); // more: the three kept, two added
    runAndCollectBases(20);
    EXPECT_EQ(pInfo->GetNumAnnounced(), 5u);

    SetInteger(m_pDevice, "Height", 120); // smaller payload: kept
    const std::set<void*> smaller = runAndCollectBases(20);
    EXPECT_EQ(pInfo->GetNumAnnounced(), 5u);
    SetInteger(m_pDevice, "Height", 240);
    SetInteger(m_pDevice, "Width", 320);
    const size_t before = pInfo->GetPayloadSize();
    EnableAllChunks(m_pDevice); // larger payload: reallocated to the new size
    EXPECT_GT(pInfo->GetPayloadSize(), before);
    StartBoth();
    IQvStreamBufferReleasable* pBuffer = m_stream->RetrieveBuffer(kRetrieveTimeoutMs, QvTimeoutHandling_Throw);
    ASSERT_NE(pBuffer, nullptr);
    EXPECT_FALSE(pBuffer->GetIQvStreamBufferInfo()->IsIncomplete());
    EXPECT_GE(pBuffer->GetIQvStreamBufferInfo()->GetBufferSize(), pInfo->GetPayloadSize());
    pBuffer->Release();
    StopBoth();

    EXPECT_THROW(m_stream->SetStreamBufferCount(0), GenICam::OutOfRangeException);
    EXPECT_THROW(m_stream->SetStreamBufferCount(65536), GenICam::OutOfRangeException);
    m_stream->SetStreamBufferCount(65535);
    EXPECT_EQ(m_stream->GetStreamBufferCount(), 65535u);
}

TEST_P(Acquisition, StartStopAndStartAgainDeliversTheNewRunFromFrameOne)
{
    PaceCamera(m_pDevice, 1000.0);
    m_stream->SetStreamBufferCount(16);
    for (int run = 0; run < 3; ++run)
    {
        StartBoth();
        std::vector<uint64_t> ids;
        for (int i = 0; i < 40; ++i)
        {
            IQvStreamBufferReleasable* pBuffer = m_stream->RetrieveBuffer(kRetrieveTimeoutMs, QvTimeoutHandling_Throw);
            ASSERT_NE(pBuffer, nullptr);
            ids.push_back(pBuffer->GetIQvStreamBufferInfo()->GetFrameID());
            pBuffer->Release();
        }
        StopBoth();
        while (IQvStreamBufferReleasable* pLeft = m_stream->RetrieveBuffer(0))
            pLeft->Release();
        // Buffers the previous run filled but nobody received come first; the run itself counts
        // from 1 upwards (a frame lost to a scheduling hiccup would leave a gap, not a repeat).
        auto first = std::find(ids.begin(), ids.end(), 1u);
        ASSERT_NE(first, ids.end()) << "run " << run;
        for (auto it = first + 1; it != ids.end(); ++it)
            EXPECT_GT(*it, *(it - 1));
        EXPECT_LE(ids.back() - *first, static_cast<uint64_t>(ids.end() - first) + 2) << "run " << run;
    }
}

TEST_P(Acquisition, TimeOutReturnsNullOrThrowsAndAStoppedStreamAnswersAtOnce)
{
    // Before the first start the stream counts as stopped.
    auto started = std::chrono::steady_clock::now();
    EXPECT_EQ(m_stream->RetrieveBuffer(2000, QvTimeoutHandling_Throw), nullptr);
    EXPECT_EQ(m_stream->RetrieveBuffer(2000, QvTimeoutHandling_ReturnNull), nullptr);
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::milliseconds(500));

    m_stream->StartAcquisition(); // the camera itself is not started: nothing arrives
    started = std::chrono::steady_clock::now();
    EXPECT_EQ(m_stream->RetrieveBuffer(60, QvTimeoutHandling_ReturnNull), nullptr);
    EXPECT_GE(std::chrono::steady_clock::now() - started, std::chrono::milliseconds(55));
    try
    {
        m_stream->RetrieveBuffer(60, QvTimeoutHandling_Throw);
        ADD_FAILURE() << "no time-out";
    }
    catch (const GenICam::TimeoutException& e)
    {
        EXPECT_STREQ(e.GetDescription(), "A timeout occurred during the processing of IQvDataStream::RetrieveBuffer(60, 1)");
    }
    m_stream->StopAcquisition();
    started = std::chrono::steady_clock::now();
    EXPECT_EQ(m_stream->RetrieveBuffer(2000, QvTimeoutHandling_Throw), nullptr);
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::milliseconds(500));
}

TEST_P(Acquisition, StopWakesACallerBlockedInRetrieveBuffer)
{
    m_stream->StartAcquisition();
    std::atomic<bool> returned{false};
    IQvStreamBufferReleasable* pResult = reinterpret_cast<IQvStreamBufferReleasable*>(1);
    std::chrono::steady_clock::time_point returnedAt;
    std::thread waiter([&] {
        pResult = m_stream->RetrieveBuffer(kWaitInfinite, QvTimeoutHandling_Throw);
        returnedAt = std::chrono::steady_clock::now();
        returned = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_FALSE(returned.load());
    const auto stoppedAt = std::chrono::steady_clock::now();
    m_stream->StopAcquisition();
    waiter.join();
    EXPECT_EQ(pResult, nullptr);
    EXPECT_LT(returnedAt - stoppedAt, std::chrono::milliseconds(200));
}

TEST_P(Acquisition, DeviceLossEndsRetrievalWithTheLostMessage)
{
    PaceCamera(m_pDevice, kSustainableRateHz);
    m_pDevice->StartEventAcquisitionThread();
    StartBoth();
    for (int i = 0; i < 10; ++i)
    {
        IQvStreamBufferReleasable* pBuffer = m_stream->RetrieveBuffer(kRetrieveTimeoutMs, QvTimeoutHandling_Throw);
        ASSERT_NE(pBuffer, nullptr);
        pBuffer->Release();
    }
    Execute(m_pDevice, "TestDeviceLost");
    // Buffers filled before the loss may still come, and the listener's own failure may be
    // reported once; then every call says the device is lost.
    std::string lost;
    int listenerFailures = 0;
    for (int call = 0; call < 100 && lost.empty(); ++call)
    {
        try
        {
            if (IQvStreamBufferReleasable* pBuffer = m_stream->RetrieveBuffer(kRetrieveTimeoutMs, QvTimeoutHandling_Throw))
            {
                try
                {
                    pBuffer->Release();
                }
                catch (const CQvGenTLErrorException&)
                {
                }
            }
        }
        catch (const GenICam::AccessException& e)
        {
            lost = e.GetDescription();
        }
        catch (const CQvGenTLErrorException& e)
        {
            EXPECT_EQ(e.GetFunctionName(), "EventGetData");
            ++listenerFailures;
        }
    }
    EXPECT_EQ(lost, "The device is lost.");
    EXPECT_LE(listenerFailures, 1);
    EXPECT_TRUE(m_pDevice->IsDeviceLost());
    EXPECT_THROW(m_stream->RetrieveBuffer(10, QvTimeoutHandling_ReturnNull), GenICam::AccessException);
    try
    {
        m_stream->StopAcquisition();
    }
    catch (const CQvGenTLErrorException&)
    {
    }
    EXPECT_THROW(m_stream->StartAcquisition(), GenICam::AccessException);
}

TEST_P(Acquisition, ApplicationAllocatorProvidesEveryBufferAndGetsItBack)
{
    PaceCamera(m_pDevice, kSustainableRateHz);
    CCountingAllocator allocator;
    m_stream.Reset();
    m_stream.Reset(m_pDevice->CreateIQvDataStream(0, &allocator));
    m_stream->SetStreamBufferCount(7);
    StartBoth();
    for (int i = 0; i < 30; ++i)
    {
        IQvStreamBufferReleasable* pBuffer = m_stream->RetrieveBuffer(kRetrieveTimeoutMs, QvTimeoutHandling_Throw);
        ASSERT_NE(pBuffer, nullptr);
        IQvStreamBufferInfo* pInfo = pBuffer->GetIQvStreamBufferInfo();
        EXPECT_EQ(reinterpret_cast<uintptr_t>(pInfo->GetBaseAddress()) % 4096, 0u);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(pInfo->GetUserPtr()),
                  reinterpret_cast<uintptr_t>(pInfo->GetBaseAddress()) ^ CCountingAllocator::kContextKey);
        EXPECT_EQ(pBuffer->GetIQvImage()->GetUserContext(), pInfo->GetUserPtr());
        EXPECT_EQ(StampOf(pBuffer), pInfo->GetFrameID());
        pBuffer->Release();
    }
    StopBoth();
    EXPECT_EQ(allocator.m_allocated, 7);
    m_stream->SetStreamBufferCount(2); // reallocation gives the old blocks back first
    StartBoth();
    IQvStreamBufferReleasable* pBuffer = m_stream->RetrieveBuffer(kRetrieveTimeoutMs, QvTimeoutHandling_Throw);
    ASSERT_NE(pBuffer, nullptr);
    pBuffer->Release();
    StopBoth();
    EXPECT_EQ(allocator.m_allocated, 9);
    EXPECT_EQ(allocator.m_deallocated, 7);
    m_stream.Reset();
    EXPECT_EQ(allocator.m_deallocated, 9);
    EXPECT_EQ(allocator.m_bytes, 0);
    EXPECT_EQ(allocator.m_badContexts, 0);
    EXPECT_EQ(allocator.m_deregistered.load(), 1);
}

TEST_P(Acquisition, AnAllocatorWithoutMemoryFailsTheStartCleanly)
{
    CCountingAllocator allocator;
    allocator.m_bFail = true;
    m_stream.Reset();
    m_stream.Reset(m_pDevice->CreateIQvDataStream(0, &allocator));
    EXPECT_THROW(m_stream->StartAcquisition(), GenICam::BadAllocException);
    EXPECT_EQ(m_stream->GetIQvDataStreamInfo()->GetNumAnnounced(), 0u);
    EXPECT_EQ(m_stream->RetrieveBuffer(10, QvTimeoutHandling_Throw), nullptr); // still stopped
    allocator.m_bFail = false;
    StartBoth();
    IQvStreamBufferReleasable* pBuffer = m_stream->RetrieveBuffer(kRetrieveTimeoutMs, QvTimeoutHandling_Throw);
    ASSERT_NE(pBuffer, nullptr);
    pBuffer->Release();
    StopBoth();
    m_stream.Reset(); // the allocator must outlive the stream
    EXPECT_EQ(allocator.m_deallocated, allocator.m_allocated);
}

INSTANTIATE_TEST_SUITE_P(EachTransport, Acquisition, ::testing::Values("U3V", "GEV", "CXP"),
                         [](const ::testing::TestParamInfo<std::string>& info) { return info.param; });

TEST(AcquisitionArray, ThreeCamerasDeliverThroughOnePointerArray)
{
    QvTest::CScopedEnvironment cameras("QVGENTL_VIRTUAL", kVirtualCameras);
    CCameraSession session;
    ASSERT_EQ(session.GetDeviceCount(), 3u);
    CIQvDataStreamPtrArray streams;
    EXPECT_FALSE(streams.IsGrabbingAny());
    EXPECT_FALSE(streams.IsGrabbingAll());
    for (size_t i = 0; i < 3; ++i)
    {
        PaceCamera(session.Device(i), 1000.0);
        streams.Register(session.Device(i)->CreateIQvDataStream(0, nullptr));
        streams[i]->SetStreamBufferCount(16);
    }
    streams.StartAcquisition();
    for (size_t i = 0; i < 3; ++i)
        session.Device(i)->AcquisitionStart();
    EXPECT_TRUE(streams.IsGrabbingAll());
    std::map<IQvDataStream*, uint64_t> last;
    int frames = 0;
    for (; frames < 600; ++frames)
    {
        IQvStreamBufferReleasable* pBuffer = streams.RetrieveBuffer(kRetrieveTimeoutMs, QvTimeoutHandling_Throw);
        ASSERT_NE(pBuffer, nullptr);
        const uint64_t frameId = pBuffer->GetIQvStreamBufferInfo()->GetFrameID();
        uint64_t& previous = last[pBuffer->GetIQvDataStream()];
        ASSERT_EQ(frameId, previous + 1);
        ASSERT_EQ(StampOf(pBuffer), frameId);
        previous = frameId;
        pBuffer->Release();
    }
    EXPECT_EQ(last.size(), 3u);
    for (const auto& stream : last)
        EXPECT_GT(stream.second, 150u);
    for (size_t i = 0; i < 3; ++i)
        session.Device(i)->AcquisitionStop();
    streams.StopAcquisition();
    while (IQvStreamBufferReleasable* pLeft = streams.RetrieveBuffer(0))
        pLeft->Release();
    EXPECT_FALSE(streams.IsGrabbingAny());
    EXPECT_EQ(streams.RetrieveBuffer(20), nullptr);
    EXPECT_THROW(streams.RetrieveBuffer(20, QvTimeoutHandling_Throw), GenICam::TimeoutException);
    streams.Release();
}
} // namespace
