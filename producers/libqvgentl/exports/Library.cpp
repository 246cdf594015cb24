#include "exports/Library.h"

#include "modules/GenTLError.h"
#include "modules/HandleTable.h"
#include "modules/SystemModule.h"

namespace QvGenTL {

CLibrary& CLibrary::Instance()
{
    static CLibrary* library = new CLibrary; // see Handles(): never destroyed at exit
    return *library;
}

void CLibrary::Init()
{
    std::lock_guard lock(m_lock);
    if (m_initialized)
        ThrowGenTL(GenTL::GC_ERR_RESOURCE_IN_USE, "GCInitLib was called already");
    m_initialized = true;
}

void CLibrary::Close()
{
    std::shared_ptr<CSystemModule> system;
    {
        std::lock_guard lock(m_lock);
        if (!m_initialized)
            ThrowGenTL(GenTL::GC_ERR_NOT_INITIALIZED, "GCInitLib was not called");
        m_initialized = false;
        system = std::move(m_system);
    }
    if (system)
        system->Close();
    Handles().Clear();
}

bool CLibrary::IsInitialized()
{
    std::lock_guard lock(m_lock);
    return m_initialized;
}

void CLibrary::CheckInitialized()
{
    if (!IsInitialized())
        ThrowGenTL(GenTL::GC_ERR_NOT_INITIALIZED, "GCInitLib was not called");
}

std::shared_ptr<CSystemModule> CLibrary::OpenSystem()
{
    std::lock_guard lock(m_lock);
    if (!m_initialized)
        ThrowGenTL(GenTL::GC_ERR_NOT_INITIALIZED, "GCInitLib was not called");
    if (m_system)
        ThrowGenTL(GenTL::GC_ERR_RESOURCE_IN_USE, "The system is open already");
    m_system = CSystemModule::Create();
    return m_system;
}

void CLibrary::CloseSystem(const std::shared_ptr<CSystemModule>& system)
{
    {
        std::lock_guard lock(m_lock);
        if (m_system == system)
            m_system.reset();
    }
    system->Close();
}

namespace {

// A consumer that unloads the producer without GCCloseLib must not leave our threads running
// in unmapped code.
__attribute__((destructor)) void CloseOnUnload()
{
    try
    {
        if (CLibrary::Instance().IsInitialized())
            CLibrary::Instance().Close();
    }
    catch (...)
    {
    }
}

} // namespace

} // namespace QvGenTL
