#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <GenTL/GenTL.h>

#include "modules/RegisterSpace.h"
#include "transport/Transport.h"
#include "virtual/CameraSettings.h"
#include "virtual/FrameLayout.h"
#include "virtual/PatternRenderer.h"

namespace QvGenTL {

/**
 * One virtual camera: its register map (the features of VirtualCamera.xml.in), its state, and
 * the acquisition thread that renders frames straight into the buffers of the stream it feeds.
 * It lives as long as the system that configured it, so its settings survive closing and
 * reopening the device, as a powered camera's do. One host connection at a time.
 *
 * Threads: any consumer thread (register access, connect), plus the acquisition thread while
 * streaming. m_lock guards the state; it is never held while calling a sink.
 */
class CVirtualCamera
{
public:
    using Clock = std::chrono::steady_clock;

    CVirtualCamera(ECameraTransport_t transport, uint32_t interfaceIndex, uint32_t cameraIndex, uint32_t sensorWidth,
                   uint32_t sensorHeight, Clock::time_point epoch);
    ~CVirtualCamera();
    CVirtualCamera(const CVirtualCamera&) = delete;
    CVirtualCamera& operator=(const CVirtualCamera&) = delete;

    ECameraTransport_t Transport() const { return m_transport; }
    DeviceInfo_t Info() const;
    GenTL::DEVICE_ACCESS_STATUS AccessStatus() const;

    /// Accepts a host; throws GC_ERR_RESOURCE_IN_USE while another is connected.
    void Connect(GenTL::DEVICE_ACCESS_FLAGS flags, IDeviceEventSink* sink);
    /// Drops the host: streaming stops, the acquisition ends, TLParamsLocked clears and a lost
    /// camera becomes reachable again.
    void Disconnect();
    bool IsLost() const;

    /// Register access; throws CGenTLError (GC_ERR_IO once the camera is lost).
    void ReadRegister(uint64_t address, void* pBuffer, size_t size);
    void WriteRegister(uint64_t address, const void* pBuffer, size_t size);
    bool LittleEndian() const { return m_registers.IsLittleEndian(); }
    std::vector<PortUrl_t> Urls() const;

    size_t PayloadSize() const;
    bool TLParamsLocked() const;
    void SetTLParamsLocked(bool locked);
    static constexpr size_t kMaxChunks = FrameLayout_t::kMaxChunks;

    /// Starts the acquisition thread feeding sink (frames flow once AcquisitionStart ran).
    void StartStreaming(IStreamSink* sink);
    /// Stops and joins it; kill gives the buffer being filled back unfilled.
    void StopStreaming(bool kill);

private:
    void AddRegisters();
    /// Adds a 32-bit setting: read under the lock, written through validate (under the lock).
    void AddSetting(uint64_t address, uint32_t CameraSettings_t::*field,
                    GenTL::GC_ERROR (CVirtualCamera::*validate)(int64_t) const);
    GenTL::GC_ERROR WriteLocked(std::unique_lock<std::mutex>& lock, uint64_t address, int64_t value);

    // Validators of writes (called with m_lock held).
    GenTL::GC_ERROR CheckImageFormatUnlocked() const;
    GenTL::GC_ERROR ValidateWidth(int64_t value) const;
    GenTL::GC_ERROR ValidateHeight(int64_t value) const;
    GenTL::GC_ERROR ValidateOffsetX(int64_t value) const;
    GenTL::GC_ERROR ValidateOffsetY(int64_t value) const;
    GenTL::GC_ERROR ValidatePixelFormat(int64_t value) const;
    GenTL::GC_ERROR ValidateTestPattern(int64_t value) const;
    GenTL::GC_ERROR ValidateAcquisitionMode(int64_t value) const;
    GenTL::GC_ERROR ValidateFrameCount(int64_t value) const;
    GenTL::GC_ERROR ValidateZero(int64_t value) const;
    GenTL::GC_ERROR ValidateTriggerSelector(int64_t value) const;
    GenTL::GC_ERROR ValidateChunkSelector(int64_t value) const;
    GenTL::GC_ERROR ValidateDropInterval(int64_t value) const;

    bool ImageFormatLockedLocked() const { return m_settings.tlParamsLocked || m_active; }
    double FrameRateMaxLocked() const;
    Clock::duration FramePeriodLocked() const;
    uint64_t NowNs() const;

    void ExecuteAcquisitionStart();
    void ExecuteAcquisitionStop();
    void ExecuteTriggerSoftware(uint32_t selector);
    /// The connection drops (TestDeviceLost, DeviceReset): the host is told, registers fail.
    void Lose(const std::string& reason, bool reset);
    /// TestFeatureInvalidateGenerate, TestFeatureChangeGenerate: tells the host about a feature
    /// named by the test controls; GC_ERR_INVALID_VALUE while no feature is named.
    GenTL::GC_ERROR SendFeatureEvent(GenTL::EVENT_TYPE type);

    void StreamLoop();
    std::vector<uint8_t> MakeExposureEndEvent(uint64_t frameId, uint64_t timestampNs);
    void FillBuffer(const CameraSettings_t& settings, const FrameLayout_t& layout, uint64_t frameId,
                    uint64_t timestampNs, StreamBuffer_t& buffer, BufferFill_t& fill);

    // Constant after construction.
    const ECameraTransport_t m_transport;
    const std::string m_serial;
    const std::string m_model;
    const Clock::time_point m_epoch;
    const EmbeddedFile_t& m_zippedDescription;
    const EmbeddedFile_t& m_plainDescription;
    CRegisterSpace m_registers;

    mutable std::mutex m_lock;
    std::condition_variable m_wake;
    // Guarded by m_lock.
    CameraSettings_t m_settings;
    std::string m_userId;
    bool m_connected = false;
    GenTL::DEVICE_ACCESS_FLAGS m_flags = GenTL::DEVICE_ACCESS_UNKNOWN;
    IDeviceEventSink* m_eventSink = nullptr; // the connected device module; null when disconnected
    bool m_lost = false;
    bool m_active = false;                   // between AcquisitionStart and the end of the acquisition
    bool m_waitingForAcquisitionTrigger = false;
    uint32_t m_pendingFrameTriggers = 0;
    uint64_t m_framesThisAcquisition = 0;
    uint64_t m_frameCounter = 0;             // frame ID of the last frame of the stream
    uint64_t m_latchedTimestamp = 0;
    uint32_t m_droppedCount = 0;
    uint16_t m_eventRequestId = 0;
    std::string m_featureInvalidateName;     // test controls of the feature events
    std::string m_featureChangeName;
    std::string m_featureChangeValue;
    uint64_t m_paceGeneration = 0;           // bumped when the frame timing must restart
    IStreamSink* m_sink = nullptr;           // the data stream while streaming
    bool m_stopRequested = false;
    bool m_killRequested = false;

    CPatternRenderer m_renderer; // used by the acquisition thread only
    std::thread m_thread; // started and joined by StartStreaming / StopStreaming (one caller at a time)
};

} // namespace QvGenTL
