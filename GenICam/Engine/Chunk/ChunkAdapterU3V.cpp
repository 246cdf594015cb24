#include <GenApi/ChunkAdapterU3V.h>

namespace GenApi
{
CChunkAdapterU3V::CChunkAdapterU3V(INodeMap* pNodeMap, int64_t maxChunkCacheSize)
    : CChunkAdapter(pNodeMap, maxChunkCacheSize)
{
}

CChunkAdapterU3V::~CChunkAdapterU3V() = default;

bool CChunkAdapterU3V::CheckBufferLayout(uint8_t* pBuffer, int64_t bufferLength)
{
    return CheckTrailerChain(pBuffer, bufferLength, false);
}

void CChunkAdapterU3V::AttachBuffer(uint8_t* pBuffer, int64_t bufferLength, AttachStatistics_t* pAttachStatistics)
{
    AttachTrailerChain(pBuffer, bufferLength, false, pAttachStatistics);
}
} // namespace GenApi
