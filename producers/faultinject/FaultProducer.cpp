#include "FaultProducer.h"

#include <algorithm>
#include <chrono>
#include <cstring>

namespace QvFault
{
namespace
{
const char* const kFunctionNames[QV_FAULT_FUNCTION_COUNT] = {
    "GCCloseLib",         "GCGetInfo",          "GCGetLastError",     "GCInitLib",
    "TLClose",            "TLGetInfo",          "TLGetInterfaceID",   "TLGetInterfaceInfo",
    "TLGetNumInterfaces", "TLOpen",             "TLOpenInterface",    "TLUpdateInterfaceList",
    "IFClose",            "IFGetInfo",          "IFGetDeviceID",      "IFGetDeviceInfo",
    "IFGetNumDevices",    "IFOpenDevice",       "IFUpdateDeviceList", "IFGetParentTL",
    "DevClose",           "DevGetInfo",         "DevGetDataStreamID", "DevGetNumDataStreams",
    "DevGetPort",         "DevOpenDataStream",  "DevGetParentIF",     "DSAllocAndAnnounceBuffer",
    "DSAnnounceBuffer",   "DSClose",            "DSFlushQueue",       "DSGetBufferID",
    "DSGetBufferInfo",    "DSGetInfo",          "DSQueueBuffer",      "DSRevokeBuffer",
    "DSStartAcquisition", "DSStopAcquisition",  "DSGetBufferChunkData", "DSGetParentDev",
    "DSGetNumBufferParts", "DSGetBufferPartInfo", "GCGetPortInfo",    "GCGetPortURL",
    "GCGetNumPortURLs",   "GCGetPortURLInfo",   "GCReadPort",         "GCWritePort",
    "GCWritePortStacked", "GCReadPortStacked",  "EventFlush",         "EventGetData",
    "EventGetDataInfo",   "EventGetInfo",       "EventKill",          "GCRegisterEvent",
    "GCUnregisterEvent",
};

const char* const kModuleNames[] = {"TLSystem", "TLInterface", "TLDevice", "Device", "TLDataStream", "TLBuffer"};
const char* const kDescriptionFiles[] = {"QvFaultSystem.xml", "QvFaultInterface.xml", "QvFaultDevice.xml",
                                         "QvFaultCamera.xml", "QvFaultStream.xml",    "QvFaultBuffer.xml"};

uint32_t ReadRegister(const Bytes& memory, uint64_t address)
{
    uint32_t value = 0;
    if (address + 4 <= memory.size())
        std::memcpy(&value, memory.data() + address, 4);
    return value;
}

void WriteRegister(Bytes& memory, uint64_t address, uint32_t value)
{
    if (address + 4 <= memory.size())
        std::memcpy(memory.data() + address, &value, 4);
}

InfoValue BoolInfo(bool value)
{
    return ScalarInfo<uint8_t>(GenTL::INFO_DATATYPE_BOOL8, value ? 1 : 0);
}

uint64_t SteadyNowNs()
{
    return static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(
                                     std::chrono::steady_clock::now().time_since_epoch())
                                     .count());
}
} // namespace

LastError& ThreadLastError()
{
    thread_local LastError lastError;
    return lastError;
}

GenTL::GC_ERROR Fail(GenTL::GC_ERROR code, const std::string& text)
{
    LastError& lastError = ThreadLastError();
    lastError.code = code;
    lastError.text = text;
    return code;
}

const char* FunctionName(QvFaultFunction function)
{
    return function >= 0 && function < QV_FAULT_FUNCTION_COUNT ? kFunctionNames[function] : "?";
}

std::string LocalURL(const std::string& fileName, size_t size)
{
    char tail[64];
    snprintf(tail, sizeof(tail), ";%llx;%zx", static_cast<unsigned long long>(kDescriptionAddress), size);
    return "local:" + fileName + tail;
}

InfoValue StringInfo(const std::string& text)
{
    InfoValue info;
    info.type = GenTL::INFO_DATATYPE_STRING;
    info.data.assign(text.begin(), text.end());
    info.data.push_back(0);
    return info;
}

