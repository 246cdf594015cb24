#pragma once

#include <memory>

namespace QvGenTL {

/**
 * Base of every object a GenTL handle can name (modules, the remote device port, events).
 * The handle value is the address of this base; the handle table keeps the object alive while
 * it is registered and while a call that looked it up is running. Objects are always owned by
 * shared pointers, so a child can keep its parent alive for as long as it runs.
 */
class CHandleObject : public std::enable_shared_from_this<CHandleObject>
{
public:
    CHandleObject() = default;
    CHandleObject(const CHandleObject&) = delete;
    CHandleObject& operator=(const CHandleObject&) = delete;
    virtual ~CHandleObject() = default;

    /// The GenTL handle naming this object.
    void* Handle() { return static_cast<CHandleObject*>(this); }

protected:
    /// shared_from_this as the derived type.
    template <class T>
    std::shared_ptr<T> SharedAs()
    {
        return std::static_pointer_cast<T>(shared_from_this());
    }
};

} // namespace QvGenTL
