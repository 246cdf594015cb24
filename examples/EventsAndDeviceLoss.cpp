// Camera events and device loss: the camera's ExposureEnd events update its event features,
// which call a GenApi node callback; then the camera is made to drop its connection (the virtual
// camera's TestDeviceLost), which the application sees as an error callback and as
// AccessException from RetrieveBuffer(), and recovers from by opening the device again.

#include <atomic>
#include <chrono>
#include <cstdio>
#include <thread>

#include <QvApi_TL.h>

namespace
{
std::atomic<int> g_exposureEnds{0};

/// Device error events (GenTL EVENT_ERROR), e.g. the I/O error of a lost connection.
class CDeviceErrors : public QvApi::IQvCallback
{
public:
    void Invoke(QvApi::IQvCallbackParamBase* pParam) override
    {
        if (pParam->GetCallbackType() == QvApi::QvCallbackTypeGenTLEventErrorDEV)
        {
            auto* pError = static_cast<QvApi::IQvCallbackParamGenTLEventErrorDEV*>(pParam);
            std::printf("device error event %d: %s\n", pError->GetGCError(), pError->GetDescription().c_str());
        }
    }
    void Release() override {} // lives in main()
};

int GrabUntilLost(QvApi::IQvDevice* pDevice, QvApi::IQvDataStream* pStream)
{
    pStream->StartAcquisition();
    pDevice->AcquisitionStart();
    int frames = 0;
    try
    {
        for (; frames < 200; ++frames)
        {
            QvApi::CIQvStreamBufferPtr buffer(pStream->RetrieveBuffer(1000, QvApi::QvTimeoutHandling_Throw));
            if (frames == 5)
                GenApi::CCommandPtr(pDevice->GetRemoteIQvPort()->GetINodeMap()->GetNode("TestDeviceLost"))->Execute();
        }
    }
    catch (const GenICam::GenericException& error)
    {
        // A lost device shows as AccessException "The device is lost." or as the failure of the
        // stream's event listener, whichever RetrieveBuffer() notices first; the device's own
        // listener confirms the loss a moment later, so give it that moment before deciding.
        for (int i = 0; i < 100 && !pDevice->IsDeviceLost(); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        if (!pDevice->IsDeviceLost())
            throw;
        // Nothing on a lost device works any more: close it.
        std::printf("device lost after %d frames: %s\n", frames, error.GetDescription());
    }
    // Stopping a lost device fails; the stream must be stopped anyway.
    try
    {
        pDevice->AcquisitionStop();
    }
    catch (const GenICam::GenericException&)
    {
    }
    pStream->StopAcquisition();
    return frames;
}
} // namespace

int main()
{
    CDeviceErrors errors;
    try
    {
        QvApi::CQvApiInitializer library;
        QvApi::CIQvSystemPtr system(QvApi::CreateIQvSystem());
        std::string id;
        {
            QvApi::CIQvDevicePtr device(system->CreateFirstIQvDevice());
            id = device->GetIQvDeviceInfo()->GetID().c_str();
            GenApi::INodeMap* pFeatures = device->GetRemoteIQvPort()->GetINodeMap();

            // Ask the camera for ExposureEnd events and watch the feature they update.
            GenApi::CEnumerationPtr(pFeatures->GetNode("EventSelector"))->FromString("ExposureEnd");
            GenApi::CEnumerationPtr(pFeatures->GetNode("EventNotification"))->FromString("On");
            GenApi::CallbackHandleType hExposureEnd = GenApi::Register(
                pFeatures->GetNode("EventExposureEndFrameID"), [](GenApi::INode*) { ++g_exposureEnds; });

            void* hErrors = device->RegisterCallback(&errors);
            // Listeners start here: before this call no event reaches the application.
            device->StartEventAcquisitionThread();

            QvApi::CIQvDataStreamPtr stream(device->CreateIQvDataStream(0));
            GrabUntilLost(device.Get(), stream.Get());
            std::printf("%d ExposureEnd events seen\n", g_exposureEnds.load());

            GenApi::Deregister(hExposureEnd);
            device->DeregisterCallback(hErrors);
            // stream, then device, are released here
        }

        // Recovery: open the same camera again by its ID once it is listed again.
        for (size_t i = 0; i < system->GetInterfaceCount(); ++i)
        {
            QvApi::IQvInterface* pInterface = system->GetIQvInterface(i);
            pInterface->UpdateDeviceList();
            for (size_t d = 0; d < pInterface->GetDeviceCount(); ++d)
                if (id == pInterface->GetIQvDeviceInfo(d)->GetID().c_str())
                {
                    QvApi::CIQvDevicePtr device(pInterface->CreateIQvDevice(d, GenTL::DEVICE_ACCESS_CONTROL));
                    QvApi::CIQvDataStreamPtr stream(device->CreateIQvDataStream(0));
                    stream->StartAcquisition();
                    device->AcquisitionStart();
                    QvApi::CIQvStreamBufferPtr buffer(stream->RetrieveBuffer(1000, QvApi::QvTimeoutHandling_Throw));
                    std::printf("%s is back: frame %llu\n", id.c_str(),
                                static_cast<unsigned long long>(buffer->GetIQvStreamBufferInfo()->GetFrameID()));
                    buffer.Reset();
                    device->AcquisitionStop();
                    stream->StopAcquisition();
                    return g_exposureEnds > 0 ? 0 : 1;
                }
        }
        std::fprintf(stderr, "EventsAndDeviceLoss: %s did not come back\n", id.c_str());
        return 1;
    }
    catch (const GenICam::GenericException& error)
    {
        std::fprintf(stderr, "EventsAndDeviceLoss: %s\n", error.GetDescription());
        return 1;
    }
}