GenTL::GC_ERROR AnswerInfo(const InfoValue& value, GenTL::INFO_DATATYPE* piType, void* pBuffer, size_t* piSize)
{
    if (piSize == nullptr)
        return Fail(GenTL::GC_ERR_INVALID_PARAMETER, "piSize is NULL.");
    if (piType != nullptr)
        *piType = value.type;
    if (pBuffer == nullptr)
    {
        *piSize = value.data.size();
        return GenTL::GC_ERR_SUCCESS;
    }
    if (*piSize < value.data.size())
        return Fail(GenTL::GC_ERR_BUFFER_TOO_SMALL, "The buffer is too small.");
    if (!value.data.empty())
        std::memcpy(pBuffer, value.data.data(), value.data.size());
    *piSize = value.data.size();
    return GenTL::GC_ERR_SUCCESS;
}

GenTL::GC_ERROR AnswerString(const std::string& text, char* pBuffer, size_t* piSize)
{
    return AnswerInfo(StringInfo(text), nullptr, pBuffer, piSize);
}

State& State::Get()
{
    static State state;
    return state;
}

State::State()
{
    for (size_t i = 0; i < m_modules.size(); ++i)
        m_modules[i].kind = static_cast<QvFaultModule>(i);
    ResetLocked();
}

void State::ResetLocked()
{
    initCount = 0;
    callCounts.fill(0);
    for (RuleSlot& slot : rules)
        slot = RuleSlot{};
    for (auto& [handle, event] : events)
    {
        event->unregistered = true;
    }
    events.clear();
    eventCondition.notify_all();
    buffers.clear();
    inputPool.clear();
    outputQueue.clear();
    acquiring = false;
    toAcquire = 0;
    delivered = underruns = started = nextFrameId = 0;
    interfaceListUpdated = deviceListUpdated = false;
    listChangedMode = {{-1, -1}};
    listHidden = {{false, false}};
    deviceAccess = GenTL::DEVICE_ACCESS_UNKNOWN;
    bufferInfoOverrides.clear();
    for (Module& module : m_modules)
    {
        module.open = false;
        module.infoOverrides.clear();
        InitPortLocked(module.port, module.kind);
    }
    InitPortLocked(bufferPortTemplate, QV_FAULT_MODULE_BUFFER);
    UpdateCameraLocked();
}

void State::InitPortLocked(Port& port, QvFaultModule kind)
{
    const std::string description = DefaultDescription(kind);
    port = Port{};
    port.memory.assign(kDescriptionAddress + description.size(), 0);
    std::memcpy(port.memory.data() + kDescriptionAddress, description.data(), description.size());
    port.urls.push_back(LocalURL(kDescriptionFiles[kind], description.size()));
    if (kind == QV_FAULT_MODULE_REMOTE_DEVICE)
    {
        WriteRegister(port.memory, kRegWidth, 64);
        WriteRegister(port.memory, kRegHeight, 48);
        WriteRegister(port.memory, kRegPixelFormat, 0x01080001); // Mono8
    }
}

void State::UpdateCameraLocked()
{
    Port& camera = ModuleAt(QV_FAULT_MODULE_REMOTE_DEVICE).port;
    WriteRegister(camera.memory, kRegPayloadSize, static_cast<uint32_t>(PayloadSizeLocked()));
    WriteRegister(camera.memory, kRegAcquisitionStart, 0);
    WriteRegister(camera.memory, kRegAcquisitionStop, 0);
}

size_t State::PayloadSizeLocked() const
{
    const Bytes& camera = m_modules[QV_FAULT_MODULE_REMOTE_DEVICE].port.memory;
    const uint32_t pixelFormat = ReadRegister(camera, kRegPixelFormat);
    const size_t bitsPerPixel = (pixelFormat >> 16) & 0xFF;
    return static_cast<size_t>(ReadRegister(camera, kRegWidth)) * ReadRegister(camera, kRegHeight) *
           std::max<size_t>(bitsPerPixel, 8) / 8;
}

