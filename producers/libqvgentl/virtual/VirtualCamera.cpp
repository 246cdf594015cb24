#include "virtual/VirtualCamera.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include <QvGenTL/VirtualCamera.h>

#include "modules/EventRecords.h"
#include "modules/GenTLError.h"
#include "modules/ProducerInfo.h"
#include "transport/RemoteEventCodec.h"
#include "virtual/PatternRenderer.h"

namespace QvGenTL {

namespace {

using namespace QvVirtualCamera;

constexpr double kMaxFrameRate = 10000.0; // Hz, also bounded by 1 / ExposureTime
constexpr double kMinFrameRate = 0.1;
constexpr double kMinExposure = 10.0;     // us
constexpr double kMaxExposure = 1000000.0;
constexpr double kMaxGain = 24.0;         // dB
constexpr uint32_t kMaxPendingTriggers = 1024;
constexpr double kDefaultExposure = 1000.0;
constexpr std::chrono::milliseconds kUnderrunWait{100};

constexpr GenTL::GC_ERROR kOk = GenTL::GC_ERR_SUCCESS;
constexpr GenTL::GC_ERROR kLocked = GenTL::GC_ERR_ACCESS_DENIED;
constexpr GenTL::GC_ERROR kOutOfRange = GenTL::GC_ERR_INVALID_VALUE;

int64_t TLTypeValue(ECameraTransport_t transport)
{
    switch (transport)
    {
    case ECameraTransport_t::GEV: return 1;
    case ECameraTransport_t::U3V: return 2;
    case ECameraTransport_t::CXP: return 3;
    }
    return 0;
}

std::string SerialNumber(ECameraTransport_t transport, uint32_t interfaceIndex, uint32_t cameraIndex)
{
    char text[32];
    std::snprintf(text, sizeof(text), "QV%s%02u%02u", TransportName(transport), interfaceIndex, cameraIndex);
    return text;
}

} // namespace

CVirtualCamera::CVirtualCamera(ECameraTransport_t transport, uint32_t interfaceIndex, uint32_t cameraIndex,
                               uint32_t sensorWidth, uint32_t sensorHeight, Clock::time_point epoch)
    : m_transport(transport), m_serial(SerialNumber(transport, interfaceIndex, cameraIndex)),
      m_model(std::string("QvVirtualCamera-") + TransportName(transport)), m_epoch(epoch),
      m_zippedDescription(FindEmbeddedFile(std::string("VirtualCamera_") + TransportName(transport) + ".zip")),
      m_plainDescription(FindEmbeddedFile(std::string("VirtualCamera_") + TransportName(transport) + ".xml")),
      m_registers(transport == ECameraTransport_t::U3V)
{
    m_settings = DefaultSettings(sensorWidth, sensorHeight);
    m_settings.exposureTime = kDefaultExposure;
    AddRegisters();
}

CVirtualCamera::~CVirtualCamera()
{
    StopStreaming(true);
}

// ---- Identity and connection ------------------------------------------------------------

DeviceInfo_t CVirtualCamera::Info() const
{
    DeviceInfo_t info;
    info.id = m_serial;
    info.vendor = kVendorName;
    info.model = m_model;
    info.tlType = TransportName(m_transport);
    info.displayName = std::string(kVendorName) + " " + m_model + " (" + m_serial + ")";
    info.serialNumber = m_serial;
    info.version = kProducerVersion;
    info.timestampFrequency = kTimestampFrequencyHz;
    std::lock_guard lock(m_lock);
    info.userDefinedName = m_userId;
    return info;
}

GenTL::DEVICE_ACCESS_STATUS CVirtualCamera::AccessStatus() const
{
    std::lock_guard lock(m_lock);
    if (!m_connected)
        return GenTL::DEVICE_ACCESS_STATUS_READWRITE;
    return m_flags == GenTL::DEVICE_ACCESS_READONLY ? GenTL::DEVICE_ACCESS_STATUS_OPEN_READONLY
                                                    : GenTL::DEVICE_ACCESS_STATUS_OPEN_READWRITE;
}

void CVirtualCamera::Connect(GenTL::DEVICE_ACCESS_FLAGS flags, IDeviceEventSink* sink)
{
    std::lock_guard lock(m_lock);
    if (m_connected)
        ThrowGenTL(GenTL::GC_ERR_RESOURCE_IN_USE, "Camera %s is open already", m_serial.c_str());
    m_connected = true;
    m_flags = flags;
    m_eventSink = sink;
    m_lost = false;
}

void CVirtualCamera::Disconnect()
{
    StopStreaming(true);
    std::lock_guard lock(m_lock);
    m_connected = false;
    m_eventSink = nullptr;
    m_lost = false;
    m_active = false;
    m_waitingForAcquisitionTrigger = false;
    m_pendingFrameTriggers = 0;
    m_settings.tlParamsLocked = false;
}

bool CVirtualCamera::IsLost() const
{
    std::lock_guard lock(m_lock);
    return m_lost;
}

void CVirtualCamera::Lose(const std::string& reason, bool reset)
{
    IDeviceEventSink* sink;
    uint64_t timestamp;
    {
        std::lock_guard lock(m_lock);
        if (!m_connected || m_lost)
            return;
        m_lost = true;
        m_active = false;
        if (reset)
        {
            m_settings = DefaultSettings(m_settings.sensorWidth, m_settings.sensorHeight);
            m_settings.exposureTime = kDefaultExposure;
        }
        sink = m_eventSink;
        timestamp = NowNs();
    }
    m_wake.notify_all();
    if (sink != nullptr)
        sink->OnDeviceLost(reason, timestamp);
}

GenTL::GC_ERROR CVirtualCamera::SendFeatureEvent(GenTL::EVENT_TYPE type)
{
    IDeviceEventSink* sink;
    std::string name;
    std::string value;
    {
        std::lock_guard lock(m_lock);
        const bool change = type == GenTL::EVENT_FEATURE_CHANGE;
        name = change ? m_featureChangeName : m_featureInvalidateName;
        if (change)
            value = m_featureChangeValue;
        sink = m_eventSink;
    }
    if (name.empty())
        return kOutOfRange;
    if (sink != nullptr)
        sink->OnFeatureEvent(type, name, value);
    return kOk;
}

uint64_t CVirtualCamera::NowNs() const
{
    return static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - m_epoch).count());
}

