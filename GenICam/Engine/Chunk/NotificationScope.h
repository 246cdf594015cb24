#pragma once

#include <optional>

#include <GenApi/INodeMap.h>
#include <GenApi/Synch.h>

#include "Engine/NodeMap/NodeMapImpl.h"

namespace GenApi
{
/**
 * \brief Holds a node map's lock across a chunk or event delivery and fires the callbacks that
 *        the delivery queued once, when the outermost scope ends.
 *
 * The adapters change several ports in one operation; without one outer scope every port
 * invalidation would fire its callbacks while the other ports still show the previous buffer.
 * Maps of this engine get the engine's callback scope (inside-lock callbacks under the lock,
 * outside-lock ones after it is released); any other INodeMap only gets its lock held.
 * A null map makes the scope do nothing.
 */
class CNotificationScope
{
public:
    explicit CNotificationScope(INodeMap* pNodeMap)
    {
        if (CNodeMapImpl* pImpl = dynamic_cast<CNodeMapImpl*>(pNodeMap))
            m_scope.emplace(pImpl);
        else if (pNodeMap)
            m_lock.emplace(pNodeMap->GetLock());
    }
    CNotificationScope(const CNotificationScope&) = delete;
    CNotificationScope& operator=(const CNotificationScope&) = delete;

private:
    std::optional<CNodeMapImpl::CCallbackScope> m_scope;
    std::optional<AutoLock> m_lock;
};
} // namespace GenApi
