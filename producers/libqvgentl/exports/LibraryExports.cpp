// Entry points of the library, ports and events. Each one validates its arguments, finds its
// objects through the handle table and leaves the work to the modules.
#include <GenTL/GenTL.h>

#include "exports/GuardedCall.h"
#include "modules/Event.h"
#include "modules/Module.h"
#include "modules/Port.h"
#include "modules/SystemModule.h"

using namespace QvGenTL;

namespace GenTL {

GC_API GCGetInfo(TL_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer, size_t* piSize)
{
    // Works before GCInitLib: a consumer may ask which producer it loaded.
    return GuardedCall(__func__, [&] { Answer(CSystemModule::LibraryInfo(iInfoCmd), piType, pBuffer, piSize); });
}

GC_API GCGetLastError(GC_ERROR* piErrorCode, char* sErrText, size_t* piSize)
{
    return CopyLastError(piErrorCode, sErrText, piSize);
}

GC_API GCInitLib(void)
{
    return GuardedCall(__func__, [] { CLibrary::Instance().Init(); });
}

GC_API GCCloseLib(void)
{
    return GuardedCall(__func__, [] { CLibrary::Instance().Close(); });
}

GC_API GCReadPort(PORT_HANDLE hPort, uint64_t iAddress, void* pBuffer, size_t* piSize)
{
    return GuardedCall(__func__, [&] {
        auto port = Lookup<CPort>(hPort);
        Require(pBuffer, "pBuffer");
        Require(piSize, "piSize");
        port->ReadPort(iAddress, pBuffer, *piSize);
    });
}

GC_API GCWritePort(PORT_HANDLE hPort, uint64_t iAddress, const void* pBuffer, size_t* piSize)
{
    return GuardedCall(__func__, [&] {
        auto port = Lookup<CPort>(hPort);
        Require(pBuffer, "pBuffer");
        Require(piSize, "piSize");
        port->WritePort(iAddress, pBuffer, *piSize);
    });
}

GC_API GCReadPortStacked(PORT_HANDLE hPort, PORT_REGISTER_STACK_ENTRY* pEntries, size_t* piNumEntries)
{
    return GuardedCall(__func__, [&] {
        auto port = Lookup<CPort>(hPort);
        Require(pEntries, "pEntries");
        Require(piNumEntries, "piNumEntries");
        const size_t count = *piNumEntries;
        *piNumEntries = 0;
        for (size_t i = 0; i < count; ++i)
        {
            Require(pEntries[i].pBuffer, "pEntries[i].pBuffer");
            port->ReadPort(pEntries[i].Address, pEntries[i].pBuffer, pEntries[i].Size);
            *piNumEntries = i + 1;
        }
    });
}

GC_API GCWritePortStacked(PORT_HANDLE hPort, PORT_REGISTER_STACK_ENTRY* pEntries, size_t* piNumEntries)
{
    return GuardedCall(__func__, [&] {
        auto port = Lookup<CPort>(hPort);
        Require(pEntries, "pEntries");
        Require(piNumEntries, "piNumEntries");
        const size_t count = *piNumEntries;
        *piNumEntries = 0;
        for (size_t i = 0; i < count; ++i)
        {
            Require(pEntries[i].pBuffer, "pEntries[i].pBuffer");
            port->WritePort(pEntries[i].Address, pEntries[i].pBuffer, pEntries[i].Size);
            *piNumEntries = i + 1;
        }
    });
}

GC_API GCGetPortURL(PORT_HANDLE hPort, char* sURL, size_t* piSize)
{
    return GuardedCall(__func__, [&] {
        auto port = Lookup<CPort>(hPort);
        Answer(port->UrlInfo(0, URL_INFO_URL), nullptr, sURL, piSize);
    });
}

GC_API GCGetPortInfo(PORT_HANDLE hPort, PORT_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer, size_t* piSize)
{
    return GuardedCall(__func__, [&] { Answer(Lookup<CPort>(hPort)->PortInfo(iInfoCmd), piType, pBuffer, piSize); });
}

GC_API GCGetNumPortURLs(PORT_HANDLE hPort, uint32_t* piNumURLs)
{
    return GuardedCall(__func__, [&] {
        auto port = Lookup<CPort>(hPort);
        Require(piNumURLs, "piNumURLs");
        *piNumURLs = static_cast<uint32_t>(port->PortUrls().size());
    });
}

GC_API GCGetPortURLInfo(PORT_HANDLE hPort, uint32_t iURLIndex, URL_INFO_CMD iInfoCmd, INFO_DATATYPE* piType,
                        void* pBuffer, size_t* piSize)
{
    return GuardedCall(__func__, [&] {
        Answer(Lookup<CPort>(hPort)->UrlInfo(iURLIndex, iInfoCmd), piType, pBuffer, piSize);
    });
}

GC_API GCRegisterEvent(EVENTSRC_HANDLE hEventSrc, EVENT_TYPE iEventID, EVENT_HANDLE* phEvent)
{
    return GuardedCall(__func__, [&] {
        auto module = Lookup<CModule>(hEventSrc);
        Require(phEvent, "phEvent");
        *phEvent = module->RegisterEvent(iEventID)->Handle();
    });
}

GC_API GCUnregisterEvent(EVENTSRC_HANDLE hEventSrc, EVENT_TYPE iEventID)
{
    return GuardedCall(__func__, [&] { Lookup<CModule>(hEventSrc)->UnregisterEvent(iEventID); });
}

GC_API EventGetData(EVENT_HANDLE hEvent, void* pBuffer, size_t* piSize, uint64_t iTimeout)
{
    return GuardedCall(__func__, [&] { return Lookup<CEvent>(hEvent)->GetData(pBuffer, piSize, iTimeout); });
}

GC_API EventGetDataInfo(EVENT_HANDLE hEvent, const void* pInBuffer, size_t iInSize, EVENT_DATA_INFO_CMD iInfoCmd,
                        INFO_DATATYPE* piType, void* pOutBuffer, size_t* piOutSize)
{
    return GuardedCall(__func__, [&] {
        Answer(Lookup<CEvent>(hEvent)->DataInfo(pInBuffer, iInSize, iInfoCmd), piType, pOutBuffer, piOutSize);
    });
}

GC_API EventGetInfo(EVENT_HANDLE hEvent, EVENT_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer,
                    size_t* piSize)
{
    return GuardedCall(__func__, [&] { Answer(Lookup<CEvent>(hEvent)->Info(iInfoCmd), piType, pBuffer, piSize); });
}

GC_API EventFlush(EVENT_HANDLE hEvent)
{
    return GuardedCall(__func__, [&] { Lookup<CEvent>(hEvent)->Flush(); });
}

GC_API EventKill(EVENT_HANDLE hEvent)
{
    return GuardedCall(__func__, [&] { Lookup<CEvent>(hEvent)->Kill(); });
}

} // namespace GenTL