Decision State::EnterLocked(QvFaultFunction function, const void* handle)
{
    Decision decision;
    ++callCounts[function];
    RuleSlot& slot = rules[function];
    if (!slot.active)
        return decision;
    if (slot.rule.module != QV_FAULT_MODULE_ANY)
    {
        const QvFaultModule module = handle == nullptr ? QV_FAULT_MODULE_SYSTEM : ModuleOfLocked(handle);
        if (module != slot.rule.module)
            return decision;
    }
    const uint32_t index = slot.matchingCalls++;
    if (index < slot.rule.skipCalls)
        return decision;
    if (slot.rule.fireCalls != 0 && index - slot.rule.skipCalls >= slot.rule.fireCalls)
        return decision;
    decision.applies = true;
    decision.rule = slot.rule;
    return decision;
}

QvFaultModule State::ModuleOfLocked(const void* handle) const
{
    for (const Module& module : m_modules)
    {
        if (handle == &module)
            return module.kind;
    }
    for (const auto& buffer : buffers)
    {
        if (handle == buffer.get())
            return QV_FAULT_MODULE_BUFFER;
    }
    auto it = events.find(handle);
    if (it != events.end())
        return it->second->module;
    return QV_FAULT_MODULE_COUNT;
}

Module* State::OpenModuleLocked(const void* handle, QvFaultModule kind)
{
    Module& module = ModuleAt(kind);
    return handle == &module && module.open ? &module : nullptr;
}

Buffer* State::BufferLocked(const void* handle)
{
    for (auto& buffer : buffers)
    {
        if (handle == buffer.get())
            return buffer.get();
    }
    return nullptr;
}

Port* State::PortLocked(const void* handle, QvFaultModule* module)
{
    for (Module& candidate : m_modules)
    {
        if (handle == &candidate && candidate.open)
        {
            if (module != nullptr)
                *module = candidate.kind;
            return &candidate.port;
        }
    }
    if (Buffer* buffer = BufferLocked(handle))
    {
        if (module != nullptr)
            *module = QV_FAULT_MODULE_BUFFER;
        return &buffer->port;
    }
    return nullptr;
}

std::shared_ptr<Event> State::EventLocked(const void* handle)
{
    auto it = events.find(handle);
    return it != events.end() ? it->second : nullptr;
}

std::shared_ptr<Event> State::EventOfLocked(const void* source, GenTL::EVENT_TYPE type)
{
    for (auto& [handle, event] : events)
    {
        if (event->source == source && event->type == type)
            return event;
    }
    return nullptr;
}

void State::DropEventsOfLocked(const void* source)
{
    for (auto it = events.begin(); it != events.end();)
    {
        if (it->second->source == source)
        {
            it->second->unregistered = true;
            it = events.erase(it);
        }
        else
            ++it;
    }
    eventCondition.notify_all();
}

void State::CloseModuleLocked(QvFaultModule kind)
{
    // Children first, as a robust producer closes what the consumer left open.
    switch (kind)
    {
    case QV_FAULT_MODULE_SYSTEM: CloseModuleLocked(QV_FAULT_MODULE_INTERFACE); break;
    case QV_FAULT_MODULE_INTERFACE: CloseModuleLocked(QV_FAULT_MODULE_DEVICE); break;
    case QV_FAULT_MODULE_DEVICE:
        CloseModuleLocked(QV_FAULT_MODULE_STREAM);
        CloseModuleLocked(QV_FAULT_MODULE_REMOTE_DEVICE);
        deviceAccess = GenTL::DEVICE_ACCESS_UNKNOWN;
        break;
    case QV_FAULT_MODULE_STREAM:
        for (auto& buffer : buffers)
            DropEventsOfLocked(buffer.get());
        buffers.clear();
        inputPool.clear();
        outputQueue.clear();
        acquiring = false;
        break;
    default: break;
    }
    Module& module = ModuleAt(kind);
    DropEventsOfLocked(&module);
    module.open = false;
}

