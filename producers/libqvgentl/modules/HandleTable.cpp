#include "modules/HandleTable.h"

#include <mutex>

namespace QvGenTL {

void CHandleTable::Add(const std::shared_ptr<CHandleObject>& object)
{
    std::unique_lock lock(m_lock);
    m_objects[object->Handle()] = object;
}

void CHandleTable::Remove(void* handle)
{
    std::shared_ptr<CHandleObject> last; // destroyed after the lock is released
    std::unique_lock lock(m_lock);
    auto it = m_objects.find(handle);
    if (it == m_objects.end())
        return;
    last = std::move(it->second);
    m_objects.erase(it);
}

void CHandleTable::Clear()
{
    std::unordered_map<void*, std::shared_ptr<CHandleObject>> objects;
    {
        std::unique_lock lock(m_lock);
        objects.swap(m_objects);
    }
}

std::shared_ptr<CHandleObject> CHandleTable::Find(void* handle) const
{
    if (handle == nullptr)
        return nullptr;
    std::shared_lock lock(m_lock);
    auto it = m_objects.find(handle);
    return it == m_objects.end() ? nullptr : it->second;
}

void CHandleTable::ThrowInvalid(void* handle)
{
    ThrowGenTL(GenTL::GC_ERR_INVALID_HANDLE, "Handle %p is not a valid handle of this kind", handle);
}

CHandleTable& Handles()
{
    // Never destroyed: objects are released by GCCloseLib (or the unload hook), not by static
    // destructors running in an unknown order at process exit.
    static CHandleTable* table = new CHandleTable;
    return *table;
}

} // namespace QvGenTL
