// Grabs from every camera of the producer at once through one CIQvDataStreamPtrArray: its
// RetrieveBuffer() waits for whichever stream has a frame first.

#include <cstdio>
#include <map>
#include <string>

#include <QvApi_TL.h>

int main()
{
    try
    {
        QvApi::CQvApiInitializer library;
        QvApi::CIQvSystemPtr system(QvApi::CreateIQvSystem());
        // The arrays own what is registered in them and release it in index order; declared
        // after the system, devices before streams, they are released streams first.
        QvApi::CIQvDevicePtrArray devices;
        QvApi::CIQvDataStreamPtrArray streams;

        for (size_t i = 0; i < system->GetInterfaceCount(); ++i)
        {
            QvApi::IQvInterface* pInterface = system->GetIQvInterface(i);
            pInterface->UpdateDeviceList();
            for (size_t d = 0; d < pInterface->GetDeviceCount(); ++d)
                if (pInterface->IsDeviceAvailable(d, GenTL::DEVICE_ACCESS_CONTROL))
                    devices.Register(pInterface->CreateIQvDevice(d, GenTL::DEVICE_ACCESS_CONTROL));
        }
        if (devices.GetSize() == 0)
        {
            std::fprintf(stderr, "MultiCamera: no camera\n");
            return 1;
        }
        for (size_t i = 0; i < devices.GetSize(); ++i)
            streams.Register(devices[i]->CreateIQvDataStream(0));

        streams.StartAcquisition();   // every stream, then
        devices.AcquisitionStart();   // every camera

        std::map<std::string, int> perCamera;
        for (int i = 0; i < 30; ++i)
        {
            QvApi::CIQvStreamBufferPtr buffer(streams.RetrieveBuffer(2000));
            if (!buffer)
                break;
            // The buffer tells which stream, hence which camera, it came from.
            QvApi::IQvDevice* pDevice = buffer->GetIQvDataStream()->GetIQvDevice();
            ++perCamera[pDevice->GetIQvDeviceInfo()->GetID().c_str()];
        }

        devices.AcquisitionStop();
        streams.StopAcquisition();
        for (const auto& camera : perCamera)
            std::printf("%s: %d frames\n", camera.first.c_str(), camera.second);
    }
    catch (const GenICam::GenericException& error)
    {
        std::fprintf(stderr, "MultiCamera: %s\n", error.GetDescription());
        return 1;
    }
    return 0;
}
