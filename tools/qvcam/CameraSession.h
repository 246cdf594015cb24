#pragma once

#include <stddef.h>

#include <memory>
#include <string>
#include <vector>

#include <QvApi_TL.h>

namespace QvCam
{
/// One ".cti" file found on GENICAM_GENTL64_PATH.
struct ProducerFile_t
{
    std::string path;     ///< full path as found
    int vendor = -1;      ///< the SDK vendor whose file name it carries, or -1
    bool shadowed = false;///< an earlier folder holds the same file name: the SDK loads that one
};

/// One producer the SDK opened (or failed to open) as a system.
struct SystemEntry_t
{
    std::string path;                 ///< the producer file
    QvApi::IQvSystemReleasable* pSystem = nullptr; ///< owned by the session; null when it failed
    std::string error;                ///< why it could not be opened
};

/// One device as listed by an interface; valid until the session ends.
struct DeviceEntry_t
{
    size_t index = 0;                        ///< position in the session's listing (qvcam list "#")
    QvApi::IQvInterface* pInterface = nullptr; ///< borrowed from its system
    size_t indexOnInterface = 0;
    std::string producer, interfaceId, tlType;
    std::string id, vendor, model, serial, userName;
    int accessStatus = 0;                    ///< GenTL DEVICE_ACCESS_STATUS
};

/**
 * \brief The producers on GENICAM_GENTL64_PATH, the systems the SDK opens for them, the devices
 *        they list and the one device a command works on.
 *
 * Every ".cti" file is listed; those whose file name belongs to an SDK vendor are opened with
 * CreateIQvSystem() (the SDK picks the first folder holding the name, so later copies are marked
 * shadowed). The session owns every system, the opened device and its data stream, and releases
 * them children first. Needs an initialised library. One thread.
 */
class CCameraSession
{
public:
    CCameraSession();
    ~CCameraSession();
    CCameraSession(const CCameraSession&) = delete;
    CCameraSession& operator=(const CCameraSession&) = delete;

    /// \return The ".cti" files on the path, in search order.
    const std::vector<ProducerFile_t>& GetProducerFiles() const { return m_producerFiles; }
    /// \brief Opens a system per SDK vendor found (once). \throws CToolError NoProducer when
    ///        no ".cti" file is on the path at all.
    void OpenSystems();
    /// \return The systems tried by OpenSystems().
    const std::vector<SystemEntry_t>& GetSystems() const { return m_systems; }
    /// \return Every device of every interface of every open system (listed once).
    const std::vector<DeviceEntry_t>& GetDevices();

    /**
     * \brief Opens the device \a which names: an index of the listing, a device ID, a serial
     *        number or a user-defined name; empty means the first available device.
     * \throws CToolError NoProducer, NoDevice or DeviceOpen.
     */
    QvApi::IQvDevice* OpenDevice(const std::string& which, GenTL::DEVICE_ACCESS_FLAGS flags);
    /// \brief OpenDevice() with write access when the device grants it, read-only otherwise:
    ///        access modes then show what the user could change.
    QvApi::IQvDevice* OpenDeviceForReading(const std::string& which);
    /// \return The device OpenDevice() opened, or null.
    QvApi::IQvDevice* GetDevice() const { return m_device.Get(); }
    /// \return A text naming the open device for messages ("QVU3V0000").
    const std::string& GetDeviceName() const { return m_deviceName; }
    /// \return Data stream 0 of the open device, opened on first call.
    QvApi::IQvDataStream* GetDataStream();
    /// \return The name of the last device a session found lost when it ended, or empty: lets
    ///         the top level tell a lost device from other failures after the session is gone.
    static const std::string& GetLastLostDevice();
    /// \return The name of the last device a session opened, or empty.
    static const std::string& GetLastOpenedDevice();

private:
    void ScanPath();
    std::string NoProducerMessage() const;

    std::vector<ProducerFile_t> m_producerFiles;
    std::vector<SystemEntry_t> m_systems; // owned systems, released last
    bool m_systemsOpened = false;
    std::vector<DeviceEntry_t> m_devices;
    bool m_devicesListed = false;
    QvApi::CIQvDevicePtr m_device;     // released before the systems
    QvApi::CIQvDataStreamPtr m_stream; // released before the device
    std::string m_deviceName;
};

/// \return The file name the SDK loads for \a vendor ("libqvgentl.cti" for 0), or null.
const char* VendorFileName(int vendor);
/// \return A short text for a GenTL device access status ("available", "busy", ...).
std::string AccessStatusText(int status);
} // namespace QvCam
