#pragma once

#include <map>

#include <Base/GCSynch.h>
#include <QvApi/QvApiDefs.h>
#include <QvApi/QvCallback.h>

namespace QvApi
{
class CQvCallbackEntry;

/**
 * \brief The callback registry of one module and its dispatcher.
 *
 * Owns every registered IQvCallback and releases each exactly once (deregistration or
 * destruction). RunCallback() is called by the module's listener thread; registration and
 * deregistration by application threads. One recursive lock serialises all three and is held
 * for a whole dispatch: callbacks of one module never overlap, a (de)registration from another
 * thread waits for the dispatch to end, and a callback may (de)register on its own module,
 * since the lock is recursive. This is the one place where application code runs under a
 * lock it can re-enter. The owner destroys the manager only after its listeners are stopped.
 */
class QVAPI_API CQvCallbackManager : public IQvCallbackManager
{
public:
    /// \throws GenICam::BadAllocException when memory runs out.
    CQvCallbackManager();
    /// Releases every registered callback, in handle order.
    virtual ~CQvCallbackManager();
    CQvCallbackManager(const CQvCallbackManager&) = delete;
    CQvCallbackManager& operator=(const CQvCallbackManager&) = delete;

    void* RegisterCallback(IQvCallback* pCallback) override;
    void DeregisterCallback(void* hCallback) override;
    /// Calls Invoke() of every callback in ascending handle address (not registration) order.
    /// An exception escaping a callback terminates the process.
    void RunCallback(IQvCallbackParamBase* param) noexcept override;

    /// Number of registrations.
    size_t GetCallbackCount() const;

private:
    mutable GenICam::CLock m_lock;
    // Guarded by m_lock.
    std::map<void*, CQvCallbackEntry*> m_entries; // owned entries, keyed by their own address
};
} // namespace QvApi
