#pragma once

#include <Base/GCString.h>
#include <GenTL/GenTL.h>
#include <QvApi/QvCallback.h>

#include "QvSDKCommon/QvCallbackParamBase.h"

namespace QvApi
{
/**
 * \brief The module getter of an error-event parameter: each of the five parameter interfaces
 *        names it after its module (GetIQvSystem, GetIQvInterface, ...). Specialised below.
 */
template <class TIModue, class TIModuleErrorParam>
class CQvCallbackParamGenTLErrorModule;

#define QV_ERROR_PARAM_MODULE_GETTER(TIModue, TIModuleErrorParam, Getter)                                   \
    template <>                                                                                             \
    class CQvCallbackParamGenTLErrorModule<TIModue, TIModuleErrorParam>                                     \
        : public CQvCallbackParamBase<TIModuleErrorParam>                                                   \
    {                                                                                                       \
    public:                                                                                                 \
        TIModue* Getter() const override { return m_pModule; }                                              \
                                                                                                            \
    protected:                                                                                              \
        CQvCallbackParamGenTLErrorModule(EQvCallbackType_t callbackType, TIModue* pModule)                  \
            : CQvCallbackParamBase<TIModuleErrorParam>(callbackType), m_pModule(pModule)                    \
        {                                                                                                   \
        }                                                                                                   \
        TIModue* const m_pModule; /* borrowed: the module whose listener dispatches */                      \
    };

QV_ERROR_PARAM_MODULE_GETTER(IQvSystem, IQvCallbackParamGenTLEventErrorTL, GetIQvSystem)
QV_ERROR_PARAM_MODULE_GETTER(IQvInterface, IQvCallbackParamGenTLEventErrorIF, GetIQvInterface)
QV_ERROR_PARAM_MODULE_GETTER(IQvDevice, IQvCallbackParamGenTLEventErrorDEV, GetIQvDevice)
QV_ERROR_PARAM_MODULE_GETTER(IQvDataStream, IQvCallbackParamGenTLEventErrorDS, GetIQvDataStream)
QV_ERROR_PARAM_MODULE_GETTER(IQvStreamBuffer, IQvCallbackParamGenTLEventErrorSB, GetIQvStreamBuffer)
#undef QV_ERROR_PARAM_MODULE_GETTER

/**
 * \brief The parameter of a module's error callback: callback type, module, the producer's
 *        GenTL error code and its description. Built on the listener thread's stack for one
 *        dispatch.
 */
template <class TIModue, class TIModuleErrorParam>
class CQvCallbackParamGenTLError : public CQvCallbackParamGenTLErrorModule<TIModue, TIModuleErrorParam>
{
public:
    CQvCallbackParamGenTLError(EQvCallbackType_t callbackType, TIModue* pModule, GenTL::GC_ERROR error,
                               const GenICam::gcstring& description)
        : CQvCallbackParamGenTLErrorModule<TIModue, TIModuleErrorParam>(callbackType, pModule), m_error(error),
          m_description(description)
    {
    }
    ~CQvCallbackParamGenTLError() override = default;

    GenTL::GC_ERROR GetGCError() const override { return m_error; }
    GenICam::gcstring GetDescription() const override { return m_description; }

private:
    const GenTL::GC_ERROR m_error;
    const GenICam::gcstring m_description;
};
} // namespace QvApi
