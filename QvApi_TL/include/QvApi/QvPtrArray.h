#pragma once

#include <stddef.h>

#include <vector>

#include <GenTL/GenTL.h>
#include <QvApi/QvApiDefs.h>
#include <QvApi/QvDevice.h>
#include <QvApi/QvSystem.h>

namespace QvApi
{
/**
 * \brief An owning array of library objects that end with Release(): systems, devices, data
 *        streams. \a T is the releasable interface held, \a UT the interface handed out.
 *
 * The array owns what is registered in it: the derived arrays release every element, in index
 * order, from their Release() and destructor. No lock: one thread at a time.
 */
template <class T, class UT>
class CQvAutoPtrArray
{
public:
    /// \throws GenICam::BadAllocException when the storage cannot be allocated.
    CQvAutoPtrArray();
    /// Releases the elements still held, in index order, then frees the storage.
    virtual ~CQvAutoPtrArray();
    CQvAutoPtrArray(const CQvAutoPtrArray&) = delete;
    CQvAutoPtrArray& operator=(const CQvAutoPtrArray&) = delete;

    /**
     * \brief Appends \a p; the array now owns it.
     * \return Its index (the new size minus 1).
     * \throws GenICam::InvalidArgumentException, BadAllocException or RuntimeException with the
     *         standard library's text when the storage cannot grow (\a p is then not owned).
     */
    virtual size_t Register(T* p);
    /**
     * \brief Removes element \a nIndex, moving the later ones down by one, without releasing it.
     * \return The element; the caller owns it now.
     * \throws GenICam::OutOfRangeException "%s = %ld must be smaller than Max = %ld" ("nIndex").
     */
    virtual T* Deregister(size_t nIndex);
    /// \return Number of elements.
    virtual size_t GetSize() const;
    /**
     * \return Element \a nIndex, still owned by the array.
     * \throws GenICam::OutOfRangeException "%s = %ld must be smaller than Max = %ld" ("nIndex").
     */
    virtual UT* operator[](size_t nIndex) const;

protected:
    std::vector<T*>* m_pArray; // owned; the elements are owned too
};

extern template class QVAPI_API CQvAutoPtrArray<IQvSystemReleasable, IQvSystem>;
extern template class QVAPI_API CQvAutoPtrArray<IQvDeviceReleasable, IQvDevice>;

/**
 * \brief Several systems, e.g. one per producer vendor, searched together for a device.
 */
class QVAPI_API CIQvSystemPtrArray : public CQvAutoPtrArray<IQvSystemReleasable, IQvSystem>
{
public:
    CIQvSystemPtrArray() = default;
    /// Releases every system (exceptions are swallowed).
    ~CIQvSystemPtrArray() override;

    /// \brief Deregisters and releases every system, first to last.
    virtual void Release();
    /**
     * \brief Opens the first device that any system, in index order, can open; a system that
     *        throws is passed over.
     * \return The device; the caller ends it with Release() before releasing the systems.
     * \throws GenICam::RuntimeException "There is no available device.".
     */
    virtual IQvDeviceReleasable* CreateFirstIQvDevice(GenTL::DEVICE_ACCESS_FLAGS flags = GenTL::DEVICE_ACCESS_CONTROL);
};

/**
 * \brief Several devices started and stopped together.
 */
class QVAPI_API CIQvDevicePtrArray : public CQvAutoPtrArray<IQvDeviceReleasable, IQvDevice>
{
public:
    CIQvDevicePtrArray() = default;
    /// Releases every device (exceptions are swallowed).
    ~CIQvDevicePtrArray() override;

    /// \brief Deregisters and releases every device, first to last.
    virtual void Release();
    /**
     * \brief IQvDevice::AcquisitionStart() on each device in index order.
     * \throws The first device's exception; later devices are then not started.
     */
    virtual void AcquisitionStart();
    /**
     * \brief IQvDevice::AcquisitionStop() on each device in index order.
     * \throws The first device's exception; later devices are then not stopped.
     */
    virtual void AcquisitionStop();
};
} // namespace QvApi
