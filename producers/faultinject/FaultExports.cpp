// The GenTL entry points of the fault-injection producer. Each one is thin: the rule engine
// decides first (Call), then the body validates its handle and works on the State under its
// mutex. Every failure records the thread's last error.
#include <algorithm>
#include <chrono>
#include <cstring>
#include <new>
#include <string>
#include <thread>

#include <GenTL/GenTL.h>

#include "FaultProducer.h"

using namespace GenTL;
using QvFault::Buffer;
using QvFault::Event;
using QvFault::Fail;
using QvFault::InfoValue;
using QvFault::Module;
using QvFault::Port;
using QvFault::State;

namespace
{
using Lock = std::unique_lock<std::mutex>;

template <typename Body>
GC_ERROR Call(QvFaultFunction function, const void* handle, size_t* sizeOut, Body&& body, bool needsInit = true)
{
    State& state = State::Get();
    QvFault::Decision decision;
    {
        std::lock_guard<std::mutex> lock(state.mutex);
        decision = state.EnterLocked(function, handle);
    }
    if (decision.applies && decision.rule.delayMs != 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(decision.rule.delayMs));
    if (decision.applies && decision.rule.result != GC_ERR_SUCCESS)
    {
        const QvFaultRule& rule = decision.rule;
        const size_t length = strnlen(rule.lastErrorText, sizeof(rule.lastErrorText));
        const std::string text = length != 0 ? std::string(rule.lastErrorText, length)
                                             : std::string(QvFault::FunctionName(function)) + " failed (injected).";
        Fail(rule.lastErrorCode != 0 ? rule.lastErrorCode : rule.result, text);
        return rule.result;
    }
    GC_ERROR result;
    try
    {
        Lock lock(state.mutex);
        if (needsInit && state.initCount <= 0)
            return Fail(GC_ERR_NOT_INITIALIZED, "GCInitLib has not been called.");
        result = body(lock);
    }
    catch (const std::bad_alloc&)
    {
        result = Fail(GC_ERR_OUT_OF_MEMORY, "Out of memory.");
    }
    catch (...)
    {
        result = Fail(GC_ERR_ERROR, "Unexpected failure.");
    }
    if (result == GC_ERR_SUCCESS && decision.applies && sizeOut != nullptr && decision.rule.sizeAdjust != 0)
    {
        const int64_t adjusted = static_cast<int64_t>(*sizeOut) + decision.rule.sizeAdjust;
        *sizeOut = adjusted < 0 ? 0 : static_cast<size_t>(adjusted);
    }
    return result;
}

GC_ERROR InvalidHandle()
{
    return Fail(GC_ERR_INVALID_HANDLE, "The handle is invalid.");
}

GC_ERROR InvalidParameter(const char* what)
{
    return Fail(GC_ERR_INVALID_PARAMETER, std::string(what) + " is invalid.");
}

// Module information: override first, then the default answer.
GC_ERROR ModuleInfo(State& state, QvFaultModule kind, const Buffer* buffer, int32_t command, INFO_DATATYPE* piType,
                    void* pBuffer, size_t* piSize)
{
    const auto& overrides = kind == QV_FAULT_MODULE_BUFFER ? state.bufferInfoOverrides : state.ModuleAt(kind).infoOverrides;
    auto it = overrides.find(command);
    if (it != overrides.end())
        return QvFault::AnswerInfo(it->second, piType, pBuffer, piSize);
    InfoValue value;
    if (!state.DefaultInfoLocked(kind, command, buffer, value))
        return Fail(GC_ERR_NOT_IMPLEMENTED, "The information command is not supported.");
    return QvFault::AnswerInfo(value, piType, pBuffer, piSize);
}

GC_ERROR ReadPortLocked(Port& port, uint64_t address, void* pBuffer, size_t* piSize)
{
    if (pBuffer == nullptr || piSize == nullptr)
        return InvalidParameter("pBuffer or piSize");
    if (address > port.memory.size() || *piSize > port.memory.size() - address)
        return Fail(GC_ERR_INVALID_ADDRESS, "The address range lies outside the register space.");
    std::memcpy(pBuffer, port.memory.data() + address, *piSize);
    return GC_ERR_SUCCESS;
}

GC_ERROR WritePortLocked(State& state, Port& port, QvFaultModule kind, uint64_t address, const void* pBuffer,
                         size_t* piSize)
{
    if (pBuffer == nullptr || piSize == nullptr)
        return InvalidParameter("pBuffer or piSize");
    if (kind == QV_FAULT_MODULE_REMOTE_DEVICE && state.deviceAccess == DEVICE_ACCESS_READONLY)
        return Fail(GC_ERR_ACCESS_DENIED, "The device is open read-only.");
    if (address > port.memory.size() || *piSize > port.memory.size() - address)
        return Fail(GC_ERR_INVALID_ADDRESS, "The address range lies outside the register space.");
    std::memcpy(port.memory.data() + address, pBuffer, *piSize);
    if (kind == QV_FAULT_MODULE_REMOTE_DEVICE)
    {
        if (address <= QvFault::kRegAcquisitionStart && address + *piSize > QvFault::kRegAcquisitionStart)
            std::memset(port.memory.data() + QvFault::kRegAcquisitionActive, 1, 1);
        if (address <= QvFault::kRegAcquisitionStop && address + *piSize > QvFault::kRegAcquisitionStop)
            std::memset(port.memory.data() + QvFault::kRegAcquisitionActive, 0, 1);
        state.UpdateCameraLocked();
    }
    return GC_ERR_SUCCESS;
}

// Decodes an event record previously returned by EventGetData.
GC_ERROR EventDataInfo(const Event& event, const uint8_t* in, size_t inSize, int32_t command, INFO_DATATYPE* piType,
                       void* pOut, size_t* piOutSize)
{
    if (in == nullptr)
        return InvalidParameter("pInBuffer");
    InfoValue value;
    switch (event.type)
    {
    case EVENT_ERROR:
        if (inSize < sizeof(int32_t))
            return InvalidParameter("iInSize");
        if (command == EVENT_DATA_ID)
        {
            int32_t code = 0;
            std::memcpy(&code, in, sizeof(code));
            value = QvFault::ScalarInfo<int32_t>(INFO_DATATYPE_INT32, code);
        }
        else if (command == EVENT_DATA_VALUE)
            value = QvFault::StringInfo(std::string(reinterpret_cast<const char*>(in) + 4,
                                                    strnlen(reinterpret_cast<const char*>(in) + 4, inSize - 4)));
        else
            return Fail(GC_ERR_NOT_IMPLEMENTED, "The information command is not supported.");
        break;
    case EVENT_NEW_BUFFER:
    {
        if (inSize < sizeof(EVENT_NEW_BUFFER_DATA))
            return InvalidParameter("iInSize");
        EVENT_NEW_BUFFER_DATA data;
        std::memcpy(&data, in, sizeof(data));
        if (command == EVENT_DATA_ID)
            value = QvFault::ScalarInfo<void*>(INFO_DATATYPE_PTR, data.BufferHandle);
        else if (command == EVENT_DATA_VALUE)
            value = QvFault::ScalarInfo<void*>(INFO_DATATYPE_PTR, data.pUserPointer);
        else
            return Fail(GC_ERR_NOT_IMPLEMENTED, "The information command is not supported.");
        break;
    }
    case EVENT_FEATURE_INVALIDATE:
    case EVENT_FEATURE_CHANGE:
    {
        const char* text = reinterpret_cast<const char*>(in);
        const size_t nameLength = strnlen(text, inSize);
        if (command == EVENT_DATA_ID)
            value = QvFault::StringInfo(std::string(text, nameLength));
        else if (command == EVENT_DATA_VALUE && event.type == EVENT_FEATURE_CHANGE && nameLength < inSize)
            value = QvFault::StringInfo(std::string(text + nameLength + 1, strnlen(text + nameLength + 1, inSize - nameLength - 1)));
        else
            return Fail(GC_ERR_NOT_IMPLEMENTED, "The information command is not supported.");
        break;
    }
    default:
    {
        if (inSize < sizeof(uint64_t))
            return InvalidParameter("iInSize");
        uint64_t id = 0;
        std::memcpy(&id, in, sizeof(id));
        if (command == EVENT_DATA_ID)
        {
            char hex[32];
            snprintf(hex, sizeof(hex), "%04llX", static_cast<unsigned long long>(id));
            value = QvFault::StringInfo(hex);
        }
        else if (command == EVENT_DATA_VALUE)
        {
            value.type = INFO_DATATYPE_BUFFER;
            value.data.assign(in + sizeof(uint64_t), in + inSize);
        }
        else if (command == EVENT_DATA_NUMID)
            value = QvFault::ScalarInfo<uint64_t>(INFO_DATATYPE_UINT64, id);
        else
            return Fail(GC_ERR_NOT_IMPLEMENTED, "The information command is not supported.");
        break;
    }
    }
    return QvFault::AnswerInfo(value, piType, pOut, piOutSize);
}

bool EventAllowedOn(QvFaultModule kind, EVENT_TYPE type)
{
    switch (type)
    {
    case EVENT_ERROR:
    case EVENT_FEATURE_INVALIDATE:
    case EVENT_FEATURE_CHANGE:
    case EVENT_MODULE: return kind != QV_FAULT_MODULE_REMOTE_DEVICE;
    case EVENT_NEW_BUFFER: return kind == QV_FAULT_MODULE_STREAM;
    case EVENT_REMOTE_DEVICE: return kind == QV_FAULT_MODULE_DEVICE;
    default: return false;
    }
}

GC_ERROR CheckIndex(uint32_t index, bool listed)
{
    if (!listed || index != 0)
        return Fail(GC_ERR_INVALID_INDEX, "The index is out of range.");
    return GC_ERR_SUCCESS;
}
} // namespace

