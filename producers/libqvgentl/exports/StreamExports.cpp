// Entry points of the data stream and buffer modules (DS...).
#include <GenTL/GenTL.h>

#include "exports/GuardedCall.h"
#include "modules/BufferModule.h"
#include "modules/DataStreamModule.h"
#include "modules/DeviceModule.h"

using namespace QvGenTL;

namespace {

/// The stream and one of its buffers; throws GC_ERR_INVALID_HANDLE if the buffer is another's.
std::pair<std::shared_ptr<CDataStreamModule>, std::shared_ptr<CBufferModule>> LookupBuffer(GenTL::DS_HANDLE hStream,
                                                                                           GenTL::BUFFER_HANDLE hBuffer)
{
    auto stream = Lookup<CDataStreamModule>(hStream);
    auto buffer = Handles().Get<CBufferModule>(hBuffer);
    stream->CheckOwnBuffer(*buffer);
    return {std::move(stream), std::move(buffer)};
}

} // namespace

namespace GenTL {

GC_API DSAnnounceBuffer(DS_HANDLE hDataStream, void* pBuffer, size_t iSize, void* pPrivate, BUFFER_HANDLE* phBuffer)
{
    return GuardedCall(__func__, [&] {
        auto stream = Lookup<CDataStreamModule>(hDataStream);
        Require(pBuffer, "pBuffer");
        Require(phBuffer, "phBuffer");
        *phBuffer = stream->AnnounceBuffer(pBuffer, iSize, pPrivate)->Handle();
    });
}

GC_API DSAllocAndAnnounceBuffer(DS_HANDLE hDataStream, size_t iSize, void* pPrivate, BUFFER_HANDLE* phBuffer)
{
    return GuardedCall(__func__, [&] {
        auto stream = Lookup<CDataStreamModule>(hDataStream);
        Require(phBuffer, "phBuffer");
        *phBuffer = stream->AnnounceBuffer(nullptr, iSize, pPrivate)->Handle();
    });
}

GC_API DSFlushQueue(DS_HANDLE hDataStream, ACQ_QUEUE_TYPE iOperation)
{
    return GuardedCall(__func__, [&] { Lookup<CDataStreamModule>(hDataStream)->FlushQueue(iOperation); });
}

GC_API DSStartAcquisition(DS_HANDLE hDataStream, ACQ_START_FLAGS iStartFlags, uint64_t iNumToAcquire)
{
    return GuardedCall(__func__, [&] {
        Lookup<CDataStreamModule>(hDataStream)->StartAcquisition(iStartFlags, iNumToAcquire);
    });
}

GC_API DSStopAcquisition(DS_HANDLE hDataStream, ACQ_STOP_FLAGS iStopFlags)
{
    return GuardedCall(__func__, [&] { Lookup<CDataStreamModule>(hDataStream)->StopAcquisition(iStopFlags); });
}

GC_API DSGetInfo(DS_HANDLE hDataStream, STREAM_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer,
                 size_t* piSize)
{
    return GuardedCall(__func__, [&] {
        Answer(Lookup<CDataStreamModule>(hDataStream)->Info(iInfoCmd), piType, pBuffer, piSize);
    });
}

GC_API DSGetBufferID(DS_HANDLE hDataStream, uint32_t iIndex, BUFFER_HANDLE* phBuffer)
{
    return GuardedCall(__func__, [&] {
        auto stream = Lookup<CDataStreamModule>(hDataStream);
        Require(phBuffer, "phBuffer");
        *phBuffer = stream->BufferId(iIndex);
    });
}

GC_API DSClose(DS_HANDLE hDataStream)
{
    return GuardedCall(__func__, [&] { Lookup<CDataStreamModule>(hDataStream)->Close(); });
}

GC_API DSRevokeBuffer(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, void** pBuffer, void** pPrivate)
{
    return GuardedCall(__func__, [&] {
        auto [stream, buffer] = LookupBuffer(hDataStream, hBuffer);
        stream->RevokeBuffer(buffer, pBuffer, pPrivate);
    });
}

GC_API DSQueueBuffer(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer)
{
    return GuardedCall(__func__, [&] {
        auto [stream, buffer] = LookupBuffer(hDataStream, hBuffer);
        stream->QueueBuffer(buffer);
    });
}

GC_API DSGetBufferInfo(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, BUFFER_INFO_CMD iInfoCmd, INFO_DATATYPE* piType,
                       void* pBuffer, size_t* piSize)
{
    return GuardedCall(__func__, [&] {
        auto [stream, buffer] = LookupBuffer(hDataStream, hBuffer);
        Answer(stream->BufferInfo(*buffer, iInfoCmd), piType, pBuffer, piSize);
    });
}

GC_API DSGetBufferChunkData(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, SINGLE_CHUNK_DATA* pChunkData,
                            size_t* piNumChunks)
{
    return GuardedCall(__func__, [&] {
        auto [stream, buffer] = LookupBuffer(hDataStream, hBuffer);
        stream->BufferChunkData(*buffer, pChunkData, piNumChunks);
    });
}

GC_API DSGetParentDev(DS_HANDLE hDataStream, DEV_HANDLE* phDevice)
{
    return GuardedCall(__func__, [&] {
        auto stream = Lookup<CDataStreamModule>(hDataStream);
        Require(phDevice, "phDevice");
        *phDevice = stream->Device()->Handle();
    });
}

GC_API DSGetNumBufferParts(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, uint32_t* piNumParts)
{
    return GuardedCall(__func__, [&] {
        LookupBuffer(hDataStream, hBuffer);
        Require(piNumParts, "piNumParts");
        *piNumParts = 0; // single-part images only
    });
}

GC_API DSGetBufferPartInfo(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, uint32_t iPartIndex,
                           BUFFER_PART_INFO_CMD /*iInfoCmd*/, INFO_DATATYPE* /*piType*/, void* /*pBuffer*/,
                           size_t* /*piSize*/)
{
    return GuardedCall(__func__, [&] {
        LookupBuffer(hDataStream, hBuffer);
        ThrowGenTL(GC_ERR_INVALID_INDEX, "Part %u does not exist: the buffers are not multi-part", iPartIndex);
    });
}

GC_API DSGetBufferInfoStacked(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, DS_BUFFER_INFO_STACKED* pInfoStacked,
                              size_t iNumInfos)
{
    return GuardedCall(__func__, [&] {
        auto [stream, buffer] = LookupBuffer(hDataStream, hBuffer);
        Require(pInfoStacked, "pInfoStacked");
        GC_ERROR first = GC_ERR_SUCCESS;
        for (size_t i = 0; i < iNumInfos; ++i)
        {
            DS_BUFFER_INFO_STACKED& entry = pInfoStacked[i];
            INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
            size_t size = entry.iSize;
            GC_ERROR result;
            try
            {
                result = stream->BufferInfo(*buffer, entry.iInfoCmd).CopyTo(&type, entry.pBuffer, &size);
            }
            catch (const CGenTLError& error)
            {
                result = error.Code();
            }
            entry.iType = type;
            entry.iSize = size;
            entry.iResult = result;
            if (first == GC_ERR_SUCCESS)
                first = result;
        }
        return first;
    });
}

// GenTL 1.6 composite buffers, flows and segments: this producer delivers single images.

GC_API DSAnnounceCompositeBuffer(DS_HANDLE hDataStream, size_t, void**, size_t*, void*, BUFFER_HANDLE*)
{
    return GuardedCall(__func__, [&] {
        Lookup<CDataStreamModule>(hDataStream);
        ThrowGenTL(GC_ERR_NOT_IMPLEMENTED, "Composite buffers are not supported");
    });
}

GC_API DSGetBufferPartInfoStacked(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, DS_BUFFER_PART_INFO_STACKED*, size_t)
{
    return GuardedCall(__func__, [&] {
        LookupBuffer(hDataStream, hBuffer);
        ThrowGenTL(GC_ERR_NOT_IMPLEMENTED, "The buffers are not multi-part");
    });
}

GC_API DSGetNumFlows(DS_HANDLE hDataStream, uint32_t*)
{
    return GuardedCall(__func__, [&] {
        Lookup<CDataStreamModule>(hDataStream);
        ThrowGenTL(GC_ERR_NOT_IMPLEMENTED, "Flows are not supported");
    });
}

GC_API DSGetFlowInfo(DS_HANDLE hDataStream, uint32_t, FLOW_INFO_CMD, INFO_DATATYPE*, void*, size_t*)
{
    return GuardedCall(__func__, [&] {
        Lookup<CDataStreamModule>(hDataStream);
        ThrowGenTL(GC_ERR_NOT_IMPLEMENTED, "Flows are not supported");
    });
}

GC_API DSGetNumBufferSegments(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, uint32_t*)
{
    return GuardedCall(__func__, [&] {
        LookupBuffer(hDataStream, hBuffer);
        ThrowGenTL(GC_ERR_NOT_IMPLEMENTED, "Segments are not supported");
    });
}

GC_API DSGetBufferSegmentInfo(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, uint32_t, SEGMENT_INFO_CMD, INFO_DATATYPE*,
                              void*, size_t*)
{
    return GuardedCall(__func__, [&] {
        LookupBuffer(hDataStream, hBuffer);
        ThrowGenTL(GC_ERR_NOT_IMPLEMENTED, "Segments are not supported");
    });
}

} // namespace GenTL
