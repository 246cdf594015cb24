#pragma once

#include <GenApi/INode.h>
#include <GenApi/IPortConstruct.h>

namespace GenApi
{
/**
 * \brief Base for application ports: implement GetAccessMode, Read and Write.
 *
 * When connected to a Port node (INodeMap::Connect) the port learns that node, so InvalidateNode()
 * can drop the caches of every register read through it (e.g. after the device changed state).
 */
class CPortImpl : public IPortConstruct
{
public:
    CPortImpl() = default;
    CPortImpl(const CPortImpl&) = delete;
    CPortImpl& operator=(const CPortImpl&) = delete;
    ~CPortImpl() override = default;

    /// Called by the Port node this port is connected to.
    void SetPortImpl(IPort* pPort) override { m_pPortNode = pPort; }
    /// Application ports deliver bytes in register order.
    EYesNo GetSwapEndianess() override { return No; }
    /// Invalidates the connected Port node and every node reading through it.
    void InvalidateNode()
    {
        if (INode* pNode = dynamic_cast<INode*>(m_pPortNode))
            pNode->InvalidateNode();
    }

protected:
    IPort* m_pPortNode = nullptr; // borrowed: the Port node of the node map this port is connected to
};
} // namespace GenApi
