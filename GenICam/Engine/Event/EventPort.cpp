#include <GenApi/EventPort.h>

#include <cstring>

#include <Base/GCException.h>
#include <GenApi/INode.h>
#include <GenApi/INodeMap.h>
#include <GenApi/Synch.h>

#include "Engine/Nodes/PortNode.h"

namespace GenApi
{
namespace
{
CLock* LockOf(INode* pNode)
{
    return pNode ? &pNode->GetNodeMap()->GetLock() : nullptr;
}

// Locks the node map of a node for the lifetime of the object (no-op for null).
class CNodeLock
{
public:
    explicit CNodeLock(INode* pNode) : m_pLock(LockOf(pNode))
    {
        if (m_pLock)
            m_pLock->Lock();
    }
    CNodeLock(const CNodeLock&) = delete;
    CNodeLock& operator=(const CNodeLock&) = delete;
    ~CNodeLock()
    {
        if (m_pLock)
            m_pLock->Unlock();
    }

private:
    CLock* const m_pLock;
};
} // namespace

struct CEventPort::SharedEvent_t
{
    std::vector<uint8_t> data;
    bool hasEvent = false;
    std::vector<CEventPort*> ports; // attached to the node, the one serving it among them
};

CEventPort::CEventPort(INode* pNode)
{
    if (pNode)
        AttachNode(pNode);
}

CEventPort::~CEventPort()
{
    try
    {
        DetachNode();
    }
    catch (...)
    {
        // A destructor must not throw; the port node is simply left as it is.
    }
}

bool CEventPort::AttachNode(INode* pNode)
{
    DetachNode();
    CPortNode* pPortNode = dynamic_cast<CPortNode*>(pNode);
    if (!pPortNode || !pPortNode->HasEventId())
        return false;
    CNodeLock lock(pPortNode);
    CEventPort* pServing = dynamic_cast<CEventPort*>(pPortNode->ConnectedPort());
    std::shared_ptr<SharedEvent_t> pShared =
        pServing && pServing->m_pShared ? pServing->m_pShared : std::make_shared<SharedEvent_t>();
    pShared->ports.push_back(this);
    m_pShared = std::move(pShared);
    m_eventIdNumber = pPortNode->EventIdValue();
    m_pNode = pPortNode;
    if (!pServing)
        pPortNode->SetPortImpl(this);
    return true;
}

void CEventPort::DetachNode()
{
    if (!m_pNode)
        return;
    CPortNode* pPortNode = dynamic_cast<CPortNode*>(m_pNode);
    {
        CNodeLock lock(m_pNode);
        std::vector<CEventPort*>& ports = m_pShared->ports;
        for (auto it = ports.begin(); it != ports.end(); ++it)
            if (*it == this)
            {
                ports.erase(it);
                break;
            }
        // Hand the node to a port still attached; leave a connection made by others alone.
        if (pPortNode && pPortNode->ConnectedPort() == this)
            pPortNode->SetPortImpl(ports.empty() ? nullptr : ports.front());
        m_pShared.reset();
    }
    m_pNode = nullptr;
    m_eventIdNumber = 0;
}

void CEventPort::AttachEvent(const uint8_t* pData, int64_t lengthBytes)
{
    {
        CNodeLock lock(m_pNode);
        if (!m_pShared)
            m_pShared = std::make_shared<SharedEvent_t>();
        if (lengthBytes > 0)
            m_pShared->data.assign(pData, pData + lengthBytes);
        else
            m_pShared->data.clear();
        m_pShared->hasEvent = true;
    }
    if (m_pNode)
        m_pNode->InvalidateNode();
}

void CEventPort::DetachEvent()
{
    {
        CNodeLock lock(m_pNode);
        if (m_pShared)
        {
            m_pShared->data.clear();
            m_pShared->hasEvent = false;
        }
    }
    if (m_pNode)
        m_pNode->InvalidateNode();
}

EAccessMode CEventPort::GetAccessMode() const
{
    return m_pShared && m_pShared->hasEvent ? RO : NA;
}

void CEventPort::Read(void* pBuffer, int64_t address, int64_t lengthBytes)
{
    CNodeLock lock(m_pNode);
    const int64_t size = m_pShared ? static_cast<int64_t>(m_pShared->data.size()) : 0;
    if (address < 0 || lengthBytes < 0 || address > size || lengthBytes > size - address)
    {
        const long long end = address > INT64_MAX - lengthBytes ? INT64_MAX : address + lengthBytes;
        throw RUNTIME_EXCEPTION("CEventPort : Attempt to read address range [%lld,%lld] which is outside the "
                                "buffers address range [0,%lld]",
                                static_cast<long long>(address), end, static_cast<long long>(size));
    }
    if (lengthBytes > 0)
        std::memcpy(pBuffer, m_pShared->data.data() + address, static_cast<size_t>(lengthBytes));
}

void CEventPort::Write(const void* /*pBuffer*/, int64_t address, int64_t lengthBytes)
{
    throw ACCESS_EXCEPTION("CEventPort : Attempt to write address range [%lld,+%lld] of read-only event data",
                           static_cast<long long>(address), static_cast<long long>(lengthBytes));
}
} // namespace GenApi
