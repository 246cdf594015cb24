#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include <GenTL/GenTL.h>

#include "GenTLHeaderCheck.h"

// Every entry point of the 1.6 header, in declaration order; the first 57 exist since 1.5.
#define QV_GENTL_ENTRY_POINTS_1_5(X)                                                               \
    X(GCGetInfo) X(GCGetLastError) X(GCInitLib) X(GCCloseLib) X(GCReadPort) X(GCWritePort)          \
    X(GCGetPortURL) X(GCGetPortInfo) X(GCRegisterEvent) X(GCUnregisterEvent) X(EventGetData)        \
    X(EventGetDataInfo) X(EventGetInfo) X(EventFlush) X(EventKill) X(TLOpen) X(TLClose)             \
    X(TLGetInfo) X(TLGetNumInterfaces) X(TLGetInterfaceID) X(TLGetInterfaceInfo) X(TLOpenInterface) \
    X(TLUpdateInterfaceList) X(IFClose) X(IFGetInfo) X(IFGetNumDevices) X(IFGetDeviceID)            \
    X(IFUpdateDeviceList) X(IFGetDeviceInfo) X(IFOpenDevice) X(DevGetPort) X(DevGetNumDataStreams)  \
    X(DevGetDataStreamID) X(DevOpenDataStream) X(DevGetInfo) X(DevClose) X(DSAnnounceBuffer)        \
    X(DSAllocAndAnnounceBuffer) X(DSFlushQueue) X(DSStartAcquisition) X(DSStopAcquisition)          \
    X(DSGetInfo) X(DSGetBufferID) X(DSClose) X(DSRevokeBuffer) X(DSQueueBuffer) X(DSGetBufferInfo)  \
    X(GCGetNumPortURLs) X(GCGetPortURLInfo) X(GCReadPortStacked) X(GCWritePortStacked)              \
    X(DSGetBufferChunkData) X(IFGetParentTL) X(DevGetParentIF) X(DSGetParentDev)                    \
    X(DSGetNumBufferParts) X(DSGetBufferPartInfo)
#define QV_GENTL_ENTRY_POINTS_1_6(X)                                                               \
    X(DSAnnounceCompositeBuffer) X(DSGetBufferInfoStacked) X(DSGetBufferPartInfoStacked)            \
    X(DSGetNumFlows) X(DSGetFlowInfo) X(DSGetNumBufferSegments) X(DSGetBufferSegmentInfo)

