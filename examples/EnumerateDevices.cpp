// Lists every interface and device of the SDK's own producer (libqvgentl.cti, found on
// GENICAM_GENTL64_PATH) with the information a device shows before it is opened.
//
//   GENICAM_GENTL64_PATH=<prefix>/lib/qvapi/gentl ./EnumerateDevices

#include <cstdio>

#include <QvApi_TL.h>

int main()
{
    try
    {
        // Initialise the library first; its destructor terminates it after everything below.
        QvApi::CQvApiInitializer library;

        // A system is one loaded producer; the owner releases it at the end of the scope.
        QvApi::CIQvSystemPtr system(QvApi::CreateIQvSystem(QvApi::QvSystemVendor_Default, QvApi::QvInterfaceType_All));
        QvApi::IQvSystemInfo* pSystemInfo = system->GetIQvSystemInfo();
        std::printf("Producer %s (%s %s)\n", pSystemInfo->GetPathName().c_str(), pSystemInfo->GetVendor().c_str(),
                    pSystemInfo->GetVersion().c_str());

        for (size_t i = 0; i < system->GetInterfaceCount(); ++i)
        {
            // Interfaces belong to the system: never release them yourself.
            QvApi::IQvInterface* pInterface = system->GetIQvInterface(i);
            pInterface->UpdateDeviceList(); // ask the producer who is there now
            std::printf("  Interface %s (%s): %zu device(s)\n", pInterface->GetIQvInterfaceInfo()->GetID().c_str(),
                        pInterface->GetIQvInterfaceInfo()->GetTLType().c_str(), pInterface->GetDeviceCount());
            for (size_t d = 0; d < pInterface->GetDeviceCount(); ++d)
            {
                QvApi::IQvDeviceInfo* pInfo = pInterface->GetIQvDeviceInfo(d);
                const bool available = pInterface->IsDeviceAvailable(d, GenTL::DEVICE_ACCESS_CONTROL);
                std::printf("    %s  %s %s  serial %s  %s\n", pInfo->GetID().c_str(), pInfo->GetVendor().c_str(),
                            pInfo->GetModel().c_str(), pInfo->GetSerialNumber().c_str(),
                            available ? "available" : "in use");
            }
        }
    }
    catch (const GenICam::GenericException& error)
    {
        // Every SDK failure is an exception; GetDescription() is the message without the source.
        std::fprintf(stderr, "EnumerateDevices: %s\n", error.GetDescription());
        return 1;
    }
    return 0;
}
