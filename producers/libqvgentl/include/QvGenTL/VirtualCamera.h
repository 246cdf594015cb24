#pragma once

/*
 * What libqvgentl.cti's virtual cameras promise to a consumer that decodes their output:
 * test patterns, the frame stamp, chunk IDs and layouts, and the byte layouts of the events.
 * Tests and tools include this header to check images without duplicating the encodings;
 * the producer renders from the same definitions.
 */

#include <cstddef>
#include <cstdint>

namespace QvVirtualCamera {

// ---- Identity ----------------------------------------------------------------------------

/// Vendor name reported by every module and camera of the producer.
constexpr const char* kVendorName = "QvApi";

/// Sensor size of a camera unless QVGENTL_VIRTUAL gives another one.
constexpr uint32_t kDefaultSensorWidth = 1280;
constexpr uint32_t kDefaultSensorHeight = 960;

/// Smallest image: the frame stamp needs 64 cells of at least one pixel and 8 lines.
constexpr uint32_t kMinWidth = 64;
constexpr uint32_t kMinHeight = 8;

/// Timestamps of buffers, chunks and events count nanoseconds since the system was opened.
constexpr uint64_t kTimestampFrequencyHz = 1000000000ull;

// ---- Test patterns (values of the remote feature "TestPattern") ----------------------------

enum ETestPattern_t : uint32_t
{
    /// Grey ramp along the diagonal that moves by one level per frame (see GradientLevel).
    TestPattern_GreyDiagonalRampMoving = 0,
    /// Eight vertical bars: white, yellow, cyan, green, magenta, red, blue, black.
    TestPattern_ColorBar = 1,
    /// The frame ID as 64 black/white cells on the first lines (see the frame stamp below).
    TestPattern_FrameCounter = 2,
};

/**
 * Level (0..255) of the moving ramp at pixel (x, y) of the frame with this ID. The ramp is the
 * same for every pixel format: mono and Bayer samples hold the level, RGB/BGR(a) formats hold it
 * in every colour channel (alpha 255), YCbCr422_8 holds it as Y with Cb = Cr = 128. Formats
 * deeper than 8 bits hold level << (bits - 8). x and y count from the top-left corner of the
 * delivered image (OffsetX/OffsetY do not move the pattern).
 */
constexpr uint8_t GradientLevel(uint32_t x, uint32_t y, uint64_t frameId)
{
    return static_cast<uint8_t>((x + y + frameId) & 0xFF);
}

/// Number of colour bars and the bar that column x of an image of this width belongs to.
constexpr uint32_t kColorBarCount = 8;
constexpr uint32_t ColorBarIndex(uint32_t x, uint32_t width)
{
    return static_cast<uint32_t>(uint64_t(x) * kColorBarCount / width);
}

/// RGB of each colour bar, left to right.
constexpr uint8_t kColorBarRgb[kColorBarCount][3] = {
    {255, 255, 255}, {255, 255, 0}, {0, 255, 255}, {0, 255, 0},
    {255, 0, 255},   {255, 0, 0},   {0, 0, 255},   {0, 0, 0},
};

/// Luma used for mono formats and for Y of YCbCr422_8 (BT.601, full range).
constexpr uint8_t Luma(uint8_t r, uint8_t g, uint8_t b)
{
    return static_cast<uint8_t>((77u * r + 150u * g + 29u * b + 128u) >> 8);
}

// ---- Frame stamp (pattern FrameCounter) ---------------------------------------------------
//
// The first kStampLines lines (fewer if the image is lower) hold kStampBits cells side by side.
// Cell i covers columns [i * w, (i + 1) * w) with w = StampCellWidth(Width) and shows bit
// (63 - i) of the frame ID: full scale (white) for 1, zero (black) for 0. Columns right of the
// last cell are black. Every line below the stamp has the level (frameId & 0xFF) in every
// channel (Y for YCbCr, Cb = Cr = 128), so the stamp can also be read by eye from the
// brightness that counts up.

constexpr uint32_t kStampBits = 64;
constexpr uint32_t kStampLines = 8;

constexpr uint32_t StampCellWidth(uint32_t width)
{
    return width / kStampBits;
}

/// Reads the frame ID from the first line of a Mono8 (or any 8-bit mono/Bayer) image.
inline uint64_t DecodeFrameStampMono8(const uint8_t* firstLine, uint32_t width)
{
    const uint32_t cell = StampCellWidth(width);
    uint64_t value = 0;
    for (uint32_t i = 0; i < kStampBits; ++i)
        value = (value << 1) | (firstLine[i * cell + cell / 2] >= 128 ? 1u : 0u);
    return value;
}

// ---- Chunks -------------------------------------------------------------------------------
//
// With ChunkModeActive the payload starts with the image, followed by one chunk per enabled
// ChunkSelector entry in the order of the IDs below. Layout per transport:
//   U3V: [image][trailer][data][trailer]...  trailer = ChunkID u32, ChunkLength u32, little-endian;
//        chunk data little-endian.
//   GEV: the same with big-endian trailers and big-endian chunk data.
//   CXP: [image][data][data]... without trailers, chunk data big-endian; the chunk list comes
//        from DSGetBufferChunkData (which answers for every transport).
// BUFFER_INFO_DELIVERED_CHUNKPAYLOADSIZE is the whole chunk payload (image included).

constexpr uint32_t kChunkIdImage = 0x00000001;
constexpr uint32_t kChunkIdTimestamp = 0x00000002;   // 8 bytes: the buffer timestamp
constexpr uint32_t kChunkIdFrameID = 0x00000003;     // 8 bytes
constexpr uint32_t kChunkIdWidth = 0x00000004;       // 4 bytes
constexpr uint32_t kChunkIdHeight = 0x00000005;      // 4 bytes
constexpr uint32_t kChunkIdOffsetX = 0x00000006;     // 4 bytes
constexpr uint32_t kChunkIdOffsetY = 0x00000007;     // 4 bytes
constexpr uint32_t kChunkIdPixelFormat = 0x00000008; // 4 bytes: PFNC code
constexpr size_t kChunkTrailerSize = 8;

// ---- Events -------------------------------------------------------------------------------
//
// Remote-device events (GCRegisterEvent(device, EVENT_REMOTE_DEVICE)); EventGetData returns:
//   GEV: a whole GVCP EVENTDATA_CMD packet: header (42 00 00 C2, length, req_id) then the item.
//   U3V: a whole USB3 Vision event message: prefix "U3VE", flags, 0x0C00, scd_length, req_id,
//        then the SCD.
//   CXP: a generic record (below).
// EVENT_DATA_ID is the event ID as hex text ("9001"), EVENT_DATA_NUMID the number, and
// EVENT_DATA_VALUE the bytes an event port of the camera description addresses:
//   GEV, CXP (big-endian): size u16 @0, event ID u16 @2, channel u16 @4, block ID u16 @6,
//        timestamp u64 @8, data @16.
//   U3V (little-endian SCD): size u16 @0, event ID u16 @2, timestamp u64 @4, data @12.
// ExposureEnd carries the frame ID (u64) as its data; its timestamp is the buffer timestamp
// plus ExposureTime.
//
// Module events (EVENT_MODULE, today only DeviceLost of the local device) and CXP remote events
// come as a generic record: numeric event ID u64 little-endian @0, then EVENT_DATA_VALUE.
// Module event values are little-endian: size u16 @0, event ID u16 @2, reserved u32 @4,
// timestamp u64 @8.
//
// Error events (EVENT_ERROR, any module): GC_ERROR code as int32 little-endian @0, then the
// NUL-terminated text; EVENT_DATA_ID gives the code (INT32), EVENT_DATA_VALUE the text (STRING).

constexpr uint16_t kEventIdExposureEnd = 0x9001;
constexpr uint16_t kEventIdDeviceLost = 0xD001;

constexpr size_t kGenericRecordHeaderSize = 8;

constexpr size_t kGevEventTimestampOffset = 8;
constexpr size_t kGevEventDataOffset = 16;
constexpr size_t kU3vEventTimestampOffset = 4;
constexpr size_t kU3vEventDataOffset = 12;
constexpr size_t kModuleEventTimestampOffset = 8;

} // namespace QvVirtualCamera
