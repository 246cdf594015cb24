#pragma once

#include <atomic>
#include <mutex>

#include <Base/GCLinkage.h>
#include <Base/GCNamespace.h>

namespace GenICam
{
/**
 * \brief A recursive lock: the thread that holds it may lock it again.
 *
 * Node maps re-enter themselves (callbacks read other nodes), hence recursion. Not copyable.
 * Any thread.
 */
class CLock
{
public:
    CLock() = default;
    CLock(const CLock&) = delete;
    CLock& operator=(const CLock&) = delete;
    virtual ~CLock() = default;

    /// Waits until the lock is free, then takes it (again, for its holder).
    void Lock() { m_mutex.lock(); }
    /// Gives one level of the lock back.
    void Unlock() { m_mutex.unlock(); }
    /// Takes the lock if that is possible without waiting.
    bool TryLock() { return m_mutex.try_lock(); }

private:
    std::recursive_mutex m_mutex;
};

/**
 * \brief A CLock that counts its recursion depth, for code that must know whether it re-enters.
 */
class CLockEx : public CLock
{
public:
    void Lock()
    {
        CLock::Lock();
        ++m_recursionCount;
    }
    void Unlock()
    {
        --m_recursionCount;
        CLock::Unlock();
    }
    bool TryLock()
    {
        if (!CLock::TryLock())
            return false;
        ++m_recursionCount;
        return true;
    }
    /// Depth of the current holder's locking; only meaningful to the holder.
    int GetRecursionCount() const { return m_recursionCount; }

private:
    int m_recursionCount = 0; // Guarded by the lock itself.
};

/// Holds a CLock for the lifetime of the object.
class AutoLock
{
public:
    explicit AutoLock(CLock& lock) : m_lock(lock) { m_lock.Lock(); }
    AutoLock(const AutoLock&) = delete;
    AutoLock& operator=(const AutoLock&) = delete;
    ~AutoLock() { m_lock.Unlock(); }

private:
    CLock& m_lock;
};

/// Base for classes that carry their own lock.
class LockableObjectBase
{
public:
    CLock& GetLock() const { return m_lock; }

private:
    mutable CLock m_lock;
};
} // namespace GenICam
