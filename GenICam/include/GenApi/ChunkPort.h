#pragma once

#include <cstdint>
#include <vector>

#include <Base/GCLinkage.h>
#include <GenApi/IPort.h>

namespace GenApi
{
struct INode;
struct IPortConstruct;

/**
 * \brief The register space behind one chunk Port node: the data of one chunk of a delivered
 *        buffer.
 *
 * Address 0 is the chunk's first data byte. Two pseudo registers of 8 bytes answer the chunk's
 * base address (CHUNK_BASE_ADDRESS_REGISTER) and its length (CHUNK_LENGTH_REGISTER) in host
 * byte order. Every other access must lie inside the chunk; anything else throws, so a
 * description can never make the node map read or write outside the buffer.
 *
 * Access mode: NA while no chunk is attached, RW while one is, RO while only a copy kept from an
 * earlier buffer remains (ports whose description asks for CacheChunkData).
 *
 * Normally made and driven by a CChunkAdapter. Threads: used with the node map's lock held (the
 * adapter and the port node take it).
 */
class GENICAM_API CChunkPort : public IPort
{
public:
    /// A chunk port connected to \a pPort (a Port node), or unconnected when null.
    explicit CChunkPort(IPortConstruct* pPort = nullptr);
    CChunkPort(const CChunkPort&) = delete;
    CChunkPort& operator=(const CChunkPort&) = delete;
    /// Disconnects from the Port node if still connected to it.
    virtual ~CChunkPort();

    /**
     * \brief Connects this object as the implementation of the Port node \a pPort.
     * \return False (and nothing connected) when \a pPort is null or carries no ChunkID.
     * \note The Port node must outlive the connection; DetachPort() (or destruction) ends it.
     */
    bool AttachPort(IPortConstruct* pPort);
    /// Disconnects from the Port node (which becomes NA again) and forgets any chunk.
    void DetachPort();

    /**
     * \brief Points the port at \a length bytes at \a pBaseAddress + \a chunkOffset.
     * \param[in] pBaseAddress The buffer holding the chunk.
     * \param[in] chunkOffset  Offset of the chunk data in the buffer, in bytes.
     * \param[in] length       Length of the chunk data in bytes.
     * \param[in] cache Copy the bytes now (the port then stays readable after DetachChunk()).
     * \note Fires the callbacks of the Port node and every node reading through it. The memory
     *       must stay valid until DetachChunk() unless it was copied.
     */
    void AttachChunk(uint8_t* pBaseAddress, int64_t chunkOffset, int64_t length, bool cache);
    /// Forgets the buffer (a copy, if any, stays readable) and fires the callbacks.
    void DetachChunk();
    /// Re-points an attached chunk at the same offset in a buffer that moved to \a pBaseAddress.
    void UpdateBuffer(uint8_t* pBaseAddress);
    /// Drops a kept copy; the port becomes NA unless a chunk is attached.
    void ClearCache();

    /// The chunk ID of the connected Port node as a number (0 when unconnected).
    uint64_t GetChunkIDNumber() const { return m_chunkIdNumber; }
    /// Whether the connected Port node's chunk ID equals \a chunkId.
    bool CheckChunkID(uint64_t chunkId) const { return m_pPort != nullptr && chunkId == m_chunkIdNumber; }
    /// Whether the Port node asks for its data to be copied (CacheChunkData).
    bool IsCacheChunkData() const { return m_cacheChunkData; }
    /// Whether a chunk of the current buffer is attached.
    bool IsAttached() const { return m_state == EState_t::InBuffer || m_state == EState_t::Copied; }
    /// The Port node this object is connected to, or null.
    INode* GetPortNode() const { return m_pNode; }

    // ---- IPort ----
    EAccessMode GetAccessMode() const override;
    /// \throws RuntimeException "Range error reading(address, length)" outside the chunk.
    void Read(void* pBuffer, int64_t address, int64_t lengthBytes) override;
    /// Writes into the chunk (or into its copy). \throws RuntimeException outside the chunk.
    void Write(const void* pBuffer, int64_t address, int64_t lengthBytes) override;

private:
    enum class EState_t : uint8_t
    {
        Detached, ///< nothing to read: NA
        InBuffer, ///< reads the delivered buffer: RW
        Copied,   ///< reads the copy of the current buffer's chunk: RW
        KeptCopy  ///< reads the copy of an earlier buffer's chunk: RO
    };

    void Invalidate();
    uint8_t* Data();

    IPortConstruct* m_pPort = nullptr; // the Port node; borrowed, the node map outlives the connection
    INode* m_pNode = nullptr;          // the same node as INode
    uint64_t m_chunkIdNumber = 0;
    bool m_cacheChunkData = false;

    // Guarded by the node map's lock.
    EState_t m_state = EState_t::Detached;
    uint8_t* m_pBufferBase = nullptr; // the delivered buffer; borrowed until DetachChunk()
    int64_t m_chunkOffset = 0;        // of the chunk's first data byte in the buffer
    int64_t m_length = 0;             // data bytes of the chunk (or of the kept copy)
    std::vector<uint8_t> m_copy;      // the bytes of CacheChunkData ports
};
} // namespace GenApi
