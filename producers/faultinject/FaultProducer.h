#pragma once

#include <array>
#include <condition_variable>
#include <cstdint>
#include <cstring>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <GenTL/GenTL.h>

#include "FaultInjectControl.h"

// The fault-injection producer's state: one module tree, the rules, the event queues. Every
// entry point and control call takes State::mutex; EventGetData waits on eventCondition with it.
namespace QvFault
{
using Bytes = std::vector<uint8_t>;

/// Where each module's description sits in its register space.
constexpr uint64_t kDescriptionAddress = 0x10000;

/// An information answer: data type and raw bytes (strings with their NUL).
struct InfoValue
{
    GenTL::INFO_DATATYPE type = GenTL::INFO_DATATYPE_UNKNOWN;
    Bytes data;
};

/// A module's port: register space, description URLs and GCGetPortInfo overrides.
struct Port
{
    Bytes memory;
    std::vector<std::string> urls;
    std::map<int32_t, InfoValue> infoOverrides;
};

/// A registered event of one module.
struct Event
{
    void* source = nullptr;
    QvFaultModule module = QV_FAULT_MODULE_SYSTEM;
    GenTL::EVENT_TYPE type = GenTL::EVENT_ERROR;
    std::deque<Bytes> queue; // unused for EVENT_NEW_BUFFER: that one reads the output queue
    bool killPending = false;
    bool unregistered = false;
    uint64_t fired = 0;
};

/// A buffer announced on the stream.
struct Buffer
{
    Port port;
    uint8_t* base = nullptr;
    size_t size = 0;
    void* userPointer = nullptr;
    Bytes ownedMemory; // DSAllocAndAnnounceBuffer's memory
    bool inInputPool = false;
    bool inOutputQueue = false;
    bool newData = false;
    size_t sizeFilled = 0;
    uint64_t frameId = 0;
    uint64_t timestampNs = 0;
};

/// One of the fixed modules (system, interface, device, remote device, stream).
struct Module
{
    QvFaultModule kind = QV_FAULT_MODULE_SYSTEM;
    bool open = false;
    Port port;
    std::map<int32_t, InfoValue> infoOverrides;
};

/// The answer of the rule engine for one call.
struct Decision
{
    bool applies = false;
    QvFaultRule rule{};
};

struct RuleSlot
{
    bool active = false;
    QvFaultRule rule{};
    uint32_t matchingCalls = 0;
};

/// Per-thread last error, as GCGetLastError reports it.
struct LastError
{
    GenTL::GC_ERROR code = GenTL::GC_ERR_SUCCESS;
    std::string text;
};
LastError& ThreadLastError();

/// Records code and text as the calling thread's last error and returns code.
GenTL::GC_ERROR Fail(GenTL::GC_ERROR code, const std::string& text);

/// The whole producer.
class State
{
public:
    static State& Get();

    /// Back to freshly loaded. Caller holds mutex.
    void ResetLocked();
    /// Counts the call and evaluates its rule for the module the handle belongs to.
    Decision EnterLocked(QvFaultFunction function, const void* handle);
    /// The module a handle belongs to (events: their source's), or QV_FAULT_MODULE_COUNT if
    /// the handle is unknown.
    QvFaultModule ModuleOfLocked(const void* handle) const;

    Module& ModuleAt(QvFaultModule kind) { return m_modules[static_cast<size_t>(kind)]; }
    /// The open fixed module of that kind with this handle, or null.
    Module* OpenModuleLocked(const void* handle, QvFaultModule kind);
    /// The announced buffer with this handle, or null.
    Buffer* BufferLocked(const void* handle);
    /// Any open port (fixed module or buffer) with this handle, or null.
    Port* PortLocked(const void* handle, QvFaultModule* module = nullptr);
    /// The registered, live event with this handle, or null.
    std::shared_ptr<Event> EventLocked(const void* handle);
    /// The registered event of (source, type), or null.
    std::shared_ptr<Event> EventOfLocked(const void* source, GenTL::EVENT_TYPE type);

