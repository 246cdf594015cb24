#include <GenApi/ChunkAdapterGEV.h>

namespace GenApi
{
CChunkAdapterGEV::CChunkAdapterGEV(INodeMap* pNodeMap, int64_t maxChunkCacheSize)
    : CChunkAdapter(pNodeMap, maxChunkCacheSize)
{
}

CChunkAdapterGEV::~CChunkAdapterGEV() = default;

bool CChunkAdapterGEV::CheckBufferLayout(uint8_t* pBuffer, int64_t bufferLength)
{
    return CheckTrailerChain(pBuffer, bufferLength, true);
}

void CChunkAdapterGEV::AttachBuffer(uint8_t* pBuffer, int64_t bufferLength, AttachStatistics_t* pAttachStatistics)
{
    AttachTrailerChain(pBuffer, bufferLength, true, pAttachStatistics);
}
} // namespace GenApi
