// The test-facing control table (FaultInjectControl.h).
#include <cstring>
#include <string>

#include "FaultProducer.h"

using namespace GenTL;
using QvFault::InfoValue;
using QvFault::Port;
using QvFault::State;

namespace
{
using Guard = std::lock_guard<std::mutex>;

bool IsFixedModule(QvFaultModule module)
{
    return module >= QV_FAULT_MODULE_SYSTEM && module < QV_FAULT_MODULE_BUFFER;
}

bool IsModule(QvFaultModule module)
{
    return module >= QV_FAULT_MODULE_SYSTEM && module < QV_FAULT_MODULE_COUNT;
}

Port& PortOf(State& state, QvFaultModule module)
{
    return module == QV_FAULT_MODULE_BUFFER ? state.bufferPortTemplate : state.ModuleAt(module).port;
}

void Reset()
{
    State& state = State::Get();
    Guard lock(state.mutex);
    state.ResetLocked();
}

void SetRule(QvFaultFunction function, const QvFaultRule* rule)
{
    if (function < 0 || function >= QV_FAULT_FUNCTION_COUNT || rule == nullptr)
        return;
    State& state = State::Get();
    Guard lock(state.mutex);
    state.rules[function].active = true;
    state.rules[function].rule = *rule;
    state.rules[function].matchingCalls = 0;
}

void ClearRule(QvFaultFunction function)
{
    if (function < 0 || function >= QV_FAULT_FUNCTION_COUNT)
        return;
    State& state = State::Get();
    Guard lock(state.mutex);
    state.rules[function] = QvFault::RuleSlot{};
}

uint32_t GetCallCount(QvFaultFunction function)
{
    if (function < 0 || function >= QV_FAULT_FUNCTION_COUNT)
        return 0;
    State& state = State::Get();
    Guard lock(state.mutex);
    return state.callCounts[function];
}

int32_t GetInitCount()
{
    State& state = State::Get();
    Guard lock(state.mutex);
    return state.initCount > 0 ? state.initCount : 0;
}

void SetLastError(int32_t code, const char* text)
{
    QvFault::Fail(code, text != nullptr ? text : "");
}

void* GetModuleHandle(QvFaultModule module)
{
    if (!IsFixedModule(module))
        return nullptr;
    State& state = State::Get();
    Guard lock(state.mutex);
    QvFault::Module& fixed = state.ModuleAt(module);
    return fixed.open ? &fixed : nullptr;
}

void* GetBufferHandle(uint32_t index)
{
    State& state = State::Get();
    Guard lock(state.mutex);
    return index < state.buffers.size() ? state.buffers[index].get() : nullptr;
}

int32_t PushEvent(void* hEventSrc, int32_t eventType, const void* data, size_t size)
{
    if (data == nullptr && size != 0)
        return GC_ERR_INVALID_PARAMETER;
    if (eventType == EVENT_NEW_BUFFER)
        return GC_ERR_INVALID_PARAMETER; // new-buffer records come from DeliverBuffers()
    State& state = State::Get();
    Guard lock(state.mutex);
    std::shared_ptr<QvFault::Event> event = state.EventOfLocked(hEventSrc, eventType);
    if (event == nullptr)
        return GC_ERR_NOT_AVAILABLE;
    const uint8_t* bytes = static_cast<const uint8_t*>(data);
    event->queue.emplace_back(bytes, bytes + size);
    ++event->fired;
    state.eventCondition.notify_all();
    return GC_ERR_SUCCESS;
}

int32_t PushErrorEvent(void* hEventSrc, int32_t errorCode, const char* text)
{
    const std::string description = text != nullptr ? text : "";
    QvFault::Bytes record(sizeof(int32_t) + description.size() + 1, 0);
    std::memcpy(record.data(), &errorCode, sizeof(errorCode));
    std::memcpy(record.data() + sizeof(errorCode), description.c_str(), description.size() + 1);
    return PushEvent(hEventSrc, EVENT_ERROR, record.data(), record.size());
}

int32_t DeliverBuffers(uint32_t count)
{
    State& state = State::Get();
    Guard lock(state.mutex);
    return state.DeliverLocked(count);
}

int32_t SetInfoOverride(std::map<int32_t, InfoValue>& overrides, int32_t infoCmd, int32_t dataType, const void* data,
                        size_t size)
{
    if (dataType == INFO_DATATYPE_UNKNOWN)
    {
        overrides.erase(infoCmd);
        return GC_ERR_SUCCESS;
    }
    if (data == nullptr && size != 0)
        return GC_ERR_INVALID_PARAMETER;
    InfoValue value;
    value.type = dataType;
    const uint8_t* bytes = static_cast<const uint8_t*>(data);
    value.data.assign(bytes, bytes + size);
    overrides[infoCmd] = std::move(value);
    return GC_ERR_SUCCESS;
}

int32_t SetModuleInfo(QvFaultModule module, int32_t infoCmd, int32_t dataType, const void* data, size_t size)
{
    if (!IsModule(module) || module == QV_FAULT_MODULE_REMOTE_DEVICE)
        return GC_ERR_INVALID_PARAMETER;
    State& state = State::Get();
    Guard lock(state.mutex);
    auto& overrides = module == QV_FAULT_MODULE_BUFFER ? state.bufferInfoOverrides : state.ModuleAt(module).infoOverrides;
    return SetInfoOverride(overrides, infoCmd, dataType, data, size);
}

int32_t SetPortInfo(QvFaultModule module, int32_t infoCmd, int32_t dataType, const void* data, size_t size)
{
    if (!IsModule(module))
        return GC_ERR_INVALID_PARAMETER;
    State& state = State::Get();
    Guard lock(state.mutex);
    return SetInfoOverride(PortOf(state, module).infoOverrides, infoCmd, dataType, data, size);
}

int32_t SetPortDescription(QvFaultModule module, const char* xml, size_t size)
{
    if (!IsModule(module) || (xml == nullptr && size != 0))
        return GC_ERR_INVALID_PARAMETER;
    State& state = State::Get();
    Guard lock(state.mutex);
    Port& port = PortOf(state, module);
    port.memory.resize(QvFault::kDescriptionAddress + size);
    if (size != 0)
        std::memcpy(port.memory.data() + QvFault::kDescriptionAddress, xml, size);
    port.urls.assign(1, QvFault::LocalURL("QvFaultCustom.xml", size));
    return GC_ERR_SUCCESS;
}

int32_t SetPortURLs(QvFaultModule module, const char* const* urls, uint32_t count)
{
    if (!IsModule(module) || (urls == nullptr && count != 0))
        return GC_ERR_INVALID_PARAMETER;
    State& state = State::Get();
    Guard lock(state.mutex);
    Port& port = PortOf(state, module);
    port.urls.clear();
    for (uint32_t i = 0; i < count; ++i)
        port.urls.emplace_back(urls[i] != nullptr ? urls[i] : "");
    return GC_ERR_SUCCESS;
}

int32_t WritePortMemory(QvFaultModule module, uint64_t address, const void* data, size_t size)
{
    if (!IsModule(module) || (data == nullptr && size != 0) || address > (1ULL << 32))
        return GC_ERR_INVALID_PARAMETER;
    State& state = State::Get();
    Guard lock(state.mutex);
    Port& port = PortOf(state, module);
    if (port.memory.size() < address + size)
        port.memory.resize(address + size, 0);
    if (size != 0)
        std::memcpy(port.memory.data() + address, data, size);
    if (module == QV_FAULT_MODULE_REMOTE_DEVICE)
        state.UpdateCameraLocked();
    return GC_ERR_SUCCESS;
}

int32_t ReadPortMemory(QvFaultModule module, uint64_t address, void* data, size_t size)
{
    if (!IsModule(module) || (data == nullptr && size != 0))
        return GC_ERR_INVALID_PARAMETER;
    State& state = State::Get();
    Guard lock(state.mutex);
    const Port& port = PortOf(state, module);
    if (address > port.memory.size() || size > port.memory.size() - address)
        return GC_ERR_INVALID_ADDRESS;
    if (size != 0)
        std::memcpy(data, port.memory.data() + address, size);
    return GC_ERR_SUCCESS;
}

// The index of a list by its owner: 0 the system's interface list, 1 the interface's device list.
int ListIndex(QvFaultModule module)
{
    return module == QV_FAULT_MODULE_SYSTEM ? 0 : module == QV_FAULT_MODULE_INTERFACE ? 1 : -1;
}

int32_t SetListChanged(QvFaultModule module, int32_t mode)
{
    const int list = ListIndex(module);
    if (list < 0 || mode < -1 || mode > 1)
        return GC_ERR_INVALID_PARAMETER;
    State& state = State::Get();
    Guard lock(state.mutex);
    state.listChangedMode[static_cast<size_t>(list)] = mode;
    return GC_ERR_SUCCESS;
}

int32_t SetListHidden(QvFaultModule module, int32_t hidden)
{
    const int list = ListIndex(module);
    if (list < 0)
        return GC_ERR_INVALID_PARAMETER;
    State& state = State::Get();
    Guard lock(state.mutex);
    state.listHidden[static_cast<size_t>(list)] = hidden != 0;
    return GC_ERR_SUCCESS;
}

const QvFaultControl kControl = {
    QV_FAULT_CONTROL_VERSION,
    Reset,
    SetRule,
    ClearRule,
    GetCallCount,
    GetInitCount,
    SetLastError,
    GetModuleHandle,
    GetBufferHandle,
    PushEvent,
    PushErrorEvent,
    DeliverBuffers,
    SetModuleInfo,
    SetPortInfo,
    SetPortDescription,
    SetPortURLs,
    WritePortMemory,
    ReadPortMemory,
    SetListChanged,
    SetListHidden,
};
} // namespace

extern "C" __attribute__((visibility("default"))) const QvFaultControl* QvFaultGetControl(void)
{
    return &kControl;
}