namespace GenTL
{
// ---- Library -------------------------------------------------------------------------------

GC_API GCInitLib(void)
{
    return Call(QV_FAULT_GCInitLib, nullptr, nullptr, [](Lock&) -> GC_ERROR {
        ++State::Get().initCount;
        return GC_ERR_SUCCESS;
    }, false);
}

GC_API GCCloseLib(void)
{
    return Call(QV_FAULT_GCCloseLib, nullptr, nullptr, [](Lock&) -> GC_ERROR {
        State& state = State::Get();
        if (--state.initCount == 0)
            state.CloseModuleLocked(QV_FAULT_MODULE_SYSTEM);
        return GC_ERR_SUCCESS;
    });
}

GC_API GCGetInfo(TL_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer, size_t* piSize)
{
    return Call(QV_FAULT_GCGetInfo, nullptr, piSize, [&](Lock&) -> GC_ERROR {
        return ModuleInfo(State::Get(), QV_FAULT_MODULE_SYSTEM, nullptr, iInfoCmd, piType, pBuffer, piSize);
    }, false);
}

GC_API GCGetLastError(GC_ERROR* piErrorCode, char* sErrText, size_t* piSize)
{
    State& state = State::Get();
    QvFault::Decision decision;
    {
        std::lock_guard<std::mutex> lock(state.mutex);
        decision = state.EnterLocked(QV_FAULT_GCGetLastError, nullptr);
    }
    const QvFaultRule& rule = decision.rule;
    if (decision.applies && rule.delayMs != 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(rule.delayMs));
    // A failing GCGetLastError must not overwrite the error it is asked about.
    if (decision.applies && rule.result != GC_ERR_SUCCESS)
        return rule.result;
    if (piErrorCode == nullptr || piSize == nullptr)
        return GC_ERR_INVALID_PARAMETER;
    const QvFault::LastError& lastError = QvFault::ThreadLastError();
    GC_ERROR code = lastError.code;
    std::string text = lastError.text;
    if (decision.applies && rule.lastErrorCode != 0)
        code = rule.lastErrorCode;
    if (decision.applies && rule.lastErrorText[0] != '\0')
        text.assign(rule.lastErrorText, strnlen(rule.lastErrorText, sizeof(rule.lastErrorText)));
    *piErrorCode = code;
    const size_t needed = text.size() + 1;
    if (sErrText != nullptr)
    {
        if (*piSize < needed)
            return GC_ERR_BUFFER_TOO_SMALL;
        std::memcpy(sErrText, text.c_str(), needed);
    }
    *piSize = needed;
    if (decision.applies && rule.sizeAdjust != 0)
    {
        const int64_t adjusted = static_cast<int64_t>(*piSize) + rule.sizeAdjust;
        *piSize = adjusted < 0 ? 0 : static_cast<size_t>(adjusted);
    }
    return GC_ERR_SUCCESS;
}

// ---- System --------------------------------------------------------------------------------

GC_API TLOpen(TL_HANDLE* phTL)
{
    return Call(QV_FAULT_TLOpen, nullptr, nullptr, [&](Lock&) -> GC_ERROR {
        if (phTL == nullptr)
            return InvalidParameter("phTL");
        Module& system = State::Get().ModuleAt(QV_FAULT_MODULE_SYSTEM);
        if (system.open)
            return Fail(GC_ERR_RESOURCE_IN_USE, "The system is already open.");
        system.open = true;
        *phTL = &system;
        return GC_ERR_SUCCESS;
    });
}

GC_API TLClose(TL_HANDLE hTL)
{
    return Call(QV_FAULT_TLClose, hTL, nullptr, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        if (state.OpenModuleLocked(hTL, QV_FAULT_MODULE_SYSTEM) == nullptr)
            return InvalidHandle();
        state.CloseModuleLocked(QV_FAULT_MODULE_SYSTEM);
        state.interfaceListUpdated = false;
        return GC_ERR_SUCCESS;
    });
}

