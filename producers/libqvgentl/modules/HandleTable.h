#pragma once

#include <memory>
#include <shared_mutex>
#include <unordered_map>

#include "modules/GenTLError.h"
#include "modules/HandleObject.h"

namespace QvGenTL {

/**
 * Maps GenTL handles to live objects. A handle is valid from Add until Remove; any other value
 * (null, stale, foreign, or an object of the wrong kind) makes Get throw GC_ERR_INVALID_HANDLE,
 * so no entry point ever dereferences a pointer it was not given by us.
 * Any thread; lookups share the lock.
 */
class CHandleTable
{
public:
    void Add(const std::shared_ptr<CHandleObject>& object);
    void Remove(void* handle);
    void Clear();

    /// The object behind handle if it is a T; throws CGenTLError(GC_ERR_INVALID_HANDLE) otherwise.
    template <class T>
    std::shared_ptr<T> Get(void* handle) const
    {
        std::shared_ptr<T> object = std::dynamic_pointer_cast<T>(Find(handle));
        if (!object)
            ThrowInvalid(handle);
        return object;
    }

    /// Like Get, but null instead of an exception.
    template <class T>
    std::shared_ptr<T> TryGet(void* handle) const
    {
        return std::dynamic_pointer_cast<T>(Find(handle));
    }

private:
    std::shared_ptr<CHandleObject> Find(void* handle) const;
    [[noreturn]] static void ThrowInvalid(void* handle);

    mutable std::shared_mutex m_lock;
    // Guarded by m_lock.
    std::unordered_map<void*, std::shared_ptr<CHandleObject>> m_objects;
};

/// The process-wide table (handles are process-wide in GenTL).
CHandleTable& Handles();

} // namespace QvGenTL
