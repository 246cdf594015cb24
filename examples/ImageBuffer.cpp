// Image buffers: copy a grabbed frame out of the stream buffer, crop it with an ROI view, read
// and write pixels component by component, and make a test chart.

#include <cstdio>

#include <QvApi_TL.h>

namespace
{
void PrintPixel(QvApi::IQvImage* pImage, size_t x, size_t y)
{
    // The accessor belongs to the image and is repositioned by every call.
    QvApi::IQvPixelComponentValue* pValue = pImage->GetIQvPixelComponentValue(x, y);
    std::printf("  (%zu, %zu):", x, y);
    for (size_t i = 0; i < pValue->GetCount(); ++i)
        std::printf(" %s=%llu", QvApi::GetIQvPixelComponentInfo(pValue->GetPixelComponent(i))->GetName().c_str(),
                    static_cast<unsigned long long>(pValue->GetValue(i)));
    std::printf("\n");
}
} // namespace

int main()
{
    try
    {
        QvApi::CQvApiInitializer library;
        QvApi::CIQvSystemPtr system(QvApi::CreateIQvSystem());
        QvApi::CIQvDevicePtr device(system->CreateFirstIQvDevice());
        QvApi::CIQvDataStreamPtr stream(device->CreateIQvDataStream(0));
        GenApi::INodeMap* pFeatures = device->GetRemoteIQvPort()->GetINodeMap();
        GenApi::CEnumerationPtr(pFeatures->GetNode("PixelFormat"))->FromString("BayerRG8");
        GenApi::CEnumerationPtr(pFeatures->GetNode("TestPattern"))->FromString("ColorBar");

        // 1. Copy one frame into an application-owned buffer, so the stream buffer can go back
        //    to the producer at once.
        QvApi::CIQvImageBufferPtr copy(QvApi::CreateIQvImageBuffer());
        stream->StartAcquisition();
        device->AcquisitionStart();
        {
            QvApi::CIQvStreamBufferPtr buffer(stream->RetrieveBuffer(1000, QvApi::QvTimeoutHandling_Throw));
            copy->CopyImage(buffer->GetIQvImage());
        }
        device->AcquisitionStop();
        stream->StopAcquisition();

        QvApi::IQvImage* pImage = copy->GetIQvImage();
        std::printf("copied %zux%zu %s, line pitch %zu bytes\n", pImage->GetImageWidth(), pImage->GetImageHeight(),
                    QvApi::GetIQvPixelFormatInfo(pImage->GetImagePixelFormat())->GetName().c_str(),
                    pImage->GetImageLinePitch());
        PrintPixel(pImage, 0, 0);
        PrintPixel(pImage, 1, 0);

        // 2. An ROI view shares the memory; an odd offset re-phases the Bayer pattern.
        QvApi::IQvImage* pRoi = pImage->GetROIImage(161, 1, 64, 32);
        std::printf("ROI at (161, 1): %zux%zu %s\n", pRoi->GetImageWidth(), pRoi->GetImageHeight(),
                    QvApi::GetIQvPixelFormatInfo(pRoi->GetImagePixelFormat())->GetName().c_str());
        PrintPixel(pRoi, 0, 0);

        // 3. A crop copied out becomes an image of its own.
        QvApi::CIQvImageBufferPtr crop(QvApi::CreateIQvImageBuffer());
        crop->CopyImage(pRoi);
        std::printf("crop copied: %zux%zu\n", crop->GetIQvImage()->GetImageWidth(), crop->GetIQvImage()->GetImageHeight());

        // 4. A new RGB8 buffer with the format's test chart; write one pixel's red component.
        QvApi::CIQvImageBufferPtr chart(QvApi::CreateIQvImageBuffer());
        chart->CreateBuffer(64, 16, QvApi::QvPFNC_RGB8, QvApi::QvMemoryInitialization_Chart);
        QvApi::IQvImage* pChart = chart->GetIQvImage();
        PrintPixel(pChart, 10, 5);
        pChart->GetIQvPixelComponentValue(10, 5)->WriteValue(pChart, 10, 5, 0, 200);
        PrintPixel(pChart, 10, 5);
    }
    catch (const GenICam::GenericException& error)
    {
        std::fprintf(stderr, "ImageBuffer: %s\n", error.GetDescription());
        return 1;
    }
    return 0;
}
