#pragma once

#include <GenApi/INode.h>

namespace GenApi
{
/// When a callback runs relative to the node map's lock.
typedef enum _ECallbackType
{
    cbPostInsideLock = 1,  ///< while the node map's lock is still held
    cbPostOutsideLock = 2  ///< after the lock was released
} ECallbackType;

/**
 * \brief A callback attached to a node; fired when the node's value may have changed.
 *
 * Owned by the node once registered: the node calls Destroy() when it is deregistered or the
 * node map goes away.
 */
class CNodeCallback
{
public:
    CNodeCallback(INode* pNode, ECallbackType callbackType) : m_pNode(pNode), m_CallbackType(callbackType) {}
    virtual ~CNodeCallback() = default;
    /// Fires the callback if \a callbackType is the type it was registered for.
    virtual void operator()(ECallbackType callbackType) const = 0;
    /// Deletes the callback.
    virtual void Destroy() = 0;
    /// The node the callback is attached to.
    INode* GetNode() { return m_pNode; }

protected:
    INode* m_pNode;               // borrowed; the node owns this callback
    ECallbackType m_CallbackType; // the type the user registered for
};

/// Callback calling a free function or any callable taking INode*.
template <class Function>
class Function_NodeCallback : public CNodeCallback
{
public:
    Function_NodeCallback(INode* pNode, const Function& function, ECallbackType callbackType)
        : CNodeCallback(pNode, callbackType), m_function(function)
    {
    }
    void operator()(ECallbackType callbackType) const override
    {
        if (callbackType == m_CallbackType)
            m_function(m_pNode);
    }
    void Destroy() override { delete this; }

private:
    const Function m_function;
};

/// Callback calling a member function of a client object.
template <class Client, class Member>
class Member_NodeCallback : public CNodeCallback
{
public:
    Member_NodeCallback(INode* pNode, Client& client, Member member, ECallbackType callbackType)
        : CNodeCallback(pNode, callbackType), m_client(client), m_member(member)
    {
    }
    void operator()(ECallbackType callbackType) const override
    {
        if (m_member && callbackType == m_CallbackType)
            (m_client.*m_member)(m_pNode);
    }
    void Destroy() override { delete this; }

private:
    Client& m_client;
    Member m_member;
};

template <class Function>
Function_NodeCallback<Function>* make_NodeCallback(INode* pNode, Function function, ECallbackType callbackType)
{
    return new Function_NodeCallback<Function>(pNode, function, callbackType);
}

template <class Client, class Member>
CNodeCallback* make_NodeCallback(INode* pNode, Client& client, Member member, ECallbackType callbackType)
{
    return new Member_NodeCallback<Client, Member>(pNode, client, member, callbackType);
}

/**
 * \brief Registers \a function (called with the node) on \a pNode.
 * \return The handle to pass to Deregister().
 */
template <class Function>
CallbackHandleType Register(INode* pNode, Function function, ECallbackType callbackType = cbPostInsideLock)
{
    return pNode->RegisterCallback(make_NodeCallback(pNode, function, callbackType));
}

/// Registers a member function of \a client on \a pNode.
template <class Client, class Member>
CallbackHandleType Register(INode* pNode, Client& client, Member member, ECallbackType callbackType = cbPostInsideLock)
{
    return pNode->RegisterCallback(make_NodeCallback(pNode, client, member, callbackType));
}

/**
 * \brief Removes a callback registered with Register().
 *
 * Once this returns the callback no longer runs: a call in progress on another thread is waited
 * for, so do not deregister while holding a lock the callback takes. A callback may deregister
 * itself or others; it then runs on to its end.
 */
inline void Deregister(CallbackHandleType hCallback)
{
    CNodeCallback* pCallback = reinterpret_cast<CNodeCallback*>(hCallback);
    if (pCallback)
        pCallback->GetNode()->DeregisterCallback(hCallback);
}
} // namespace GenApi