std::vector<PortUrl_t> CVirtualCamera::Urls() const
{
    // The zip first: it is what consumers load; the plain copy serves tools that cannot unzip.
    return {PortUrl_t{&m_zippedDescription, kDescriptionAddress}, PortUrl_t{&m_plainDescription, kPlainDescriptionAddress}};
}

// ---- Registers ----------------------------------------------------------------------------

void CVirtualCamera::ReadRegister(uint64_t address, void* pBuffer, size_t size)
{
    if (IsLost())
        ThrowGenTL(GenTL::GC_ERR_IO, "Camera %s does not answer: the device is lost", m_serial.c_str());
    const GenTL::GC_ERROR result = m_registers.Read(address, pBuffer, size);
    if (result != kOk)
        ThrowGenTL(result, "Reading %zu bytes at 0x%llX of camera %s failed", size,
                   static_cast<unsigned long long>(address), m_serial.c_str());
}

void CVirtualCamera::WriteRegister(uint64_t address, const void* pBuffer, size_t size)
{
    if (IsLost())
        ThrowGenTL(GenTL::GC_ERR_IO, "Camera %s does not answer: the device is lost", m_serial.c_str());
    const GenTL::GC_ERROR result = m_registers.Write(address, pBuffer, size);
    if (result == kLocked)
        ThrowGenTL(result, "Camera %s refuses the write at 0x%llX: the register is read-only or locked "
                   "(TLParamsLocked or a running acquisition)", m_serial.c_str(),
                   static_cast<unsigned long long>(address));
    if (result != kOk)
        ThrowGenTL(result, "Camera %s refuses the write of %zu bytes at 0x%llX (value out of range or address "
                   "unknown)", m_serial.c_str(), size, static_cast<unsigned long long>(address));
}

void CVirtualCamera::AddSetting(uint64_t address, uint32_t CameraSettings_t::*field,
                                GenTL::GC_ERROR (CVirtualCamera::*validate)(int64_t) const)
{
    m_registers.AddInteger(
        address, 4,
        [this, field] {
            std::lock_guard lock(m_lock);
            return int64_t(m_settings.*field);
        },
        [this, field, validate](int64_t value) {
            std::lock_guard lock(m_lock);
            const GenTL::GC_ERROR result = (this->*validate)(value);
            if (result == kOk)
                m_settings.*field = static_cast<uint32_t>(value);
            return result;
        });
}

GenTL::GC_ERROR CVirtualCamera::CheckImageFormatUnlocked() const
{
    return ImageFormatLockedLocked() ? kLocked : kOk;
}

