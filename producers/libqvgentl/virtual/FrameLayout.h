#pragma once

#include <cstddef>
#include <cstdint>

#include "virtual/CameraSettings.h"
#include "virtual/PixelFormats.h"

namespace QvGenTL {

/**
 * Where image and chunks lie in the payload of one frame, for the camera's settings and its
 * transport: [image] then, with ChunkModeActive, the enabled chunks in ID order, each followed
 * by an 8-byte trailer on U3V (little-endian) and GEV (big-endian); without trailers on CXP.
 * The image chunk comes first.
 */
struct FrameLayout_t
{
    static constexpr size_t kMaxChunks = 1 + kChunkSelectorCount;

    struct Chunk_t
    {
        uint32_t id;
        size_t offset; ///< of the data, from the start of the payload
        size_t length; ///< of the data, trailer excluded
    };

    const PixelFormatInfo_t* format = nullptr;
    size_t lineBytes = 0;
    size_t imageSize = 0;
    size_t payloadSize = 0;
    bool chunkMode = false;
    bool trailers = false;     ///< U3V and GEV put a trailer behind each chunk
    bool trailersLittleEndian = false;
    bool chunkDataLittleEndian = false;
    size_t numChunks = 0;
    Chunk_t chunks[kMaxChunks] = {};
    uint64_t layoutId = 0;     ///< changes whenever the chunk layout changes
};

FrameLayout_t ComputeFrameLayout(const CameraSettings_t& settings, ECameraTransport_t transport);

/// Byte length of the data of a chunk of a ChunkSelector entry.
size_t ChunkDataLength(uint32_t selector);

} // namespace QvGenTL
