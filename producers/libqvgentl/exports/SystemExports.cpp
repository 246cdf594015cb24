// Entry points of the system (TL...) and interface (IF...) modules.
#include <GenTL/GenTL.h>

#include "exports/GuardedCall.h"
#include "modules/DeviceModule.h"
#include "modules/InterfaceModule.h"
#include "modules/SystemModule.h"

using namespace QvGenTL;

namespace GenTL {

GC_API TLOpen(TL_HANDLE* phTL)
{
    return GuardedCall(__func__, [&] {
        Require(phTL, "phTL");
        *phTL = CLibrary::Instance().OpenSystem()->Handle();
    });
}

GC_API TLClose(TL_HANDLE hTL)
{
    return GuardedCall(__func__, [&] { CLibrary::Instance().CloseSystem(Lookup<CSystemModule>(hTL)); });
}

GC_API TLGetInfo(TL_HANDLE hTL, TL_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer, size_t* piSize)
{
    return GuardedCall(__func__, [&] {
        Lookup<CSystemModule>(hTL);
        Answer(CSystemModule::LibraryInfo(iInfoCmd), piType, pBuffer, piSize);
    });
}

GC_API TLGetNumInterfaces(TL_HANDLE hTL, uint32_t* piNumIfaces)
{
    return GuardedCall(__func__, [&] {
        auto system = Lookup<CSystemModule>(hTL);
        Require(piNumIfaces, "piNumIfaces");
        *piNumIfaces = system->NumInterfaces();
    });
}

GC_API TLGetInterfaceID(TL_HANDLE hTL, uint32_t iIndex, char* sID, size_t* piSize)
{
    return GuardedCall(__func__, [&] { AnswerText(Lookup<CSystemModule>(hTL)->InterfaceId(iIndex), sID, piSize); });
}

GC_API TLGetInterfaceInfo(TL_HANDLE hTL, const char* sIfaceID, INTERFACE_INFO_CMD iInfoCmd, INFO_DATATYPE* piType,
                          void* pBuffer, size_t* piSize)
{
    return GuardedCall(__func__, [&] {
        auto system = Lookup<CSystemModule>(hTL);
        Require(sIfaceID, "sIfaceID");
        Answer(system->InterfaceInfo(sIfaceID, iInfoCmd), piType, pBuffer, piSize);
    });
}

GC_API TLOpenInterface(TL_HANDLE hTL, const char* sIfaceID, IF_HANDLE* phIface)
{
    return GuardedCall(__func__, [&] {
        auto system = Lookup<CSystemModule>(hTL);
        Require(sIfaceID, "sIfaceID");
        Require(phIface, "phIface");
        *phIface = system->OpenInterface(sIfaceID)->Handle();
    });
}

GC_API TLUpdateInterfaceList(TL_HANDLE hTL, bool8_t* pbChanged, uint64_t iTimeout)
{
    return GuardedCall(__func__, [&] {
        const bool changed = Lookup<CSystemModule>(hTL)->UpdateInterfaceList(iTimeout);
        if (pbChanged != nullptr)
            *pbChanged = changed;
    });
}

GC_API IFClose(IF_HANDLE hIface)
{
    return GuardedCall(__func__, [&] { Lookup<CInterfaceModule>(hIface)->Close(); });
}

GC_API IFGetInfo(IF_HANDLE hIface, INTERFACE_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer, size_t* piSize)
{
    return GuardedCall(__func__, [&] {
        Answer(Lookup<CInterfaceModule>(hIface)->Info(iInfoCmd), piType, pBuffer, piSize);
    });
}

GC_API IFGetNumDevices(IF_HANDLE hIface, uint32_t* piNumDevices)
{
    return GuardedCall(__func__, [&] {
        auto interface = Lookup<CInterfaceModule>(hIface);
        Require(piNumDevices, "piNumDevices");
        *piNumDevices = interface->NumDevices();
    });
}

GC_API IFGetDeviceID(IF_HANDLE hIface, uint32_t iIndex, char* sIDeviceID, size_t* piSize)
{
    return GuardedCall(__func__, [&] {
        AnswerText(Lookup<CInterfaceModule>(hIface)->DeviceId(iIndex), sIDeviceID, piSize);
    });
}

GC_API IFUpdateDeviceList(IF_HANDLE hIface, bool8_t* pbChanged, uint64_t iTimeout)
{
    return GuardedCall(__func__, [&] {
        const bool changed = Lookup<CInterfaceModule>(hIface)->UpdateDeviceList(iTimeout);
        if (pbChanged != nullptr)
            *pbChanged = changed;
    });
}

GC_API IFGetDeviceInfo(IF_HANDLE hIface, const char* sDeviceID, DEVICE_INFO_CMD iInfoCmd, INFO_DATATYPE* piType,
                       void* pBuffer, size_t* piSize)
{
    return GuardedCall(__func__, [&] {
        auto interface = Lookup<CInterfaceModule>(hIface);
        Require(sDeviceID, "sDeviceID");
        Answer(interface->DeviceInfo(sDeviceID, iInfoCmd), piType, pBuffer, piSize);
    });
}

GC_API IFOpenDevice(IF_HANDLE hIface, const char* sDeviceID, DEVICE_ACCESS_FLAGS iOpenFlag, DEV_HANDLE* phDevice)
{
    return GuardedCall(__func__, [&] {
        auto interface = Lookup<CInterfaceModule>(hIface);
        Require(sDeviceID, "sDeviceID");
        Require(phDevice, "phDevice");
        *phDevice = interface->OpenDevice(sDeviceID, iOpenFlag)->Handle();
    });
}

GC_API IFGetParentTL(IF_HANDLE hIface, TL_HANDLE* phSystem)
{
    return GuardedCall(__func__, [&] {
        auto interface = Lookup<CInterfaceModule>(hIface);
        Require(phSystem, "phSystem");
        *phSystem = interface->System()->Handle();
    });
}

} // namespace GenTL