// decltype does not odr-use the functions, so none of them needs a definition here.
#define QV_CHECK_POINTER_TYPE(name)                                                                \
    static_assert(std::is_same<decltype(&GenTL::name), GenTL::P##name>::value,                     \
                  "P" #name " does not match the declaration of " #name);
QV_GENTL_ENTRY_POINTS_1_5(QV_CHECK_POINTER_TYPE)
QV_GENTL_ENTRY_POINTS_1_6(QV_CHECK_POINTER_TYPE)

#define QV_COUNT_ONE(name) +1
static_assert(0 QV_GENTL_ENTRY_POINTS_1_5(QV_COUNT_ONE) == 57, "GenTL 1.5 has 57 entry points");
static_assert(0 QV_GENTL_ENTRY_POINTS_1_6(QV_COUNT_ONE) == 7, "GenTL 1.6 adds 7 entry points");

// The enumerations travel as int32_t; a wider or narrower typedef would break every producer.
static_assert(std::is_same<GenTL::GC_ERROR, int32_t>::value, "");
static_assert(std::is_same<GenTL::INFO_DATATYPE, int32_t>::value, "");
static_assert(std::is_same<GenTL::TL_INFO_CMD, int32_t>::value, "");
static_assert(std::is_same<GenTL::INTERFACE_INFO_CMD, int32_t>::value, "");
static_assert(std::is_same<GenTL::DEVICE_INFO_CMD, int32_t>::value, "");
static_assert(std::is_same<GenTL::STREAM_INFO_CMD, int32_t>::value, "");
static_assert(std::is_same<GenTL::BUFFER_INFO_CMD, int32_t>::value, "");
static_assert(std::is_same<GenTL::BUFFER_PART_INFO_CMD, int32_t>::value, "");
static_assert(std::is_same<GenTL::PORT_INFO_CMD, int32_t>::value, "");
static_assert(std::is_same<GenTL::URL_INFO_CMD, int32_t>::value, "");
static_assert(std::is_same<GenTL::EVENT_TYPE, int32_t>::value, "");
static_assert(std::is_same<GenTL::EVENT_INFO_CMD, int32_t>::value, "");
static_assert(std::is_same<GenTL::EVENT_DATA_INFO_CMD, int32_t>::value, "");
static_assert(std::is_same<GenTL::DEVICE_ACCESS_FLAGS, int32_t>::value, "");
static_assert(std::is_same<GenTL::DEVICE_ACCESS_STATUS, int32_t>::value, "");
static_assert(std::is_same<GenTL::ACQ_START_FLAGS, int32_t>::value, "");
static_assert(std::is_same<GenTL::ACQ_STOP_FLAGS, int32_t>::value, "");
static_assert(std::is_same<GenTL::ACQ_QUEUE_TYPE, int32_t>::value, "");
static_assert(std::is_same<GenTL::FLOW_INFO_CMD, int32_t>::value, "");
static_assert(std::is_same<GenTL::SEGMENT_INFO_CMD, int32_t>::value, "");
static_assert(std::is_same<GenTL::bool8_t, bool>::value, "");

// Entry points the C half calls by their plain names. Defining them inside namespace GenTL is
// how a C++ producer does it; the link only succeeds if the declarations gave them C linkage.
namespace GenTL {
namespace {
uint64_t g_lastTimeout = 0;
int g_queueCalls = 0;
} // namespace

GC_API GCInitLib(void)
{
    return GC_ERR_SUCCESS;
}

GC_API TLUpdateInterfaceList(TL_HANDLE hTL, bool8_t* pbChanged, uint64_t iTimeout)
{
    if (hTL != reinterpret_cast<TL_HANDLE>(0x7100) || pbChanged == nullptr)
        return GC_ERR_INVALID_HANDLE;
    g_lastTimeout = iTimeout;
    *pbChanged = true;
    return GC_ERR_SUCCESS;
}

// Fills each requested byte with the low byte of its address plus its index.
GC_API GCReadPortStacked(PORT_HANDLE hPort, PORT_REGISTER_STACK_ENTRY* pEntries, size_t* piNumEntries)
{
    if (hPort != reinterpret_cast<PORT_HANDLE>(0x7200))
        return GC_ERR_INVALID_HANDLE;
    for (size_t i = 0; i < *piNumEntries; ++i)
    {
        auto* bytes = static_cast<uint8_t*>(pEntries[i].pBuffer);
        for (size_t b = 0; b < pEntries[i].Size; ++b)
            bytes[b] = static_cast<uint8_t>(pEntries[i].Address + b);
    }
    return GC_ERR_SUCCESS;
}

GC_API DSGetBufferInfoStacked(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, DS_BUFFER_INFO_STACKED* pInfoStacked,
                              size_t iNumInfos)
{
    if (hDataStream != reinterpret_cast<DS_HANDLE>(0x7300) || hBuffer != reinterpret_cast<BUFFER_HANDLE>(0x7400))
        return GC_ERR_INVALID_HANDLE;
    for (size_t i = 0; i < iNumInfos; ++i)
    {
        DS_BUFFER_INFO_STACKED& info = pInfoStacked[i];
        uint64_t value = 0;
        if (info.iInfoCmd == BUFFER_INFO_FRAMEID)
        {
            info.iType = INFO_DATATYPE_UINT64;
            value = 0x1122334455667788ULL;
        }
        else if (info.iInfoCmd == BUFFER_INFO_SIZE_FILLED)
        {
            info.iType = INFO_DATATYPE_SIZET;
            value = 4096;
        }
        else
        {
            info.iResult = GC_ERR_NOT_IMPLEMENTED;
            continue;
        }
        std::memcpy(info.pBuffer, &value, sizeof(value));
        info.iSize = sizeof(value);
        info.iResult = GC_ERR_SUCCESS;
    }
    return GC_ERR_SUCCESS;
}

GC_API DSQueueBuffer(DS_HANDLE, BUFFER_HANDLE)
{
    ++g_queueCalls;
    return GC_ERR_ABORT; // distinctive, so the test sees this very function answered
}
} // namespace GenTL

namespace {

std::map<std::string, uint64_t> FactsFromC()
{
    std::map<std::string, uint64_t> facts;
    for (const GenTLHeaderFact* fact = GenTLHeaderCheckFactsFromC(); fact->name != nullptr; ++fact)
        facts[fact->name] = fact->value;
    return facts;
}

} // namespace

TEST(GenTLHeader, ErrorCodesHaveTheirStandardValues)
{
    using namespace GenTL;
    EXPECT_EQ(GC_ERR_SUCCESS, 0);
    EXPECT_EQ(GC_ERR_ERROR, -1001);
    EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, -1003);
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, -1006);
    EXPECT_EQ(GC_ERR_TIMEOUT, -1011);
    EXPECT_EQ(GC_ERR_ABORT, -1012);
    EXPECT_EQ(GC_ERR_INVALID_ADDRESS, -1015);
    EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, -1016);
    EXPECT_EQ(GC_ERR_OUT_OF_MEMORY, -1021);
    EXPECT_EQ(GC_ERR_BUSY, -1022);
    EXPECT_EQ(GC_ERR_AMBIGUOUS, -1023);
    EXPECT_EQ(GC_ERR_CUSTOM_ID, -10000);
}

