#pragma once

#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include <GenApi/IChunkPort.h>
#include <GenApi/IPortConstruct.h>

#include "Engine/Nodes/Node.h"

namespace GenApi
{
/**
 * \brief The Port element: the way out to a register space, bound to an application IPort.
 *
 * Until connected the port and every node reading through it are NI. Keeps the last bytes read
 * or written per (address, length), which cacheable registers use when their own cache is
 * invalid (dropped when a register at that address is invalidated, or the port itself is).
 *
 * Chunk and event ports carry ChunkID / EventID; adapters find them with ChunkIdValue() /
 * EventIdValue() and connect their data port with SetPortImpl (or ConnectPort).
 */
class CPortNode : public CNode, public virtual IPortConstruct, public virtual IChunkPort
{
public:
    CPortNode(CNodeMapImpl* pMap, std::string_view name) : CNode(pMap, ENodeKind_t::Port, name) {}

    bool ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder) override;
    void Link(CNodeBuilder& builder) override;
    EAccessMode NaturalAccessLocked(bool structural) override;
    void DropCacheLocked() override;
    EInterfaceType GetPrincipalInterfaceType() const override { return intfIPort; }

    /// Connects \a pPort (null disconnects); the node and its registers are invalidated.
    void ConnectPort(IPort* pPort);
    /// The connected application port, or null.
    IPort* ConnectedPort() const { return m_pPort; }
    /// Whether the description gives a ChunkID (or pChunkID).
    bool HasChunkId() const { return !m_chunkId.empty() || m_pChunkId; }
    /// ChunkID as a number (pChunkID: the String node's hex text); 0 when none.
    uint64_t ChunkIdValue();
    /// Whether the description gives an EventID.
    bool HasEventId() const { return !m_eventId.empty(); }
    /// EventID as a number; 0 when none.
    uint64_t EventIdValue() const;

    // ---- register traffic (lock held) ----
    void ReadLocked(void* pBuffer, int64_t address, int64_t lengthBytes);
    void WriteLocked(const void* pBuffer, int64_t address, int64_t lengthBytes);
    /// Copies cached bytes for (address, length) into \a pBuffer; false when none are cached.
    bool LookupCacheLocked(uint8_t* pBuffer, int64_t address, int64_t lengthBytes) const;
    void StoreCacheLocked(const uint8_t* pBuffer, int64_t address, int64_t lengthBytes);
    void DropCacheEntryLocked(int64_t address, int64_t lengthBytes);

    // ---- IPort / IPortConstruct / IChunkPort ----
    void Read(void* pBuffer, int64_t address, int64_t lengthBytes) override;
    void Write(const void* pBuffer, int64_t address, int64_t lengthBytes) override;
    void SetPortImpl(IPort* pPort) override;
    EYesNo GetSwapEndianess() override { return m_swapEndianess ? Yes : No; }
    GenICam::gcstring GetChunkID() const override;
    EYesNo CacheChunkData() const override { return m_cacheChunkData ? Yes : No; }

private:
    void Swap(uint8_t* pBytes, int64_t lengthBytes) const;

    IPort* m_pPort = nullptr; // the application's port; it must outlive the connection
    std::string_view m_chunkId;
    CNode* m_pChunkId = nullptr;
    bool m_swapEndianess = false;
    bool m_cacheChunkData = false;
    std::map<std::pair<int64_t, int64_t>, std::vector<uint8_t>> m_registerCache; // (address, length) -> bytes
};
} // namespace GenApi