GenTL::GC_ERROR CVirtualCamera::ValidateWidth(int64_t value) const
{
    if (ImageFormatLockedLocked())
        return kLocked;
    const int64_t increment = m_settings.pixelFormat == kPfncMono10p ? 4 : 2;
    if (value < kMinWidth || value > int64_t(m_settings.sensorWidth) - m_settings.offsetX ||
        (value - kMinWidth) % increment != 0)
        return kOutOfRange;
    return kOk;
}

GenTL::GC_ERROR CVirtualCamera::ValidateHeight(int64_t value) const
{
    if (ImageFormatLockedLocked())
        return kLocked;
    if (value < kMinHeight || value > int64_t(m_settings.sensorHeight) - m_settings.offsetY || value % 2 != 0)
        return kOutOfRange;
    return kOk;
}

GenTL::GC_ERROR CVirtualCamera::ValidateOffsetX(int64_t value) const
{
    // Offsets move the region on the sensor without changing the payload: allowed while streaming.
    if (value < 0 || value > int64_t(m_settings.sensorWidth) - m_settings.width || value % 2 != 0)
        return kOutOfRange;
    return kOk;
}

GenTL::GC_ERROR CVirtualCamera::ValidateOffsetY(int64_t value) const
{
    if (value < 0 || value > int64_t(m_settings.sensorHeight) - m_settings.height || value % 2 != 0)
        return kOutOfRange;
    return kOk;
}

GenTL::GC_ERROR CVirtualCamera::ValidatePixelFormat(int64_t value) const
{
    if (ImageFormatLockedLocked())
        return kLocked;
    if (value < 0 || value > UINT32_MAX || FindPixelFormat(static_cast<uint32_t>(value)) == nullptr)
        return kOutOfRange;
    // Mono10p packs 4 pixels into 5 bytes: the entry is unavailable unless lines hold whole groups.
    if (value == kPfncMono10p && m_settings.width % 4 != 0)
        return kOutOfRange;
    return kOk;
}

GenTL::GC_ERROR CVirtualCamera::ValidateTestPattern(int64_t value) const
{
    return value >= TestPattern_GreyDiagonalRampMoving && value <= TestPattern_FrameCounter ? kOk : kOutOfRange;
}

GenTL::GC_ERROR CVirtualCamera::ValidateAcquisitionMode(int64_t value) const
{
    if (m_active)
        return kLocked;
    return value >= AcquisitionMode_Continuous && value <= AcquisitionMode_MultiFrame ? kOk : kOutOfRange;
}

GenTL::GC_ERROR CVirtualCamera::ValidateFrameCount(int64_t value) const
{
    if (m_active)
        return kLocked;
    return value >= 1 && value <= 65535 ? kOk : kOutOfRange;
}

GenTL::GC_ERROR CVirtualCamera::ValidateZero(int64_t value) const
{
    return value == 0 ? kOk : kOutOfRange;
}

GenTL::GC_ERROR CVirtualCamera::ValidateTriggerSelector(int64_t value) const
{
    return value >= 0 && value < kTriggerSelectorCount ? kOk : kOutOfRange;
}

GenTL::GC_ERROR CVirtualCamera::ValidateChunkSelector(int64_t value) const
{
    return value >= 0 && value < kChunkSelectorCount ? kOk : kOutOfRange;
}

GenTL::GC_ERROR CVirtualCamera::ValidateDropInterval(int64_t value) const
{
    return value >= 0 && value <= 1000000 ? kOk : kOutOfRange;
}

double CVirtualCamera::FrameRateMaxLocked() const
{
    return std::min(kMaxFrameRate, 1e6 / m_settings.exposureTime);
}

CVirtualCamera::Clock::duration CVirtualCamera::FramePeriodLocked() const
{
    // A frame cannot be shorter than its exposure.
    const double seconds = std::max(1.0 / m_settings.frameRate, m_settings.exposureTime * 1e-6);
    return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
}

