// Receives frames through a new-buffer callback instead of polling: the SDK calls Invoke() on
// its listener thread whenever the stream receives a buffer.

#include <atomic>
#include <chrono>
#include <cstdio>
#include <thread>

#include <QvApi_TL.h>

namespace
{
/// Counts frames and sums their sizes. Runs on the stream's listener thread: keep it short and
/// let no exception escape.
class CFrameCounter : public QvApi::IQvCallback
{
public:
    void Invoke(QvApi::IQvCallbackParamBase* pParam) override
    {
        if (pParam->GetCallbackType() != QvApi::QvCallbackTypeGenTLEventNewBuffer)
            return;
        try
        {
            QvApi::IQvDataStream* pStream =
                static_cast<QvApi::IQvCallbackParamGenTLEventNewBuffer*>(pParam)->GetIQvDataStream();
            // The callback may retrieve the buffer itself; 0 ms: it is already there.
            QvApi::CIQvStreamBufferPtr buffer(pStream->RetrieveBuffer(0));
            if (buffer)
            {
                bytes += buffer->GetIQvStreamBufferInfo()->GetSizeFilled();
                ++frames;
            }
        }
        catch (const GenICam::GenericException& error)
        {
            std::fprintf(stderr, "callback: %s\n", error.GetDescription());
        }
    }
    // The stream's callback manager calls this once the registration ends; the object lives on
    // the stack of main() here, so there is nothing to free.
    void Release() override {}

    std::atomic<unsigned> frames{0};
    std::atomic<unsigned long long> bytes{0};
};
} // namespace

int main()
{
    CFrameCounter counter; // outlives the stream that calls it
    try
    {
        QvApi::CQvApiInitializer library;
        QvApi::CIQvSystemPtr system(QvApi::CreateIQvSystem());
        QvApi::CIQvDevicePtr device(system->CreateFirstIQvDevice());
        QvApi::CIQvDataStreamPtr stream(device->CreateIQvDataStream(0));

        void* hCallback = stream->RegisterCallback(&counter);
        stream->StartAcquisition();
        device->AcquisitionStart();

        // The main thread is free meanwhile; wait for 20 frames or two seconds.
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(2);
        while (counter.frames < 20 && std::chrono::steady_clock::now() < deadline)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));

        device->AcquisitionStop();
        stream->StopAcquisition();
        stream->DeregisterCallback(hCallback); // waits for a running Invoke() to finish
        std::printf("%u frames, %llu bytes through the callback\n", counter.frames.load(), counter.bytes.load());
        if (counter.frames == 0)
            return 1;
    }
    catch (const GenICam::GenericException& error)
    {
        std::fprintf(stderr, "GrabCallback: %s\n", error.GetDescription());
        return 1;
    }
    return 0;
}