GC_API TLGetInfo(TL_HANDLE hTL, TL_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer, size_t* piSize)
{
    return Call(QV_FAULT_TLGetInfo, hTL, piSize, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        if (state.OpenModuleLocked(hTL, QV_FAULT_MODULE_SYSTEM) == nullptr)
            return InvalidHandle();
        return ModuleInfo(state, QV_FAULT_MODULE_SYSTEM, nullptr, iInfoCmd, piType, pBuffer, piSize);
    });
}

GC_API TLGetNumInterfaces(TL_HANDLE hTL, uint32_t* piNumIfaces)
{
    return Call(QV_FAULT_TLGetNumInterfaces, hTL, nullptr, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        if (state.OpenModuleLocked(hTL, QV_FAULT_MODULE_SYSTEM) == nullptr)
            return InvalidHandle();
        if (piNumIfaces == nullptr)
            return InvalidParameter("piNumIfaces");
        *piNumIfaces = state.InterfaceListedLocked() ? 1 : 0;
        return GC_ERR_SUCCESS;
    });
}

GC_API TLGetInterfaceID(TL_HANDLE hTL, uint32_t iIndex, char* sID, size_t* piSize)
{
    return Call(QV_FAULT_TLGetInterfaceID, hTL, piSize, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        if (state.OpenModuleLocked(hTL, QV_FAULT_MODULE_SYSTEM) == nullptr)
            return InvalidHandle();
        if (GC_ERROR err = CheckIndex(iIndex, state.InterfaceListedLocked()))
            return err;
        return QvFault::AnswerString(QvFault::kInterfaceID, sID, piSize);
    });
}

GC_API TLGetInterfaceInfo(TL_HANDLE hTL, const char* sIfaceID, INTERFACE_INFO_CMD iInfoCmd, INFO_DATATYPE* piType,
                          void* pBuffer, size_t* piSize)
{
    return Call(QV_FAULT_TLGetInterfaceInfo, hTL, piSize, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        if (state.OpenModuleLocked(hTL, QV_FAULT_MODULE_SYSTEM) == nullptr)
            return InvalidHandle();
        if (sIfaceID == nullptr || std::strcmp(sIfaceID, QvFault::kInterfaceID) != 0 || !state.InterfaceListedLocked())
            return Fail(GC_ERR_INVALID_ID, "Unknown interface ID.");
        return ModuleInfo(state, QV_FAULT_MODULE_INTERFACE, nullptr, iInfoCmd, piType, pBuffer, piSize);
    });
}

GC_API TLOpenInterface(TL_HANDLE hTL, const char* sIfaceID, IF_HANDLE* phIface)
{
    return Call(QV_FAULT_TLOpenInterface, hTL, nullptr, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        if (state.OpenModuleLocked(hTL, QV_FAULT_MODULE_SYSTEM) == nullptr)
            return InvalidHandle();
        if (phIface == nullptr)
            return InvalidParameter("phIface");
        if (sIfaceID == nullptr || std::strcmp(sIfaceID, QvFault::kInterfaceID) != 0 || !state.InterfaceListedLocked())
            return Fail(GC_ERR_INVALID_ID, "Unknown interface ID.");
        Module& interface = state.ModuleAt(QV_FAULT_MODULE_INTERFACE);
        if (interface.open)
            return Fail(GC_ERR_RESOURCE_IN_USE, "The interface is already open.");
        interface.open = true;
        *phIface = &interface;
        return GC_ERR_SUCCESS;
    });
}

GC_API TLUpdateInterfaceList(TL_HANDLE hTL, bool8_t* pbChanged, uint64_t /*iTimeout*/)
{
    return Call(QV_FAULT_TLUpdateInterfaceList, hTL, nullptr, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        if (state.OpenModuleLocked(hTL, QV_FAULT_MODULE_SYSTEM) == nullptr)
            return InvalidHandle();
        if (pbChanged != nullptr)
            *pbChanged = state.listChangedMode[0] >= 0 ? state.listChangedMode[0] != 0 : !state.interfaceListUpdated;
        state.interfaceListUpdated = true;
        return GC_ERR_SUCCESS;
    });
}

// ---- Interface -----------------------------------------------------------------------------

GC_API IFClose(IF_HANDLE hIface)
{
    return Call(QV_FAULT_IFClose, hIface, nullptr, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        if (state.OpenModuleLocked(hIface, QV_FAULT_MODULE_INTERFACE) == nullptr)
            return InvalidHandle();
        state.CloseModuleLocked(QV_FAULT_MODULE_INTERFACE);
        state.deviceListUpdated = false;
        return GC_ERR_SUCCESS;
    });
}

GC_API IFGetInfo(IF_HANDLE hIface, INTERFACE_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer, size_t* piSize)
{
    return Call(QV_FAULT_IFGetInfo, hIface, piSize, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        if (state.OpenModuleLocked(hIface, QV_FAULT_MODULE_INTERFACE) == nullptr)
            return InvalidHandle();
        return ModuleInfo(state, QV_FAULT_MODULE_INTERFACE, nullptr, iInfoCmd, piType, pBuffer, piSize);
    });
}

GC_API IFGetNumDevices(IF_HANDLE hIface, uint32_t* piNumDevices)
{
    return Call(QV_FAULT_IFGetNumDevices, hIface, nullptr, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        if (state.OpenModuleLocked(hIface, QV_FAULT_MODULE_INTERFACE) == nullptr)
            return InvalidHandle();
        if (piNumDevices == nullptr)
            return InvalidParameter("piNumDevices");
        *piNumDevices = state.DeviceListedLocked() ? 1 : 0;
        return GC_ERR_SUCCESS;
    });
}

GC_API IFGetDeviceID(IF_HANDLE hIface, uint32_t iIndex, char* sIDeviceID, size_t* piSize)
{
    return Call(QV_FAULT_IFGetDeviceID, hIface, piSize, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        if (state.OpenModuleLocked(hIface, QV_FAULT_MODULE_INTERFACE) == nullptr)
            return InvalidHandle();
        if (GC_ERROR err = CheckIndex(iIndex, state.DeviceListedLocked()))
            return err;
        return QvFault::AnswerString(QvFault::kDeviceID, sIDeviceID, piSize);
    });
}

GC_API IFUpdateDeviceList(IF_HANDLE hIface, bool8_t* pbChanged, uint64_t /*iTimeout*/)
{
    return Call(QV_FAULT_IFUpdateDeviceList, hIface, nullptr, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        if (state.OpenModuleLocked(hIface, QV_FAULT_MODULE_INTERFACE) == nullptr)
            return InvalidHandle();
        if (pbChanged != nullptr)
            *pbChanged = state.listChangedMode[1] >= 0 ? state.listChangedMode[1] != 0 : !state.deviceListUpdated;
        state.deviceListUpdated = true;
        return GC_ERR_SUCCESS;
    });
}