void CVirtualCamera::AddRegisters()
{
    CRegisterSpace& r = m_registers;
    auto constant = [](int64_t value) { return [value] { return value; }; };
    auto text = [](std::string value) { return [value] { return value; }; };
    auto boolean = [this](bool CameraSettings_t::*field, GenTL::GC_ERROR (CVirtualCamera::*check)() const) {
        return std::make_pair(
            [this, field] {
                std::lock_guard lock(m_lock);
                return int64_t(m_settings.*field ? 1 : 0);
            },
            [this, field, check](int64_t value) {
                std::lock_guard lock(m_lock);
                if (check != nullptr && (this->*check)() != kOk)
                    return kLocked;
                if (value != 0 && value != 1)
                    return kOutOfRange;
                m_settings.*field = value != 0;
                return kOk;
            });
    };

    // Device control
    r.AddInteger(0x0000, 4, constant(2)); // SFNC 2.6.0
    r.AddInteger(0x0004, 4, constant(6));
    r.AddInteger(0x0008, 4, constant(0));
    r.AddInteger(0x000C, 4, constant(TLTypeValue(m_transport)));
    r.AddString(0x0010, 32, text(kVendorName));
    r.AddString(0x0030, 32, text(m_model));
    r.AddString(0x0050, 32, text(kProducerVersion));
    r.AddString(0x0070, 32, text(m_serial));
    r.AddString(
        0x0090, 16,
        [this] {
            std::lock_guard lock(m_lock);
            return m_userId;
        },
        [this](const std::string& value) {
            std::lock_guard lock(m_lock);
            m_userId = value;
            return kOk;
        });
    r.AddString(0x00A0, 32, text(kProducerVersion));
    r.AddInteger(0x00C0, 4, nullptr, [this](int64_t value) {
        if (value != 0)
            Lose("DeviceReset restarted the camera", true);
        return kOk;
    });
    r.AddInteger(0x00C4, 4, nullptr, [this](int64_t value) {
        if (value != 0)
        {
            std::lock_guard lock(m_lock);
            m_latchedTimestamp = NowNs();
        }
        return kOk;
    });
    r.AddInteger(0x00C8, 8, [this] {
        std::lock_guard lock(m_lock);
        return int64_t(m_latchedTimestamp);
    });

    // Image format
    auto setting = [this](uint32_t CameraSettings_t::*field) {
        return [this, field] {
            std::lock_guard lock(m_lock);
            return int64_t(m_settings.*field);
        };
    };
    r.AddInteger(0x0100, 4, setting(&CameraSettings_t::sensorWidth));
    r.AddInteger(0x0104, 4, setting(&CameraSettings_t::sensorHeight));
    r.AddInteger(0x0108, 4, setting(&CameraSettings_t::sensorWidth));  // WidthMax: no binning
    r.AddInteger(0x010C, 4, setting(&CameraSettings_t::sensorHeight)); // HeightMax
    AddSetting(0x0110, &CameraSettings_t::width, &CVirtualCamera::ValidateWidth);
    AddSetting(0x0114, &CameraSettings_t::height, &CVirtualCamera::ValidateHeight);
    AddSetting(0x0118, &CameraSettings_t::offsetX, &CVirtualCamera::ValidateOffsetX);
    AddSetting(0x011C, &CameraSettings_t::offsetY, &CVirtualCamera::ValidateOffsetY);
    AddSetting(0x0120, &CameraSettings_t::pixelFormat, &CVirtualCamera::ValidatePixelFormat);
    AddSetting(0x0124, &CameraSettings_t::testPattern, &CVirtualCamera::ValidateTestPattern);
    r.AddInteger(0x0128, 4, [this] { return int64_t(PayloadSize()); });
    auto [lockedGet, lockedSet] = boolean(&CameraSettings_t::tlParamsLocked, nullptr);
    r.AddInteger(0x012C, 4, lockedGet, lockedSet);
    AddSetting(0x0130, &CameraSettings_t::acquisitionStatusSelector, &CVirtualCamera::ValidateZero);
    r.AddInteger(0x0134, 4, [this] {
        std::lock_guard lock(m_lock);
        return int64_t(m_active ? 1 : 0);
    });

    // Acquisition
    AddSetting(0x0200, &CameraSettings_t::acquisitionMode, &CVirtualCamera::ValidateAcquisitionMode);
    r.AddInteger(0x0204, 4, nullptr, [this](int64_t value) {
        if (value != 0)
            ExecuteAcquisitionStart();
        return kOk;
    });
    r.AddInteger(0x0208, 4, nullptr, [this](int64_t value) {
        if (value != 0)
            ExecuteAcquisitionStop();
        return kOk;
    });
    AddSetting(0x020C, &CameraSettings_t::acquisitionFrameCount, &CVirtualCamera::ValidateFrameCount);
    r.AddInteger(
        0x0210, 4,
        [this] {
            std::lock_guard lock(m_lock);
            return int64_t(m_settings.frameRateEnable ? 1 : 0);
        },
        [this](int64_t value) {
            if (value != 0 && value != 1)
                return kOutOfRange;
            {
                std::lock_guard lock(m_lock);
                m_settings.frameRateEnable = value != 0;
                ++m_paceGeneration;
            }
            m_wake.notify_all();
            return kOk;
        });
    r.AddFloat(
        0x0218,
        [this] {
            std::lock_guard lock(m_lock);
            return m_settings.frameRate;
        },
        [this](double value) {
            {
                std::lock_guard lock(m_lock);
                if (!(value >= kMinFrameRate && value <= FrameRateMaxLocked()))
                    return kOutOfRange;
                m_settings.frameRate = value;
                ++m_paceGeneration;
            }
            m_wake.notify_all();
            return kOk;
        });
    r.AddFloat(
        0x0220,
        [this] {
            std::lock_guard lock(m_lock);
            return m_settings.exposureTime;
        },
        [this](double value) {
            {
                std::lock_guard lock(m_lock);
                if (!(value >= kMinExposure && value <= kMaxExposure))
                    return kOutOfRange;
                m_settings.exposureTime = value;
                ++m_paceGeneration;
            }
            m_wake.notify_all();
            return kOk;
        });
    r.AddFloat(
        0x0228,
        [this] {
            std::lock_guard lock(m_lock);
            return m_settings.gain;
        },
        [this](double value) {
            std::lock_guard lock(m_lock);
            if (!(value >= 0.0 && value <= kMaxGain))
                return kOutOfRange;
            m_settings.gain = value;
            return kOk;
        });
    r.AddFloat(0x0230, [this] {
        std::lock_guard lock(m_lock);
        return FrameRateMaxLocked();
    });

    // Triggers (registers indexed by TriggerSelector)
    AddSetting(0x0300, &CameraSettings_t::triggerSelector, &CVirtualCamera::ValidateTriggerSelector);
    for (uint32_t selector = 0; selector < kTriggerSelectorCount; ++selector)
    {
        r.AddInteger(
            0x0310 + 4 * selector, 4,
            [this, selector] {
                std::lock_guard lock(m_lock);
                return int64_t(m_settings.triggerMode[selector]);
            },
            [this, selector](int64_t value) {
                if (value != 0 && value != 1)
                    return kOutOfRange;
                {
                    std::lock_guard lock(m_lock);
                    m_settings.triggerMode[selector] = static_cast<uint32_t>(value);
                    if (value == 0 && selector == kTriggerFrameStart)
                        m_pendingFrameTriggers = 0;
                    if (value == 0 && selector == kTriggerAcquisitionStart)
                        m_waitingForAcquisitionTrigger = false;
                    ++m_paceGeneration;
                }
                m_wake.notify_all();
                return kOk;
            });
        r.AddInteger(
            0x0320 + 4 * selector, 4,
            [this, selector] {
                std::lock_guard lock(m_lock);
                return int64_t(m_settings.triggerSource[selector]);
            },
            [this, selector](int64_t value) {
                if (value != 0) // Software is the only source of a camera without lines
                    return kOutOfRange;
                std::lock_guard lock(m_lock);
                m_settings.triggerSource[selector] = 0;
                return kOk;
            });
        r.AddInteger(0x0330 + 4 * selector, 4, nullptr, [this, selector](int64_t value) {
            if (value != 0)
                ExecuteTriggerSoftware(selector);
            return kOk;
        });
    }

    // Events (indexed by EventSelector)
    AddSetting(0x0400, &CameraSettings_t::eventSelector, &CVirtualCamera::ValidateZero);
    for (uint32_t selector = 0; selector < kEventSelectorCount; ++selector)
        r.AddInteger(
            0x0410 + 4 * selector, 4,
            [this, selector] {
                std::lock_guard lock(m_lock);
                return int64_t(m_settings.eventNotification[selector]);
            },
            [this, selector](int64_t value) {
                if (value != 0 && value != 1)
                    return kOutOfRange;
                std::lock_guard lock(m_lock);
                m_settings.eventNotification[selector] = static_cast<uint32_t>(value);
                return kOk;
            });

    // Chunks (ChunkEnable indexed by ChunkSelector)
    auto [chunkGet, chunkSet] = boolean(&CameraSettings_t::chunkModeActive, &CVirtualCamera::CheckImageFormatUnlocked);
    r.AddInteger(0x0500, 4, chunkGet, chunkSet);
    AddSetting(0x0504, &CameraSettings_t::chunkSelector, &CVirtualCamera::ValidateChunkSelector);
    for (uint32_t selector = 0; selector < kChunkSelectorCount; ++selector)
        r.AddInteger(
            0x0510 + 4 * selector, 4,
            [this, selector] {
                std::lock_guard lock(m_lock);
                return int64_t(m_settings.chunkEnable[selector] ? 1 : 0);
            },
            [this, selector](int64_t value) {
                std::lock_guard lock(m_lock);
                if (ImageFormatLockedLocked())
                    return kLocked;
                if (value != 0 && value != 1)
                    return kOutOfRange;
                m_settings.chunkEnable[selector] = value != 0;
                return kOk;
            });

    // Faults on request
    r.AddInteger(0x0600, 4, nullptr, [this](int64_t value) {
        if (value != 0)
            Lose("TestDeviceLost disconnected the camera", false);
        return kOk;
    });
    AddSetting(0x0604, &CameraSettings_t::droppedFrameInterval, &CVirtualCamera::ValidateDropInterval);
    r.AddInteger(0x0608, 4, [this] {
        std::lock_guard lock(m_lock);
        return int64_t(m_droppedCount);
    });
    r.AddInteger(0x060C, 4, nullptr, [this](int64_t value) {
        return value != 0 ? SendFeatureEvent(GenTL::EVENT_FEATURE_INVALIDATE) : kOk;
    });
    r.AddInteger(0x0610, 4, nullptr, [this](int64_t value) {
        return value != 0 ? SendFeatureEvent(GenTL::EVENT_FEATURE_CHANGE) : kOk;
    });
    auto addTestText = [this, &r](uint64_t address, std::string CVirtualCamera::*field) {
        r.AddString(
            address, 64,
            [this, field] {
                std::lock_guard lock(m_lock);
                return this->*field;
            },
            [this, field](const std::string& value) {
                std::lock_guard lock(m_lock);
                this->*field = value;
                return kOk;
            });
    };
    addTestText(0x0640, &CVirtualCamera::m_featureInvalidateName);
    addTestText(0x0680, &CVirtualCamera::m_featureChangeName);
    addTestText(0x06C0, &CVirtualCamera::m_featureChangeValue);

    // Descriptions
    r.AddMemory(kDescriptionAddress, m_zippedDescription.data, m_zippedDescription.size);
    r.AddMemory(kPlainDescriptionAddress, m_plainDescription.data, m_plainDescription.size);
}