TEST(GenTLHeader, InformationCommandsHaveTheirStandardValues)
{
    using namespace GenTL;
    EXPECT_EQ(INFO_DATATYPE_STRINGLIST, 2);
    EXPECT_EQ(INFO_DATATYPE_BOOL8, 11);
    EXPECT_EQ(INFO_DATATYPE_SIZET, 12);
    EXPECT_EQ(INFO_DATATYPE_PTRDIFF, 14);
    EXPECT_EQ(INFO_DATATYPE_CUSTOM_ID, 1000);
    EXPECT_EQ(TL_CHAR_ENCODING_UTF8, 1);
    EXPECT_EQ(TL_INFO_PATHNAME, 6);
    EXPECT_EQ(TL_INFO_GENTL_VER_MINOR, 10);
    EXPECT_EQ(TL_INFO_CUSTOM_ID, 1000);
    EXPECT_EQ(INTERFACE_INFO_TLTYPE, 2);
    EXPECT_EQ(DEVICE_INFO_ACCESS_STATUS, 5);
    EXPECT_EQ(DEVICE_INFO_TIMESTAMP_FREQUENCY, 9);
    EXPECT_EQ(STREAM_INFO_DEFINES_PAYLOADSIZE, 9);
    EXPECT_EQ(STREAM_INFO_BUF_ALIGNMENT, 13);
    EXPECT_EQ(STREAM_INFO_GENDC_PREFETCH_DESCRIPTOR, 15);
    EXPECT_EQ(BUFFER_INFO_SIZE_FILLED, 9);
    EXPECT_EQ(BUFFER_INFO_IMAGEOFFSET, 18);
    EXPECT_EQ(BUFFER_INFO_PAYLOADTYPE, 19);
    EXPECT_EQ(BUFFER_INFO_PIXELFORMAT_NAMESPACE, 21);
    EXPECT_EQ(BUFFER_INFO_TIMESTAMP_NS, 28);
    EXPECT_EQ(BUFFER_INFO_CONTAINS_CHUNKDATA, 30);
    EXPECT_EQ(BUFFER_INFO_IS_COMPOSITE, 31);
    EXPECT_EQ(BUFFER_PART_INFO_DATA_FORMAT_NAMESPACE, 4);
    EXPECT_EQ(BUFFER_PART_INFO_DELIVERED_IMAGEHEIGHT, 11);
    EXPECT_EQ(BUFFER_PART_INFO_DATA_PURPOSE_ID, 13);
    EXPECT_EQ(PORT_INFO_ACCESS_NI, 10);
    EXPECT_EQ(PORT_INFO_PORTNAME, 12);
    EXPECT_EQ(URL_INFO_FILE_SHA1_HASH, 6);
    EXPECT_EQ(URL_INFO_FILENAME, 10);
    EXPECT_EQ(EVENT_INFO_DATA_SIZE_MAX, 4);
    EXPECT_EQ(EVENT_DATA_NUMID, 2);
    EXPECT_EQ(FLOW_INFO_SIZE, 0);
    EXPECT_EQ(SEGMENT_INFO_DATA_SIZE, 4);
    EXPECT_EQ(SEGMENT_INFO_CUSTOM_ID, 1000);
}

