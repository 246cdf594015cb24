#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

#include <GenApi/IDestroy.h>
#include <GenApi/IDeviceInfo.h>
#include <GenApi/ILoadWarnings.h>
#include <GenApi/INodeMap.h>
#include <GenApi/Synch.h>

#include "Engine/NodeMap/NameTable.h"
#include "Engine/NodeMap/StringArena.h"

namespace GenApi
{
class CNode;
class CPortNode;
class CNodeCallback;

/// Header of the description (RegisterDescription attributes).
struct DeviceInfo_t
{
    GenICam::gcstring modelName;
    GenICam::gcstring vendorName;
    GenICam::gcstring toolTip;
    EStandardNameSpace standardNameSpace = None;
    Version_t schemaVersion = {1, 1, 0};
    Version_t deviceVersion = {0, 0, 0};
    GenICam::gcstring productGuid;
    GenICam::gcstring versionGuid;
};

/**
 * \brief The node map: owns the nodes, the name table, the lock, the polling list and the
 *        invalidation/callback machinery.
 *
 * Thread: any; every public operation takes GetLock() (recursive).
 *
 * Hooks for code outside the node classes (chunk and event adapters, persistence):
 *  - ports: GetPortNodes() lists every Port node; CPortNode answers its ChunkID/EventID as numbers
 *    (ChunkIdValue/EventIdValue) and is connected with IPortConstruct::SetPortImpl or
 *    INodeMap::Connect; a chunk or event adapter may also connect through CPortNode::ConnectPort.
 *  - invalidation from outside: INode::InvalidateNode() on a Port node drops every register cache
 *    of that port and fires the callbacks of every node reading through it (what an adapter calls
 *    after attaching new data). Inside the engine the same runs as NotifyChangedLocked() within a
 *    CCallbackScope, which fires the collected callbacks when the outermost scope ends:
 *    cbPostInsideLock ones still holding the lock, then cbPostOutsideLock ones after releasing it.
 */
class CNodeMapImpl : public INodeMap, public IDeviceInfo, public ILoadWarnings, public IDestroy
{
public:
    explicit CNodeMapImpl(const GenICam::gcstring& deviceName, CLock* pUserLock = nullptr);
    CNodeMapImpl(const CNodeMapImpl&) = delete;
    CNodeMapImpl& operator=(const CNodeMapImpl&) = delete;
    ~CNodeMapImpl() override;

    // ---- building (loader only) ----
    /**
     * \brief The name table's entry of \a name, created (with its place in the node order) when
     *        new. Its pNode is set when a node of that name exists. Valid until another name is added.
     */
    CNameTable::Entry_t* ClaimName(std::string_view name);
    /// Takes ownership of a node whose name's entry \a pEntry (from ClaimName) is; the name must
    /// stay valid. Returns the node.
    CNode* AddNode(std::unique_ptr<CNode> pNode, CNameTable::Entry_t* pEntry);
    /// Reserves a place in the node order for a name met before its node (a reference).
    void ReserveOrder(std::string_view name);
    /// Node by name, or null.
    CNode* FindNode(std::string_view name) const;
    CStringArena& Arena() { return m_arena; }
    DeviceInfo_t& Info() { return m_info; }
    /// Keeps the parsed description alive: node names and texts are views into it.
    void AdoptSourceText(std::vector<char>&& text) { m_sourceText = std::move(text); }
    /// Sizes the name tables for about \a nodeCount nodes.
    void Reserve(size_t nodeCount);
    /// Called once loading is complete: fixes the node order and the polling list.
    void FinishLoading();
    const std::vector<std::unique_ptr<CNode>>& OwnedNodes() const { return m_nodes; }
    /// Records a defect of the description that the loader tolerated (see ILoadWarnings) at
    /// byte \a offset of the description; FinishLoading puts them in document order.
    void AddLoadWarning(size_t offset, const std::string& text);

    // ---- hooks ----
    /// Every Port node, in node order.
    const std::vector<CPortNode*>& GetPortNodes() const { return m_ports; }
    /// The lock nodes take (the user's lock when one was given).
    CLock& Lock() const { return *m_pLock; }

    /**
     * \brief Invalidates \a pNode and every node depending on it, directly or not, and queues
     *        their callbacks in the current CCallbackScope. Lock held.
     * \param[in] dropDeviceCache Also drop device-side caches of the nodes reached from \a pNode
     *            itself (InvalidateNode, polling) rather than only their cached values (a write).
     */
    void NotifyChangedLocked(CNode* pNode, bool dropDeviceCache = false);
    /// Queues the callbacks of one node only (lock held, inside a scope).
    void QueueCallbacksLocked(CNode* pNode);

    /**
     * \brief Destroys \a pCallback, just removed from its node (lock not held): at once when no
     *        callbacks are firing; otherwise after every firing that may hold it has ended, which
     *        this call waits for, unless the calling thread is itself firing (a callback
     *        deregistering itself or another), where the last of those firings destroys it. A
     *        firing skips callbacks deregistered after it collected them, so no callback runs
     *        once its Deregister has returned, nor is destroyed while it runs.
     */
    void RetireCallback(CNodeCallback* pCallback);