size_t CVirtualCamera::PayloadSize() const
{
    std::lock_guard lock(m_lock);
    return ComputeFrameLayout(m_settings, m_transport).payloadSize;
}

bool CVirtualCamera::TLParamsLocked() const
{
    std::lock_guard lock(m_lock);
    return m_settings.tlParamsLocked;
}

void CVirtualCamera::SetTLParamsLocked(bool locked)
{
    std::lock_guard lock(m_lock);
    if (m_lost)
        ThrowGenTL(GenTL::GC_ERR_IO, "Camera %s does not answer: the device is lost", m_serial.c_str());
    m_settings.tlParamsLocked = locked;
}

// ---- Acquisition control ------------------------------------------------------------------

void CVirtualCamera::ExecuteAcquisitionStart()
{
    {
        std::lock_guard lock(m_lock);
        if (m_active)
            return;
        m_active = true;
        m_framesThisAcquisition = 0;
        m_pendingFrameTriggers = 0;
        m_waitingForAcquisitionTrigger = m_settings.triggerMode[kTriggerAcquisitionStart] != 0;
        ++m_paceGeneration;
    }
    m_wake.notify_all();
}

void CVirtualCamera::ExecuteAcquisitionStop()
{
    {
        std::lock_guard lock(m_lock);
        m_active = false;
        m_waitingForAcquisitionTrigger = false;
        m_pendingFrameTriggers = 0;
    }
    m_wake.notify_all();
}

