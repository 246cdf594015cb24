#include <GenApi/ChunkAdapterGeneric.h>

#include <Base/GCException.h>

#include "Engine/Chunk/DeliveredId.h"
#include "Engine/Chunk/NotificationScope.h"

namespace GenApi
{
namespace
{
// The numeric ID of an entry; false when it can match no port.
bool EntryId(const SingleChunkData_t& entry, uint64_t& chunkId)
{
    chunkId = entry.ChunkID;
    return true;
}

bool EntryId(const SingleChunkDataStr_t& entry, uint64_t& chunkId)
{
    return ParseDeliveredId(entry.ChunkID.c_str(), entry.ChunkID.size(), chunkId) == EDeliveredId_t::Valid;
}

// Text IDs are checked before anything is attached; numbers need no check.
const char* OddId(const SingleChunkData_t*, int64_t)
{
    return nullptr;
}

const char* OddId(const SingleChunkDataStr_t* pChunkData, int64_t numChunks)
{
    uint64_t ignored = 0;
    for (int64_t i = 0; i < numChunks; ++i)
        if (ParseDeliveredId(pChunkData[i].ChunkID.c_str(), pChunkData[i].ChunkID.size(), ignored) ==
            EDeliveredId_t::OddDigits)
            return pChunkData[i].ChunkID.c_str();
    return nullptr;
}

bool InsideBuffer(int64_t offset, size_t lengthBytes, int64_t bufferLength)
{
    if (bufferLength < 0 || offset < 0)
        return false;
    return static_cast<uint64_t>(lengthBytes) <= static_cast<uint64_t>(bufferLength) &&
           offset <= bufferLength - static_cast<int64_t>(lengthBytes);
}
} // namespace

CChunkAdapterGeneric::CChunkAdapterGeneric(INodeMap* pNodeMap, int64_t maxChunkCacheSize)
    : CChunkAdapter(pNodeMap, maxChunkCacheSize)
{
}

CChunkAdapterGeneric::~CChunkAdapterGeneric() = default;

bool CChunkAdapterGeneric::CheckBufferLayout(uint8_t* /*pBuffer*/, int64_t /*bufferLength*/)
{
    return false;
}

void CChunkAdapterGeneric::AttachBuffer(uint8_t* /*pBuffer*/, int64_t /*bufferLength*/,
                                        AttachStatistics_t* /*pAttachStatistics*/)
{
    // Where the chunks lie is known only to the producer; without its list there is nothing to do.
}

void CChunkAdapterGeneric::AttachBuffer(uint8_t* pBuffer, SingleChunkData_t* pChunkData, int64_t numChunks,
                                        AttachStatistics_t* pAttachStatistics)
{
    AttachList(pBuffer, 0, false, pChunkData, numChunks, pAttachStatistics);
}

void CChunkAdapterGeneric::AttachBuffer(uint8_t* pBuffer, SingleChunkDataStr_t* pChunkData, int64_t numChunks,
                                        AttachStatistics_t* pAttachStatistics)
{
    AttachList(pBuffer, 0, false, pChunkData, numChunks, pAttachStatistics);
}

void CChunkAdapterGeneric::AttachBuffer(uint8_t* pBuffer, int64_t bufferLength, const SingleChunkData_t* pChunkData,
                                        int64_t numChunks, AttachStatistics_t* pAttachStatistics)
{
    AttachList(pBuffer, bufferLength, true, pChunkData, numChunks, pAttachStatistics);
}

void CChunkAdapterGeneric::AttachBuffer(uint8_t* pBuffer, int64_t bufferLength,
                                        const SingleChunkDataStr_t* pChunkData, int64_t numChunks,
                                        AttachStatistics_t* pAttachStatistics)
{
    AttachList(pBuffer, bufferLength, true, pChunkData, numChunks, pAttachStatistics);
}

template <class Entry>
void CChunkAdapterGeneric::AttachList(uint8_t* pBuffer, int64_t bufferLength, bool checkBounds,
                                      const Entry* pChunkData, int64_t numChunks,
                                      AttachStatistics_t* pAttachStatistics)
{
    CNotificationScope scope(m_pNodeMap);
    if (numChunks < 0)
        numChunks = 0;
    if (numChunks > 0 && (pBuffer == nullptr || pChunkData == nullptr))
    {
        DetachAllPorts();
        throw RUNTIME_EXCEPTION("Invalid chunk list attached to chunk parser: %s is NULL",
                                pBuffer == nullptr ? "the buffer" : "the list");
    }
    if (const char* pOddId = OddId(pChunkData, numChunks))
    {
        DetachAllPorts();
        if (pAttachStatistics)
            *pAttachStatistics = {static_cast<int>(m_chunkPorts.size()), 0, 0};
        throw RUNTIME_EXCEPTION("Invalid chunk ID delivered: %s", pOddId);
    }
    m_chunks.clear();
    int64_t firstOutside = -1;
    for (int64_t i = 0; i < numChunks; ++i)
    {
        const Entry& entry = pChunkData[i];
        if (checkBounds && !InsideBuffer(entry.ChunkOffset, entry.ChunkLength, bufferLength))
        {
            if (firstOutside < 0)
                firstOutside = i;
            continue;
        }
        uint64_t chunkId = 0;
        if (!EntryId(entry, chunkId) || !HasPortFor(chunkId))
            continue;
        bool listed = false;
        for (const ChunkLocation_t& location : m_chunks)
            listed = listed || location.chunkId == chunkId;
        if (!listed)
            m_chunks.push_back(
                {chunkId, static_cast<int64_t>(entry.ChunkOffset), static_cast<int64_t>(entry.ChunkLength)});
    }
    AttachChunks(pBuffer, m_chunks.data(), m_chunks.size(), numChunks, pAttachStatistics);
    if (firstOutside >= 0)
    {
        const Entry& entry = pChunkData[firstOutside];
        uint64_t chunkId = 0;
        EntryId(entry, chunkId);
        throw RUNTIME_EXCEPTION("Chunk 0x%llx at offset %lld with length %llu lies outside the buffer of %lld bytes",
                                static_cast<unsigned long long>(chunkId), static_cast<long long>(entry.ChunkOffset),
                                static_cast<unsigned long long>(entry.ChunkLength),
                                static_cast<long long>(bufferLength));
    }
}
} // namespace GenApi
