#include "QvSDKCommon/QvCallbackManager.h"

#include <memory>
#include <new>

#include "QvSDKCommon/QvCallbackEntry.h"
#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
CQvCallbackManager::CQvCallbackManager() = default;

CQvCallbackManager::~CQvCallbackManager()
{
    GenICam::AutoLock lock(m_lock);
    for (auto& [handle, entry] : m_entries)
    {
        entry->GetCallback()->Release();
        delete entry;
    }
    m_entries.clear();
}

void* CQvCallbackManager::RegisterCallback(IQvCallback* pCallback)
{
    try
    {
        auto entry = std::make_unique<CQvCallbackEntry>(pCallback);
        void* handle = entry.get();
        GenICam::AutoLock lock(m_lock);
        m_entries.emplace(handle, entry.get());
        entry.release(); // the map owns it now
        return handle;
    }
    QV_CATCH_BAD_ALLOC()
}

void CQvCallbackManager::DeregisterCallback(void* hCallback)
{
    GenICam::AutoLock lock(m_lock);
    auto it = m_entries.find(hCallback);
    if (it == m_entries.end())
        QV_THROW(InvalidArgumentException, "hCallback is invalid.");
    CQvCallbackEntry* entry = it->second;
    m_entries.erase(it);
    entry->GetCallback()->Release();
    delete entry;
}

void CQvCallbackManager::RunCallback(IQvCallbackParamBase* param) noexcept
{
    GenICam::AutoLock lock(m_lock);
    // A callback may deregister entries (its own included) from inside Invoke(): step with a
    // key so that an erased entry does not leave us on a dangling iterator.
    auto it = m_entries.begin();
    while (it != m_entries.end())
    {
        void* handle = it->first;
        it->second->GetCallback()->Invoke(param);
        it = m_entries.upper_bound(handle);
    }
}

size_t CQvCallbackManager::GetCallbackCount() const
{
    GenICam::AutoLock lock(m_lock);
    return m_entries.size();
}
} // namespace QvApi
