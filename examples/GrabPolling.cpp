// Grabs ten frames from the first available camera by polling the data stream, and prints
// each frame's ID, size and first pixel.

#include <cstdio>

#include <QvApi_TL.h>

int main()
{
    try
    {
        QvApi::CQvApiInitializer library;
        // Owners are declared parent first, so they are released child first.
        QvApi::CIQvSystemPtr system(QvApi::CreateIQvSystem());
        QvApi::CIQvDevicePtr device(system->CreateFirstIQvDevice());
        QvApi::CIQvDataStreamPtr stream(device->CreateIQvDataStream(0));

        // Camera features live in the remote device's node map (GenApi).
        GenApi::INodeMap* pFeatures = device->GetRemoteIQvPort()->GetINodeMap();
        GenApi::CEnumerationPtr pixelFormat = pFeatures->GetNode("PixelFormat");
        pixelFormat->FromString("Mono8"); // set while not acquiring: payload features lock during it

        // Start the stream (buffers announced and queued) before the camera.
        stream->SetStreamBufferCount(8);
        stream->StartAcquisition();
        device->AcquisitionStart();

        for (int i = 0; i < 10; ++i)
        {
            // Waits up to one second; with QvTimeoutHandling_Throw a time-out throws instead.
            QvApi::CIQvStreamBufferPtr buffer(stream->RetrieveBuffer(1000, QvApi::QvTimeoutHandling_ReturnNull));
            if (!buffer)
            {
                std::fprintf(stderr, "GrabPolling: no frame within 1 s\n");
                break;
            }
            QvApi::IQvStreamBufferInfo* pInfo = buffer->GetIQvStreamBufferInfo();
            QvApi::IQvImage* pImage = buffer->GetIQvImage();
            const unsigned char* pixels = static_cast<const unsigned char*>(pImage->GetImageBuffer());
            std::printf("frame %llu: %zux%zu, %s, first pixel %u%s\n", static_cast<unsigned long long>(pInfo->GetFrameID()),
                        pImage->GetImageWidth(), pImage->GetImageHeight(),
                        QvApi::GetIQvPixelFormatInfo(pImage->GetImagePixelFormat())->GetName().c_str(), pixels[0],
                        pInfo->IsIncomplete() ? " (incomplete)" : "");
            // The owner's Release() queues the buffer again for the producer to fill.
        }
        std::printf("%.1f frames/s\n", stream->GetCurrentFPS());

        // Stop in the reverse order: camera, then stream.
        device->AcquisitionStop();
        stream->StopAcquisition();
    }
    catch (const GenICam::GenericException& error)
    {
        std::fprintf(stderr, "GrabPolling: %s\n", error.GetDescription());
        return 1;
    }
    return 0;
}