GC_API IFGetDeviceInfo(IF_HANDLE hIface, const char* sDeviceID, DEVICE_INFO_CMD iInfoCmd, INFO_DATATYPE* piType,
                       void* pBuffer, size_t* piSize)
{
    return Call(QV_FAULT_IFGetDeviceInfo, hIface, piSize, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        if (state.OpenModuleLocked(hIface, QV_FAULT_MODULE_INTERFACE) == nullptr)
            return InvalidHandle();
        if (sDeviceID == nullptr || std::strcmp(sDeviceID, QvFault::kDeviceID) != 0 || !state.DeviceListedLocked())
            return Fail(GC_ERR_INVALID_ID, "Unknown device ID.");
        return ModuleInfo(state, QV_FAULT_MODULE_DEVICE, nullptr, iInfoCmd, piType, pBuffer, piSize);
    });
}

GC_API IFOpenDevice(IF_HANDLE hIface, const char* sDeviceID, DEVICE_ACCESS_FLAGS iOpenFlag, DEV_HANDLE* phDevice)
{
    return Call(QV_FAULT_IFOpenDevice, hIface, nullptr, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        if (state.OpenModuleLocked(hIface, QV_FAULT_MODULE_INTERFACE) == nullptr)
            return InvalidHandle();
        if (phDevice == nullptr)
            return InvalidParameter("phDevice");
        if (sDeviceID == nullptr || std::strcmp(sDeviceID, QvFault::kDeviceID) != 0 || !state.DeviceListedLocked())
            return Fail(GC_ERR_INVALID_ID, "Unknown device ID.");
        if (iOpenFlag < DEVICE_ACCESS_NONE || iOpenFlag > DEVICE_ACCESS_EXCLUSIVE)
            return InvalidParameter("iOpenFlag");
        Module& device = state.ModuleAt(QV_FAULT_MODULE_DEVICE);
        if (device.open)
            return Fail(GC_ERR_RESOURCE_IN_USE, "The device is already open.");
        device.open = true;
        state.ModuleAt(QV_FAULT_MODULE_REMOTE_DEVICE).open = true;
        state.deviceAccess = iOpenFlag;
        *phDevice = &device;
        return GC_ERR_SUCCESS;
    });
}

GC_API IFGetParentTL(IF_HANDLE hIface, TL_HANDLE* phSystem)
{
    return Call(QV_FAULT_IFGetParentTL, hIface, nullptr, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        if (state.OpenModuleLocked(hIface, QV_FAULT_MODULE_INTERFACE) == nullptr)
            return InvalidHandle();
        if (phSystem == nullptr)
            return InvalidParameter("phSystem");
        *phSystem = &state.ModuleAt(QV_FAULT_MODULE_SYSTEM);
        return GC_ERR_SUCCESS;
    });
}

// ---- Device --------------------------------------------------------------------------------

GC_API DevClose(DEV_HANDLE hDevice)
{
    return Call(QV_FAULT_DevClose, hDevice, nullptr, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        if (state.OpenModuleLocked(hDevice, QV_FAULT_MODULE_DEVICE) == nullptr)
            return InvalidHandle();
        state.CloseModuleLocked(QV_FAULT_MODULE_DEVICE);
        return GC_ERR_SUCCESS;
    });
}

GC_API DevGetInfo(DEV_HANDLE hDevice, DEVICE_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer, size_t* piSize)
{
    return Call(QV_FAULT_DevGetInfo, hDevice, piSize, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        if (state.OpenModuleLocked(hDevice, QV_FAULT_MODULE_DEVICE) == nullptr)
            return InvalidHandle();
        return ModuleInfo(state, QV_FAULT_MODULE_DEVICE, nullptr, iInfoCmd, piType, pBuffer, piSize);
    });
}

GC_API DevGetNumDataStreams(DEV_HANDLE hDevice, uint32_t* piNumDataStreams)
{
    return Call(QV_FAULT_DevGetNumDataStreams, hDevice, nullptr, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        if (state.OpenModuleLocked(hDevice, QV_FAULT_MODULE_DEVICE) == nullptr)
            return InvalidHandle();
        if (piNumDataStreams == nullptr)
            return InvalidParameter("piNumDataStreams");
        *piNumDataStreams = 1;
        return GC_ERR_SUCCESS;
    });
}

GC_API DevGetDataStreamID(DEV_HANDLE hDevice, uint32_t iIndex, char* sDataStreamID, size_t* piSize)
{
    return Call(QV_FAULT_DevGetDataStreamID, hDevice, piSize, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        if (state.OpenModuleLocked(hDevice, QV_FAULT_MODULE_DEVICE) == nullptr)
            return InvalidHandle();
        if (GC_ERROR err = CheckIndex(iIndex, true))
            return err;
        return QvFault::AnswerString(QvFault::kStreamID, sDataStreamID, piSize);
    });
}

GC_API DevOpenDataStream(DEV_HANDLE hDevice, const char* sDataStreamID, DS_HANDLE* phDataStream)
{
    return Call(QV_FAULT_DevOpenDataStream, hDevice, nullptr, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        if (state.OpenModuleLocked(hDevice, QV_FAULT_MODULE_DEVICE) == nullptr)
            return InvalidHandle();
        if (phDataStream == nullptr)
            return InvalidParameter("phDataStream");
        if (sDataStreamID == nullptr || std::strcmp(sDataStreamID, QvFault::kStreamID) != 0)
            return Fail(GC_ERR_INVALID_ID, "Unknown data stream ID.");
        Module& stream = state.ModuleAt(QV_FAULT_MODULE_STREAM);
        if (stream.open)
            return Fail(GC_ERR_RESOURCE_IN_USE, "The data stream is already open.");
        stream.open = true;
        state.delivered = state.underruns = state.started = 0;
        *phDataStream = &stream;
        return GC_ERR_SUCCESS;
    });
}

GC_API DevGetPort(DEV_HANDLE hDevice, PORT_HANDLE* phRemoteDevice)
{
    return Call(QV_FAULT_DevGetPort, hDevice, nullptr, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        if (state.OpenModuleLocked(hDevice, QV_FAULT_MODULE_DEVICE) == nullptr)
            return InvalidHandle();
        if (phRemoteDevice == nullptr)
            return InvalidParameter("phRemoteDevice");
        *phRemoteDevice = &state.ModuleAt(QV_FAULT_MODULE_REMOTE_DEVICE);
        return GC_ERR_SUCCESS;
    });
}

GC_API DevGetParentIF(DEV_HANDLE hDevice, IF_HANDLE* phIface)
{
    return Call(QV_FAULT_DevGetParentIF, hDevice, nullptr, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        if (state.OpenModuleLocked(hDevice, QV_FAULT_MODULE_DEVICE) == nullptr)
            return InvalidHandle();
        if (phIface == nullptr)
            return InvalidParameter("phIface");
        *phIface = &state.ModuleAt(QV_FAULT_MODULE_INTERFACE);
        return GC_ERR_SUCCESS;
    });
}