    /// Evaluation depth guard against reference cycles.
    int& EvaluationDepth() const { return m_evaluationDepth; }

    /**
     * \brief Scope of a public operation that may change values: locks the map and, when the
     *        outermost scope ends, fires the queued callbacks (inside the lock, then outside).
     *        Exceptions thrown by callbacks are swallowed so that the map stays consistent.
     */
    class CCallbackScope
    {
    public:
        explicit CCallbackScope(CNodeMapImpl* pMap);
        CCallbackScope(const CCallbackScope&) = delete;
        CCallbackScope& operator=(const CCallbackScope&) = delete;
        ~CCallbackScope();

    private:
        CNodeMapImpl* const m_pMap;
    };

    // ---- INodeMap ----
    void GetNodes(NodeList_t& nodes) const override;
    INode* GetNode(const GenICam::gcstring& name) const override;
    void InvalidateNodes() const override;
    bool Connect(IPort* pPort, const GenICam::gcstring& portName) const override;
    bool Connect(IPort* pPort) const override;
    GenICam::gcstring GetDeviceName() override;
    void Poll(int64_t elapsedTimeMs) override;
    CLock& GetLock() const override;
    uint64_t GetNumNodes() const override;
    bool ParseSwissKnifes(GenICam::gcstring_vector* pErrorList = nullptr) const override;

    // ---- IDeviceInfo ----
    GenICam::gcstring GetModelName() override;
    GenICam::gcstring GetVendorName() override;
    GenICam::gcstring GetToolTip() override;
    EStandardNameSpace GetStandardNameSpace() override;
    void GetGenApiVersion(Version_t& version, uint16_t& build) override;
    void GetSchemaVersion(Version_t& version) override;
    void GetDeviceVersion(Version_t& version) override;
    GenICam::gcstring GetProductGuid() override;
    GenICam::gcstring GetVersionGuid() override;

    // ---- ILoadWarnings ----
    void GetLoadWarnings(GenICam::gcstring_vector& warnings) const override;

    // ---- IDestroy ----
    void Destroy() override;

private:
    void FireQueuedCallbacks();
    /// Every node reached from \a pNode through the dependents' links, in walk order (lock held).
    std::vector<CNode*> WalkDependentsLocked(CNode* pNode);

    // Set at construction, never changed.
    const GenICam::gcstring m_deviceName;
    CLock m_ownLock;
    CLock* const m_pLock; // m_ownLock, or the user's lock which outlives the map

    // Written while loading only; read-only afterwards.
    CStringArena m_arena;
    DeviceInfo_t m_info;
    std::vector<std::unique_ptr<CNode>> m_nodes;           // owned nodes, creation order
    std::vector<char> m_sourceText;                        // the parsed description; names and texts point into it
    CNameTable m_byName;                                   // name -> node (null while only referenced)
    std::vector<std::string_view> m_orderNames;            // names in first-occurrence order
    std::vector<CNode*> m_ordered;                         // nodes in GetNodes order
    std::vector<CPortNode*> m_ports;
    std::vector<CNode*> m_polled;                          // nodes with a PollingTime
    std::vector<std::pair<size_t, GenICam::gcstring>> m_loadWarnings; // (offset, text) of what the loader tolerated
    size_t m_droppedLoadWarnings = 0; // warnings past kMaxLoadWarnings, counted only
    static constexpr size_t kMaxLoadWarnings = 1000;

    // Guarded by the lock.
    mutable uint32_t m_walkEpoch = 0;
    mutable uint32_t m_notifyEpoch = 1;
    mutable int m_scopeDepth = 0;
    mutable int m_evaluationDepth = 0;
    mutable std::vector<CNode*> m_queued; // nodes whose callbacks fire when the scope ends
    mutable std::vector<CNode*> m_walkStack;

    // Callback firings in progress and callbacks deregistered during them. A firing takes its
    // ticket while it holds the lock, so a firing that began after a callback's removal cannot
    // hold that callback: the callback is destroyed once no firing with a lower ticket runs.
    struct FiringSession_t
    {
        uint64_t ticket;
        std::thread::id thread;
    };
    struct RetiredCallback_t
    {
        CNodeCallback* pCallback;
        uint64_t ticket; // firings from this ticket on never saw the callback
    };
    uint64_t BeginFiring();
    void EndFiring(uint64_t ticket);
    bool IsRetired(CNodeCallback* pCallback);
    /// Takes the retired callbacks no running firing may still hold (m_firingMutex held).
    void TakeDestroyableLocked(std::vector<CNodeCallback*>& destroyable);
    std::mutex m_firingMutex;
    std::condition_variable m_firingEnded;
    std::vector<FiringSession_t> m_firings;   // guarded by m_firingMutex
    std::vector<RetiredCallback_t> m_retired; // guarded by m_firingMutex
    std::atomic<size_t> m_retiredCount{0};    // its size, for firings to skip the mutex
    uint64_t m_nextFiringTicket = 0;          // guarded by m_firingMutex
    size_t m_reachedKept = 0; // entries of all CNode::m_pReached lists
    static constexpr size_t kReachedPerNode = 64; // their bound, per node of the map
};
} // namespace GenApi