void CVirtualCamera::ExecuteTriggerSoftware(uint32_t selector)
{
    {
        std::lock_guard lock(m_lock);
        // Like a real camera, triggers outside an acquisition or with the trigger off are ignored.
        if (!m_active || m_settings.triggerMode[selector] == 0)
            return;
        if (selector == kTriggerAcquisitionStart)
            m_waitingForAcquisitionTrigger = false;
        else if (m_pendingFrameTriggers < kMaxPendingTriggers)
            ++m_pendingFrameTriggers;
    }
    m_wake.notify_all();
}

// ---- Streaming ----------------------------------------------------------------------------

void CVirtualCamera::StartStreaming(IStreamSink* sink)
{
    if (m_thread.joinable())
        StopStreaming(false);
    {
        std::lock_guard lock(m_lock);
        if (m_lost)
            ThrowGenTL(GenTL::GC_ERR_IO, "Camera %s does not answer: the device is lost", m_serial.c_str());
        m_sink = sink;
        m_stopRequested = false;
        m_killRequested = false;
        m_frameCounter = 0;
    }
    m_thread = std::thread([this] { StreamLoop(); });
}

void CVirtualCamera::StopStreaming(bool kill)
{
    {
        std::lock_guard lock(m_lock);
        m_stopRequested = true;
        m_killRequested = kill;
    }
    m_wake.notify_all();
    if (m_thread.joinable())
        m_thread.join();
    std::lock_guard lock(m_lock);
    m_sink = nullptr;
}