// ---- Data stream ---------------------------------------------------------------------------

namespace
{
GC_ERROR Announce(DS_HANDLE hDataStream, void* pBuffer, size_t iSize, void* pPrivate, BUFFER_HANDLE* phBuffer,
                  bool allocate)
{
    State& state = State::Get();
    if (state.OpenModuleLocked(hDataStream, QV_FAULT_MODULE_STREAM) == nullptr)
        return InvalidHandle();
    if (phBuffer == nullptr || iSize == 0 || (!allocate && pBuffer == nullptr))
        return InvalidParameter("pBuffer, iSize or phBuffer");
    for (const auto& existing : state.buffers)
    {
        if (!allocate && existing->base == pBuffer)
            return Fail(GC_ERR_RESOURCE_IN_USE, "The memory is already announced.");
    }
    auto buffer = std::make_unique<Buffer>();
    buffer->port = state.bufferPortTemplate;
    if (allocate)
    {
        buffer->ownedMemory.assign(iSize, 0);
        buffer->base = buffer->ownedMemory.data();
    }
    else
        buffer->base = static_cast<uint8_t*>(pBuffer);
    buffer->size = iSize;
    buffer->userPointer = pPrivate;
    *phBuffer = buffer.get();
    state.buffers.push_back(std::move(buffer));
    return GC_ERR_SUCCESS;
}

void RemoveFrom(std::deque<Buffer*>& queue, Buffer* buffer)
{
    queue.erase(std::remove(queue.begin(), queue.end(), buffer), queue.end());
}
} // namespace

GC_API DSAnnounceBuffer(DS_HANDLE hDataStream, void* pBuffer, size_t iSize, void* pPrivate, BUFFER_HANDLE* phBuffer)
{
    return Call(QV_FAULT_DSAnnounceBuffer, hDataStream, nullptr,
                [&](Lock&) -> GC_ERROR { return Announce(hDataStream, pBuffer, iSize, pPrivate, phBuffer, false); });
}

GC_API DSAllocAndAnnounceBuffer(DS_HANDLE hDataStream, size_t iSize, void* pPrivate, BUFFER_HANDLE* phBuffer)
{
    return Call(QV_FAULT_DSAllocAndAnnounceBuffer, hDataStream, nullptr,
                [&](Lock&) -> GC_ERROR { return Announce(hDataStream, nullptr, iSize, pPrivate, phBuffer, true); });
}

GC_API DSFlushQueue(DS_HANDLE hDataStream, ACQ_QUEUE_TYPE iOperation)
{
    return Call(QV_FAULT_DSFlushQueue, hDataStream, nullptr, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        if (state.OpenModuleLocked(hDataStream, QV_FAULT_MODULE_STREAM) == nullptr)
            return InvalidHandle();
        auto toInput = [&](Buffer* buffer) {
            if (!buffer->inInputPool)
            {
                buffer->inInputPool = true;
                buffer->sizeFilled = 0;
                buffer->newData = false;
                state.inputPool.push_back(buffer);
            }
        };
        switch (iOperation)
        {
        case ACQ_QUEUE_INPUT_TO_OUTPUT:
            for (Buffer* buffer : state.inputPool)
            {
                buffer->inInputPool = false;
                buffer->inOutputQueue = true;
                buffer->newData = false;
                state.outputQueue.push_back(buffer);
            }
            state.inputPool.clear();
            state.eventCondition.notify_all();
            break;
        case ACQ_QUEUE_OUTPUT_DISCARD:
            for (Buffer* buffer : state.outputQueue)
                buffer->inOutputQueue = false;
            state.outputQueue.clear();
            break;
        case ACQ_QUEUE_ALL_TO_INPUT:
            for (Buffer* buffer : state.outputQueue)
                buffer->inOutputQueue = false;
            state.outputQueue.clear();
            for (auto& buffer : state.buffers)
                toInput(buffer.get());
            break;
        case ACQ_QUEUE_UNQUEUED_TO_INPUT:
            for (auto& buffer : state.buffers)
            {
                if (!buffer->inOutputQueue)
                    toInput(buffer.get());
            }
            break;
        case ACQ_QUEUE_ALL_DISCARD:
            for (auto& buffer : state.buffers)
                buffer->inInputPool = buffer->inOutputQueue = false;
            state.inputPool.clear();
            state.outputQueue.clear();
            break;
        default: return InvalidParameter("iOperation");
        }
        return GC_ERR_SUCCESS;
    });
}

GC_API DSStartAcquisition(DS_HANDLE hDataStream, ACQ_START_FLAGS /*iStartFlags*/, uint64_t iNumToAcquire)
{
    return Call(QV_FAULT_DSStartAcquisition, hDataStream, nullptr, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        if (state.OpenModuleLocked(hDataStream, QV_FAULT_MODULE_STREAM) == nullptr)
            return InvalidHandle();
        if (state.acquiring)
            return Fail(GC_ERR_RESOURCE_IN_USE, "The acquisition is already running.");
        if (state.buffers.empty())
            return Fail(GC_ERR_RESOURCE_EXHAUSTED, "No buffer is announced.");
        state.acquiring = true;
        state.toAcquire = iNumToAcquire;
        state.delivered = 0;
        ++state.started;
        return GC_ERR_SUCCESS;
    });
}

GC_API DSStopAcquisition(DS_HANDLE hDataStream, ACQ_STOP_FLAGS /*iStopFlags*/)
{
    return Call(QV_FAULT_DSStopAcquisition, hDataStream, nullptr, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        if (state.OpenModuleLocked(hDataStream, QV_FAULT_MODULE_STREAM) == nullptr)
            return InvalidHandle();
        if (!state.acquiring)
            return Fail(GC_ERR_RESOURCE_IN_USE, "The acquisition is not running.");
        state.acquiring = false;
        return GC_ERR_SUCCESS;
    });
}

GC_API DSGetInfo(DS_HANDLE hDataStream, STREAM_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer, size_t* piSize)
{
    return Call(QV_FAULT_DSGetInfo, hDataStream, piSize, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        if (state.OpenModuleLocked(hDataStream, QV_FAULT_MODULE_STREAM) == nullptr)
            return InvalidHandle();
        return ModuleInfo(state, QV_FAULT_MODULE_STREAM, nullptr, iInfoCmd, piType, pBuffer, piSize);
    });
}

GC_API DSGetBufferID(DS_HANDLE hDataStream, uint32_t iIndex, BUFFER_HANDLE* phBuffer)
{
    return Call(QV_FAULT_DSGetBufferID, hDataStream, nullptr, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        if (state.OpenModuleLocked(hDataStream, QV_FAULT_MODULE_STREAM) == nullptr)
            return InvalidHandle();
        if (phBuffer == nullptr)
            return InvalidParameter("phBuffer");
        if (iIndex >= state.buffers.size())
            return Fail(GC_ERR_INVALID_INDEX, "The index is out of range.");
        *phBuffer = state.buffers[iIndex].get();
        return GC_ERR_SUCCESS;
    });
}

