#include <GenApi/EventAdapter.h>

#include <GenApi/EventPort.h>
#include <GenApi/INodeMap.h>

#include "Engine/Chunk/NotificationScope.h"
#include "Engine/Nodes/PortNode.h"

namespace GenApi
{
CEventAdapter::CEventAdapter(INodeMap* pNodeMap)
{
    if (pNodeMap)
        AttachNodeMap(pNodeMap);
}

CEventAdapter::~CEventAdapter()
{
    try
    {
        DetachNodeMap();
    }
    catch (...)
    {
        // Nothing sensible to do in a destructor; the ports disconnect themselves anyway.
    }
}

void CEventAdapter::AttachNodeMap(INodeMap* pNodeMap)
{
    DetachNodeMap();
    if (!pNodeMap)
        return;
    CNotificationScope scope(pNodeMap);
    NodeList_t nodes;
    pNodeMap->GetNodes(nodes);
    for (INode* pNode : nodes)
    {
        CPortNode* pPortNode = dynamic_cast<CPortNode*>(pNode);
        if (!pPortNode || !pPortNode->HasEventId())
            continue;
        std::unique_ptr<CEventPort> pEventPort(new CEventPort());
        if (pEventPort->AttachNode(pPortNode))
            m_eventPorts.push_back(std::move(pEventPort));
    }
    m_pNodeMap = pNodeMap;
}

void CEventAdapter::DetachNodeMap()
{
    if (!m_pNodeMap)
        return;
    CNotificationScope scope(m_pNodeMap);
    m_eventPorts.clear(); // each port disconnects itself from its node
    m_pNodeMap = nullptr;
}

int CEventAdapter::DeliverToPorts(uint64_t eventId, const uint8_t* pData, int64_t lengthBytes)
{
    CNotificationScope scope(m_pNodeMap);
    int delivered = 0;
    for (const std::unique_ptr<CEventPort>& pPort : m_eventPorts)
        if (pPort->CheckEventID(eventId))
        {
            pPort->AttachEvent(pData, lengthBytes);
            ++delivered;
        }
    return delivered;
}
} // namespace GenApi