int32_t State::DeliverLocked(uint32_t count)
{
    if (!ModuleAt(QV_FAULT_MODULE_STREAM).open)
        return GenTL::GC_ERR_NOT_AVAILABLE;
    int32_t filled = 0;
    for (uint32_t i = 0; i < count && acquiring; ++i)
    {
        if (inputPool.empty())
        {
            ++underruns;
            continue;
        }
        Buffer* buffer = inputPool.front();
        inputPool.pop_front();
        buffer->inInputPool = false;
        const uint64_t frameId = nextFrameId++;
        buffer->sizeFilled = std::min(buffer->size, PayloadSizeLocked());
        for (size_t byte = 0; byte < buffer->sizeFilled; ++byte)
            buffer->base[byte] = static_cast<uint8_t>(frameId + byte);
        buffer->newData = true;
        buffer->frameId = frameId;
        buffer->timestampNs = SteadyNowNs();
        buffer->inOutputQueue = true;
        outputQueue.push_back(buffer);
        ++delivered;
        ++filled;
        if (toAcquire != GENTL_INFINITE && delivered >= toAcquire)
            acquiring = false;
        if (auto event = EventOfLocked(&ModuleAt(QV_FAULT_MODULE_STREAM), GenTL::EVENT_NEW_BUFFER))
            ++event->fired;
    }
    eventCondition.notify_all();
    return filled;
}

