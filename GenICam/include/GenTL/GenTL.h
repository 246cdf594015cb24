#pragma once

/*
 * The GenTL C interface (header version 1.6) shared by GenTL producers (.cti) and the
 * consumers that load them.
 *
 * This header is plain C as well as C++: a producer may be written in either. In C++ every
 * name lives in namespace GenTL, and the whole interface sits inside extern "C", so the
 * exported entry points keep their undecorated C names (GCInitLib, DSQueueBuffer, ...).
 * A C++ producer defines an entry point inside namespace GenTL; the earlier declaration here
 * gives the definition C linkage.
 *
 * Every enumeration crosses the interface as an int32_t typedef; the enum types only name the
 * constants, so producers may add custom values without changing the ABI. Custom values start
 * at 1000 for information commands and at -10000 for error codes.
 */

#include <stddef.h>
#include <stdint.h>

/* ---- ABI -------------------------------------------------------------------------------- */

/* Entry points stay exported even when a producer is built with -fvisibility=hidden. */
#ifndef GC_IMPORT_EXPORT
#if defined(__GNUC__) && (__GNUC__ >= 4)
#define GC_IMPORT_EXPORT __attribute__((visibility("default")))
#else
#define GC_IMPORT_EXPORT
#endif
#endif

/* The default System V calling convention: nothing to say on x86-64. */
#ifndef GC_CALLTYPE
#define GC_CALLTYPE
#endif

#ifndef EXTERN_C
#ifdef __cplusplus
#define EXTERN_C extern "C"
#else
#define EXTERN_C
#endif
#endif

/* Prefix of every entry-point declaration and of the matching function-pointer typedefs. */
#define GC_API GC_IMPORT_EXPORT GC_ERROR GC_CALLTYPE
#define GC_API_P(function) typedef GC_ERROR(GC_CALLTYPE* function)

/* ---- Header version --------------------------------------------------------------------- */

#define GenTLMajorVersion 1
#define GenTLMinorVersion 6
#define GenTLSubMinorVersion 0

#define GC_GENTL_HEADER_VERSION_CODE(major, minor, subminor) \
    (((major) << 24) + ((minor) << 16) + (subminor))
#define GC_GENTL_HEADER_VERSION \
    GC_GENTL_HEADER_VERSION_CODE(GenTLMajorVersion, GenTLMinorVersion, GenTLSubMinorVersion)

/* ---- Constants that are macros (they cannot live in a namespace) ------------------------- */

/* What an entry point never hands out as a valid handle (1.4). */
#define GENTL_INVALID_HANDLE NULL
/* "Wait for ever" for time-outs, "no limit" for DSStartAcquisition's buffer count (1.4). */
#define GENTL_INFINITE 0xFFFFFFFFFFFFFFFFULL

/* Transport layer types reported by the *_INFO_TLTYPE commands. "Mixed" is reported by a
 * module that serves several technologies. */
#define TLTypeMixedName "Mixed"
#define TLTypeCustomName "Custom"
#define TLTypeGEVName "GEV"
#define TLTypeCLName "CL"
#define TLTypeIIDCName "IIDC"
#define TLTypeUVCName "UVC"
#define TLTypeCXPName "CXP"
#define TLTypeCLHSName "CLHS"
#define TLTypeU3VName "U3V"
#define TLTypeETHERNETName "Ethernet"
#define TLTypePCIName "PCI"