    /// Closes a module and everything below it (events, buffers included).
    void CloseModuleLocked(QvFaultModule kind);
    /// Drops every event registered on a source.
    void DropEventsOfLocked(const void* source);
    /// Builds a fresh port for a module from its description template.
    void InitPortLocked(Port& port, QvFaultModule kind);
    /// Recomputes the remote device's derived registers after a write.
    void UpdateCameraLocked();
    /// Bytes per frame of the camera's current geometry.
    size_t PayloadSizeLocked() const;
    /// Fills up to count queued buffers (see DeliverBuffers).
    int32_t DeliverLocked(uint32_t count);

    /// The default answer of an information command, or false when unsupported.
    bool DefaultInfoLocked(QvFaultModule kind, int32_t command, const Buffer* buffer, InfoValue& value);
    bool DefaultPortInfoLocked(QvFaultModule kind, int32_t command, InfoValue& value);

    std::mutex mutex;
    std::condition_variable eventCondition;

    int32_t initCount = 0;
    std::array<uint32_t, QV_FAULT_FUNCTION_COUNT> callCounts{};
    std::array<RuleSlot, QV_FAULT_FUNCTION_COUNT> rules{};

    bool interfaceListUpdated = false;
    bool deviceListUpdated = false;
    // SetListChanged / SetListHidden, index 0 the interface list, 1 the device list.
    std::array<int32_t, 2> listChangedMode{{-1, -1}};
    std::array<bool, 2> listHidden{{false, false}};
    /// Whether the interface / the device is in its list right now.
    bool InterfaceListedLocked() const { return interfaceListUpdated && !listHidden[0]; }
    bool DeviceListedLocked() const { return deviceListUpdated && !listHidden[1]; }
    GenTL::DEVICE_ACCESS_FLAGS deviceAccess = GenTL::DEVICE_ACCESS_UNKNOWN;

    // The stream.
    std::vector<std::unique_ptr<Buffer>> buffers; // announce order
    std::deque<Buffer*> inputPool;
    std::deque<Buffer*> outputQueue;
    bool acquiring = false;
    uint64_t toAcquire = 0; // GENTL_INFINITE: continuous
    uint64_t delivered = 0;
    uint64_t underruns = 0;
    uint64_t started = 0;
    uint64_t nextFrameId = 0;

    std::map<const void*, std::shared_ptr<Event>> events; // by event handle
    std::map<int32_t, InfoValue> bufferInfoOverrides;
    Port bufferPortTemplate;

private:
    State();
    std::array<Module, 5> m_modules;
};

// Answers of the two-phase size scheme.
GenTL::GC_ERROR AnswerInfo(const InfoValue& value, GenTL::INFO_DATATYPE* piType, void* pBuffer, size_t* piSize);
GenTL::GC_ERROR AnswerString(const std::string& text, char* pBuffer, size_t* piSize);
InfoValue StringInfo(const std::string& text);
template <typename T>
InfoValue ScalarInfo(GenTL::INFO_DATATYPE type, T value)
{
    InfoValue info;
    info.type = type;
    info.data.resize(sizeof(T));
    std::memcpy(info.data.data(), &value, sizeof(T));
    return info;
}

/// The default GenApi description of a module's port.
std::string DefaultDescription(QvFaultModule kind);
/// "local:<file>;10000;<size in hex>" for a description of that size.
std::string LocalURL(const std::string& fileName, size_t size);
/// The entry point's name, e.g. "TLOpen".
const char* FunctionName(QvFaultFunction function);

// Identities of the module tree.
constexpr const char* kInterfaceID = "QvFaultIF0";
constexpr const char* kDeviceID = "QvFaultDevice0";
constexpr const char* kStreamID = "QvFaultStream0";

// The camera's registers (little endian, 4 bytes each).
constexpr uint64_t kRegWidth = 0x00;
constexpr uint64_t kRegHeight = 0x04;
constexpr uint64_t kRegPixelFormat = 0x08;
constexpr uint64_t kRegPayloadSize = 0x0C;
constexpr uint64_t kRegTLParamsLocked = 0x10;
constexpr uint64_t kRegAcquisitionStart = 0x14;
constexpr uint64_t kRegAcquisitionStop = 0x18;
constexpr uint64_t kRegAcquisitionActive = 0x1C;
} // namespace QvFault
