/* Compiled as C on purpose: a producer may be written in C, so the header must be valid C,
 * and the C view of the packed structures must match the C++ view byte for byte. */

#include "GenTLHeaderCheck.h"

#include <string.h>

#include <GenTL/GenTL.h>

#define FACT(expr) { #expr, (uint64_t)(expr) }

static const GenTLHeaderFact kFacts[] = {
    FACT(sizeof(bool8_t)),
    FACT(sizeof(GC_ERROR)),
    FACT(sizeof(INFO_DATATYPE)),
    FACT(sizeof(BUFFER_INFO_CMD)),
    FACT(sizeof(TL_HANDLE)),
    FACT(GENTL_INFINITE),
    FACT((uintptr_t)GENTL_INVALID_HANDLE),
    FACT(GC_GENTL_HEADER_VERSION),
    FACT(GC_ERR_AMBIGUOUS),
    FACT(BUFFER_INFO_IS_COMPOSITE),
    FACT(PAYLOAD_TYPE_GENDC),
    FACT(sizeof(EVENT_NEW_BUFFER_DATA)),
    FACT(offsetof(EVENT_NEW_BUFFER_DATA, pUserPointer)),
    FACT(sizeof(PORT_REGISTER_STACK_ENTRY)),
    FACT(offsetof(PORT_REGISTER_STACK_ENTRY, pBuffer)),
    FACT(offsetof(PORT_REGISTER_STACK_ENTRY, Size)),
    FACT(sizeof(SINGLE_CHUNK_DATA)),
    FACT(offsetof(SINGLE_CHUNK_DATA, ChunkOffset)),
    FACT(offsetof(SINGLE_CHUNK_DATA, ChunkLength)),
    FACT(sizeof(DS_BUFFER_INFO_STACKED)),
    FACT(sizeof(DS_BUFFER_INFO_STACKED[2])),
    FACT(offsetof(DS_BUFFER_INFO_STACKED, iType)),
    FACT(offsetof(DS_BUFFER_INFO_STACKED, pBuffer)),
    FACT(offsetof(DS_BUFFER_INFO_STACKED, iSize)),
    FACT(offsetof(DS_BUFFER_INFO_STACKED, iResult)),
    FACT(sizeof(DS_BUFFER_PART_INFO_STACKED)),
    FACT(offsetof(DS_BUFFER_PART_INFO_STACKED, iInfoCmd)),
    FACT(offsetof(DS_BUFFER_PART_INFO_STACKED, iResult)),
    FACT(offsetof(DS_BUFFER_PART_INFO_STACKED, iType)),
    FACT(offsetof(DS_BUFFER_PART_INFO_STACKED, pBuffer)),
    FACT(offsetof(DS_BUFFER_PART_INFO_STACKED, iSize)),
    { NULL, 0 },
};

const GenTLHeaderFact* GenTLHeaderCheckFactsFromC(void)
{
    return kFacts;
}

void GenTLHeaderCheckCallFromC(GenTLHeaderCallResult* result)
{
    memset(result, 0, sizeof(*result));
    result->initResult = GCInitLib();

    bool8_t changed = 0;
    result->updateResult = TLUpdateInterfaceList((TL_HANDLE)0x7100, &changed, GENTL_INFINITE);
    result->changed = changed;

    PORT_REGISTER_STACK_ENTRY entries[3] = {
        { 0x10, &result->portBytes[0], 1 },
        { 0x20, &result->portBytes[1], 2 },
        { 0x30, &result->portBytes[3], 4 },
    };
    size_t numEntries = 3;
    result->stackedResult = GCReadPortStacked((PORT_HANDLE)0x7200, entries, &numEntries);
    result->stackedProcessed = numEntries;

    /* The second entry starts 28 bytes in: a wrong packing on either side shows up here. */
    DS_BUFFER_INFO_STACKED infos[2];
    memset(infos, 0, sizeof(infos));
    infos[0].iInfoCmd = BUFFER_INFO_FRAMEID;
    infos[0].pBuffer = &result->infoValue[0];
    infos[0].iSize = sizeof(result->infoValue[0]);
    infos[1].iInfoCmd = BUFFER_INFO_SIZE_FILLED;
    infos[1].pBuffer = &result->infoValue[1];
    infos[1].iSize = sizeof(result->infoValue[1]);
    result->infoStackedResult = DSGetBufferInfoStacked((DS_HANDLE)0x7300, (BUFFER_HANDLE)0x7400, infos, 2);
    for (int i = 0; i < 2; ++i)
    {
        result->infoResult[i] = infos[i].iResult;
        result->infoType[i] = infos[i].iType;
        result->infoSize[i] = infos[i].iSize;
    }

    PDSQueueBuffer queueBuffer = &DSQueueBuffer;
    result->queueResult = queueBuffer((DS_HANDLE)0x7300, (BUFFER_HANDLE)0x7400);
}
