#pragma once

#include <memory>
#include <mutex>

namespace QvGenTL {

class CSystemModule;

/**
 * Process-wide state of the producer: GCInitLib/GCCloseLib and the one system module.
 * Any thread.
 */
class CLibrary
{
public:
    static CLibrary& Instance();

    /// GCInitLib: GC_ERR_RESOURCE_IN_USE when initialised already.
    void Init();
    /// GCCloseLib: closes the system and everything below it.
    void Close();
    bool IsInitialized();
    /// Throws GC_ERR_NOT_INITIALIZED before GCInitLib.
    void CheckInitialized();

    /// TLOpen: GC_ERR_RESOURCE_IN_USE while a system is open.
    std::shared_ptr<CSystemModule> OpenSystem();
    /// TLClose.
    void CloseSystem(const std::shared_ptr<CSystemModule>& system);

private:
    std::mutex m_lock;
    // Guarded by m_lock.
    bool m_initialized = false;
    std::shared_ptr<CSystemModule> m_system;
};

} // namespace QvGenTL
