#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

#include <Base/GCString.h>
#include <GenTL/GenTL.h>
#include <QvApi/QvCallback.h>

#include "QvApi_TL/QvCallbackParamGenTLError.h"
#include "QvApi_TL/QvEvent.h"
#include "QvGenTLCommon/QvGenTLLib.h"
#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
/**
 * \brief The GenTL error event of a module, turned into the module's error callbacks.
 *
 * \a TIModue is the module's application interface (IQvSystem, IQvInterface, IQvDevice,
 * IQvDataStream, IQvStreamBuffer), \a TIModuleErrorParam the matching callback parameter.
 * Each record is decoded (EVENT_DATA_ID: the GenTL code, EVENT_DATA_VALUE: the text) and the
 * module's callbacks run on the listener thread with the callback manager's lock held.
 * Owned by the module; its failures name the module's own source file.
 */
template <class TIModue, class TIModuleErrorParam>
class CQvEventError final : public CQvEvent
{
public:
    /**
     * \param[in] pModule              The module handed to the callbacks; borrowed.
     * \param[in] pIQvCallbackManager  The module's callback manager; borrowed, outlives us.
     * \param[in] callbackType         QvCallbackTypeGenTLEventErrorTL ... _SB.
     * \param[in] sourceFileName       The module's source path, for the messages of failures.
     * \throws As CQvEvent.
     */
    CQvEventError(CQvGenTLLib* pCQvGenTL, GenTL::EVENTSRC_HANDLE hEventSrc, TIModue* pModule,
                  IQvCallbackManager* pIQvCallbackManager, EQvCallbackType_t callbackType, const char* name,
                  const char* sourceFileName)
        : CQvEvent(pCQvGenTL, hEventSrc, GenTL::EVENT_ERROR, name), m_pIQvCallbackManager(pIQvCallbackManager),
          m_pModule(pModule), m_callbackType(callbackType), m_pSourceFileName(sourceFileName)
    {
    }
    ~CQvEventError() override { Shutdown(); }

protected:
    void OnRcvEvent(void* pData, size_t iSize) override
    {
        QV_ASSERT(m_pIQvCallbackManager != nullptr, "m_pIQvCallbackManager != NULL");
        QV_ASSERT(m_hEvent != nullptr, "m_hEvent != NULL");
        std::unique_ptr<uint8_t[]> results[2];
        size_t resultSizes[2] = {0, 0};
        const GenTL::EVENT_DATA_INFO_CMD commands[2] = {GenTL::EVENT_DATA_ID, GenTL::EVENT_DATA_VALUE};
        for (int i = 0; i < 2; ++i)
        {
            if (m_pCQvGenTL->EventGetDataInfo == nullptr)
                break;
            GenTL::INFO_DATATYPE type = GenTL::INFO_DATATYPE_UNKNOWN;
            size_t outSize = 0;
            GenTL::GC_ERROR err =
                m_pCQvGenTL->EventGetDataInfo(m_hEvent, pData, iSize, commands[i], &type, nullptr, &outSize);
            if (err != GenTL::GC_ERR_SUCCESS)
                break;
            try
            {
                // One spare zero byte ends a text the producer left open.
                results[i].reset(new uint8_t[outSize + 1]());
            }
            catch (const std::bad_alloc& e)
            {
                ThrowGenICamException(EQvExceptionKind_t::BadAllocException, m_pSourceFileName, __LINE__, "%s",
                                      e.what());
            }
            err = m_pCQvGenTL->EventGetDataInfo(m_hEvent, pData, iSize, commands[i], &type, results[i].get(),
                                                &outSize);
            if (err != GenTL::GC_ERR_SUCCESS)
                ThrowGenTLError(m_pSourceFileName, __LINE__, m_pCQvGenTL, err, "EventGetDataInfo",
                                "%d = EventGetDataInfo(0x%p, 0x%p, %u, %d, 0x%p, 0x%p, 0x%p)", err, m_hEvent, pData,
                                static_cast<unsigned>(iSize), commands[i], static_cast<void*>(&type),
                                static_cast<void*>(results[i].get()), static_cast<void*>(&outSize));
            resultSizes[i] = outSize;
        }
        if (results[0] == nullptr || results[1] == nullptr)
            return;

        int32_t code = 0;
        std::memcpy(&code, results[0].get(), resultSizes[0] < sizeof(code) ? resultSizes[0] : sizeof(code));
        GenICam::gcstring description;
        try
        {
            description = reinterpret_cast<const char*>(results[1].get());
        }
        catch (const std::bad_alloc& e)
        {
            ThrowGenICamException(EQvExceptionKind_t::BadAllocException, m_pSourceFileName, __LINE__, "%s", e.what());
        }
        CQvCallbackParamGenTLError<TIModue, TIModuleErrorParam> param(m_callbackType, m_pModule, code, description);
        m_pIQvCallbackManager->RunCallback(&param);
    }

private:
    IQvCallbackManager* const m_pIQvCallbackManager; // the module's; outlives the listener
    TIModue* const m_pModule;                        // the owning module
    const EQvCallbackType_t m_callbackType;
    const char* const m_pSourceFileName; // the module's unit, e.g. "QvApi_TL/QvDevice.cpp"
};
} // namespace QvApi
