#pragma once

#include <GenApi/Container.h>
#include <GenApi/IBase.h>
#include <GenApi/Synch.h>

namespace GenApi
{
struct INode;
struct IPort;

/**
 * \brief A set of nodes built from one description, connected to one or more ports.
 *
 * Thread: any; every operation locks GetLock(), which is recursive.
 */
GENICAM_INTERFACE GENAPI_DECL_ABSTRACT INodeMap
{
    /// All nodes, in the order their names first occur in the description.
    virtual void GetNodes(NodeList_t& nodes) const = 0;
    /// The node of this name, or null.
    virtual INode* GetNode(const GenICam::gcstring& name) const = 0;
    /// Drops every cache and fires every node's callbacks.
    virtual void InvalidateNodes() const = 0;
    /// Connects \a pPort to the Port node named \a portName; false when there is none.
    virtual bool Connect(IPort* pPort, const GenICam::gcstring& portName) const = 0;
    /// Connects \a pPort to the Port node named "Device".
    virtual bool Connect(IPort* pPort) const = 0;
    /// Name of the device (as given when the node map was created).
    virtual GenICam::gcstring GetDeviceName() = 0;
    /// Advances the polling clocks by \a elapsedTimeMs milliseconds; expired nodes are invalidated.
    virtual void Poll(int64_t elapsedTimeMs) = 0;
    /// The node map's recursive lock.
    virtual CLock& GetLock() const = 0;
    /// Number of nodes.
    virtual uint64_t GetNumNodes() const = 0;
    /// Checks every formula for unknown names; false (with texts in \a pErrorList) if any.
    virtual bool ParseSwissKnifes(GenICam::gcstring_vector* pErrorList = nullptr) const = 0;

protected:
    virtual ~INodeMap() = default;
};
} // namespace GenApi
