#pragma once

#include <stddef.h>
#include <stdint.h>

#include <Base/GCString.h>
#include <GenTL/GenTL.h>
#include <QvApi/QvApiDefs.h>
#include <QvApi/QvCallback.h>
#include <QvApi/QvEventCtrl.h>

namespace QvApi
{
class IQvDeviceInfo;
class IQvDeviceReleasable;
class IQvPort;
class IQvSystem;

/**
 * \brief Information about an interface (IFGetInfo). Owned by the interface; any thread.
 * Every getter throws CQvGenTLErrorException "%d = IFGetInfo(...)" when the producer fails.
 */
class IQvInterfaceInfo
{
public:
    /// \return The interface ID, unique in its system.
    virtual GenICam::gcstring GetID() const = 0;
    /// \return A name to show to users.
    virtual GenICam::gcstring GetDisplayName() const = 0;
    /// \return The transport-layer type, e.g. "U3V", "GEV", "CXP".
    virtual GenICam::gcstring GetTLType() const = 0;

protected:
    ~IQvInterfaceInfo() = default; // owned by the interface
};

/**
 * \brief One GenTL interface (a network adapter, a USB host controller, a frame grabber): the
 *        list of devices reachable through it, and the factory that opens them.
 *
 * Owned by its system, which lists it (IQvSystem::GetIQvInterface); never released by the
 * application. The device list and the device factories: any thread (one lock). Callbacks
 * (interface error events) run on the interface's listener thread.
 */
class IQvInterface : public IQvRegisterCallback, public IQvEventCtrl
{
public:
    /// \return The system the interface belongs to; borrowed.
    virtual IQvSystem* GetIQvSystem() = 0;
    /// \return The interface's port (its node map describes the interface); owned by it.
    virtual IQvPort* GetIQvPort() = 0;
    /// \return The interface information; owned by the interface.
    virtual IQvInterfaceInfo* GetIQvInterfaceInfo() const = 0;
    /**
     * \brief Asks the producer for the current device list (IFUpdateDeviceList) and rebuilds
     *        the list of device records when it changed. Indexes of earlier records become
     *        invalid then.
     * \return True when the list was rebuilt.
     * \throws CQvGenTLErrorException "%d = IFUpdateDeviceList(0x%p, 0x%p, %I64u)" and the
     *         failures of reading the list (the list is then empty).
     */
    virtual bool UpdateDeviceList() = 0;
    /// \return The time-out UpdateDeviceList() gives the producer, in milliseconds.
    virtual uint64_t GetUpdateDeviceListTimeout() const = 0;
    /// \brief Sets the time-out UpdateDeviceList() gives the producer, in milliseconds.
    virtual void SetUpdateDeviceListTimeout(uint64_t timeoutMs) = 0;
    /// \return Number of devices in the list.
    virtual size_t GetDeviceCount() const = 0;
    /**
     * \return The record of listed device \a nIndex; owned by the interface, valid until the
     *         list is rebuilt.
     * \throws GenICam::OutOfRangeException "%s = %ld must be smaller than Max = %ld" ("nIndex").
     */
    virtual IQvDeviceInfo* GetIQvDeviceInfo(size_t nIndex) const = 0;
    /**
     * \brief Whether listed device \a nIndex can be opened with \a flags, by its access status.
     * \param[in] nIndex Index in the device list.
     * \param[in] flags DEVICE_ACCESS_READONLY (2), _CONTROL (3) or _EXCLUSIVE (4).
     * \throws GenICam::OutOfRangeException for other flags ("eDeviceAccessFlags") or the index.
     * \throws CQvGenTLErrorException when the status cannot be read.
     */
    virtual bool IsDeviceAvailable(size_t nIndex, GenTL::DEVICE_ACCESS_FLAGS flags) = 0;
    /**
     * \brief Opens listed device \a nIndex.
     * \return The device; the caller ends it with Release().
     * \throws As the by-ID form, and GenICam::OutOfRangeException for the index.
     */
    virtual IQvDeviceReleasable* CreateIQvDevice(size_t nIndex, GenTL::DEVICE_ACCESS_FLAGS flags) = 0;
    /**
     * \brief Opens the device with this ID (IFOpenDevice).
     * \param[in] deviceID The device's GenTL ID, as IQvDeviceInfo::GetID() gives it.
     * \param[in] flags GenTL access flags; DEVICE_ACCESS_READONLY gives a remote port that
     *                  refuses writes.
     * \return The device; the caller ends it with Release().
     * \throws CQvGenTLErrorException "%d = IFOpenDevice(0x%p, 0x%p, 0x%u, 0x%p)", and the
     *         failures of opening the device's ports and listeners.
     * \throws GenICam::BadAllocException.
     */
    virtual IQvDeviceReleasable* CreateIQvDevice(const GenICam::gcstring& deviceID,
                                                 GenTL::DEVICE_ACCESS_FLAGS flags) = 0;
    /**
     * \brief Opens the first listed device that is available for \a flags and opens without
     *        error, in the producer's listing order.
     * \return The device; the caller ends it with Release().
     * \throws GenICam::RuntimeException "There is no available device.".
     */
    virtual IQvDeviceReleasable* CreateFirstIQvDevice(GenTL::DEVICE_ACCESS_FLAGS flags = GenTL::DEVICE_ACCESS_CONTROL) = 0;

protected:
    ~IQvInterface() = default; // owned by the system
};
} // namespace QvApi