GC_API DSClose(DS_HANDLE hDataStream)
{
    return Call(QV_FAULT_DSClose, hDataStream, nullptr, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        if (state.OpenModuleLocked(hDataStream, QV_FAULT_MODULE_STREAM) == nullptr)
            return InvalidHandle();
        state.CloseModuleLocked(QV_FAULT_MODULE_STREAM);
        return GC_ERR_SUCCESS;
    });
}

GC_API DSRevokeBuffer(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, void** pBuffer, void** pPrivate)
{
    return Call(QV_FAULT_DSRevokeBuffer, hDataStream, nullptr, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        if (state.OpenModuleLocked(hDataStream, QV_FAULT_MODULE_STREAM) == nullptr)
            return InvalidHandle();
        Buffer* buffer = state.BufferLocked(hBuffer);
        if (buffer == nullptr)
            return Fail(GC_ERR_INVALID_BUFFER, "The buffer is not announced.");
        if (buffer->inInputPool || buffer->inOutputQueue)
            return Fail(GC_ERR_RESOURCE_IN_USE, "The buffer is still queued.");
        if (pBuffer != nullptr)
            *pBuffer = buffer->ownedMemory.empty() ? buffer->base : nullptr;
        if (pPrivate != nullptr)
            *pPrivate = buffer->userPointer;
        state.DropEventsOfLocked(buffer);
        auto it = std::find_if(state.buffers.begin(), state.buffers.end(),
                               [&](const std::unique_ptr<Buffer>& candidate) { return candidate.get() == buffer; });
        state.buffers.erase(it);
        return GC_ERR_SUCCESS;
    });
}

GC_API DSQueueBuffer(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer)
{
    return Call(QV_FAULT_DSQueueBuffer, hDataStream, nullptr, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        if (state.OpenModuleLocked(hDataStream, QV_FAULT_MODULE_STREAM) == nullptr)
            return InvalidHandle();
        Buffer* buffer = state.BufferLocked(hBuffer);
        if (buffer == nullptr)
            return Fail(GC_ERR_INVALID_BUFFER, "The buffer is not announced.");
        if (buffer->inInputPool)
            return Fail(GC_ERR_RESOURCE_IN_USE, "The buffer is already queued.");
        if (buffer->inOutputQueue)
        {
            RemoveFrom(state.outputQueue, buffer);
            buffer->inOutputQueue = false;
        }
        buffer->inInputPool = true;
        buffer->sizeFilled = 0;
        buffer->newData = false;
        state.inputPool.push_back(buffer);
        return GC_ERR_SUCCESS;
    });
}

GC_API DSGetBufferInfo(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, BUFFER_INFO_CMD iInfoCmd, INFO_DATATYPE* piType,
                       void* pBuffer, size_t* piSize)
{
    return Call(QV_FAULT_DSGetBufferInfo, hDataStream, piSize, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        if (state.OpenModuleLocked(hDataStream, QV_FAULT_MODULE_STREAM) == nullptr)
            return InvalidHandle();
        Buffer* buffer = state.BufferLocked(hBuffer);
        if (buffer == nullptr)
            return Fail(GC_ERR_INVALID_BUFFER, "The buffer is not announced.");
        return ModuleInfo(state, QV_FAULT_MODULE_BUFFER, buffer, iInfoCmd, piType, pBuffer, piSize);
    });
}

GC_API DSGetBufferChunkData(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, SINGLE_CHUNK_DATA* /*pChunkData*/,
                            size_t* piNumChunks)
{
    return Call(QV_FAULT_DSGetBufferChunkData, hDataStream, piNumChunks, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        if (state.OpenModuleLocked(hDataStream, QV_FAULT_MODULE_STREAM) == nullptr)
            return InvalidHandle();
        if (state.BufferLocked(hBuffer) == nullptr)
            return Fail(GC_ERR_INVALID_BUFFER, "The buffer is not announced.");
        if (piNumChunks == nullptr)
            return InvalidParameter("piNumChunks");
        *piNumChunks = 0; // the camera sends no chunk data
        return GC_ERR_SUCCESS;
    });
}

GC_API DSGetParentDev(DS_HANDLE hDataStream, DEV_HANDLE* phDevice)
{
    return Call(QV_FAULT_DSGetParentDev, hDataStream, nullptr, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        if (state.OpenModuleLocked(hDataStream, QV_FAULT_MODULE_STREAM) == nullptr)
            return InvalidHandle();
        if (phDevice == nullptr)
            return InvalidParameter("phDevice");
        *phDevice = &state.ModuleAt(QV_FAULT_MODULE_DEVICE);
        return GC_ERR_SUCCESS;
    });
}

GC_API DSGetNumBufferParts(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, uint32_t* piNumParts)
{
    return Call(QV_FAULT_DSGetNumBufferParts, hDataStream, nullptr, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        if (state.OpenModuleLocked(hDataStream, QV_FAULT_MODULE_STREAM) == nullptr)
            return InvalidHandle();
        if (state.BufferLocked(hBuffer) == nullptr)
            return Fail(GC_ERR_INVALID_BUFFER, "The buffer is not announced.");
        if (piNumParts == nullptr)
            return InvalidParameter("piNumParts");
        *piNumParts = 0; // single-part payloads only
        return GC_ERR_SUCCESS;
    });
}

GC_API DSGetBufferPartInfo(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, uint32_t /*iPartIndex*/,
                           BUFFER_PART_INFO_CMD /*iInfoCmd*/, INFO_DATATYPE* /*piType*/, void* /*pBuffer*/,
                           size_t* piSize)
{
    return Call(QV_FAULT_DSGetBufferPartInfo, hDataStream, piSize, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        if (state.OpenModuleLocked(hDataStream, QV_FAULT_MODULE_STREAM) == nullptr)
            return InvalidHandle();
        if (state.BufferLocked(hBuffer) == nullptr)
            return Fail(GC_ERR_INVALID_BUFFER, "The buffer is not announced.");
        return Fail(GC_ERR_INVALID_INDEX, "The buffer has no parts.");
    });
}

// ---- Ports ---------------------------------------------------------------------------------

GC_API GCGetPortInfo(PORT_HANDLE hPort, PORT_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer, size_t* piSize)
{
    return Call(QV_FAULT_GCGetPortInfo, hPort, piSize, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        QvFaultModule kind = QV_FAULT_MODULE_SYSTEM;
        Port* port = state.PortLocked(hPort, &kind);
        if (port == nullptr)
            return InvalidHandle();
        auto it = port->infoOverrides.find(iInfoCmd);
        if (it != port->infoOverrides.end())
            return QvFault::AnswerInfo(it->second, piType, pBuffer, piSize);
        InfoValue value;
        if (!state.DefaultPortInfoLocked(kind, iInfoCmd, value))
            return Fail(GC_ERR_NOT_IMPLEMENTED, "The information command is not supported.");
        return QvFault::AnswerInfo(value, piType, pBuffer, piSize);
    });
}

