#pragma once

/*
 * Control API of the fault-injection producer (libqvfault*.cti), for tests.
 *
 * The producer is an ordinary GenTL producer with a minimal module tree: one system, one
 * interface ("QvFaultIF0"), one device ("QvFaultDevice0") with a remote port, one data stream
 * ("QvFaultStream0") and the buffers announced on it. Every module is also a port with a small
 * register space holding a GenApi description at 0x10000 (URL "local:...;10000;<size>"), and an
 * event source. A test reaches the control table with dlopen + dlsym("QvFaultGetControl"), or
 * with QvFaultLoadControl() below, on the same file the SDK loads: with RTLD_NODELETE both name
 * the same instance and share its state.
 *
 * What a test can make the producer do:
 *   - any entry point fail with any code (QvFaultRule.result), after letting some calls pass
 *     (skipCalls), for a number of calls (fireCalls), only for one module's handle (module);
 *   - record any code and text as the thread's last error for GCGetLastError
 *     (lastErrorCode/lastErrorText), including a code that differs from the returned one;
 *   - make GCGetLastError itself fail, or report another code or text, with a rule on it;
 *   - answer late (delayMs) or report a shorter or longer size than it wrote (sizeAdjust);
 *   - queue event records on a registered event (PushEvent / PushErrorEvent), fill queued
 *     buffers (DeliverBuffers), override information answers and port contents.
 * Entry points that must be absent come from separate builds of the same code:
 *   libqvfault.cti            all 57 GenTL 1.0-1.5 entry points
 *   libqvfault_noinit.cti     without GCInitLib
 *   libqvfault_nolasterror.cti without GCGetLastError
 *   libqvfault_noregisterevent.cti without GCRegisterEvent
 *   libqvfault_notlopen.cti   without TLOpen
 *   libqvfault_noclose.cti    without TLClose and IFClose
 *   libqvfault_nourlinfo.cti  without GCGetNumPortURLs and GCGetPortURLInfo (GenTL 1.0 URLs)
 *   libqvfault_nourl.cti      without any of the three URL entry points
 * (qv_add_fault_producer() in producers/faultinject/CMakeLists.txt makes more variants.)
 *
 * Natural behaviour, without rules: GenTL 1.5 semantics with GC_ERR_INVALID_HANDLE for unknown
 * or closed handles, GC_ERR_NOT_INITIALIZED before GCInitLib, two-phase size queries, per-thread
 * last error. GCInitLib counts: each call succeeds and GCCloseLib undoes one (the last closes
 * every module). A second TLOpen, TLOpenInterface, IFOpenDevice or DevOpenDataStream while the
 * module is open answers GC_ERR_RESOURCE_IN_USE. Lists are empty until the update call.
 *
 * Event records (EventGetDataInfo decodes them):
 *   EVENT_ERROR              int32 code, then the NUL-terminated text: ID = INT32, VALUE = STRING
 *   EVENT_NEW_BUFFER         EVENT_NEW_BUFFER_DATA, taken from the stream's output queue
 *   EVENT_FEATURE_INVALIDATE the feature name: ID = STRING
 *   EVENT_FEATURE_CHANGE     name NUL value NUL: ID = STRING, VALUE = STRING
 *   EVENT_REMOTE_DEVICE,     uint64 event id, then the payload: ID = STRING (hex digits),
 *   EVENT_MODULE             VALUE = BUFFER (payload), NUMID = UINT64
 */

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
#include <dlfcn.h>
extern "C" {
#endif

/* Every GenTL entry point of the producer, in the SDK loader's resolution order. */
typedef enum QvFaultFunction
{
    QV_FAULT_GCCloseLib = 0,
    QV_FAULT_GCGetInfo,
    QV_FAULT_GCGetLastError,
    QV_FAULT_GCInitLib,
    QV_FAULT_TLClose,
    QV_FAULT_TLGetInfo,
    QV_FAULT_TLGetInterfaceID,
    QV_FAULT_TLGetInterfaceInfo,
    QV_FAULT_TLGetNumInterfaces,
    QV_FAULT_TLOpen,
    QV_FAULT_TLOpenInterface,
    QV_FAULT_TLUpdateInterfaceList,
    QV_FAULT_IFClose,
    QV_FAULT_IFGetInfo,
    QV_FAULT_IFGetDeviceID,
    QV_FAULT_IFGetDeviceInfo,
    QV_FAULT_IFGetNumDevices,
    QV_FAULT_IFOpenDevice,
    QV_FAULT_IFUpdateDeviceList,
    QV_FAULT_IFGetParentTL,
    QV_FAULT_DevClose,
    QV_FAULT_DevGetInfo,
    QV_FAULT_DevGetDataStreamID,
    QV_FAULT_DevGetNumDataStreams,
    QV_FAULT_DevGetPort,
    QV_FAULT_DevOpenDataStream,
    QV_FAULT_DevGetParentIF,
    QV_FAULT_DSAllocAndAnnounceBuffer,
    QV_FAULT_DSAnnounceBuffer,
    QV_FAULT_DSClose,
    QV_FAULT_DSFlushQueue,
    QV_FAULT_DSGetBufferID,
    QV_FAULT_DSGetBufferInfo,
    QV_FAULT_DSGetInfo,
    QV_FAULT_DSQueueBuffer,
    QV_FAULT_DSRevokeBuffer,
    QV_FAULT_DSStartAcquisition,
    QV_FAULT_DSStopAcquisition,
    QV_FAULT_DSGetBufferChunkData,
    QV_FAULT_DSGetParentDev,
    QV_FAULT_DSGetNumBufferParts,
    QV_FAULT_DSGetBufferPartInfo,
    QV_FAULT_GCGetPortInfo,
    QV_FAULT_GCGetPortURL,
    QV_FAULT_GCGetNumPortURLs,
    QV_FAULT_GCGetPortURLInfo,
    QV_FAULT_GCReadPort,
    QV_FAULT_GCWritePort,
    QV_FAULT_GCWritePortStacked,
    QV_FAULT_GCReadPortStacked,
    QV_FAULT_EventFlush,
    QV_FAULT_EventGetData,
    QV_FAULT_EventGetDataInfo,
    QV_FAULT_EventGetInfo,
    QV_FAULT_EventKill,
    QV_FAULT_GCRegisterEvent,
    QV_FAULT_GCUnregisterEvent,
    QV_FAULT_FUNCTION_COUNT /* 57 */
} QvFaultFunction;

/* The modules of the tree. A call belongs to the module of the handle it names first (an
 * event handle belongs to its source's module; calls without a handle to the system). */
typedef enum QvFaultModule
{
    QV_FAULT_MODULE_ANY = -1, /* rule filter: every module */
    QV_FAULT_MODULE_SYSTEM = 0,
    QV_FAULT_MODULE_INTERFACE = 1,
    QV_FAULT_MODULE_DEVICE = 2,        /* the local device module (IFOpenDevice's handle) */
    QV_FAULT_MODULE_REMOTE_DEVICE = 3, /* the camera's port (DevGetPort's handle) */
    QV_FAULT_MODULE_STREAM = 4,
    QV_FAULT_MODULE_BUFFER = 5, /* any announced buffer */
    QV_FAULT_MODULE_COUNT = 6
} QvFaultModule;

/* What one entry point does, set with SetRule(). Zero-initialise, then fill what matters. */
typedef struct QvFaultRule
{
    /* Returned, without running the call, by every call the rule applies to. GC_ERR_SUCCESS (0)
     * runs the call normally and applies only delayMs and sizeAdjust. */
    int32_t result;
    /* Matching calls that pass untouched before the rule applies. */
    uint32_t skipCalls;
    /* Matching calls the rule then applies to; 0 = every later call. */
    uint32_t fireCalls;
    /* QV_FAULT_MODULE_ANY, or the module whose handle a call must name to match. */
    int32_t module;
    /* Failing calls record this code as the thread's last error (0 = result). In a rule on
     * GCGetLastError with result 0: the code it reports instead of the recorded one (0 = keep). */
    int32_t lastErrorCode;
    /* Failing calls record this text ("" = "<Function> failed (injected)."). In a rule on
     * GCGetLastError with result 0: the text it reports instead ("" = keep). */
    char lastErrorText[256];
    /* Milliseconds to sleep before answering. */
    uint32_t delayMs;
    /* Added to the size a successful call reports through its size output (clamped at 0):
     * negative gives a short read or a short size answer. */
    int64_t sizeAdjust;
} QvFaultRule;

#define QV_FAULT_CONTROL_VERSION 1u

/* The control table. Every call is thread-safe. Functions returning int32_t answer 0 or a
 * GenTL error code (GC_ERR_INVALID_PARAMETER for bad arguments, GC_ERR_NOT_AVAILABLE when the
 * module or event is not open). */
typedef struct QvFaultControl
{
    uint32_t version; /* QV_FAULT_CONTROL_VERSION */

    /* Back to freshly loaded: rules, counters, events, overrides and modules cleared, every
     * handle invalid, GCInitLib not called. */
    void (*Reset)(void);
    /* Installs (replaces) the rule of one entry point and restarts its matching count. */
    void (*SetRule)(QvFaultFunction function, const QvFaultRule* rule);
    void (*ClearRule)(QvFaultFunction function);
    /* Calls made to an entry point since the last Reset, failing or not. */
    uint32_t (*GetCallCount)(QvFaultFunction function);
    /* GCInitLib calls minus GCCloseLib calls (not below 0). */
    int32_t (*GetInitCount)(void);
    /* Sets the calling thread's last error as GCGetLastError will report it. */
    void (*SetLastError)(int32_t code, const char* text);

    /* The handle of an open module (null when closed), for QV_FAULT_MODULE_SYSTEM to _STREAM. */
    void* (*GetModuleHandle)(QvFaultModule module);
    /* The handle of the index-th announced buffer (announce order), or null. */
    void* (*GetBufferHandle)(uint32_t index);

    /* Queues a raw event record on the event of eventType registered on hEventSrc. */
    int32_t (*PushEvent)(void* hEventSrc, int32_t eventType, const void* data, size_t size);
    /* Queues an EVENT_ERROR record (code, text) on hEventSrc's registered error event. */
    int32_t (*PushErrorEvent)(void* hEventSrc, int32_t errorCode, const char* text);
    /* While the stream acquires: fills up to count buffers of the input pool (FIFO) with a
     * pattern (byte i = frame id + i), moves them to the output queue and returns how many;
     * each missing buffer counts as an underrun. Returns a negative code on error. */
    int32_t (*DeliverBuffers)(uint32_t count);

    /* Overrides the answer of one information command of a module (TLGetInfo/GCGetInfo for the
     * system, IFGetInfo/TLGetInterfaceInfo, DevGetInfo/IFGetDeviceInfo, DSGetInfo,
     * DSGetBufferInfo for every buffer). dataType INFO_DATATYPE_UNKNOWN removes the override. */
    int32_t (*SetModuleInfo)(QvFaultModule module, int32_t infoCmd, int32_t dataType, const void* data,
                             size_t size);
    /* The same for GCGetPortInfo on the module's port. */
    int32_t (*SetPortInfo)(QvFaultModule module, int32_t infoCmd, int32_t dataType, const void* data,
                           size_t size);
    /* Replaces the module port's description (stored at 0x10000) and its URL accordingly. For
     * QV_FAULT_MODULE_BUFFER it applies to buffers announced afterwards. */
    int32_t (*SetPortDescription)(QvFaultModule module, const char* xml, size_t size);
    /* Replaces the URL list of the module's port: urls holds count NUL-terminated texts. */
    int32_t (*SetPortURLs)(QvFaultModule module, const char* const* urls, uint32_t count);
    /* Direct access to a module port's register space (grows on writes). */
    int32_t (*WritePortMemory)(QvFaultModule module, uint64_t address, const void* data, size_t size);
    int32_t (*ReadPortMemory)(QvFaultModule module, uint64_t address, void* data, size_t size);

    /* The lists of the module tree, for tests of list updates. module names the list's owner:
     * QV_FAULT_MODULE_SYSTEM the interface list (TLUpdateInterfaceList), QV_FAULT_MODULE_INTERFACE
     * the device list (IFUpdateDeviceList).
     * SetListChanged: what the update reports as "changed": -1 natural (true on the first update
     * after the owner was opened), 0 never, 1 always. Reset restores -1. */
    int32_t (*SetListChanged)(QvFaultModule module, int32_t mode);
    /* SetListHidden: 1 leaves the only child out of the list (count 0, its ID unknown to the
     * list's calls, opening it fails with GC_ERR_INVALID_ID) until 0 lists it again. */
    int32_t (*SetListHidden)(QvFaultModule module, int32_t hidden);
} QvFaultControl;

/* The one exported control function. */
typedef const QvFaultControl* (*PQvFaultGetControl)(void);

#ifdef __cplusplus
} /* extern "C" */

/* Loads (or finds the already loaded) producer at ctiPath and returns its control table, or
 * null. RTLD_NODELETE matches the SDK loader, so both share one instance. */
inline const QvFaultControl* QvFaultLoadControl(const char* ctiPath)
{
    void* handle = dlopen(ctiPath, RTLD_LAZY | RTLD_NODELETE);
    if (handle == nullptr)
        return nullptr;
    PQvFaultGetControl getControl = reinterpret_cast<PQvFaultGetControl>(dlsym(handle, "QvFaultGetControl"));
    const QvFaultControl* control = getControl != nullptr ? getControl() : nullptr;
    dlclose(handle); /* NODELETE keeps it mapped */
    return control != nullptr && control->version == QV_FAULT_CONTROL_VERSION ? control : nullptr;
}
#endif