TEST(GenTLHeader, ModeEnumerationsHaveTheirStandardValues)
{
    using namespace GenTL;
    EXPECT_EQ(DEVICE_ACCESS_READONLY, 2);
    EXPECT_EQ(DEVICE_ACCESS_EXCLUSIVE, 4);
    EXPECT_EQ(DEVICE_ACCESS_STATUS_NOACCESS, 3);
    EXPECT_EQ(DEVICE_ACCESS_STATUS_OPEN_READONLY, 6);
    EXPECT_EQ(ACQ_START_FLAGS_DEFAULT, 0);
    EXPECT_EQ(ACQ_STOP_FLAGS_KILL, 1);
    EXPECT_EQ(ACQ_QUEUE_OUTPUT_DISCARD, 1);
    EXPECT_EQ(ACQ_QUEUE_UNQUEUED_TO_INPUT, 3);
    EXPECT_EQ(ACQ_QUEUE_ALL_DISCARD, 4);
    EXPECT_EQ(EVENT_NEW_BUFFER, 1);
    EXPECT_EQ(EVENT_REMOTE_DEVICE, 4);
    EXPECT_EQ(EVENT_MODULE, 5);
    EXPECT_EQ(EVENT_CUSTOM_ID, 1000);
    EXPECT_EQ(URL_SCHEME_FILE, 2);
    EXPECT_EQ(PAYLOAD_TYPE_CHUNK_DATA, 4);
    EXPECT_EQ(PAYLOAD_TYPE_CHUNK_ONLY, 8);
    EXPECT_EQ(PAYLOAD_TYPE_MULTI_PART, 10);
    EXPECT_EQ(PAYLOAD_TYPE_GENDC, 11);
    EXPECT_EQ(PIXELFORMAT_NAMESPACE_GEV, 1);
    EXPECT_EQ(PIXELFORMAT_NAMESPACE_PFNC_32BIT, 4);
    EXPECT_EQ(PIXELENDIANNESS_BIG, 2);
    EXPECT_EQ(PART_DATATYPE_3D_IMAGE, 5);
    EXPECT_EQ(PART_DATATYPE_CONFIDENCE_MAP, 9);
    EXPECT_EQ(PART_DATATYPE_JPEG2000, 11);
}

TEST(GenTLHeader, MacrosHaveTheirStandardValues)
{
    EXPECT_EQ(GC_GENTL_HEADER_VERSION, 0x01060000);
    EXPECT_EQ(GC_GENTL_HEADER_VERSION_CODE(1, 5, 2), 0x01050002);
    EXPECT_EQ(GENTL_INFINITE, UINT64_MAX);
    EXPECT_EQ(static_cast<GenTL::TL_HANDLE>(GENTL_INVALID_HANDLE), nullptr);
    EXPECT_STREQ(TLTypeMixedName, "Mixed");
    EXPECT_STREQ(TLTypeGEVName, "GEV");
    EXPECT_STREQ(TLTypeU3VName, "U3V");
    EXPECT_STREQ(TLTypeCLHSName, "CLHS");
    EXPECT_STREQ(TLTypeETHERNETName, "Ethernet");
    EXPECT_STREQ(TLTypePCIName, "PCI");
}

