#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include <Base/GCLinkage.h>
#include <GenApi/IPort.h>

namespace GenApi
{
struct INode;

/**
 * \brief The register space behind one event Port node (a Port with an EventID): a copy of the
 *        data of the last event with that ID.
 *
 * Address 0 is the first byte delivered. The data stays readable until the next event of that
 * ID, however the delivering buffer is reused. Every access must lie inside the data; anything
 * else throws.
 *
 * Access mode: NA until the first event arrives, then RO.
 *
 * Normally made and driven by a CEventAdapter. Threads: used with the node map's lock held (the
 * adapter and the port node take it).
 */
class GENICAM_API CEventPort : public IPort
{
public:
    /// An event port connected to \a pNode (a Port node with an EventID), or unconnected when null.
    explicit CEventPort(INode* pNode = nullptr);
    CEventPort(const CEventPort&) = delete;
    CEventPort& operator=(const CEventPort&) = delete;
    /// Disconnects from the Port node if still connected to it.
    virtual ~CEventPort();

    /**
     * \brief Connects this object as the implementation of \a pNode. When another event port
     *        serves the node already (a second adapter on the same node map), both share the
     *        node's last event: an event delivered through either reads through the node.
     * \return False (and nothing connected) when \a pNode is not a Port node with an EventID.
     * \note The node must outlive the connection; DetachNode() (or destruction) ends it.
     */
    bool AttachNode(INode* pNode);
    /// Disconnects from the Port node, which becomes NI again unless another event port is
    /// attached to it too (that one then serves the node, with the last event kept).
    void DetachNode();

    /// The event ID of the connected Port node as a number (0 when unconnected).
    uint64_t GetEventIDNumber() const { return m_eventIdNumber; }
    /// Whether the connected Port node's event ID equals \a eventId.
    bool CheckEventID(uint64_t eventId) const { return m_pNode != nullptr && eventId == m_eventIdNumber; }
    /// The Port node this object is connected to, or null.
    INode* GetNode() const { return m_pNode; }

    /**
     * \brief Copies \a lengthBytes bytes of an event and fires the callbacks of the Port node and
     *        every node reading through it. Zero bytes are allowed (the port becomes RO, every
     *        read out of range).
     */
    void AttachEvent(const uint8_t* pData, int64_t lengthBytes);
    /// Forgets the event data; the port becomes NA again.
    void DetachEvent();

    // ---- IPort ----
    EAccessMode GetAccessMode() const override;
    /// \throws RuntimeException "CEventPort : Attempt to read address range [...]" outside the data.
    void Read(void* pBuffer, int64_t address, int64_t lengthBytes) override;
    /// Event data cannot be written. \throws AccessException always.
    void Write(const void* pBuffer, int64_t address, int64_t lengthBytes) override;

private:
    struct SharedEvent_t;
    INode* m_pNode = nullptr; // the Port node; borrowed, the node map outlives the connection
    uint64_t m_eventIdNumber = 0;

    // The last event of the node, shared by every event port attached to it (several adapters
    // on one node map); created on first use. Guarded by the node map's lock.
    std::shared_ptr<SharedEvent_t> m_pShared;
};
} // namespace GenApi
