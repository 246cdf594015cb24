#pragma once

#include <GenApi/ChunkAdapter.h>

namespace GenApi
{
/// The trailer behind each USB3 Vision chunk's data (both fields little-endian on the wire).
struct U3V_CHUNK_TRAILER
{
    uint32_t ChunkID;     ///< the chunk's ID
    uint32_t ChunkLength; ///< data bytes before this trailer (the trailer not included)
};

/**
 * \brief Chunk adapter for USB3 Vision payloads: each chunk is its data followed by a U3V_CHUNK_TRAILER,
 *        read backwards from the end of the valid bytes.
 *
 * A layout is valid when the trailers lead from the end exactly to offset 0 after at least one
 * chunk. Threads and lifetime as CChunkAdapter.
 */
class GENICAM_API CChunkAdapterU3V : public CChunkAdapter
{
public:
    /**
     * \param[in] pNodeMap The node map whose chunk ports are fed, or null to attach one later.
     * \param[in] maxChunkCacheSize Largest chunk a CacheChunkData port copies (-1 no limit, 0 never).
     */
    explicit CChunkAdapterU3V(INodeMap* pNodeMap = nullptr, int64_t maxChunkCacheSize = -1);
    ~CChunkAdapterU3V() override;

    /// Whether the trailer chain of the first \a bufferLength bytes is complete and consistent.
    bool CheckBufferLayout(uint8_t* pBuffer, int64_t bufferLength) override;
    /**
     * \brief Attaches the chunks of the first \a bufferLength bytes of \a pBuffer.
     * \throws RuntimeException "Invalid layout of buffer attached to chunk parser!" when the
     *         trailer chain is not valid (a length beyond the bytes before it, bytes left over,
     *         an empty buffer); the chunks read before the fault stay attached.
     */
    void AttachBuffer(uint8_t* pBuffer, int64_t bufferLength, AttachStatistics_t* pAttachStatistics = nullptr) override;
};
} // namespace GenApi