std::vector<uint8_t> CVirtualCamera::MakeExposureEndEvent(uint64_t frameId, uint64_t timestampNs)
{
    const EEventLayout_t layout = EventLayoutOf(TransportName(m_transport));
    uint8_t data[8];
    std::vector<uint8_t> payload;
    if (layout == EEventLayout_t::U3v)
    {
        StoreLE(data, frameId, 8);
        payload = MakeU3vEventScd(kEventIdExposureEnd, timestampNs, data, sizeof(data));
    }
    else
    {
        // GEV, and CXP with the same big-endian item layout.
        StoreBE(data, frameId, 8);
        payload = MakeGevEventItem(kEventIdExposureEnd, 0, static_cast<uint16_t>(frameId), timestampNs, data,
                                   sizeof(data));
    }
    return EncodeRemoteEvent(layout, kEventIdExposureEnd, payload, ++m_eventRequestId);
}

void CVirtualCamera::FillBuffer(const CameraSettings_t& settings, const FrameLayout_t& layout, uint64_t frameId,
                                uint64_t timestampNs, StreamBuffer_t& buffer, BufferFill_t& fill)
{
    fill.width = settings.width;
    fill.height = settings.height;
    fill.xOffset = settings.offsetX;
    fill.yOffset = settings.offsetY;
    fill.frameId = frameId;
    fill.timestamp = timestampNs; // ticks are nanoseconds
    fill.timestampNs = timestampNs;
    fill.pixelFormat = layout.format->code;
    fill.imageOffset = 0;
    fill.imagePresent = true;
    fill.dataSize = layout.payloadSize;
    fill.chunkLayoutId = layout.layoutId;
    fill.payloadType = layout.chunkMode ? GenTL::PAYLOAD_TYPE_CHUNK_DATA : GenTL::PAYLOAD_TYPE_IMAGE;

    if (layout.payloadSize > buffer.size)
    {
        // Too small: as many whole lines as fit, no chunks (their trailers would be missing).
        const uint32_t lines = static_cast<uint32_t>(std::min<size_t>(settings.height, buffer.size / layout.lineBytes));
        m_renderer.Render(frameId, lines, buffer.data);
        fill.sizeFilled = size_t(lines) * layout.lineBytes;
        fill.deliveredImageHeight = lines;
        fill.incomplete = true;
        fill.dataLargerThanBuffer = true;
        return;
    }
    m_renderer.Render(frameId, settings.height, buffer.data);
    fill.sizeFilled = layout.payloadSize;
    fill.deliveredImageHeight = settings.height;
    if (!layout.chunkMode)
        return;

    auto store = [](uint8_t* out, uint64_t value, size_t length, bool littleEndian) {
        if (littleEndian)
            StoreLE(out, value, length);
        else
            StoreBE(out, value, length);
    };
    for (size_t i = 0; i < layout.numChunks; ++i)
    {
        const FrameLayout_t::Chunk_t& chunk = layout.chunks[i];
        uint8_t* data = buffer.data + chunk.offset;
        uint64_t value = 0;
        switch (chunk.id)
        {
        case kChunkIdImage: break; // rendered above
        case kChunkIdTimestamp: value = timestampNs; break;
        case kChunkIdFrameID: value = frameId; break;
        case kChunkIdWidth: value = settings.width; break;
        case kChunkIdHeight: value = settings.height; break;
        case kChunkIdOffsetX: value = settings.offsetX; break;
        case kChunkIdOffsetY: value = settings.offsetY; break;
        case kChunkIdPixelFormat: value = layout.format->code; break;
        }
        if (chunk.id != kChunkIdImage)
            store(data, value, chunk.length, layout.chunkDataLittleEndian);
        if (layout.trailers)
        {
            store(data + chunk.length, chunk.id, 4, layout.trailersLittleEndian);
            store(data + chunk.length + 4, chunk.length, 4, layout.trailersLittleEndian);
        }
        fill.chunks[i].ChunkID = chunk.id;
        fill.chunks[i].ChunkOffset = static_cast<ptrdiff_t>(chunk.offset);
        fill.chunks[i].ChunkLength = chunk.length;
    }
    fill.numChunks = layout.numChunks;
    fill.containsChunkData = true;
    fill.chunkPayloadSize = layout.payloadSize;
}