bool State::DefaultInfoLocked(QvFaultModule kind, int32_t command, const Buffer* buffer, InfoValue& value)
{
    using namespace GenTL;
    switch (kind)
    {
    case QV_FAULT_MODULE_SYSTEM:
        switch (command)
        {
        case TL_INFO_ID: value = StringInfo("QvFaultTL"); return true;
        case TL_INFO_VENDOR: value = StringInfo("QvApi"); return true;
        case TL_INFO_MODEL: value = StringInfo("Fault-injection producer"); return true;
        case TL_INFO_VERSION: value = StringInfo("1.0"); return true;
        case TL_INFO_TLTYPE: value = StringInfo("Mixed"); return true;
        case TL_INFO_NAME: value = StringInfo("libqvfault.cti"); return true;
        case TL_INFO_PATHNAME: value = StringInfo("libqvfault.cti"); return true;
        case TL_INFO_DISPLAYNAME: value = StringInfo("QvApi fault-injection producer"); return true;
        case TL_INFO_CHAR_ENCODING: value = ScalarInfo<int32_t>(INFO_DATATYPE_INT32, TL_CHAR_ENCODING_ASCII); return true;
        case TL_INFO_GENTL_VER_MAJOR: value = ScalarInfo<uint32_t>(INFO_DATATYPE_UINT32, 1); return true;
        case TL_INFO_GENTL_VER_MINOR: value = ScalarInfo<uint32_t>(INFO_DATATYPE_UINT32, 5); return true;
        }
        return false;
    case QV_FAULT_MODULE_INTERFACE:
        switch (command)
        {
        case INTERFACE_INFO_ID: value = StringInfo(kInterfaceID); return true;
        case INTERFACE_INFO_DISPLAYNAME: value = StringInfo("QvApi fault-injection interface"); return true;
        case INTERFACE_INFO_TLTYPE: value = StringInfo("U3V"); return true;
        }
        return false;
    case QV_FAULT_MODULE_DEVICE:
        switch (command)
        {
        case DEVICE_INFO_ID: value = StringInfo(kDeviceID); return true;
        case DEVICE_INFO_VENDOR: value = StringInfo("QvApi"); return true;
        case DEVICE_INFO_MODEL: value = StringInfo("QvFaultCamera"); return true;
        case DEVICE_INFO_TLTYPE: value = StringInfo("U3V"); return true;
        case DEVICE_INFO_DISPLAYNAME: value = StringInfo("QvApi fault-injection camera"); return true;
        case DEVICE_INFO_ACCESS_STATUS:
        {
            int32_t status = DEVICE_ACCESS_STATUS_READWRITE;
            if (ModuleAt(QV_FAULT_MODULE_DEVICE).open)
                status = deviceAccess == DEVICE_ACCESS_READONLY ? DEVICE_ACCESS_STATUS_OPEN_READONLY
                                                                : DEVICE_ACCESS_STATUS_OPEN_READWRITE;
            value = ScalarInfo<int32_t>(INFO_DATATYPE_INT32, status);
            return true;
        }
        case DEVICE_INFO_USER_DEFINED_NAME: value = StringInfo("fault"); return true;
        case DEVICE_INFO_SERIAL_NUMBER: value = StringInfo("QVF0001"); return true;
        case DEVICE_INFO_VERSION: value = StringInfo("1.0"); return true;
        case DEVICE_INFO_TIMESTAMP_FREQUENCY: value = ScalarInfo<uint64_t>(INFO_DATATYPE_UINT64, 1000000000); return true;
        }
        return false;
    case QV_FAULT_MODULE_STREAM:
        switch (command)
        {
        case STREAM_INFO_ID: value = StringInfo(kStreamID); return true;
        case STREAM_INFO_NUM_DELIVERED: value = ScalarInfo<uint64_t>(INFO_DATATYPE_UINT64, delivered); return true;
        case STREAM_INFO_NUM_UNDERRUN: value = ScalarInfo<uint64_t>(INFO_DATATYPE_UINT64, underruns); return true;
        case STREAM_INFO_NUM_ANNOUNCED: value = ScalarInfo<size_t>(INFO_DATATYPE_SIZET, buffers.size()); return true;
        case STREAM_INFO_NUM_QUEUED: value = ScalarInfo<size_t>(INFO_DATATYPE_SIZET, inputPool.size()); return true;
        case STREAM_INFO_NUM_AWAIT_DELIVERY: value = ScalarInfo<size_t>(INFO_DATATYPE_SIZET, outputQueue.size()); return true;
        case STREAM_INFO_NUM_STARTED: value = ScalarInfo<uint64_t>(INFO_DATATYPE_UINT64, started); return true;
        case STREAM_INFO_PAYLOAD_SIZE: value = ScalarInfo<size_t>(INFO_DATATYPE_SIZET, PayloadSizeLocked()); return true;
        case STREAM_INFO_IS_GRABBING: value = BoolInfo(acquiring); return true;
        case STREAM_INFO_DEFINES_PAYLOADSIZE: value = BoolInfo(true); return true;
        case STREAM_INFO_TLTYPE: value = StringInfo("U3V"); return true;
        case STREAM_INFO_NUM_CHUNKS_MAX: value = ScalarInfo<size_t>(INFO_DATATYPE_SIZET, 0); return true;
        case STREAM_INFO_BUF_ANNOUNCE_MIN: value = ScalarInfo<size_t>(INFO_DATATYPE_SIZET, 1); return true;
        case STREAM_INFO_BUF_ALIGNMENT: value = ScalarInfo<size_t>(INFO_DATATYPE_SIZET, 1); return true;
        }
        return false;
    case QV_FAULT_MODULE_BUFFER:
    {
        if (buffer == nullptr)
            return false;
        const Bytes& camera = ModuleAt(QV_FAULT_MODULE_REMOTE_DEVICE).port.memory;
        const bool filled = buffer->sizeFilled > 0;
        switch (command)
        {
        case BUFFER_INFO_BASE: value = ScalarInfo<void*>(INFO_DATATYPE_PTR, buffer->base); return true;
        case BUFFER_INFO_SIZE: value = ScalarInfo<size_t>(INFO_DATATYPE_SIZET, buffer->size); return true;
        case BUFFER_INFO_USER_PTR: value = ScalarInfo<void*>(INFO_DATATYPE_PTR, buffer->userPointer); return true;
        case BUFFER_INFO_TIMESTAMP: value = ScalarInfo<uint64_t>(INFO_DATATYPE_UINT64, buffer->timestampNs); return true;
        case BUFFER_INFO_NEW_DATA: value = BoolInfo(buffer->newData); return true;
        case BUFFER_INFO_IS_QUEUED: value = BoolInfo(buffer->inInputPool || buffer->inOutputQueue); return true;
        case BUFFER_INFO_IS_ACQUIRING: value = BoolInfo(false); return true;
        case BUFFER_INFO_IS_INCOMPLETE: value = BoolInfo(false); return true;
        case BUFFER_INFO_TLTYPE: value = StringInfo("U3V"); return true;
        case BUFFER_INFO_SIZE_FILLED: value = ScalarInfo<size_t>(INFO_DATATYPE_SIZET, buffer->sizeFilled); return true;
        case BUFFER_INFO_WIDTH: value = ScalarInfo<size_t>(INFO_DATATYPE_SIZET, ReadRegister(camera, kRegWidth)); return true;
        case BUFFER_INFO_HEIGHT: value = ScalarInfo<size_t>(INFO_DATATYPE_SIZET, ReadRegister(camera, kRegHeight)); return true;
        case BUFFER_INFO_XOFFSET:
        case BUFFER_INFO_YOFFSET:
        case BUFFER_INFO_XPADDING:
        case BUFFER_INFO_YPADDING:
        case BUFFER_INFO_IMAGEOFFSET:
        case BUFFER_INFO_DELIVERED_CHUNKPAYLOADSIZE: value = ScalarInfo<size_t>(INFO_DATATYPE_SIZET, 0); return true;
        case BUFFER_INFO_FRAMEID: value = ScalarInfo<uint64_t>(INFO_DATATYPE_UINT64, buffer->frameId); return true;
        case BUFFER_INFO_IMAGEPRESENT: value = BoolInfo(filled); return true;
        case BUFFER_INFO_PAYLOADTYPE: value = ScalarInfo<size_t>(INFO_DATATYPE_SIZET, PAYLOAD_TYPE_IMAGE); return true;
        case BUFFER_INFO_PIXELFORMAT:
            value = ScalarInfo<uint64_t>(INFO_DATATYPE_UINT64, ReadRegister(camera, kRegPixelFormat));
            return true;
        case BUFFER_INFO_PIXELFORMAT_NAMESPACE:
            value = ScalarInfo<uint64_t>(INFO_DATATYPE_UINT64, PIXELFORMAT_NAMESPACE_PFNC_32BIT);
            return true;
        case BUFFER_INFO_DELIVERED_IMAGEHEIGHT:
            value = ScalarInfo<size_t>(INFO_DATATYPE_SIZET, filled ? ReadRegister(camera, kRegHeight) : 0);
            return true;
        case BUFFER_INFO_CHUNKLAYOUTID: value = ScalarInfo<uint64_t>(INFO_DATATYPE_UINT64, 0); return true;
        case BUFFER_INFO_PIXEL_ENDIANNESS: value = ScalarInfo<int32_t>(INFO_DATATYPE_INT32, PIXELENDIANNESS_LITTLE); return true;
        case BUFFER_INFO_DATA_SIZE: value = ScalarInfo<size_t>(INFO_DATATYPE_SIZET, buffer->sizeFilled); return true;
        case BUFFER_INFO_TIMESTAMP_NS: value = ScalarInfo<uint64_t>(INFO_DATATYPE_UINT64, buffer->timestampNs); return true;
        case BUFFER_INFO_DATA_LARGER_THAN_BUFFER: value = BoolInfo(PayloadSizeLocked() > buffer->size); return true;
        case BUFFER_INFO_CONTAINS_CHUNKDATA: value = BoolInfo(false); return true;
        }
        return false;
    }
    default: return false;
    }
}