GC_API GCGetPortURL(PORT_HANDLE hPort, char* sURL, size_t* piSize)
{
    return Call(QV_FAULT_GCGetPortURL, hPort, piSize, [&](Lock&) -> GC_ERROR {
        Port* port = State::Get().PortLocked(hPort);
        if (port == nullptr)
            return InvalidHandle();
        if (port->urls.empty())
            return Fail(GC_ERR_NO_DATA, "The port has no description.");
        return QvFault::AnswerString(port->urls.front(), sURL, piSize);
    });
}

GC_API GCGetNumPortURLs(PORT_HANDLE hPort, uint32_t* piNumURLs)
{
    return Call(QV_FAULT_GCGetNumPortURLs, hPort, nullptr, [&](Lock&) -> GC_ERROR {
        Port* port = State::Get().PortLocked(hPort);
        if (port == nullptr)
            return InvalidHandle();
        if (piNumURLs == nullptr)
            return InvalidParameter("piNumURLs");
        *piNumURLs = static_cast<uint32_t>(port->urls.size());
        return GC_ERR_SUCCESS;
    });
}

GC_API GCGetPortURLInfo(PORT_HANDLE hPort, uint32_t iURLIndex, URL_INFO_CMD iInfoCmd, INFO_DATATYPE* piType,
                        void* pBuffer, size_t* piSize)
{
    return Call(QV_FAULT_GCGetPortURLInfo, hPort, piSize, [&](Lock&) -> GC_ERROR {
        Port* port = State::Get().PortLocked(hPort);
        if (port == nullptr)
            return InvalidHandle();
        if (iURLIndex >= port->urls.size())
            return Fail(GC_ERR_INVALID_INDEX, "The URL index is out of range.");
        const std::string& url = port->urls[iURLIndex];
        InfoValue value;
        switch (iInfoCmd)
        {
        case URL_INFO_URL: value = QvFault::StringInfo(url); break;
        case URL_INFO_SCHEMA_VER_MAJOR: value = QvFault::ScalarInfo<int32_t>(INFO_DATATYPE_INT32, 1); break;
        case URL_INFO_SCHEMA_VER_MINOR: value = QvFault::ScalarInfo<int32_t>(INFO_DATATYPE_INT32, 1); break;
        case URL_INFO_FILE_VER_MAJOR: value = QvFault::ScalarInfo<int32_t>(INFO_DATATYPE_INT32, 1); break;
        case URL_INFO_FILE_VER_MINOR:
        case URL_INFO_FILE_VER_SUBMINOR: value = QvFault::ScalarInfo<int32_t>(INFO_DATATYPE_INT32, 0); break;
        case URL_INFO_SCHEME:
            value = QvFault::ScalarInfo<int32_t>(INFO_DATATYPE_INT32,
                                                 url.compare(0, 5, "file:") == 0   ? URL_SCHEME_FILE
                                                 : url.compare(0, 5, "http:") == 0 ? URL_SCHEME_HTTP
                                                                                   : URL_SCHEME_LOCAL);
            break;
        default: return Fail(GC_ERR_NOT_IMPLEMENTED, "The information command is not supported.");
        }
        return QvFault::AnswerInfo(value, piType, pBuffer, piSize);
    });
}

GC_API GCReadPort(PORT_HANDLE hPort, uint64_t iAddress, void* pBuffer, size_t* piSize)
{
    return Call(QV_FAULT_GCReadPort, hPort, piSize, [&](Lock&) -> GC_ERROR {
        Port* port = State::Get().PortLocked(hPort);
        if (port == nullptr)
            return InvalidHandle();
        return ReadPortLocked(*port, iAddress, pBuffer, piSize);
    });
}

GC_API GCWritePort(PORT_HANDLE hPort, uint64_t iAddress, const void* pBuffer, size_t* piSize)
{
    return Call(QV_FAULT_GCWritePort, hPort, piSize, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        QvFaultModule kind = QV_FAULT_MODULE_SYSTEM;
        Port* port = state.PortLocked(hPort, &kind);
        if (port == nullptr)
            return InvalidHandle();
        return WritePortLocked(state, *port, kind, iAddress, pBuffer, piSize);
    });
}

GC_API GCReadPortStacked(PORT_HANDLE hPort, PORT_REGISTER_STACK_ENTRY* pEntries, size_t* piNumEntries)
{
    return Call(QV_FAULT_GCReadPortStacked, hPort, piNumEntries, [&](Lock&) -> GC_ERROR {
        Port* port = State::Get().PortLocked(hPort);
        if (port == nullptr)
            return InvalidHandle();
        if (pEntries == nullptr || piNumEntries == nullptr)
            return InvalidParameter("pEntries or piNumEntries");
        const size_t count = *piNumEntries;
        for (size_t i = 0; i < count; ++i)
        {
            size_t size = pEntries[i].Size;
            if (GC_ERROR err = ReadPortLocked(*port, pEntries[i].Address, pEntries[i].pBuffer, &size))
            {
                *piNumEntries = i;
                return err;
            }
        }
        return GC_ERR_SUCCESS;
    });
}

GC_API GCWritePortStacked(PORT_HANDLE hPort, PORT_REGISTER_STACK_ENTRY* pEntries, size_t* piNumEntries)
{
    return Call(QV_FAULT_GCWritePortStacked, hPort, piNumEntries, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        QvFaultModule kind = QV_FAULT_MODULE_SYSTEM;
        Port* port = state.PortLocked(hPort, &kind);
        if (port == nullptr)
            return InvalidHandle();
        if (pEntries == nullptr || piNumEntries == nullptr)
            return InvalidParameter("pEntries or piNumEntries");
        const size_t count = *piNumEntries;
        for (size_t i = 0; i < count; ++i)
        {
            size_t size = pEntries[i].Size;
            if (GC_ERROR err = WritePortLocked(state, *port, kind, pEntries[i].Address, pEntries[i].pBuffer, &size))
            {
                *piNumEntries = i;
                return err;
            }
        }
        return GC_ERR_SUCCESS;
    });
}

// ---- Events --------------------------------------------------------------------------------