void CVirtualCamera::StreamLoop()
{
    std::unique_lock lock(m_lock);
    IStreamSink* const sink = m_sink;
    Clock::time_point deadline{};
    uint64_t paceGeneration = ~0ull;
    bool paced = false;
    for (;;)
    {
        m_wake.wait(lock, [&] {
            const bool frameTriggered = m_settings.triggerMode[kTriggerFrameStart] != 0;
            return m_stopRequested || m_lost ||
                   (m_active && !m_waitingForAcquisitionTrigger && (!frameTriggered || m_pendingFrameTriggers > 0));
        });
        if (m_stopRequested || m_lost)
            break;

        if (m_settings.triggerMode[kTriggerFrameStart] != 0)
        {
            --m_pendingFrameTriggers;
            paced = false;
        }
        else if (m_settings.frameRateEnable)
        {
            // Absolute deadlines: frame n is due at start + n * period, so the rate never drifts.
            if (!paced || paceGeneration != m_paceGeneration)
            {
                deadline = Clock::now();
                paceGeneration = m_paceGeneration;
                paced = true;
            }
            const bool interrupted = m_wake.wait_until(lock, deadline, [&] {
                return m_stopRequested || m_lost || !m_active || m_paceGeneration != paceGeneration;
            });
            if (interrupted)
                continue;
            const Clock::duration period = FramePeriodLocked();
            deadline += period;
            const Clock::time_point now = Clock::now();
            if (deadline + period < now)
                deadline = now; // far behind (host stalled): restart instead of bursting
        }
        else
        {
            paced = false;
        }

        // Capture: everything the frame needs is copied while the lock is held.
        const CameraSettings_t settings = m_settings;
        const uint64_t frameId = ++m_frameCounter;
        const uint64_t timestampNs = NowNs();
        ++m_framesThisAcquisition;
        if ((settings.acquisitionMode == AcquisitionMode_SingleFrame && m_framesThisAcquisition >= 1) ||
            (settings.acquisitionMode == AcquisitionMode_MultiFrame &&
             m_framesThisAcquisition >= settings.acquisitionFrameCount))
            m_active = false;
        const bool freeRunning = !paced && settings.triggerMode[kTriggerFrameStart] == 0;
        const bool drop = settings.droppedFrameInterval != 0 && frameId % settings.droppedFrameInterval == 0;
        if (drop)
            ++m_droppedCount;
        IDeviceEventSink* const eventSink = m_eventSink;
        std::vector<uint8_t> event;
        if (settings.eventNotification[0] != 0 && eventSink != nullptr)
            event = MakeExposureEndEvent(frameId, timestampNs + static_cast<uint64_t>(settings.exposureTime * 1000.0));
        lock.unlock();

        if (!event.empty())
            eventSink->OnRemoteEvent(std::move(event));
        bool more = true;
        if (drop)
        {
            sink->CountDroppedFrame();
        }
        else if (StreamBuffer_t* buffer = sink->TakeInputBuffer(); buffer == nullptr)
        {
            // Lost to an underrun. Free-running, the sensor then waits for the host instead of
            // losing frame after frame at full speed.
            if (freeRunning)
                sink->WaitForInputBuffer(kUnderrunWait);
        }
        else
        {
            const FrameLayout_t layout = ComputeFrameLayout(settings, m_transport);
            m_renderer.Prepare(settings, layout);
            BufferFill_t fill;
            FillBuffer(settings, layout, frameId, timestampNs, *buffer, fill);
            lock.lock();
            const bool kill = m_killRequested;
            lock.unlock();
            if (kill)
                sink->ReturnBuffer(buffer);
            else
                more = sink->DeliverBuffer(buffer, fill);
            if (kill)
                more = false;
        }
        lock.lock();
        if (!more)
            break;
    }
}

} // namespace QvGenTL
