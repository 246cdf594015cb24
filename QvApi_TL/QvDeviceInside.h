#pragma once

#include <GenTL/GenTL.h>
#include <QvApi/QvDevice.h>

namespace QvApi
{
class IQvInterfaceInside;

/**
 * \brief What a device's data streams and event listeners use of it.
 *
 * The data stream needs: the remote port (payload size, chunk data), the device info (its ID
 * names the stream's port), the interface (its type decodes CoaXPress pixel formats), and the
 * device-lost event (IsDeviceLost() before starting, the handle in its multi-object wait).
 */
class IQvDeviceInside : public IQvDeviceReleasable
{
public:
    /// \return The parent interface; borrowed (the device holds a reference on it).
    virtual IQvInterfaceInside* GetIQvInterfaceInside() = 0;
    /// \return The open device handle; null once closed.
    virtual GenTL::DEV_HANDLE GetDeviceHandle() = 0;
    /**
     * \return The device-lost event (a CEventObject*, manual reset) for WaitForSingleObject()/
     *         WaitForMultipleObjects(); null while the event is being destroyed. Any thread.
     */
    virtual void* GetDeviceLostEventHandle() = 0;

protected:
    virtual ~IQvDeviceInside() = default; // ended by Release()
};
} // namespace QvApi