#ifdef __cplusplus
extern "C" {
namespace GenTL {
#endif

/* ---- Basic types ------------------------------------------------------------------------ */

#ifdef __cplusplus
typedef bool bool8_t;
#else
typedef uint8_t bool8_t;
#endif

typedef void* TL_HANDLE;       /* from TLOpen */
typedef void* IF_HANDLE;       /* from TLOpenInterface */
typedef void* DEV_HANDLE;      /* from IFOpenDevice: the local device module */
typedef void* DS_HANDLE;       /* from DevOpenDataStream */
typedef void* BUFFER_HANDLE;   /* from DSAnnounceBuffer, DSAllocAndAnnounceBuffer, DSGetBufferID, ... */
typedef void* PORT_HANDLE;     /* any module handle, or the remote device from DevGetPort */
typedef void* EVENTSRC_HANDLE; /* any module handle */
typedef void* EVENT_HANDLE;    /* from GCRegisterEvent */

/* ---- Error codes ------------------------------------------------------------------------ */

enum GC_ERROR_LIST
{
    GC_ERR_SUCCESS = 0,
    GC_ERR_ERROR = -1001,
    GC_ERR_NOT_INITIALIZED = -1002,
    GC_ERR_NOT_IMPLEMENTED = -1003,
    GC_ERR_RESOURCE_IN_USE = -1004,
    GC_ERR_ACCESS_DENIED = -1005,
    GC_ERR_INVALID_HANDLE = -1006,
    GC_ERR_INVALID_ID = -1007,
    GC_ERR_NO_DATA = -1008,
    GC_ERR_INVALID_PARAMETER = -1009,
    GC_ERR_IO = -1010,
    GC_ERR_TIMEOUT = -1011,
    GC_ERR_ABORT = -1012,             /* 1.1: wait aborted by EventKill, unregister or stop */
    GC_ERR_INVALID_BUFFER = -1013,    /* 1.1 */
    GC_ERR_NOT_AVAILABLE = -1014,     /* 1.2 */
    GC_ERR_INVALID_ADDRESS = -1015,   /* 1.3 */
    GC_ERR_BUFFER_TOO_SMALL = -1016,  /* 1.4: older producers answer GC_ERR_INVALID_PARAMETER */
    GC_ERR_INVALID_INDEX = -1017,     /* 1.4 */
    GC_ERR_PARSING_CHUNK_DATA = -1018, /* 1.4 */
    GC_ERR_INVALID_VALUE = -1019,     /* 1.4 */
    GC_ERR_RESOURCE_EXHAUSTED = -1020, /* 1.4 */
    GC_ERR_OUT_OF_MEMORY = -1021,     /* 1.4 */
    GC_ERR_BUSY = -1022,              /* 1.5 */
    GC_ERR_AMBIGUOUS = -1023,         /* 1.6 */

    GC_ERR_CUSTOM_ID = -10000 /* producer-specific codes are this value or below */
};
typedef int32_t GC_ERROR;

/* ---- Data types of the information returned by the *GetInfo calls ----------------------- */

enum INFO_DATATYPE_LIST
{
    INFO_DATATYPE_UNKNOWN = 0,
    INFO_DATATYPE_STRING = 1,     /* NUL-terminated; sizes include the NUL */
    INFO_DATATYPE_STRINGLIST = 2, /* NUL-terminated strings back to back, closed by one more NUL */
    INFO_DATATYPE_INT16 = 3,
    INFO_DATATYPE_UINT16 = 4,
    INFO_DATATYPE_INT32 = 5,
    INFO_DATATYPE_UINT32 = 6,
    INFO_DATATYPE_INT64 = 7,
    INFO_DATATYPE_UINT64 = 8,
    INFO_DATATYPE_FLOAT64 = 9,
    INFO_DATATYPE_PTR = 10,
    INFO_DATATYPE_BOOL8 = 11,
    INFO_DATATYPE_SIZET = 12,
    INFO_DATATYPE_BUFFER = 13,  /* raw bytes, no terminator */
    INFO_DATATYPE_PTRDIFF = 14, /* 1.3 */

    INFO_DATATYPE_CUSTOM_ID = 1000
};
typedef int32_t INFO_DATATYPE;

/* Encoding of every STRING the producer returns (1.4). */
enum TL_CHAR_ENCODING_LIST
{
    TL_CHAR_ENCODING_ASCII = 0,
    TL_CHAR_ENCODING_UTF8 = 1
};
typedef int32_t TL_CHAR_ENCODING;

/* ---- System module (TLGetInfo, GCGetInfo) ----------------------------------------------- */

enum TL_INFO_CMD_LIST
{
    TL_INFO_ID = 0,              /* STRING */
    TL_INFO_VENDOR = 1,          /* STRING */
    TL_INFO_MODEL = 2,           /* STRING */
    TL_INFO_VERSION = 3,         /* STRING */
    TL_INFO_TLTYPE = 4,          /* STRING */
    TL_INFO_NAME = 5,            /* STRING: file name of the .cti, with extension */
    TL_INFO_PATHNAME = 6,        /* STRING: full path of the .cti */
    TL_INFO_DISPLAYNAME = 7,     /* STRING */
    TL_INFO_CHAR_ENCODING = 8,   /* INT32 (TL_CHAR_ENCODING), 1.4 */
    TL_INFO_GENTL_VER_MAJOR = 9, /* UINT32, 1.5 */
    TL_INFO_GENTL_VER_MINOR = 10, /* UINT32, 1.5 */

    TL_INFO_CUSTOM_ID = 1000
};
typedef int32_t TL_INFO_CMD;

/* ---- Interface module (IFGetInfo, TLGetInterfaceInfo) ----------------------------------- */

enum INTERFACE_INFO_CMD_LIST
{
    INTERFACE_INFO_ID = 0,          /* STRING */
    INTERFACE_INFO_DISPLAYNAME = 1, /* STRING */
    INTERFACE_INFO_TLTYPE = 2,      /* STRING */

    INTERFACE_INFO_CUSTOM_ID = 1000
};
typedef int32_t INTERFACE_INFO_CMD;

/* ---- Device module (DevGetInfo, IFGetDeviceInfo, IFOpenDevice) -------------------------- */

/* Access asked for in IFOpenDevice. */
enum DEVICE_ACCESS_FLAGS_LIST
{
    DEVICE_ACCESS_UNKNOWN = 0,   /* never passed to a call */
    DEVICE_ACCESS_NONE = 1,
    DEVICE_ACCESS_READONLY = 2,  /* port functions may only read */
    DEVICE_ACCESS_CONTROL = 3,   /* read/write for us; others may still read */
    DEVICE_ACCESS_EXCLUSIVE = 4, /* no other process may open it */

    DEVICE_ACCESS_CUSTOM_ID = 1000
};
typedef int32_t DEVICE_ACCESS_FLAGS;

/* What DEVICE_INFO_ACCESS_STATUS reports, also for devices that are not open. */
enum DEVICE_ACCESS_STATUS_LIST
{
    DEVICE_ACCESS_STATUS_UNKNOWN = 0,
    DEVICE_ACCESS_STATUS_READWRITE = 1,      /* available for reading and writing */
    DEVICE_ACCESS_STATUS_READONLY = 2,       /* available for reading only */
    DEVICE_ACCESS_STATUS_NOACCESS = 3,
    DEVICE_ACCESS_STATUS_BUSY = 4,           /* opened by another process or host, 1.5 */
    DEVICE_ACCESS_STATUS_OPEN_READWRITE = 5, /* opened read/write by this process, 1.5 */
    DEVICE_ACCESS_STATUS_OPEN_READONLY = 6,  /* opened read-only by this process, 1.5 */

    DEVICE_ACCESS_STATUS_CUSTOM_ID = 1000
};
typedef int32_t DEVICE_ACCESS_STATUS;

enum DEVICE_INFO_CMD_LIST
{
    DEVICE_INFO_ID = 0,                  /* STRING */
    DEVICE_INFO_VENDOR = 1,              /* STRING */
    DEVICE_INFO_MODEL = 2,               /* STRING */
    DEVICE_INFO_TLTYPE = 3,              /* STRING */
    DEVICE_INFO_DISPLAYNAME = 4,         /* STRING */
    DEVICE_INFO_ACCESS_STATUS = 5,       /* INT32 (DEVICE_ACCESS_STATUS) */
    DEVICE_INFO_USER_DEFINED_NAME = 6,   /* STRING, 1.4 */
    DEVICE_INFO_SERIAL_NUMBER = 7,       /* STRING, 1.4 */
    DEVICE_INFO_VERSION = 8,             /* STRING, 1.4 */
    DEVICE_INFO_TIMESTAMP_FREQUENCY = 9, /* UINT64: ticks per second, 1.4 */

    DEVICE_INFO_CUSTOM_ID = 1000
};
typedef int32_t DEVICE_INFO_CMD;

/* ---- Data stream module (DSGetInfo, DSFlushQueue, DSStart/StopAcquisition) -------------- */

enum STREAM_INFO_CMD_LIST
{
    STREAM_INFO_ID = 0,                     /* STRING */
    STREAM_INFO_NUM_DELIVERED = 1,          /* UINT64: since the last acquisition start */
    STREAM_INFO_NUM_UNDERRUN = 2,           /* UINT64: frames lost to an empty input pool */
    STREAM_INFO_NUM_ANNOUNCED = 3,          /* SIZET */
    STREAM_INFO_NUM_QUEUED = 4,             /* SIZET: buffers in the input pool */
    STREAM_INFO_NUM_AWAIT_DELIVERY = 5,     /* SIZET: buffers in the output queue */
    STREAM_INFO_NUM_STARTED = 6,            /* UINT64 */
    STREAM_INFO_PAYLOAD_SIZE = 7,           /* SIZET: bytes one buffer must hold */
    STREAM_INFO_IS_GRABBING = 8,            /* BOOL8 */
    STREAM_INFO_DEFINES_PAYLOADSIZE = 9,    /* BOOL8: whether PAYLOAD_SIZE is authoritative */
    STREAM_INFO_TLTYPE = 10,                /* STRING */
    STREAM_INFO_NUM_CHUNKS_MAX = 11,        /* SIZET, 1.3 */
    STREAM_INFO_BUF_ANNOUNCE_MIN = 12,      /* SIZET, 1.3 */
    STREAM_INFO_BUF_ALIGNMENT = 13,         /* SIZET: bytes, 1.3 */
    STREAM_INFO_FLOW_TABLE = 14,            /* BUFFER, 1.6 */
    STREAM_INFO_GENDC_PREFETCH_DESCRIPTOR = 15, /* BUFFER, 1.6 */

    STREAM_INFO_CUSTOM_ID = 1000
};
typedef int32_t STREAM_INFO_CMD;

enum ACQ_START_FLAGS_LIST
{
    ACQ_START_FLAGS_DEFAULT = 0,

    ACQ_START_FLAGS_CUSTOM_ID = 1000
};
typedef int32_t ACQ_START_FLAGS;

enum ACQ_STOP_FLAGS_LIST
{
    ACQ_STOP_FLAGS_DEFAULT = 0, /* finish the buffer being filled, then stop */
    ACQ_STOP_FLAGS_KILL = 1,    /* stop at once; buffers being filled go back to the input pool */

    ACQ_STOP_FLAGS_CUSTOM_ID = 1000
};
typedef int32_t ACQ_STOP_FLAGS;

/* Operations of DSFlushQueue. */
enum ACQ_QUEUE_TYPE_LIST
{
    ACQ_QUEUE_INPUT_TO_OUTPUT = 0,   /* input pool to output queue, unfilled */
    ACQ_QUEUE_OUTPUT_DISCARD = 1,    /* output queue emptied; its buffers become announced only */
    ACQ_QUEUE_ALL_TO_INPUT = 2,      /* every announced buffer into the input pool */
    ACQ_QUEUE_UNQUEUED_TO_INPUT = 3, /* buffers in neither queue into the input pool */
    ACQ_QUEUE_ALL_DISCARD = 4,       /* both queues emptied: all buffers ready to revoke */

    ACQ_QUEUE_CUSTOM_ID = 1000
};
typedef int32_t ACQ_QUEUE_TYPE;

/* ---- Buffers (DSGetBufferInfo, DSGetBufferPartInfo) ------------------------------------- */

enum BUFFER_INFO_CMD_LIST
{
    BUFFER_INFO_BASE = 0,                        /* PTR: start of the buffer memory */
    BUFFER_INFO_SIZE = 1,                        /* SIZET: allocated size */
    BUFFER_INFO_USER_PTR = 2,                    /* PTR: pPrivate given at announce */
    BUFFER_INFO_TIMESTAMP = 3,                   /* UINT64: device ticks */
    BUFFER_INFO_NEW_DATA = 4,                    /* BOOL8: filled since last queued */
    BUFFER_INFO_IS_QUEUED = 5,                   /* BOOL8: in the input pool or output queue */
    BUFFER_INFO_IS_ACQUIRING = 6,                /* BOOL8: being filled */
    BUFFER_INFO_IS_INCOMPLETE = 7,               /* BOOL8: error while filling */
    BUFFER_INFO_TLTYPE = 8,                      /* STRING */
    BUFFER_INFO_SIZE_FILLED = 9,                 /* SIZET: bytes written; 0 once queued again */
    BUFFER_INFO_WIDTH = 10,                      /* SIZET, 1.2 */
    BUFFER_INFO_HEIGHT = 11,                     /* SIZET, 1.2 */
    BUFFER_INFO_XOFFSET = 12,                    /* SIZET, 1.2 */
    BUFFER_INFO_YOFFSET = 13,                    /* SIZET, 1.2 */
    BUFFER_INFO_XPADDING = 14,                   /* SIZET: bytes after each line, 1.2 */
    BUFFER_INFO_YPADDING = 15,                   /* SIZET: bytes after the image, 1.2 */
    BUFFER_INFO_FRAMEID = 16,                    /* UINT64, 1.2 */
    BUFFER_INFO_IMAGEPRESENT = 17,               /* BOOL8, 1.2 */
    BUFFER_INFO_IMAGEOFFSET = 18,                /* SIZET: image data offset from BASE, 1.2 */
    BUFFER_INFO_PAYLOADTYPE = 19,                /* SIZET (not INT32!): PAYLOADTYPE_INFO_IDS, 1.2 */
    BUFFER_INFO_PIXELFORMAT = 20,                /* UINT64, 1.2 */
    BUFFER_INFO_PIXELFORMAT_NAMESPACE = 21,      /* UINT64 (not INT32!): PIXELFORMAT_NAMESPACE_IDS, 1.2 */
    BUFFER_INFO_DELIVERED_IMAGEHEIGHT = 22,      /* SIZET: lines actually delivered, 1.2 */
    BUFFER_INFO_DELIVERED_CHUNKPAYLOADSIZE = 23, /* SIZET, 1.2 */
    BUFFER_INFO_CHUNKLAYOUTID = 24,              /* UINT64: changes with the chunk layout, 1.2 */
    BUFFER_INFO_FILENAME = 25,                   /* STRING: file payloads, 1.2 */
    BUFFER_INFO_PIXEL_ENDIANNESS = 26,           /* INT32: PIXELENDIANNESS_IDS, 1.4 */
    BUFFER_INFO_DATA_SIZE = 27,                  /* SIZET: size of the data meant to be written, 1.4 */
    BUFFER_INFO_TIMESTAMP_NS = 28,               /* UINT64: nanoseconds, 1.4 */
    BUFFER_INFO_DATA_LARGER_THAN_BUFFER = 29,    /* BOOL8, 1.4 */
    BUFFER_INFO_CONTAINS_CHUNKDATA = 30,         /* BOOL8, 1.4 */
    BUFFER_INFO_IS_COMPOSITE = 31,               /* BOOL8, 1.6 */

    BUFFER_INFO_CUSTOM_ID = 1000
};
typedef int32_t BUFFER_INFO_CMD;

/* Parts of a multi-part buffer (1.5). BUFFER_PART_INFO_BASE is absolute memory. */
enum BUFFER_PART_INFO_CMD_LIST
{
    BUFFER_PART_INFO_BASE = 0,                  /* PTR */
    BUFFER_PART_INFO_DATA_SIZE = 1,             /* SIZET */
    BUFFER_PART_INFO_DATA_TYPE = 2,             /* SIZET: PARTDATATYPE_IDS */
    BUFFER_PART_INFO_DATA_FORMAT = 3,           /* UINT64: pixel format */
    BUFFER_PART_INFO_DATA_FORMAT_NAMESPACE = 4, /* UINT64: PIXELFORMAT_NAMESPACE_IDS */
    BUFFER_PART_INFO_WIDTH = 5,                 /* SIZET */
    BUFFER_PART_INFO_HEIGHT = 6,                /* SIZET */
    BUFFER_PART_INFO_XOFFSET = 7,               /* SIZET */
    BUFFER_PART_INFO_YOFFSET = 8,               /* SIZET */
    BUFFER_PART_INFO_XPADDING = 9,              /* SIZET */
    BUFFER_PART_INFO_SOURCE_ID = 10,            /* UINT64 */
    BUFFER_PART_INFO_DELIVERED_IMAGEHEIGHT = 11, /* SIZET */
    BUFFER_PART_INFO_REGION_ID = 12,            /* UINT64, 1.6 */
    BUFFER_PART_INFO_DATA_PURPOSE_ID = 13,      /* UINT64, 1.6 */

    BUFFER_PART_INFO_CUSTOM_ID = 1000
};
typedef int32_t BUFFER_PART_INFO_CMD;

/* Values of BUFFER_INFO_PAYLOADTYPE. */
enum PAYLOADTYPE_INFO_IDS
{
    PAYLOAD_TYPE_UNKNOWN = 0,
    PAYLOAD_TYPE_IMAGE = 1,           /* 1.2 */
    PAYLOAD_TYPE_RAW_DATA = 2,        /* 1.2 */
    PAYLOAD_TYPE_FILE = 3,            /* 1.2 */
    PAYLOAD_TYPE_CHUNK_DATA = 4,      /* 1.2; deprecated in 1.5 for BUFFER_INFO_CONTAINS_CHUNKDATA */
    PAYLOAD_TYPE_JPEG = 5,            /* 1.4 */
    PAYLOAD_TYPE_JPEG2000 = 6,        /* 1.4 */
    PAYLOAD_TYPE_H264 = 7,            /* 1.4 */
    PAYLOAD_TYPE_CHUNK_ONLY = 8,      /* 1.4 */
    PAYLOAD_TYPE_DEVICE_SPECIFIC = 9, /* 1.4 */
    PAYLOAD_TYPE_MULTI_PART = 10,     /* 1.5 */
    PAYLOAD_TYPE_GENDC = 11,          /* 1.6 */

    PAYLOAD_TYPE_CUSTOM_ID = 1000
};
typedef int32_t PAYLOADTYPE_INFO_ID;

/* Values of BUFFER_INFO_PIXELFORMAT_NAMESPACE. With PFNC_32BIT the pixel format is a 32-bit
 * PFNC code; GEV codes are the same numbers for the formats GEV defines. */
enum PIXELFORMAT_NAMESPACE_IDS
{
    PIXELFORMAT_NAMESPACE_UNKNOWN = 0,
    PIXELFORMAT_NAMESPACE_GEV = 1,
    PIXELFORMAT_NAMESPACE_IIDC = 2,
    PIXELFORMAT_NAMESPACE_PFNC_16BIT = 3, /* 1.4 */
    PIXELFORMAT_NAMESPACE_PFNC_32BIT = 4, /* 1.4 */

    PIXELFORMAT_NAMESPACE_CUSTOM_ID = 1000
};
typedef int32_t PIXELFORMAT_NAMESPACE_ID;

/* Values of BUFFER_INFO_PIXEL_ENDIANNESS (1.4). */
enum PIXELENDIANNESS_IDS
{
    PIXELENDIANNESS_UNKNOWN = 0,
    PIXELENDIANNESS_LITTLE = 1,
    PIXELENDIANNESS_BIG = 2
};
typedef int32_t PIXELENDIANNESS_ID;

/* Values of BUFFER_PART_INFO_DATA_TYPE (1.5). */
enum PARTDATATYPE_IDS
{
    PART_DATATYPE_UNKNOWN = 0,
    PART_DATATYPE_2D_IMAGE = 1,
    PART_DATATYPE_2D_PLANE_BIPLANAR = 2,
    PART_DATATYPE_2D_PLANE_TRIPLANAR = 3,
    PART_DATATYPE_2D_PLANE_QUADPLANAR = 4,
    PART_DATATYPE_3D_IMAGE = 5,
    PART_DATATYPE_3D_PLANE_BIPLANAR = 6,
    PART_DATATYPE_3D_PLANE_TRIPLANAR = 7,
    PART_DATATYPE_3D_PLANE_QUADPLANAR = 8,
    PART_DATATYPE_CONFIDENCE_MAP = 9,
    PART_DATATYPE_JPEG = 10,     /* 1.6 */
    PART_DATATYPE_JPEG2000 = 11, /* 1.6 */

    PART_DATATYPE_CUSTOM_ID = 1000
};
typedef int32_t PARTDATATYPE_ID;

/* Flows and segments of GenDC / composite buffers (1.6). */
enum FLOW_INFO_CMD_LIST
{
    FLOW_INFO_SIZE = 0, /* SIZET */

    FLOW_INFO_CUSTOM_ID = 1000
};
typedef int32_t FLOW_INFO_CMD;

enum SEGMENT_INFO_CMD_LIST
{
    SEGMENT_INFO_BASE = 0,          /* PTR */
    SEGMENT_INFO_SIZE = 1,          /* SIZET */
    SEGMENT_INFO_IS_INCOMPLETE = 2, /* BOOL8 */
    SEGMENT_INFO_SIZE_FILLED = 3,   /* SIZET */
    SEGMENT_INFO_DATA_SIZE = 4,     /* SIZET */

    SEGMENT_INFO_CUSTOM_ID = 1000
};
typedef int32_t SEGMENT_INFO_CMD;

/* ---- Ports and description URLs (GCGetPortInfo, GCGetPortURLInfo) ---------------------- */

enum PORT_INFO_CMD_LIST
{
    PORT_INFO_ID = 0,            /* STRING */
    PORT_INFO_VENDOR = 1,        /* STRING */
    PORT_INFO_MODEL = 2,         /* STRING */
    PORT_INFO_TLTYPE = 3,        /* STRING */
    PORT_INFO_MODULE = 4,        /* STRING: "TLSystem", "TLInterface", ..., "Device" */
    PORT_INFO_LITTLE_ENDIAN = 5, /* BOOL8 */
    PORT_INFO_BIG_ENDIAN = 6,    /* BOOL8 */
    PORT_INFO_ACCESS_READ = 7,   /* BOOL8 */
    PORT_INFO_ACCESS_WRITE = 8,  /* BOOL8 */
    PORT_INFO_ACCESS_NA = 9,     /* BOOL8 */
    PORT_INFO_ACCESS_NI = 10,    /* BOOL8 */
    PORT_INFO_VERSION = 11,      /* STRING */
    PORT_INFO_PORTNAME = 12,     /* STRING: the <Port> node of the description to connect to */

    PORT_INFO_CUSTOM_ID = 1000
};
typedef int32_t PORT_INFO_CMD;

/* Where a description file lives (URL_INFO_SCHEME, 1.5). */
enum URL_SCHEME_IDS
{
    URL_SCHEME_LOCAL = 0, /* in the port's own register space */
    URL_SCHEME_HTTP = 1,
    URL_SCHEME_FILE = 2, /* in the host file system */

    URL_SCHEME_CUSTOM_ID = 1000
};
typedef int32_t URL_SCHEME_ID;

enum URL_INFO_CMD_LIST
{
    URL_INFO_URL = 0,                   /* STRING */
    URL_INFO_SCHEMA_VER_MAJOR = 1,      /* INT32 */
    URL_INFO_SCHEMA_VER_MINOR = 2,      /* INT32 */
    URL_INFO_FILE_VER_MAJOR = 3,        /* INT32 */
    URL_INFO_FILE_VER_MINOR = 4,        /* INT32 */
    URL_INFO_FILE_VER_SUBMINOR = 5,     /* INT32 */
    URL_INFO_FILE_SHA1_HASH = 6,        /* BUFFER: 20 bytes, 1.4 */
    URL_INFO_FILE_REGISTER_ADDRESS = 7, /* UINT64, 1.5 */
    URL_INFO_FILE_SIZE = 8,             /* UINT64, 1.5 */
    URL_INFO_SCHEME = 9,                /* INT32 (URL_SCHEME_IDS), 1.5 */
    URL_INFO_FILENAME = 10,             /* STRING: file scheme only, 1.5 */

    URL_INFO_CUSTOM_ID = 1000
};
typedef int32_t URL_INFO_CMD;

/* ---- Events (GCRegisterEvent, EventGetInfo, EventGetDataInfo) --------------------------- */

enum EVENT_TYPE_LIST
{
    EVENT_ERROR = 0,
    EVENT_NEW_BUFFER = 1,         /* data stream only; data is EVENT_NEW_BUFFER_DATA */
    EVENT_FEATURE_INVALIDATE = 2,
    EVENT_FEATURE_CHANGE = 3,
    EVENT_REMOTE_DEVICE = 4,      /* device module only: events for the remote device node map */
    EVENT_MODULE = 5,             /* 1.4: events for the module's own node map */

    EVENT_CUSTOM_ID = 1000
};
typedef int32_t EVENT_TYPE;

enum EVENT_INFO_CMD_LIST
{
    EVENT_EVENT_TYPE = 0,         /* INT32 */
    EVENT_NUM_IN_QUEUE = 1,       /* SIZET */
    EVENT_NUM_FIRED = 2,          /* UINT64: since the module was created */
    EVENT_SIZE_MAX = 3,           /* SIZET: largest data EventGetData returns, 1.2 */
    EVENT_INFO_DATA_SIZE_MAX = 4, /* SIZET: largest output of EventGetDataInfo, 1.2 */

    EVENT_INFO_CUSTOM_ID = 1000
};
typedef int32_t EVENT_INFO_CMD;

/* The data type of ID and VALUE depends on the event type: check *piType. */
enum EVENT_DATA_INFO_CMD_LIST
{
    EVENT_DATA_ID = 0,
    EVENT_DATA_VALUE = 1,
    EVENT_DATA_NUMID = 2, /* UINT64, 1.3 */

    EVENT_DATA_CUSTOM_ID = 1000
};
typedef int32_t EVENT_DATA_INFO_CMD;

/* ---- Structures ------------------------------------------------------------------------- */

/* Byte-packed on both sides of the interface: never rely on natural alignment here (the
 * stacked buffer-info entry is 28 bytes, not 32). */
#pragma pack(push, 1)

/* One entry of the new-buffer event's data queue. */
typedef struct S_EVENT_NEW_BUFFER
{
    BUFFER_HANDLE BufferHandle;
    void* pUserPointer; /* pPrivate given at announce */
} EVENT_NEW_BUFFER_DATA;

/* One access of GCReadPortStacked / GCWritePortStacked (1.1). */
typedef struct S_PORT_REGISTER_STACK_ENTRY
{
    uint64_t Address;
    void* pBuffer;
    size_t Size;
} PORT_REGISTER_STACK_ENTRY;

/* One chunk found by DSGetBufferChunkData (1.3). */
typedef struct S_SINGLE_CHUNK_DATA
{
    uint64_t ChunkID;
    ptrdiff_t ChunkOffset; /* from the buffer base */
    size_t ChunkLength;
} SINGLE_CHUNK_DATA;

/* One query of DSGetBufferInfoStacked (1.6). iSize: capacity in, size out. */
typedef struct S_DS_BUFFER_INFO_STACKED
{
    BUFFER_INFO_CMD iInfoCmd;
    INFO_DATATYPE iType;
    void* pBuffer;
    size_t iSize;
    GC_ERROR iResult;
} DS_BUFFER_INFO_STACKED;

/* One query of DSGetBufferPartInfoStacked (1.6). The field order differs from
 * DS_BUFFER_INFO_STACKED: iResult comes third. */
typedef struct S_DS_BUFFER_PART_INFO_STACKED
{
    uint32_t iPartIndex;
    BUFFER_PART_INFO_CMD iInfoCmd;
    GC_ERROR iResult;
    INFO_DATATYPE iType;
    void* pBuffer;
    size_t iSize;
} DS_BUFFER_PART_INFO_STACKED;

#pragma pack(pop)

#ifdef __cplusplus
static_assert(sizeof(bool8_t) == 1, "bool8_t must be one byte");
static_assert(sizeof(EVENT_NEW_BUFFER_DATA) == 16, "EVENT_NEW_BUFFER_DATA layout");
static_assert(offsetof(EVENT_NEW_BUFFER_DATA, pUserPointer) == 8, "EVENT_NEW_BUFFER_DATA layout");
static_assert(sizeof(PORT_REGISTER_STACK_ENTRY) == 24, "PORT_REGISTER_STACK_ENTRY layout");
static_assert(offsetof(PORT_REGISTER_STACK_ENTRY, pBuffer) == 8, "PORT_REGISTER_STACK_ENTRY layout");
static_assert(offsetof(PORT_REGISTER_STACK_ENTRY, Size) == 16, "PORT_REGISTER_STACK_ENTRY layout");
static_assert(sizeof(SINGLE_CHUNK_DATA) == 24, "SINGLE_CHUNK_DATA layout");
static_assert(offsetof(SINGLE_CHUNK_DATA, ChunkOffset) == 8, "SINGLE_CHUNK_DATA layout");
static_assert(offsetof(SINGLE_CHUNK_DATA, ChunkLength) == 16, "SINGLE_CHUNK_DATA layout");
static_assert(sizeof(DS_BUFFER_INFO_STACKED) == 28, "DS_BUFFER_INFO_STACKED layout");
static_assert(offsetof(DS_BUFFER_INFO_STACKED, iType) == 4, "DS_BUFFER_INFO_STACKED layout");
static_assert(offsetof(DS_BUFFER_INFO_STACKED, pBuffer) == 8, "DS_BUFFER_INFO_STACKED layout");
static_assert(offsetof(DS_BUFFER_INFO_STACKED, iSize) == 16, "DS_BUFFER_INFO_STACKED layout");
static_assert(offsetof(DS_BUFFER_INFO_STACKED, iResult) == 24, "DS_BUFFER_INFO_STACKED layout");
static_assert(sizeof(DS_BUFFER_PART_INFO_STACKED) == 32, "DS_BUFFER_PART_INFO_STACKED layout");
static_assert(offsetof(DS_BUFFER_PART_INFO_STACKED, iInfoCmd) == 4, "DS_BUFFER_PART_INFO_STACKED layout");
static_assert(offsetof(DS_BUFFER_PART_INFO_STACKED, iResult) == 8, "DS_BUFFER_PART_INFO_STACKED layout");
static_assert(offsetof(DS_BUFFER_PART_INFO_STACKED, iType) == 12, "DS_BUFFER_PART_INFO_STACKED layout");
static_assert(offsetof(DS_BUFFER_PART_INFO_STACKED, pBuffer) == 16, "DS_BUFFER_PART_INFO_STACKED layout");
static_assert(offsetof(DS_BUFFER_PART_INFO_STACKED, iSize) == 24, "DS_BUFFER_PART_INFO_STACKED layout");
#endif

/* ---- Entry points ----------------------------------------------------------------------- */
/*
 * Output pairs (void* pBuffer, size_t* piSize) follow one two-phase rule: with pBuffer NULL
 * the producer stores the required size (strings include their NUL) and, where present, the
 * data type; otherwise *piSize is the capacity on input and the bytes written on output, and
 * a capacity too small gives GC_ERR_BUFFER_TOO_SMALL. Time-outs are in milliseconds.
 * Entry points added after 1.0 may be missing from an older producer.
 */

/* Library and ports (1.0) */
GC_API GCGetInfo(TL_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer, size_t* piSize);
GC_API GCGetLastError(GC_ERROR* piErrorCode, char* sErrText, size_t* piSize);
GC_API GCInitLib(void);
GC_API GCCloseLib(void);
GC_API GCReadPort(PORT_HANDLE hPort, uint64_t iAddress, void* pBuffer, size_t* piSize);
GC_API GCWritePort(PORT_HANDLE hPort, uint64_t iAddress, const void* pBuffer, size_t* piSize);
GC_API GCGetPortURL(PORT_HANDLE hPort, char* sURL, size_t* piSize);
GC_API GCGetPortInfo(PORT_HANDLE hPort, PORT_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer,
                     size_t* piSize);
GC_API GCRegisterEvent(EVENTSRC_HANDLE hEventSrc, EVENT_TYPE iEventID, EVENT_HANDLE* phEvent);
GC_API GCUnregisterEvent(EVENTSRC_HANDLE hEventSrc, EVENT_TYPE iEventID);

/* Events (1.0) */
GC_API EventGetData(EVENT_HANDLE hEvent, void* pBuffer, size_t* piSize, uint64_t iTimeout);
GC_API EventGetDataInfo(EVENT_HANDLE hEvent, const void* pInBuffer, size_t iInSize, EVENT_DATA_INFO_CMD iInfoCmd,
                        INFO_DATATYPE* piType, void* pOutBuffer, size_t* piOutSize);
GC_API EventGetInfo(EVENT_HANDLE hEvent, EVENT_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer,
                    size_t* piSize);
GC_API EventFlush(EVENT_HANDLE hEvent);
GC_API EventKill(EVENT_HANDLE hEvent);

/* System module (1.0) */
GC_API TLOpen(TL_HANDLE* phTL);
GC_API TLClose(TL_HANDLE hTL);
GC_API TLGetInfo(TL_HANDLE hTL, TL_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer, size_t* piSize);
GC_API TLGetNumInterfaces(TL_HANDLE hTL, uint32_t* piNumIfaces);
GC_API TLGetInterfaceID(TL_HANDLE hTL, uint32_t iIndex, char* sID, size_t* piSize);
GC_API TLGetInterfaceInfo(TL_HANDLE hTL, const char* sIfaceID, INTERFACE_INFO_CMD iInfoCmd, INFO_DATATYPE* piType,
                          void* pBuffer, size_t* piSize);
GC_API TLOpenInterface(TL_HANDLE hTL, const char* sIfaceID, IF_HANDLE* phIface);
GC_API TLUpdateInterfaceList(TL_HANDLE hTL, bool8_t* pbChanged, uint64_t iTimeout);

/* Interface module (1.0) */
GC_API IFClose(IF_HANDLE hIface);
GC_API IFGetInfo(IF_HANDLE hIface, INTERFACE_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer,
                 size_t* piSize);
GC_API IFGetNumDevices(IF_HANDLE hIface, uint32_t* piNumDevices);
GC_API IFGetDeviceID(IF_HANDLE hIface, uint32_t iIndex, char* sIDeviceID, size_t* piSize);
GC_API IFUpdateDeviceList(IF_HANDLE hIface, bool8_t* pbChanged, uint64_t iTimeout);
GC_API IFGetDeviceInfo(IF_HANDLE hIface, const char* sDeviceID, DEVICE_INFO_CMD iInfoCmd, INFO_DATATYPE* piType,
                       void* pBuffer, size_t* piSize);
GC_API IFOpenDevice(IF_HANDLE hIface, const char* sDeviceID, DEVICE_ACCESS_FLAGS iOpenFlag, DEV_HANDLE* phDevice);

/* Device module (1.0) */
GC_API DevGetPort(DEV_HANDLE hDevice, PORT_HANDLE* phRemoteDevice);
GC_API DevGetNumDataStreams(DEV_HANDLE hDevice, uint32_t* piNumDataStreams);
GC_API DevGetDataStreamID(DEV_HANDLE hDevice, uint32_t iIndex, char* sDataStreamID, size_t* piSize);
GC_API DevOpenDataStream(DEV_HANDLE hDevice, const char* sDataStreamID, DS_HANDLE* phDataStream);
GC_API DevGetInfo(DEV_HANDLE hDevice, DEVICE_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer,
                  size_t* piSize);
GC_API DevClose(DEV_HANDLE hDevice);

/* Data stream module (1.0) */
GC_API DSAnnounceBuffer(DS_HANDLE hDataStream, void* pBuffer, size_t iSize, void* pPrivate, BUFFER_HANDLE* phBuffer);
GC_API DSAllocAndAnnounceBuffer(DS_HANDLE hDataStream, size_t iSize, void* pPrivate, BUFFER_HANDLE* phBuffer);
GC_API DSFlushQueue(DS_HANDLE hDataStream, ACQ_QUEUE_TYPE iOperation);
GC_API DSStartAcquisition(DS_HANDLE hDataStream, ACQ_START_FLAGS iStartFlags, uint64_t iNumToAcquire);
GC_API DSStopAcquisition(DS_HANDLE hDataStream, ACQ_STOP_FLAGS iStopFlags);
GC_API DSGetInfo(DS_HANDLE hDataStream, STREAM_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer,
                 size_t* piSize);
GC_API DSGetBufferID(DS_HANDLE hDataStream, uint32_t iIndex, BUFFER_HANDLE* phBuffer);
GC_API DSClose(DS_HANDLE hDataStream);
GC_API DSRevokeBuffer(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, void** pBuffer, void** pPrivate);
GC_API DSQueueBuffer(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer);
GC_API DSGetBufferInfo(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, BUFFER_INFO_CMD iInfoCmd, INFO_DATATYPE* piType,
                       void* pBuffer, size_t* piSize);

/* 1.1 */
GC_API GCGetNumPortURLs(PORT_HANDLE hPort, uint32_t* piNumURLs);
GC_API GCGetPortURLInfo(PORT_HANDLE hPort, uint32_t iURLIndex, URL_INFO_CMD iInfoCmd, INFO_DATATYPE* piType,
                        void* pBuffer, size_t* piSize);
GC_API GCReadPortStacked(PORT_HANDLE hPort, PORT_REGISTER_STACK_ENTRY* pEntries, size_t* piNumEntries);
GC_API GCWritePortStacked(PORT_HANDLE hPort, PORT_REGISTER_STACK_ENTRY* pEntries, size_t* piNumEntries);

/* 1.3 */
GC_API DSGetBufferChunkData(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, SINGLE_CHUNK_DATA* pChunkData,
                            size_t* piNumChunks);

/* 1.4 */
GC_API IFGetParentTL(IF_HANDLE hIface, TL_HANDLE* phSystem);
GC_API DevGetParentIF(DEV_HANDLE hDevice, IF_HANDLE* phIface);
GC_API DSGetParentDev(DS_HANDLE hDataStream, DEV_HANDLE* phDevice);

/* 1.5 */
GC_API DSGetNumBufferParts(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, uint32_t* piNumParts);
GC_API DSGetBufferPartInfo(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, uint32_t iPartIndex,
                           BUFFER_PART_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer, size_t* piSize);

/* 1.6 */
GC_API DSAnnounceCompositeBuffer(DS_HANDLE hDataStream, size_t iNumSegments, void** ppSegments, size_t* piSizes,
                                 void* pPrivate, BUFFER_HANDLE* phBuffer);
GC_API DSGetBufferInfoStacked(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, DS_BUFFER_INFO_STACKED* pInfoStacked,
                              size_t iNumInfos);
GC_API DSGetBufferPartInfoStacked(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer,
                                  DS_BUFFER_PART_INFO_STACKED* pInfoStacked, size_t iNumInfos);
GC_API DSGetNumFlows(DS_HANDLE hDataStream, uint32_t* piNumFlows);
GC_API DSGetFlowInfo(DS_HANDLE hDataStream, uint32_t iFlowIndex, FLOW_INFO_CMD iInfoCmd, INFO_DATATYPE* piType,
                     void* pBuffer, size_t* piSize);
GC_API DSGetNumBufferSegments(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, uint32_t* piNumSegments);
GC_API DSGetBufferSegmentInfo(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, uint32_t iSegmentIndex,
                              SEGMENT_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer, size_t* piSize);

/* ---- Function-pointer types for resolving the entry points with dlsym ------------------- */

GC_API_P(PGCGetInfo)(TL_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer, size_t* piSize);
GC_API_P(PGCGetLastError)(GC_ERROR* piErrorCode, char* sErrText, size_t* piSize);
GC_API_P(PGCInitLib)(void);
GC_API_P(PGCCloseLib)(void);
GC_API_P(PGCReadPort)(PORT_HANDLE hPort, uint64_t iAddress, void* pBuffer, size_t* piSize);
GC_API_P(PGCWritePort)(PORT_HANDLE hPort, uint64_t iAddress, const void* pBuffer, size_t* piSize);
GC_API_P(PGCGetPortURL)(PORT_HANDLE hPort, char* sURL, size_t* piSize);
GC_API_P(PGCGetPortInfo)(PORT_HANDLE hPort, PORT_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer,
                         size_t* piSize);
GC_API_P(PGCRegisterEvent)(EVENTSRC_HANDLE hEventSrc, EVENT_TYPE iEventID, EVENT_HANDLE* phEvent);
GC_API_P(PGCUnregisterEvent)(EVENTSRC_HANDLE hEventSrc, EVENT_TYPE iEventID);

GC_API_P(PEventGetData)(EVENT_HANDLE hEvent, void* pBuffer, size_t* piSize, uint64_t iTimeout);
GC_API_P(PEventGetDataInfo)(EVENT_HANDLE hEvent, const void* pInBuffer, size_t iInSize,
                            EVENT_DATA_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pOutBuffer,
                            size_t* piOutSize);
GC_API_P(PEventGetInfo)(EVENT_HANDLE hEvent, EVENT_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer,
                        size_t* piSize);
GC_API_P(PEventFlush)(EVENT_HANDLE hEvent);
GC_API_P(PEventKill)(EVENT_HANDLE hEvent);

GC_API_P(PTLOpen)(TL_HANDLE* phTL);
GC_API_P(PTLClose)(TL_HANDLE hTL);
GC_API_P(PTLGetInfo)(TL_HANDLE hTL, TL_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer, size_t* piSize);
GC_API_P(PTLGetNumInterfaces)(TL_HANDLE hTL, uint32_t* piNumIfaces);
GC_API_P(PTLGetInterfaceID)(TL_HANDLE hTL, uint32_t iIndex, char* sID, size_t* piSize);
GC_API_P(PTLGetInterfaceInfo)(TL_HANDLE hTL, const char* sIfaceID, INTERFACE_INFO_CMD iInfoCmd,
                              INFO_DATATYPE* piType, void* pBuffer, size_t* piSize);
GC_API_P(PTLOpenInterface)(TL_HANDLE hTL, const char* sIfaceID, IF_HANDLE* phIface);
GC_API_P(PTLUpdateInterfaceList)(TL_HANDLE hTL, bool8_t* pbChanged, uint64_t iTimeout);

GC_API_P(PIFClose)(IF_HANDLE hIface);
GC_API_P(PIFGetInfo)(IF_HANDLE hIface, INTERFACE_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer,
                     size_t* piSize);
GC_API_P(PIFGetNumDevices)(IF_HANDLE hIface, uint32_t* piNumDevices);
GC_API_P(PIFGetDeviceID)(IF_HANDLE hIface, uint32_t iIndex, char* sIDeviceID, size_t* piSize);
GC_API_P(PIFUpdateDeviceList)(IF_HANDLE hIface, bool8_t* pbChanged, uint64_t iTimeout);
GC_API_P(PIFGetDeviceInfo)(IF_HANDLE hIface, const char* sDeviceID, DEVICE_INFO_CMD iInfoCmd,
                           INFO_DATATYPE* piType, void* pBuffer, size_t* piSize);
GC_API_P(PIFOpenDevice)(IF_HANDLE hIface, const char* sDeviceID, DEVICE_ACCESS_FLAGS iOpenFlag,
                        DEV_HANDLE* phDevice);

GC_API_P(PDevGetPort)(DEV_HANDLE hDevice, PORT_HANDLE* phRemoteDevice);
GC_API_P(PDevGetNumDataStreams)(DEV_HANDLE hDevice, uint32_t* piNumDataStreams);
GC_API_P(PDevGetDataStreamID)(DEV_HANDLE hDevice, uint32_t iIndex, char* sDataStreamID, size_t* piSize);
GC_API_P(PDevOpenDataStream)(DEV_HANDLE hDevice, const char* sDataStreamID, DS_HANDLE* phDataStream);
GC_API_P(PDevGetInfo)(DEV_HANDLE hDevice, DEVICE_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer,
                      size_t* piSize);
GC_API_P(PDevClose)(DEV_HANDLE hDevice);

GC_API_P(PDSAnnounceBuffer)(DS_HANDLE hDataStream, void* pBuffer, size_t iSize, void* pPrivate,
                            BUFFER_HANDLE* phBuffer);
GC_API_P(PDSAllocAndAnnounceBuffer)(DS_HANDLE hDataStream, size_t iSize, void* pPrivate, BUFFER_HANDLE* phBuffer);
GC_API_P(PDSFlushQueue)(DS_HANDLE hDataStream, ACQ_QUEUE_TYPE iOperation);
GC_API_P(PDSStartAcquisition)(DS_HANDLE hDataStream, ACQ_START_FLAGS iStartFlags, uint64_t iNumToAcquire);
GC_API_P(PDSStopAcquisition)(DS_HANDLE hDataStream, ACQ_STOP_FLAGS iStopFlags);
GC_API_P(PDSGetInfo)(DS_HANDLE hDataStream, STREAM_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer,
                     size_t* piSize);
GC_API_P(PDSGetBufferID)(DS_HANDLE hDataStream, uint32_t iIndex, BUFFER_HANDLE* phBuffer);
GC_API_P(PDSClose)(DS_HANDLE hDataStream);
GC_API_P(PDSRevokeBuffer)(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, void** pBuffer, void** pPrivate);
GC_API_P(PDSQueueBuffer)(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer);
GC_API_P(PDSGetBufferInfo)(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, BUFFER_INFO_CMD iInfoCmd,
                           INFO_DATATYPE* piType, void* pBuffer, size_t* piSize);

GC_API_P(PGCGetNumPortURLs)(PORT_HANDLE hPort, uint32_t* piNumURLs);
GC_API_P(PGCGetPortURLInfo)(PORT_HANDLE hPort, uint32_t iURLIndex, URL_INFO_CMD iInfoCmd, INFO_DATATYPE* piType,
                            void* pBuffer, size_t* piSize);
GC_API_P(PGCReadPortStacked)(PORT_HANDLE hPort, PORT_REGISTER_STACK_ENTRY* pEntries, size_t* piNumEntries);
GC_API_P(PGCWritePortStacked)(PORT_HANDLE hPort, PORT_REGISTER_STACK_ENTRY* pEntries, size_t* piNumEntries);

GC_API_P(PDSGetBufferChunkData)(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, SINGLE_CHUNK_DATA* pChunkData,
                                size_t* piNumChunks);

GC_API_P(PIFGetParentTL)(IF_HANDLE hIface, TL_HANDLE* phSystem);
GC_API_P(PDevGetParentIF)(DEV_HANDLE hDevice, IF_HANDLE* phIface);
GC_API_P(PDSGetParentDev)(DS_HANDLE hDataStream, DEV_HANDLE* phDevice);

GC_API_P(PDSGetNumBufferParts)(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, uint32_t* piNumParts);
GC_API_P(PDSGetBufferPartInfo)(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, uint32_t iPartIndex,
                               BUFFER_PART_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer, size_t* piSize);

GC_API_P(PDSAnnounceCompositeBuffer)(DS_HANDLE hDataStream, size_t iNumSegments, void** ppSegments,
                                     size_t* piSizes, void* pPrivate, BUFFER_HANDLE* phBuffer);
GC_API_P(PDSGetBufferInfoStacked)(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer,
                                  DS_BUFFER_INFO_STACKED* pInfoStacked, size_t iNumInfos);
GC_API_P(PDSGetBufferPartInfoStacked)(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer,
                                      DS_BUFFER_PART_INFO_STACKED* pInfoStacked, size_t iNumInfos);
GC_API_P(PDSGetNumFlows)(DS_HANDLE hDataStream, uint32_t* piNumFlows);
GC_API_P(PDSGetFlowInfo)(DS_HANDLE hDataStream, uint32_t iFlowIndex, FLOW_INFO_CMD iInfoCmd, INFO_DATATYPE* piType,
                         void* pBuffer, size_t* piSize);
GC_API_P(PDSGetNumBufferSegments)(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, uint32_t* piNumSegments);
GC_API_P(PDSGetBufferSegmentInfo)(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, uint32_t iSegmentIndex,
                                  SEGMENT_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer, size_t* piSize);

#ifdef __cplusplus
} /* namespace GenTL */
} /* extern "C" */
#endif
