#pragma once

#include <cstddef>
#include <cstdint>

#include <Base/GCString.h>
#include <GenApi/ChunkAdapter.h>

namespace GenApi
{
/// One chunk as a GenTL producer lists it (DSGetBufferChunkData's SINGLE_CHUNK_DATA).
struct SingleChunkData_t
{
    uint64_t ChunkID;      ///< numeric chunk ID
    ptrdiff_t ChunkOffset; ///< of the first data byte, from the buffer base
    size_t ChunkLength;    ///< data bytes
};

/// One chunk with its ID as hex text (two digits per byte, no "0x").
struct SingleChunkDataStr_t
{
    GenICam::gcstring ChunkID;
    ptrdiff_t ChunkOffset;
    size_t ChunkLength;
};

/**
 * \brief Chunk adapter for transports without a standard chunk layout (CoaXPress, Camera Link,
 *        ...): the producer parses the buffer and the caller hands over its list of chunks.
 *
 * Prefer the overloads that take the buffer length: they attach only chunks lying inside the
 * buffer. The overloads without it trust the list completely (as producers' lists are normally
 * trusted), so a wrong entry makes chunk features read foreign memory.
 * Threads and lifetime as CChunkAdapter.
 */
class GENICAM_API CChunkAdapterGeneric : public CChunkAdapter
{
public:
    /**
     * \param[in] pNodeMap The node map whose chunk ports are fed, or null to attach one later.
     * \param[in] maxChunkCacheSize Largest chunk a CacheChunkData port copies (-1 no limit, 0 never).
     */
    explicit CChunkAdapterGeneric(INodeMap* pNodeMap = nullptr, int64_t maxChunkCacheSize = -1);
    ~CChunkAdapterGeneric() override;

    /// A bare buffer has no layout this adapter knows: always false.
    bool CheckBufferLayout(uint8_t* pBuffer, int64_t bufferLength) override;
    /// A bare buffer has no layout this adapter knows: attaches nothing and leaves the statistics.
    void AttachBuffer(uint8_t* pBuffer, int64_t bufferLength, AttachStatistics_t* pAttachStatistics = nullptr) override;

    /**
     * \brief Attaches the listed chunks of \a pBuffer, trusting every entry.
     * \throws RuntimeException when \a pBuffer is null and chunks are listed.
     */
    virtual void AttachBuffer(uint8_t* pBuffer, SingleChunkData_t* pChunkData, int64_t numChunks,
                              AttachStatistics_t* pAttachStatistics = nullptr);
    /**
     * \brief Attaches the listed chunks, their IDs given as hex text; trusts offsets and lengths.
     * \throws RuntimeException "Invalid chunk ID delivered: %s" for an ID with an odd number of
     *         characters (every port is detached then). An ID that is not hex matches no port.
     */
    virtual void AttachBuffer(uint8_t* pBuffer, SingleChunkDataStr_t* pChunkData, int64_t numChunks,
                              AttachStatistics_t* pAttachStatistics = nullptr);

    /**
     * \brief Attaches the listed chunks that lie inside the first \a bufferLength bytes.
     *
     * Entries reaching outside the buffer are not attached (their ports become NA); the valid
     * ones are, and then the first bad entry is reported.
     * \throws RuntimeException "Chunk 0x%llx at offset %lld with length %llu lies outside the
     *         buffer of %lld bytes" after attaching the valid entries.
     */
    void AttachBuffer(uint8_t* pBuffer, int64_t bufferLength, const SingleChunkData_t* pChunkData, int64_t numChunks,
                      AttachStatistics_t* pAttachStatistics = nullptr);
    /// As the overload above, with IDs as hex text (and the ID check of the text overload).
    void AttachBuffer(uint8_t* pBuffer, int64_t bufferLength, const SingleChunkDataStr_t* pChunkData,
                      int64_t numChunks, AttachStatistics_t* pAttachStatistics = nullptr);

private:
    template <class Entry>
    void AttachList(uint8_t* pBuffer, int64_t bufferLength, bool checkBounds, const Entry* pChunkData,
                    int64_t numChunks, AttachStatistics_t* pAttachStatistics);
};
} // namespace GenApi
