#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include <Base/GCLinkage.h>
#include <GenApi/Types.h>

namespace GenApi
{
struct INodeMap;
class CChunkPort;

/// Where the data of one chunk lies in a buffer.
struct ChunkLocation_t
{
    uint64_t chunkId;    ///< numeric chunk ID
    int64_t offset;      ///< of the first data byte, from the buffer start
    int64_t lengthBytes; ///< data bytes
};

/// What one AttachBuffer() did.
struct AttachStatistics_t
{
    int NumChunkPorts;     ///< chunk Port nodes in the node map
    int NumChunks;         ///< chunks found in the buffer
    int NumAttachedChunks; ///< (port, chunk) pairs connected: one chunk may feed several ports
};

/**
 * \brief Connects the chunks of delivered buffers to the chunk Port nodes of a node map.
 *
 * Each Port node with a ChunkID (or pChunkID) gets a CChunkPort; AttachBuffer() finds the chunks
 * of a buffer, the transport's way, and points every port whose ID matches at its chunk, so that
 * the chunk features (ChunkTimestamp, ChunkWidth, ...) read the buffer. Ports whose chunk is
 * absent become NA. Every chunk port and every node reading through it is invalidated on each
 * AttachBuffer(), UpdateBuffer() and DetachBuffer(), and their callbacks fire.
 *
 * Chunk data is read in place: call DetachBuffer() before the buffer is reused, except for ports
 * whose description asks for CacheChunkData (they copy, up to the adapter's maximum chunk cache
 * size, and stay readable after DetachBuffer()).
 *
 * Lifetime: the node map must outlive the adapter, or DetachNodeMap() must run first.
 * Threads: any; every operation takes the node map's lock.
 */
class GENICAM_API CChunkAdapter
{
public:
    CChunkAdapter(const CChunkAdapter&) = delete;
    CChunkAdapter& operator=(const CChunkAdapter&) = delete;
    /// Disconnects the chunk ports from the node map.
    virtual ~CChunkAdapter();

    /**
     * \brief Connects a chunk port to every chunk Port node of \a pNodeMap (replacing the map
     *        attached before). The ports are NA until a buffer is attached.
     */
    virtual void AttachNodeMap(INodeMap* pNodeMap);
    /// Disconnects every chunk port; the Port nodes become NA.
    virtual void DetachNodeMap();

    /**
     * \brief Whether \a pBuffer holds a chunk layout this adapter can parse.
     * \param[in] pBuffer      The buffer's first byte.
     * \param[in] bufferLength Valid bytes of the buffer (the filled size, not the allocation).
     */
    virtual bool CheckBufferLayout(uint8_t* pBuffer, int64_t bufferLength) = 0;
    /**
     * \brief Attaches the chunks of \a pBuffer to the ports with their IDs.
     * \param[in] pBuffer The buffer's first byte; it must stay valid while chunks are attached.
     * \param[in] bufferLength Valid bytes of the buffer.
     * \param[out] pAttachStatistics Counts of this attach, or null.
     * \throws RuntimeException when the layout is not valid; every port is then detached.
     */
    virtual void AttachBuffer(uint8_t* pBuffer, int64_t bufferLength,
                              AttachStatistics_t* pAttachStatistics = nullptr) = 0;
    /// Detaches every port from the buffer (copies of CacheChunkData ports stay readable).
    virtual void DetachBuffer();
    /**
     * \brief Re-points every attached port at the same offset in a buffer with the same
     *        layout that now lies at \a pBaseAddress (copying ports copy again).
     */
    virtual void UpdateBuffer(uint8_t* pBaseAddress);
    /// Drops the copies kept by CacheChunkData ports.
    virtual void ClearCaches();

protected:
    /**
     * \param[in] pNodeMap The node map to attach, or null to attach one later.
     * \param[in] maxChunkCacheSize Largest chunk (bytes) a CacheChunkData port copies; -1 no
     *            limit, 0 never copy.
     */
    explicit CChunkAdapter(INodeMap* pNodeMap = nullptr, int64_t maxChunkCacheSize = -1);

    /**
     * \brief Attaches \a chunkCount chunks of \a pBuffer; every port whose ID is not among them
     *        is detached. The first chunk of the list with a port's ID wins. Fills
     *        \a pAttachStatistics (NumChunks = \a chunksInBuffer) when given. The callbacks fire
     *        once all ports are set.
     */
    void AttachChunks(uint8_t* pBuffer, const ChunkLocation_t* pChunks, size_t chunkCount, int64_t chunksInBuffer,
                      AttachStatistics_t* pAttachStatistics);
    /// Whether some chunk port of the node map has \a chunkId.
    bool HasPortFor(uint64_t chunkId) const;
    /// Whether the chain of 8-byte chunk trailers (GigE Vision: big-endian, USB3 Vision:
    /// little-endian) of \a pBuffer is complete and consistent.
    static bool CheckTrailerChain(const uint8_t* pBuffer, int64_t bufferLength, bool bigEndian);
    /**
     * \brief Parses the trailer chain and attaches its chunks.
     * \throws RuntimeException "Invalid layout of buffer attached to chunk parser!" when the
     *         chain is not valid, after attaching the chunks read before the fault (the walk goes back from the end) and detaching every other port.
     */
    void AttachTrailerChain(uint8_t* pBuffer, int64_t bufferLength, bool bigEndian,
                            AttachStatistics_t* pAttachStatistics);
    /// Detaches every port (the callbacks fire).
    void DetachAllPorts();

    INodeMap* m_pNodeMap = nullptr;      // borrowed; must outlive the adapter or be detached first
    const int64_t m_maxChunkCacheSize;
    std::vector<std::unique_ptr<CChunkPort>> m_chunkPorts;
    std::vector<ChunkLocation_t> m_chunks; // parsing scratch, reused so that attaching allocates nothing
};
} // namespace GenApi
