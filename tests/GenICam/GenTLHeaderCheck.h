#pragma once

/* What GenTLHeaderCheck.c (compiled as C) reports back to GenTLHeaderTest.cpp. */

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* One property of the GenTL interface as measured by the C compiler. */
typedef struct GenTLHeaderFact
{
    const char* name;
    uint64_t value;
} GenTLHeaderFact;

/* The facts the C compiler sees, closed by an entry whose name is NULL. */
const GenTLHeaderFact* GenTLHeaderCheckFactsFromC(void);

/* What the C caller observed when calling entry points that the C++ test defines. */
typedef struct GenTLHeaderCallResult
{
    int32_t initResult;
    int32_t updateResult;
    uint8_t changed;           /* bool8_t written by C++ as bool, read by C as uint8_t */
    int32_t stackedResult;
    size_t stackedProcessed;
    uint8_t portBytes[7];      /* the three stacked reads of 1, 2 and 4 bytes, back to back */
    int32_t infoStackedResult;
    int32_t infoResult[2];
    int32_t infoType[2];
    size_t infoSize[2];
    uint64_t infoValue[2];
    int32_t queueResult;       /* through a PDSQueueBuffer pointer */
} GenTLHeaderCallResult;

/* Calls GCInitLib, TLUpdateInterfaceList, GCReadPortStacked, DSGetBufferInfoStacked and
 * DSQueueBuffer from C by their plain names and records what came back. */
void GenTLHeaderCheckCallFromC(GenTLHeaderCallResult* result);

#ifdef __cplusplus
}
#endif
