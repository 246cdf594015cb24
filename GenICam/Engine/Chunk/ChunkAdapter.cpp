#include <GenApi/ChunkAdapter.h>

#include <GenApi/ChunkPort.h>
#include <GenApi/INodeMap.h>

#include <Base/GCException.h>

#include "Engine/Chunk/ChunkTrailerChain.h"
#include "Engine/Chunk/NotificationScope.h"
#include "Engine/Nodes/PortNode.h"

namespace GenApi
{
CChunkAdapter::CChunkAdapter(INodeMap* pNodeMap, int64_t maxChunkCacheSize) : m_maxChunkCacheSize(maxChunkCacheSize)
{
    if (pNodeMap)
        AttachNodeMap(pNodeMap);
}

CChunkAdapter::~CChunkAdapter()
{
    try
    {
        DetachNodeMap();
    }
    catch (...)
    {
        // Nothing sensible to do in a destructor; the ports disconnect themselves anyway.
    }
}

void CChunkAdapter::AttachNodeMap(INodeMap* pNodeMap)
{
    DetachNodeMap();
    if (!pNodeMap)
        return;
    CNotificationScope scope(pNodeMap);
    NodeList_t nodes;
    pNodeMap->GetNodes(nodes);
    for (INode* pNode : nodes)
    {
        CPortNode* pPortNode = dynamic_cast<CPortNode*>(pNode);
        if (!pPortNode || !pPortNode->HasChunkId())
            continue;
        std::unique_ptr<CChunkPort> pChunkPort(new CChunkPort());
        if (pChunkPort->AttachPort(pPortNode))
            m_chunkPorts.push_back(std::move(pChunkPort));
    }
    m_pNodeMap = pNodeMap;
    // At most one chunk per port is kept while parsing: reserve once, attach without allocating.
    m_chunks.reserve(m_chunkPorts.size());
}

void CChunkAdapter::DetachNodeMap()
{
    if (!m_pNodeMap)
        return;
    CNotificationScope scope(m_pNodeMap);
    m_chunkPorts.clear(); // each port disconnects itself from its node
    m_pNodeMap = nullptr;
}

bool CChunkAdapter::HasPortFor(uint64_t chunkId) const
{
    for (const std::unique_ptr<CChunkPort>& pPort : m_chunkPorts)
        if (pPort->CheckChunkID(chunkId))
            return true;
    return false;
}

bool CChunkAdapter::CheckTrailerChain(const uint8_t* pBuffer, int64_t bufferLength, bool bigEndian)
{
    return WalkChunkTrailers(pBuffer, bufferLength, bigEndian, [](uint64_t, int64_t, int64_t) {});
}

void CChunkAdapter::AttachTrailerChain(uint8_t* pBuffer, int64_t bufferLength, bool bigEndian,
                                       AttachStatistics_t* pAttachStatistics)
{
    CNotificationScope scope(m_pNodeMap);
    m_chunks.clear();
    int64_t chunksInBuffer = 0;
    // Keep only the chunks some port wants, once per ID: a hostile buffer of zeros holds
    // bufferLength / 8 empty chunks, which must not turn into as many list entries.
    const bool valid = WalkChunkTrailers(pBuffer, bufferLength, bigEndian,
                                         [&](uint64_t chunkId, int64_t offset, int64_t lengthBytes) {
                                             ++chunksInBuffer;
                                             if (!HasPortFor(chunkId))
                                                 return;
                                             for (const ChunkLocation_t& listed : m_chunks)
                                                 if (listed.chunkId == chunkId)
                                                     return;
                                             m_chunks.push_back({chunkId, offset, lengthBytes});
                                         });
    // The chunks read before a fault lie inside the buffer with consistent trailers: they stay
    // readable (a damaged frame still tells its timestamp), and the fault is still reported.
    AttachChunks(pBuffer, m_chunks.data(), m_chunks.size(), chunksInBuffer, pAttachStatistics);
    if (!valid)
        throw RUNTIME_EXCEPTION("Invalid layout of buffer attached to chunk parser!");
}

void CChunkAdapter::AttachChunks(uint8_t* pBuffer, const ChunkLocation_t* pChunks, size_t chunkCount,
                                 int64_t chunksInBuffer, AttachStatistics_t* pAttachStatistics)
{
    CNotificationScope scope(m_pNodeMap);
    int attached = 0;
    for (const std::unique_ptr<CChunkPort>& pPort : m_chunkPorts)
    {
        const ChunkLocation_t* pMatch = nullptr;
        for (size_t i = 0; i < chunkCount && !pMatch; ++i)
            if (pPort->CheckChunkID(pChunks[i].chunkId))
                pMatch = &pChunks[i];
        if (!pMatch)
        {
            pPort->DetachChunk();
            continue;
        }
        const bool copy = pPort->IsCacheChunkData() && m_maxChunkCacheSize != 0 &&
                          (m_maxChunkCacheSize < 0 || pMatch->lengthBytes <= m_maxChunkCacheSize);
        pPort->AttachChunk(pBuffer, pMatch->offset, pMatch->lengthBytes, copy);
        ++attached;
    }
    if (pAttachStatistics)
    {
        pAttachStatistics->NumChunkPorts = static_cast<int>(m_chunkPorts.size());
        pAttachStatistics->NumChunks = static_cast<int>(chunksInBuffer);
        pAttachStatistics->NumAttachedChunks = attached;
    }
}

void CChunkAdapter::DetachAllPorts()
{
    CNotificationScope scope(m_pNodeMap);
    for (const std::unique_ptr<CChunkPort>& pPort : m_chunkPorts)
        pPort->DetachChunk();
}

void CChunkAdapter::DetachBuffer()
{
    DetachAllPorts();
}

void CChunkAdapter::UpdateBuffer(uint8_t* pBaseAddress)
{
    if (!pBaseAddress)
    {
        // No buffer to point at: the ports must not keep the old one.
        DetachAllPorts();
        return;
    }
    CNotificationScope scope(m_pNodeMap);
    for (const std::unique_ptr<CChunkPort>& pPort : m_chunkPorts)
        pPort->UpdateBuffer(pBaseAddress);
}

void CChunkAdapter::ClearCaches()
{
    CNotificationScope scope(m_pNodeMap);
    for (const std::unique_ptr<CChunkPort>& pPort : m_chunkPorts)
        pPort->ClearCache();
}
} // namespace GenApi
