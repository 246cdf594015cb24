#pragma once

// The members of CQvAutoPtrArray<T, UT> (declared in <QvApi/QvPtrArray.h>). Each pair of
// types is instantiated once, in the library, by the unit that owns the element type:
//     template class CQvAutoPtrArray<IQvSystemReleasable, IQvSystem>;
// after an "extern template class QVAPI_API ..." declaration, which exports it.

#include <new>
#include <stdexcept>
#include <vector>

#include <QvApi/QvPtrArray.h>

#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
template <class T, class UT>
CQvAutoPtrArray<T, UT>::CQvAutoPtrArray()
try : m_pArray(new std::vector<T*>())
{
}
QV_CATCH_BAD_ALLOC()

template <class T, class UT>
CQvAutoPtrArray<T, UT>::~CQvAutoPtrArray()
{
    for (T* p : *m_pArray)
    {
        try
        {
            p->Release();
        }
        catch (...)
        {
        }
    }
    delete m_pArray;
}

template <class T, class UT>
size_t CQvAutoPtrArray<T, UT>::Register(T* p)
{
    try
    {
        m_pArray->push_back(p);
    }
    catch (const std::length_error& e)
    {
        QV_THROW(InvalidArgumentException, "%s", e.what());
    }
    catch (const std::bad_alloc& e)
    {
        QV_THROW(BadAllocException, "%s", e.what());
    }
    catch (const std::exception& e)
    {
        QV_THROW(RuntimeException, "%s", e.what());
    }
    return m_pArray->size() - 1;
}

template <class T, class UT>
T* CQvAutoPtrArray<T, UT>::Deregister(size_t nIndex)
{
    QV_CHECK_MIN("nIndex", static_cast<long>(nIndex), 0);
    QV_CHECK_BELOW("nIndex", nIndex, GetSize());
    T* p = (*m_pArray)[nIndex];
    m_pArray->erase(m_pArray->begin() + static_cast<std::ptrdiff_t>(nIndex));
    return p;
}

template <class T, class UT>
size_t CQvAutoPtrArray<T, UT>::GetSize() const
{
    return m_pArray->size();
}

template <class T, class UT>
UT* CQvAutoPtrArray<T, UT>::operator[](size_t nIndex) const
{
    QV_CHECK_MIN("nIndex", static_cast<long>(nIndex), 0);
    QV_CHECK_BELOW("nIndex", nIndex, GetSize());
    UT* pUT = (*m_pArray)[nIndex];
    QV_ASSERT(pUT != nullptr, "(pUT) != NULL");
    return pUT;
}
} // namespace QvApi
