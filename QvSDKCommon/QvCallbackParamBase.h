#pragma once

#include <QvApi/QvCallback.h>

namespace QvApi
{
/**
 * \brief Implements GetCallbackType() of a callback parameter interface \a T by storing the
 *        type. Concrete parameters (error events, new buffer) derive from it and add their data.
 *        Built on the dispatching thread's stack; valid for the dispatch only.
 */
template <typename T>
class CQvCallbackParamBase : public T
{
public:
    explicit CQvCallbackParamBase(EQvCallbackType_t callbackType) : m_callbackType(callbackType) {}
    CQvCallbackParamBase(const CQvCallbackParamBase&) = delete;
    CQvCallbackParamBase& operator=(const CQvCallbackParamBase&) = delete;

    EQvCallbackType_t GetCallbackType() const override { return m_callbackType; }
    virtual ~CQvCallbackParamBase() = default;

private:
    const EQvCallbackType_t m_callbackType;
};
} // namespace QvApi
