#pragma once

#include <cstdint>

namespace QvGenTL {

/// Transport a virtual camera pretends to use; decides byte orders and layouts.
enum class ECameraTransport_t
{
    U3V,
    GEV,
    CXP,
};

const char* TransportName(ECameraTransport_t transport);

/// Number of entries of the camera's selectors.
constexpr uint32_t kTriggerSelectorCount = 2;  // FrameStart, AcquisitionStart
constexpr uint32_t kEventSelectorCount = 1;    // ExposureEnd
constexpr uint32_t kChunkSelectorCount = 7;    // Timestamp, FrameID, Width, Height, OffsetX, OffsetY, PixelFormat
constexpr uint32_t kTriggerFrameStart = 0;
constexpr uint32_t kTriggerAcquisitionStart = 1;

enum EAcquisitionMode_t : uint32_t
{
    AcquisitionMode_Continuous = 0,
    AcquisitionMode_SingleFrame = 1,
    AcquisitionMode_MultiFrame = 2,
};

/// Chunk ID of a ChunkSelector entry (see QvGenTL/VirtualCamera.h).
constexpr uint32_t ChunkIdOfSelector(uint32_t selector)
{
    return selector + 2;
}

/// Every setting of a virtual camera that a host can change (the feature values).
struct CameraSettings_t
{
    uint32_t sensorWidth = 0;
    uint32_t sensorHeight = 0;
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t offsetX = 0;
    uint32_t offsetY = 0;
    uint32_t pixelFormat = 0;
    uint32_t testPattern = 0;
    uint32_t acquisitionMode = AcquisitionMode_Continuous;
    uint32_t acquisitionFrameCount = 1;
    bool frameRateEnable = true;
    double frameRate = 30.0;    ///< Hz
    double exposureTime = 10000.0; ///< us
    double gain = 0.0;          ///< dB
    uint32_t acquisitionStatusSelector = 0;
    uint32_t triggerSelector = 0;
    uint32_t triggerMode[kTriggerSelectorCount] = {};
    uint32_t triggerSource[kTriggerSelectorCount] = {};
    uint32_t eventSelector = 0;
    uint32_t eventNotification[kEventSelectorCount] = {};
    bool chunkModeActive = false;
    uint32_t chunkSelector = 0;
    bool chunkEnable[kChunkSelectorCount] = {true, true, true, true, true, true, true};
    bool tlParamsLocked = false;
    uint32_t droppedFrameInterval = 0;
};

/// Factory settings of a camera with this sensor.
CameraSettings_t DefaultSettings(uint32_t sensorWidth, uint32_t sensorHeight);

} // namespace QvGenTL
