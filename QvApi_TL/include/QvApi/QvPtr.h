#pragma once

#include <QvApi/QvApiDefs.h>

namespace QvApi
{
class IQvDataStreamReleasable;
class IQvDeviceReleasable;
class IQvFeatureBagReleasable;
class IQvImageBufferReleasable;
class IQvStreamBufferReleasable;
class IQvSystemReleasable;

/**
 * \brief Owns one object that ends with Release() and releases it when it goes out of scope.
 *
 * Move-only. Release() runs from Reset() and the destructor; an exception it throws is
 * swallowed, since a destructor must not throw. Declare owners of children after their
 * parents' owners, so that they are released first:
 * \code
 *   CIQvSystemPtr system(CreateIQvSystem());
 *   CIQvDevicePtr device(system->CreateFirstIQvDevice());
 * \endcode
 * One thread at a time per owner.
 */
template <class T>
class CQvPtr
{
public:
    CQvPtr() noexcept = default;
    /// Takes ownership of \a p (may be null).
    explicit CQvPtr(T* p) noexcept : m_p(p) {}
    CQvPtr(const CQvPtr&) = delete;
    CQvPtr& operator=(const CQvPtr&) = delete;
    CQvPtr(CQvPtr&& other) noexcept : m_p(other.Detach()) {}
    CQvPtr& operator=(CQvPtr&& other) noexcept
    {
        if (this != &other)
            Reset(other.Detach());
        return *this;
    }
    ~CQvPtr() { Reset(); }

    /// Releases the object held and takes ownership of \a p instead.
    void Reset(T* p = nullptr) noexcept
    {
        T* old = m_p;
        m_p = p;
        if (old != nullptr)
        {
            try
            {
                old->Release();
            }
            catch (...)
            {
            }
        }
    }
    /// Gives up ownership without releasing. \return The object; the caller owns it now.
    T* Detach() noexcept
    {
        T* p = m_p;
        m_p = nullptr;
        return p;
    }
    /// \return The object, still owned here (may be null).
    T* Get() const noexcept { return m_p; }
    T* operator->() const noexcept { return m_p; }
    T& operator*() const noexcept { return *m_p; }
    explicit operator bool() const noexcept { return m_p != nullptr; }

private:
    T* m_p = nullptr;
};

typedef CQvPtr<IQvSystemReleasable> CIQvSystemPtr;
typedef CQvPtr<IQvDeviceReleasable> CIQvDevicePtr;
typedef CQvPtr<IQvDataStreamReleasable> CIQvDataStreamPtr;
typedef CQvPtr<IQvStreamBufferReleasable> CIQvStreamBufferPtr;
typedef CQvPtr<IQvImageBufferReleasable> CIQvImageBufferPtr;
typedef CQvPtr<IQvFeatureBagReleasable> CIQvFeatureBagPtr;
} // namespace QvApi
