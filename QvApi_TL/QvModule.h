#pragma once

#include <memory>
#include <new>

#include <Base/GCString.h>
#include <GenApi/Types.h>
#include <GenTL/GenTL.h>
#include <QvApi/QvCallback.h>

#include "QvApi_TL/QvEventError.h"
#include "QvApi_TL/QvPort.h"
#include "QvSDKCommon/QvCallbackManager.h"
#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
class CQvGenTLLib;

/**
 * \brief The skeleton every module object of the tree shares (system, interface, device, data
 *        stream, stream buffer): the producer binding, the callback manager, the module's port
 *        and its GenTL error listener, with callback registration and the error listener's
 *        thread control.
 *
 * \a TInside is the module's internal interface (the class implements it), \a TIModue the
 * application interface handed to error callbacks, \a TIModuleErrorParam their parameter.
 * The parent, the handle and the information object stay in the module class, which decides
 * the order of its teardown with DeleteEventError() and DeletePort().
 * Callback registration: any thread. Thread control and teardown: the owner's thread.
 */
template <class TInside, class TIModue, class TIModuleErrorParam>
class CQvModule : public TInside
{
public:
    CQvModule(const CQvModule&) = delete;
    CQvModule& operator=(const CQvModule&) = delete;

    void* RegisterCallback(IQvCallback* pCallback) override { return m_callbackManager.RegisterCallback(pCallback); }
    void DeregisterCallback(void* hCallback) override { m_callbackManager.DeregisterCallback(hCallback); }
    void StartEventAcquisitionThread() override
    {
        if (m_pCQvEventError != nullptr)
            m_pCQvEventError->Start();
    }
    void StopEventAcquisitionThread() override
    {
        if (m_pCQvEventError != nullptr)
            m_pCQvEventError->Stop();
    }

    /// \return The module's error listener, or null (tests and the module's owner).
    CQvEvent* GetErrorEvent() const { return m_pCQvEventError.get(); }

protected:
    /// \param[in] pCQvGenTL Producer binding; borrowed (the system owns it and outlives us).
    explicit CQvModule(CQvGenTLLib* pCQvGenTL) : m_pCQvGenTL(pCQvGenTL) {}
    ~CQvModule() override = default;

    /// Creates the module's port. \throws GenICam::BadAllocException.
    void CreatePort(GenTL::PORT_HANDLE hPort, GenApi::EAccessMode accessMode, const GenICam::gcstring& prefix)
    {
        try
        {
            m_pCQvPort = std::make_unique<CQvPort>(m_pCQvGenTL, hPort, accessMode, prefix);
        }
        QV_CATCH_BAD_ALLOC()
    }
    /**
     * \brief Creates (does not start) the error listener on \a hModule.
     * \param[in] sourceFileName The module's source path, for the listener's messages.
     * \throws As CQvEvent; GenICam::BadAllocException.
     */
    void CreateEventError(GenTL::EVENTSRC_HANDLE hModule, TIModue* pModule, EQvCallbackType_t callbackType,
                          const char* name, const char* sourceFileName)
    {
        try
        {
            m_pCQvEventError = std::make_unique<CQvEventError<TIModue, TIModuleErrorParam>>(
                m_pCQvGenTL, hModule, pModule, &m_callbackManager, callbackType, name, sourceFileName);
        }
        QV_CATCH_BAD_ALLOC()
    }
    /// Stops (exceptions swallowed) and deletes the error listener, which unregisters itself.
    void DeleteEventError() noexcept { m_pCQvEventError.reset(); }
    /// Deletes the port and with it the node map.
    void DeletePort() noexcept { m_pCQvPort.reset(); }

    // Borrowed: owned by the system, deleted after every module. The system sets it once it has
    // loaded the producer; every other module gets it from its parent.
    CQvGenTLLib* m_pCQvGenTL;
    CQvCallbackManager m_callbackManager;
    std::unique_ptr<CQvPort> m_pCQvPort;
    std::unique_ptr<CQvEventError<TIModue, TIModuleErrorParam>> m_pCQvEventError;
};
} // namespace QvApi
