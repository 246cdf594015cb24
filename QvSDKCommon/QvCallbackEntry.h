#pragma once

#include <QvApi/QvCallback.h>

namespace QvApi
{
/**
 * \brief One registration in a CQvCallbackManager. Its own address is the handle given to the
 *        application. Does not release the callback: the manager does, once.
 */
class CQvCallbackEntry
{
public:
    explicit CQvCallbackEntry(IQvCallback* pCallback) : m_pCallback(pCallback) {}
    virtual ~CQvCallbackEntry() = default;
    CQvCallbackEntry(const CQvCallbackEntry&) = delete;
    CQvCallbackEntry& operator=(const CQvCallbackEntry&) = delete;

    IQvCallback* GetCallback() const { return m_pCallback; }

private:
    IQvCallback* const m_pCallback; // owned by the manager through this entry; released by it
};
} // namespace QvApi