GC_API GCRegisterEvent(EVENTSRC_HANDLE hEventSrc, EVENT_TYPE iEventID, EVENT_HANDLE* phEvent)
{
    return Call(QV_FAULT_GCRegisterEvent, hEventSrc, nullptr, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        QvFaultModule kind = QV_FAULT_MODULE_SYSTEM;
        if (state.PortLocked(hEventSrc, &kind) == nullptr)
            return InvalidHandle();
        if (phEvent == nullptr)
            return InvalidParameter("phEvent");
        if (!EventAllowedOn(kind, iEventID))
            return Fail(GC_ERR_NOT_IMPLEMENTED, "The event type is not supported by this module.");
        if (state.EventOfLocked(hEventSrc, iEventID) != nullptr)
            return Fail(GC_ERR_RESOURCE_IN_USE, "The event is already registered.");
        auto event = std::make_shared<Event>();
        event->source = hEventSrc;
        event->module = kind;
        event->type = iEventID;
        state.events.emplace(event.get(), event);
        *phEvent = event.get();
        return GC_ERR_SUCCESS;
    });
}

GC_API GCUnregisterEvent(EVENTSRC_HANDLE hEventSrc, EVENT_TYPE iEventID)
{
    return Call(QV_FAULT_GCUnregisterEvent, hEventSrc, nullptr, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        if (state.PortLocked(hEventSrc) == nullptr)
            return InvalidHandle();
        std::shared_ptr<Event> event = state.EventOfLocked(hEventSrc, iEventID);
        if (event == nullptr)
            return Fail(GC_ERR_NOT_AVAILABLE, "The event is not registered.");
        event->unregistered = true;
        state.events.erase(event.get());
        state.eventCondition.notify_all();
        return GC_ERR_SUCCESS;
    });
}

GC_API EventGetData(EVENT_HANDLE hEvent, void* pBuffer, size_t* piSize, uint64_t iTimeout)
{
    return Call(QV_FAULT_EventGetData, hEvent, piSize, [&](Lock& lock) -> GC_ERROR {
        State& state = State::Get();
        std::shared_ptr<Event> event = state.EventLocked(hEvent);
        if (event == nullptr)
            return InvalidHandle();
        if (pBuffer == nullptr || piSize == nullptr)
            return InvalidParameter("pBuffer or piSize");
        const bool newBuffer = event->type == EVENT_NEW_BUFFER;
        auto ready = [&] {
            return event->killPending || event->unregistered ||
                   (newBuffer ? !state.outputQueue.empty() : !event->queue.empty());
        };
        // Beyond about eleven days a time-out is as good as infinite, and chrono stays in range.
        const uint64_t kForeverMs = 1000000000ULL;
        if (iTimeout >= kForeverMs)
            state.eventCondition.wait(lock, ready);
        else if (!state.eventCondition.wait_for(lock, std::chrono::milliseconds(iTimeout), ready))
            return Fail(GC_ERR_TIMEOUT, "No event data arrived in time.");
        if (event->killPending || event->unregistered)
        {
            event->killPending = false;
            return Fail(GC_ERR_ABORT, "The wait was aborted.");
        }
        if (newBuffer)
        {
            if (*piSize < sizeof(EVENT_NEW_BUFFER_DATA))
                return Fail(GC_ERR_BUFFER_TOO_SMALL, "The buffer is too small.");
            Buffer* buffer = state.outputQueue.front();
            state.outputQueue.pop_front();
            buffer->inOutputQueue = false;
            EVENT_NEW_BUFFER_DATA data{buffer, buffer->userPointer};
            std::memcpy(pBuffer, &data, sizeof(data));
            *piSize = sizeof(data);
            return GC_ERR_SUCCESS;
        }
        const QvFault::Bytes& record = event->queue.front();
        if (*piSize < record.size())
            return Fail(GC_ERR_BUFFER_TOO_SMALL, "The buffer is too small.");
        if (!record.empty())
            std::memcpy(pBuffer, record.data(), record.size());
        *piSize = record.size();
        event->queue.pop_front();
        return GC_ERR_SUCCESS;
    });
}

GC_API EventGetDataInfo(EVENT_HANDLE hEvent, const void* pInBuffer, size_t iInSize, EVENT_DATA_INFO_CMD iInfoCmd,
                        INFO_DATATYPE* piType, void* pOutBuffer, size_t* piOutSize)
{
    return Call(QV_FAULT_EventGetDataInfo, hEvent, piOutSize, [&](Lock&) -> GC_ERROR {
        std::shared_ptr<Event> event = State::Get().EventLocked(hEvent);
        if (event == nullptr)
            return InvalidHandle();
        return EventDataInfo(*event, static_cast<const uint8_t*>(pInBuffer), iInSize, iInfoCmd, piType, pOutBuffer,
                             piOutSize);
    });
}

GC_API EventGetInfo(EVENT_HANDLE hEvent, EVENT_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer, size_t* piSize)
{
    return Call(QV_FAULT_EventGetInfo, hEvent, piSize, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        std::shared_ptr<Event> event = state.EventLocked(hEvent);
        if (event == nullptr)
            return InvalidHandle();
        const bool newBuffer = event->type == EVENT_NEW_BUFFER;
        InfoValue value;
        switch (iInfoCmd)
        {
        case EVENT_EVENT_TYPE: value = QvFault::ScalarInfo<int32_t>(INFO_DATATYPE_INT32, event->type); break;
        case EVENT_NUM_IN_QUEUE:
            value = QvFault::ScalarInfo<size_t>(INFO_DATATYPE_SIZET,
                                                newBuffer ? state.outputQueue.size() : event->queue.size());
            break;
        case EVENT_NUM_FIRED: value = QvFault::ScalarInfo<uint64_t>(INFO_DATATYPE_UINT64, event->fired); break;
        case EVENT_SIZE_MAX:
            value = QvFault::ScalarInfo<size_t>(INFO_DATATYPE_SIZET, newBuffer ? sizeof(EVENT_NEW_BUFFER_DATA) : 4096);
            break;
        case EVENT_INFO_DATA_SIZE_MAX: value = QvFault::ScalarInfo<size_t>(INFO_DATATYPE_SIZET, 4096); break;
        default: return Fail(GC_ERR_NOT_IMPLEMENTED, "The information command is not supported.");
        }
        return QvFault::AnswerInfo(value, piType, pBuffer, piSize);
    });
}

GC_API EventFlush(EVENT_HANDLE hEvent)
{
    return Call(QV_FAULT_EventFlush, hEvent, nullptr, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        std::shared_ptr<Event> event = state.EventLocked(hEvent);
        if (event == nullptr)
            return InvalidHandle();
        if (event->type == EVENT_NEW_BUFFER)
        {
            for (Buffer* buffer : state.outputQueue)
                buffer->inOutputQueue = false;
            state.outputQueue.clear();
        }
        event->queue.clear();
        return GC_ERR_SUCCESS;
    });
}

GC_API EventKill(EVENT_HANDLE hEvent)
{
    return Call(QV_FAULT_EventKill, hEvent, nullptr, [&](Lock&) -> GC_ERROR {
        State& state = State::Get();
        std::shared_ptr<Event> event = state.EventLocked(hEvent);
        if (event == nullptr)
            return InvalidHandle();
        event->killPending = true;
        state.eventCondition.notify_all();
        return GC_ERR_SUCCESS;
    });
}
} // namespace GenTL
