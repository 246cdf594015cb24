#include "Engine/NodeMap/NodeMapImpl.h"

#include <algorithm>
#include <cstdint>
#include <string>

#include <Base/GCException.h>
#include <GenApi/IPort.h>

#include "Engine/Nodes/ConverterNode.h"
#include "Engine/Nodes/IntConverterNode.h"
#include "Engine/Nodes/IntSwissKnifeNode.h"
#include "Engine/Nodes/Node.h"
#include "Engine/Nodes/PortNode.h"
#include "Engine/Nodes/SwissKnifeNode.h"

namespace GenApi
{
CNodeMapImpl::CNodeMapImpl(const GenICam::gcstring& deviceName, CLock* pUserLock)
    : m_deviceName(deviceName), m_pLock(pUserLock ? pUserLock : &m_ownLock)
{
}

CNodeMapImpl::~CNodeMapImpl()
{
    // No firing runs any more; a retired callback left by one that threw is still owned here.
    for (const RetiredCallback_t& retired : m_retired)
        retired.pCallback->Destroy();
}

// ---------------------------------------------------------------- building

CNameTable::Entry_t* CNodeMapImpl::ClaimName(std::string_view name)
{
    std::pair<CNameTable::Entry_t*, bool> result = m_byName.Emplace(name);
    if (result.second)
        m_orderNames.push_back(name);
    return result.first;
}

CNode* CNodeMapImpl::AddNode(std::unique_ptr<CNode> pNode, CNameTable::Entry_t* pEntry)
{
    CNode* pRaw = pNode.get();
    pEntry->pNode = pRaw;
    m_nodes.push_back(std::move(pNode));
    return pRaw;
}

void CNodeMapImpl::Reserve(size_t nodeCount)
{
    m_byName.Reserve(nodeCount);
    m_orderNames.reserve(nodeCount);
    m_nodes.reserve(nodeCount);
}

void CNodeMapImpl::ReserveOrder(std::string_view name)
{
    if (name.empty())
        return;
    if (m_byName.Emplace(name).second)
        m_orderNames.push_back(name);
}

CNode* CNodeMapImpl::FindNode(std::string_view name) const
{
    const CNameTable::Entry_t* pEntry = m_byName.Find(name);
    return pEntry ? pEntry->pNode : nullptr;
}

void CNodeMapImpl::AddLoadWarning(size_t offset, const std::string& text)
{
    // A hostile description can hold millions of tolerated defects; the first ones tell enough.
    if (m_loadWarnings.size() >= kMaxLoadWarnings)
    {
        ++m_droppedLoadWarnings;
        return;
    }
    m_loadWarnings.emplace_back(offset, GenICam::gcstring(text.c_str(), text.size()));
}

void CNodeMapImpl::FinishLoading()
{
    // Warnings come from several load passes; report them in document order.
    std::stable_sort(m_loadWarnings.begin(), m_loadWarnings.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    if (m_droppedLoadWarnings > 0)
        m_loadWarnings.emplace_back(SIZE_MAX, GenICam::gcstring(("... and " + std::to_string(m_droppedLoadWarnings) +
                                                                 " more warnings").c_str()));
    m_ordered.clear();
    m_ordered.reserve(m_nodes.size());
    for (std::string_view name : m_orderNames)
        if (CNode* pNode = FindNode(name))
            m_ordered.push_back(pNode);
    m_orderNames.clear();
    m_orderNames.shrink_to_fit();
    m_ports.clear();
    m_polled.clear();
    for (CNode* pNode : m_ordered)
    {
        pNode->FinishLinks();
        if (pNode->Kind() == ENodeKind_t::Port)
            m_ports.push_back(static_cast<CPortNode*>(pNode));
        if (pNode->PollingTimeMs() > 0)
            m_polled.push_back(pNode);
    }
}

// ---------------------------------------------------------------- invalidation and callbacks

void CNodeMapImpl::NotifyChangedLocked(CNode* pNode, bool /*dropDeviceCache*/)
{
    // A write reaches a hundred nodes or more in real descriptions, and the same feature is
    // written again and again: walk the links once, then replay the list. The lists kept are
    // bounded (a map whose every node gets written could otherwise keep nodes squared).
    if (QV_UNLIKELY(!pNode->m_pReached))
    {
        std::vector<CNode*> reached = WalkDependentsLocked(pNode);
        if (m_reachedKept + reached.size() > kReachedPerNode * (m_nodes.size() + 1))
        {
            for (CNode* pReached : reached)
            {
                pReached->DropCacheLocked();
                QueueCallbacksLocked(pReached);
            }
            return;
        }
        m_reachedKept += reached.size();
        pNode->m_pReached = std::make_unique<std::vector<CNode*>>(std::move(reached));
    }
    for (CNode* pReached : *pNode->m_pReached)
    {
        pReached->DropCacheLocked();
        QueueCallbacksLocked(pReached);
    }
}

std::vector<CNode*> CNodeMapImpl::WalkDependentsLocked(CNode* pNode)
{
    std::vector<CNode*> reached;
    const uint32_t epoch = ++m_walkEpoch;
    m_walkStack.clear();
    m_walkStack.push_back(pNode);
    pNode->m_walkEpoch = epoch;
    while (!m_walkStack.empty())
    {
        CNode* pCurrent = m_walkStack.back();
        m_walkStack.pop_back();
        reached.push_back(pCurrent);
        for (CNode* pDependent : pCurrent->Dependents())
            if (pDependent->m_walkEpoch != epoch)
            {
                pDependent->m_walkEpoch = epoch;
                m_walkStack.push_back(pDependent);
            }
    }
    reached.shrink_to_fit();
    return reached;
}

void CNodeMapImpl::QueueCallbacksLocked(CNode* pNode)
{
    if (pNode->Callbacks().empty() || pNode->m_notifyEpoch == m_notifyEpoch)
        return;
    pNode->m_notifyEpoch = m_notifyEpoch;
    m_queued.push_back(pNode);
}

CNodeMapImpl::CCallbackScope::CCallbackScope(CNodeMapImpl* pMap) : m_pMap(pMap)
{
    m_pMap->m_pLock->Lock();
    ++m_pMap->m_scopeDepth;
}

CNodeMapImpl::CCallbackScope::~CCallbackScope()
{
    if (--m_pMap->m_scopeDepth == 0 && !m_pMap->m_queued.empty())
    {
        m_pMap->FireQueuedCallbacks();
        return; // FireQueuedCallbacks released the lock
    }
    m_pMap->m_pLock->Unlock();
}

void CNodeMapImpl::FireQueuedCallbacks()
{
    // Lock held, outermost scope. Take the queue so that callbacks may start operations of their own.
    std::vector<CNode*> nodes;
    nodes.swap(m_queued);
    ++m_notifyEpoch;
    const uint64_t ticket = BeginFiring();
    struct SEndFiring_
    {
        CNodeMapImpl* pMap;
        uint64_t ticket;
        ~SEndFiring_() { pMap->EndFiring(ticket); }
    } endFiring{this, ticket};

    auto fire = [this](const std::vector<CNodeCallback*>& callbacks, ECallbackType type) {
        for (CNodeCallback* pCallback : callbacks)
        {
            // A callback run before may have deregistered this one.
            if (IsRetired(pCallback))
                continue;
            try
            {
                (*pCallback)(type);
            }
            catch (...)
            {
                // A failing listener must not leave the node map half-notified.
            }
        }
    };
    std::vector<CNodeCallback*> callbacks;
    try
    {
        for (CNode* pNode : nodes)
            callbacks.insert(callbacks.end(), pNode->Callbacks().begin(), pNode->Callbacks().end());
        fire(callbacks, cbPostInsideLock);
        // Callbacks deregistered meanwhile are gone from their nodes: collect the outside ones afresh.
        callbacks.clear();
        for (CNode* pNode : nodes)
            callbacks.insert(callbacks.end(), pNode->Callbacks().begin(), pNode->Callbacks().end());
    }
    catch (...)
    {
        m_pLock->Unlock();
        throw;
    }
    m_pLock->Unlock();
    fire(callbacks, cbPostOutsideLock);
}

uint64_t CNodeMapImpl::BeginFiring()
{
    std::lock_guard<std::mutex> lock(m_firingMutex);
    const uint64_t ticket = m_nextFiringTicket++;
    m_firings.push_back({ticket, std::this_thread::get_id()});
    return ticket;
}

void CNodeMapImpl::EndFiring(uint64_t ticket)
{
    std::vector<CNodeCallback*> destroyable;
    {
        std::lock_guard<std::mutex> lock(m_firingMutex);
        for (auto it = m_firings.begin(); it != m_firings.end(); ++it)
            if (it->ticket == ticket)
            {
                m_firings.erase(it);
                break;
            }
        if (!m_retired.empty())
            TakeDestroyableLocked(destroyable);
    }
    m_firingEnded.notify_all();
    for (CNodeCallback* pCallback : destroyable)
        pCallback->Destroy();
}

bool CNodeMapImpl::IsRetired(CNodeCallback* pCallback)
{
    // A callback this thread retired is counted already; one another thread retires right now
    // may still run: its Deregister waits for this firing.
    if (m_retiredCount.load(std::memory_order_acquire) == 0)
        return false;
    std::lock_guard<std::mutex> lock(m_firingMutex);
    for (const RetiredCallback_t& retired : m_retired)
        if (retired.pCallback == pCallback)
            return true;
    return false;
}

void CNodeMapImpl::TakeDestroyableLocked(std::vector<CNodeCallback*>& destroyable)
{
    uint64_t oldestFiring = UINT64_MAX;
    for (const FiringSession_t& firing : m_firings)
        oldestFiring = std::min(oldestFiring, firing.ticket);
    auto kept = m_retired.begin();
    for (const RetiredCallback_t& retired : m_retired)
    {
        if (retired.ticket <= oldestFiring)
            destroyable.push_back(retired.pCallback);
        else
            *kept++ = retired;
    }
    m_retired.erase(kept, m_retired.end());
    m_retiredCount.store(m_retired.size(), std::memory_order_release);
}

void CNodeMapImpl::RetireCallback(CNodeCallback* pCallback)
{
    std::vector<CNodeCallback*> destroyable;
    {
        std::unique_lock<std::mutex> lock(m_firingMutex);
        if (m_firings.empty())
        {
            lock.unlock();
            pCallback->Destroy();
            return;
        }
        const uint64_t ticket = m_nextFiringTicket;
        m_retired.push_back({pCallback, ticket});
        m_retiredCount.store(m_retired.size(), std::memory_order_release);
        const std::thread::id self = std::this_thread::get_id();
        for (const FiringSession_t& firing : m_firings)
            if (firing.thread == self)
                return; // waiting would wait for this very thread
        m_firingEnded.wait(lock, [&] {
            for (const FiringSession_t& firing : m_firings)
                if (firing.ticket < ticket)
                    return false;
            return true;
        });
        TakeDestroyableLocked(destroyable);
    }
    for (CNodeCallback* pDestroyable : destroyable)
        pDestroyable->Destroy();
}

// ---------------------------------------------------------------- INodeMap

void CNodeMapImpl::GetNodes(NodeList_t& nodes) const
{
    AutoLock lock(*m_pLock);
    nodes.assign(m_ordered.begin(), m_ordered.end());
}

INode* CNodeMapImpl::GetNode(const GenICam::gcstring& name) const
{
    std::string_view key(name.c_str(), name.size());
    if (key.compare(0, 5, "Std::") == 0)
        key.remove_prefix(5);
    else if (key.compare(0, 6, "Cust::") == 0)
        key.remove_prefix(6);
    return FindNode(key);
}

void CNodeMapImpl::InvalidateNodes() const
{
    CNodeMapImpl* pThis = const_cast<CNodeMapImpl*>(this);
    CCallbackScope scope(pThis);
    for (CNode* pNode : m_ordered)
    {
        pNode->DropCacheLocked();
        pThis->QueueCallbacksLocked(pNode);
    }
}

bool CNodeMapImpl::Connect(IPort* pPort, const GenICam::gcstring& portName) const
{
    CPortNode* pPortNode = dynamic_cast<CPortNode*>(GetNode(portName));
    if (!pPortNode)
        return false;
    pPortNode->SetPortImpl(pPort);
    return true;
}

bool CNodeMapImpl::Connect(IPort* pPort) const
{
    return Connect(pPort, "Device");
}

GenICam::gcstring CNodeMapImpl::GetDeviceName()
{
    return m_deviceName;
}

void CNodeMapImpl::Poll(int64_t elapsedTimeMs)
{
    CCallbackScope scope(this);
    for (CNode* pNode : m_polled)
    {
        try
        {
            if (pNode->PollingBlockedLocked())
                continue;
        }
        catch (const GenICam::GenericException&)
        {
            // An unreadable pBlockPolling does not stop polling.
        }
        if (pNode->AdvancePollLocked(elapsedTimeMs))
            pNode->OnPollExpiredLocked();
    }
}

CLock& CNodeMapImpl::GetLock() const
{
    return *m_pLock;
}

uint64_t CNodeMapImpl::GetNumNodes() const
{
    return m_nodes.size();
}

bool CNodeMapImpl::ParseSwissKnifes(GenICam::gcstring_vector* pErrorList) const
{
    AutoLock lock(*m_pLock);
    bool ok = true;
    for (CNode* pNode : m_ordered)
    {
        try
        {
            if (auto* pIntSwissKnife = dynamic_cast<CIntSwissKnifeNode*>(pNode))
                pIntSwissKnife->ThrowIfParseError();
            else if (auto* pSwissKnife = dynamic_cast<CSwissKnifeNode*>(pNode))
                pSwissKnife->ThrowIfParseError();
            else if (auto* pConverter = dynamic_cast<CConverterNode*>(pNode))
                pConverter->ThrowIfParseError();
            else if (auto* pIntConverter = dynamic_cast<CIntConverterNode*>(pNode))
                pIntConverter->ThrowIfParseError();
        }
        catch (const GenICam::GenericException& error)
        {
            ok = false;
            if (pErrorList)
                pErrorList->push_back(GenICam::gcstring("Error while parsing equation for node '") + pNode->GetName() +
                                      "': " + error.what());
        }
    }
    return ok;
}

// ---------------------------------------------------------------- IDeviceInfo

GenICam::gcstring CNodeMapImpl::GetModelName()
{
    return m_info.modelName;
}

GenICam::gcstring CNodeMapImpl::GetVendorName()
{
    return m_info.vendorName;
}

GenICam::gcstring CNodeMapImpl::GetToolTip()
{
    return m_info.toolTip;
}

EStandardNameSpace CNodeMapImpl::GetStandardNameSpace()
{
    return m_info.standardNameSpace;
}

void CNodeMapImpl::GetGenApiVersion(Version_t& version, uint16_t& build)
{
    version = {3, 0, 0};
    build = 0;
}

void CNodeMapImpl::GetSchemaVersion(Version_t& version)
{
    version = m_info.schemaVersion;
}

void CNodeMapImpl::GetDeviceVersion(Version_t& version)
{
    version = m_info.deviceVersion;
}

GenICam::gcstring CNodeMapImpl::GetProductGuid()
{
    return m_info.productGuid;
}

GenICam::gcstring CNodeMapImpl::GetVersionGuid()
{
    return m_info.versionGuid;
}

// ---------------------------------------------------------------- ILoadWarnings

void CNodeMapImpl::GetLoadWarnings(GenICam::gcstring_vector& warnings) const
{
    // Written while loading only, so no lock is needed.
    warnings.clear();
    for (const auto& warning : m_loadWarnings)
        warnings.push_back(warning.second);
}

void CNodeMapImpl::Destroy()
{
    delete this;
}
} // namespace GenApi