// The header asserts the C++ layout itself; this checks that a C compiler agrees.
TEST(GenTLHeader, CompilesAsCWithTheSameLayout)
{
    const std::map<std::string, uint64_t> expected = {
        {"sizeof(bool8_t)", 1},
        {"sizeof(GC_ERROR)", 4},
        {"sizeof(INFO_DATATYPE)", 4},
        {"sizeof(BUFFER_INFO_CMD)", 4},
        {"sizeof(TL_HANDLE)", 8},
        {"GENTL_INFINITE", UINT64_MAX},
        {"(uintptr_t)GENTL_INVALID_HANDLE", 0},
        {"GC_GENTL_HEADER_VERSION", 0x01060000},
        {"GC_ERR_AMBIGUOUS", static_cast<uint64_t>(int64_t{-1023})},
        {"BUFFER_INFO_IS_COMPOSITE", 31},
        {"PAYLOAD_TYPE_GENDC", 11},
        {"sizeof(EVENT_NEW_BUFFER_DATA)", 16},
        {"offsetof(EVENT_NEW_BUFFER_DATA, pUserPointer)", 8},
        {"sizeof(PORT_REGISTER_STACK_ENTRY)", 24},
        {"offsetof(PORT_REGISTER_STACK_ENTRY, pBuffer)", 8},
        {"offsetof(PORT_REGISTER_STACK_ENTRY, Size)", 16},
        {"sizeof(SINGLE_CHUNK_DATA)", 24},
        {"offsetof(SINGLE_CHUNK_DATA, ChunkOffset)", 8},
        {"offsetof(SINGLE_CHUNK_DATA, ChunkLength)", 16},
        {"sizeof(DS_BUFFER_INFO_STACKED)", 28},
        {"sizeof(DS_BUFFER_INFO_STACKED[2])", 56},
        {"offsetof(DS_BUFFER_INFO_STACKED, iType)", 4},
        {"offsetof(DS_BUFFER_INFO_STACKED, pBuffer)", 8},
        {"offsetof(DS_BUFFER_INFO_STACKED, iSize)", 16},
        {"offsetof(DS_BUFFER_INFO_STACKED, iResult)", 24},
        {"sizeof(DS_BUFFER_PART_INFO_STACKED)", 32},
        {"offsetof(DS_BUFFER_PART_INFO_STACKED, iInfoCmd)", 4},
        {"offsetof(DS_BUFFER_PART_INFO_STACKED, iResult)", 8},
        {"offsetof(DS_BUFFER_PART_INFO_STACKED, iType)", 12},
        {"offsetof(DS_BUFFER_PART_INFO_STACKED, pBuffer)", 16},
        {"offsetof(DS_BUFFER_PART_INFO_STACKED, iSize)", 24},
    };
    EXPECT_EQ(FactsFromC(), expected);
}

TEST(GenTLHeader, CCallerReachesCppDefinedEntryPointsByPlainName)
{
    GenTLHeaderCallResult result;
    GenTLHeaderCheckCallFromC(&result);

    EXPECT_EQ(result.initResult, GenTL::GC_ERR_SUCCESS);

    EXPECT_EQ(result.updateResult, GenTL::GC_ERR_SUCCESS);
    EXPECT_EQ(result.changed, 1) << "bool8_t true written in C++ must read as 1 in C";
    EXPECT_EQ(GenTL::g_lastTimeout, GENTL_INFINITE);

    EXPECT_EQ(result.stackedResult, GenTL::GC_ERR_SUCCESS);
    EXPECT_EQ(result.stackedProcessed, 3u);
    const uint8_t expectedBytes[7] = {0x10, 0x20, 0x21, 0x30, 0x31, 0x32, 0x33};
    EXPECT_EQ(std::memcmp(result.portBytes, expectedBytes, sizeof(expectedBytes)), 0);

    EXPECT_EQ(result.infoStackedResult, GenTL::GC_ERR_SUCCESS);
    EXPECT_EQ(result.infoResult[0], GenTL::GC_ERR_SUCCESS);
    EXPECT_EQ(result.infoType[0], GenTL::INFO_DATATYPE_UINT64);
    EXPECT_EQ(result.infoSize[0], 8u);
    EXPECT_EQ(result.infoValue[0], 0x1122334455667788ULL);
    EXPECT_EQ(result.infoResult[1], GenTL::GC_ERR_SUCCESS);
    EXPECT_EQ(result.infoType[1], GenTL::INFO_DATATYPE_SIZET);
    EXPECT_EQ(result.infoSize[1], 8u);
    EXPECT_EQ(result.infoValue[1], 4096u);

    EXPECT_EQ(result.queueResult, GenTL::GC_ERR_ABORT);
    EXPECT_EQ(GenTL::g_queueCalls, 1);
}