bool State::DefaultPortInfoLocked(QvFaultModule kind, int32_t command, InfoValue& value)
{
    using namespace GenTL;
    const bool camera = kind == QV_FAULT_MODULE_REMOTE_DEVICE;
    const bool readOnly = camera && deviceAccess == DEVICE_ACCESS_READONLY;
    switch (command)
    {
    case PORT_INFO_ID: value = StringInfo(std::string(kModuleNames[kind]) + "Port"); return true;
    case PORT_INFO_VENDOR: value = StringInfo("QvApi"); return true;
    case PORT_INFO_MODEL: value = StringInfo(camera ? "QvFaultCamera" : "Fault-injection producer"); return true;
    case PORT_INFO_TLTYPE: value = StringInfo(kind == QV_FAULT_MODULE_SYSTEM ? "Mixed" : "U3V"); return true;
    case PORT_INFO_MODULE: value = StringInfo(kModuleNames[kind]); return true;
    case PORT_INFO_LITTLE_ENDIAN: value = BoolInfo(true); return true;
    case PORT_INFO_BIG_ENDIAN: value = BoolInfo(false); return true;
    case PORT_INFO_ACCESS_READ: value = BoolInfo(true); return true;
    case PORT_INFO_ACCESS_WRITE: value = BoolInfo(!readOnly); return true;
    case PORT_INFO_ACCESS_NA: value = BoolInfo(false); return true;
    case PORT_INFO_ACCESS_NI: value = BoolInfo(false); return true;
    case PORT_INFO_VERSION: value = StringInfo("1.0"); return true;
    case PORT_INFO_PORTNAME: value = StringInfo(camera ? "Device" : "TLPort"); return true;
    }
    return false;
}
} // namespace QvFault
