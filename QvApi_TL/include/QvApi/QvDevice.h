#pragma once

#include <stddef.h>
#include <stdint.h>

#include <Base/GCString.h>
#include <GenTL/GenTL.h>
#include <QvApi/QvApiDefs.h>
#include <QvApi/QvCallback.h>
#include <QvApi/QvEventCtrl.h>
#include <QvApi/QvReleasable.h>

namespace QvApi
{
class IQvAllocator;
class IQvDataStreamReleasable;
class IQvInterface;
class IQvPort;

/**
 * \brief Information about one device (DevGetInfo on an open device, IFGetDeviceInfo on a
 *        listed one). Owned by the device or interface that hands it out. Any thread.
 * Every getter asks the producer and throws CQvGenTLErrorException when it fails.
 */
class IQvDeviceInfo
{
public:
    /// \return The device ID, unique on its interface.
    virtual GenICam::gcstring GetID() const = 0;
    /// \return The vendor name.
    virtual GenICam::gcstring GetVendor() const = 0;
    /// \return The model name.
    virtual GenICam::gcstring GetModel() const = 0;
    /// \return The transport-layer type, e.g. "U3V", "GEV", "CXP".
    virtual GenICam::gcstring GetTLType() const = 0;
    /// \return A name to show to users.
    virtual GenICam::gcstring GetDisplayName() const = 0;
    /// \return The GenTL access status (1 read/write, 2 read-only, 3 no access, 4 busy, ...).
    virtual GenTL::DEVICE_ACCESS_STATUS GetAccessStatus() const = 0;
    /// \return The name the user gave the device.
    virtual GenICam::gcstring GetUserDefinedName() const = 0;
    /// \return The serial number.
    virtual GenICam::gcstring GetSerialNumber() const = 0;
    /// \return The device version text.
    virtual GenICam::gcstring GetVersion() const = 0;
    /// \return Ticks per second of the device's timestamps, in Hz.
    virtual uint64_t GetTimestampFrequency() const = 0;

protected:
    ~IQvDeviceInfo() = default; // owned by its device or interface
};

/**
 * \brief An open GenTL device: the local device module (transport-layer view) and the remote
 *        device (the camera's own feature tree), its data streams and acquisition control.
 *
 * Made by an interface (IQvInterface::CreateIQvDevice...) and ended with Release() of
 * IQvDeviceReleasable. Feature access through the node maps: any thread. AcquisitionStart(),
 * AcquisitionStop() and Release(): one thread at a time. Callbacks (device error events) run
 * on the device's listener thread once StartEventAcquisitionThread() was called.
 */
class IQvDevice : public IQvRegisterCallback, public IQvEventCtrl
{
public:
    /// \return The interface the device was opened on; borrowed.
    virtual IQvInterface* GetIQvInterface() = 0;
    /// \return The port of the local device module (its node map has TLParamsLocked,
    ///         EventSelector, ...); owned by the device.
    virtual IQvPort* GetLocalIQvPort() = 0;
    /// \return The device information; owned by the device.
    virtual IQvDeviceInfo* GetIQvDeviceInfo() const = 0;
    /// \return The camera's port; its node map holds the camera features. Owned by the device.
    ///         A device opened read-only refuses every register write ("Port is not writable.").
    virtual IQvPort* GetRemoteIQvPort() = 0;
    /// \return Number of data streams the device reported when it was opened.
    virtual size_t GetDataStreamCount() const = 0;
    /**
     * \brief Opens data stream \a nIndex.
     * \param[in] nIndex     Index below GetDataStreamCount().
     * \param[in] pAllocator Application memory for the stream's buffers, or null for the
     *                       producer's. Must outlive the stream.
     * \return The stream; the caller ends it with Release() before releasing the device.
     * \throws GenICam::OutOfRangeException "%s = %ld must be smaller than Max = %ld" ("nIndex").
     * \throws CQvGenTLErrorException "%d = DevOpenDataStream(0x%p, 0x%p, 0x%p)".
     * \throws GenICam::BadAllocException.
     */
    virtual IQvDataStreamReleasable* CreateIQvDataStream(size_t nIndex, IQvAllocator* pAllocator = nullptr) = 0;
    /**
     * \brief Locks the transport-layer parameters (remote "TLParamsLocked" = 1), then executes
     *        the camera's "AcquisitionStart". Start the data stream first.
     * \throws GenICam::LogicalErrorException "NULL pointer dereferenced" without TLParamsLocked.
     * \throws GenICam::RuntimeException "Node %s not found." without AcquisitionStart (the
     *         parameters then stay locked).
     * \throws GenICam exceptions of the node map, CQvGenTLErrorException from the port.
     */
    virtual void AcquisitionStart() = 0;
    /**
     * \brief Executes "AcquisitionStop", then unlocks the transport-layer parameters
     *        ("TLParamsLocked" = 0). Does nothing unless AcquisitionStart() succeeded before.
     * \throws As AcquisitionStart(); the device counts as stopped anyway.
     */
    virtual void AcquisitionStop() = 0;
    /**
     * \return True once the device was lost (the producer signalled DeviceLost, it could not be
     *         read when it was opened, or it was torn down). Lost stays lost: close the device.
     *         Any thread.
     */
    virtual bool IsDeviceLost() = 0;

protected:
    ~IQvDevice() = default; // ended with IQvDeviceReleasable::Release()
};

/**
 * \brief A device as an interface hands it out: Release() stops its acquisition and listeners,
 *        closes it (DevClose) and drops its reference on the interface.
 */
class IQvDeviceReleasable : public IQvDevice, public IQvReleasable
{
protected:
    ~IQvDeviceReleasable() = default;
};
} // namespace QvApi
