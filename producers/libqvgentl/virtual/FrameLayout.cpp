#include "virtual/FrameLayout.h"

#include <QvGenTL/VirtualCamera.h>

namespace QvGenTL {

size_t ChunkDataLength(uint32_t selector)
{
    // Timestamp and FrameID are 64-bit, the others 32-bit.
    return selector < 2 ? 8 : 4;
}

namespace {

uint64_t Fnv1a(uint64_t hash, uint64_t value)
{
    for (int i = 0; i < 8; ++i)
    {
        hash ^= (value >> (8 * i)) & 0xFF;
        hash *= 0x100000001B3ull;
    }
    return hash;
}

} // namespace

FrameLayout_t ComputeFrameLayout(const CameraSettings_t& settings, ECameraTransport_t transport)
{
    FrameLayout_t layout;
    layout.format = FindPixelFormat(settings.pixelFormat);
    if (layout.format == nullptr)
        layout.format = FindPixelFormat(kPfncMono8);
    layout.lineBytes = LineBytes(*layout.format, settings.width);
    layout.imageSize = layout.lineBytes * settings.height;
    layout.chunkMode = settings.chunkModeActive;
    layout.trailers = transport != ECameraTransport_t::CXP;
    layout.trailersLittleEndian = transport == ECameraTransport_t::U3V;
    layout.chunkDataLittleEndian = transport == ECameraTransport_t::U3V;
    if (!layout.chunkMode)
    {
        layout.payloadSize = layout.imageSize;
        return layout;
    }
    const size_t trailer = layout.trailers ? QvVirtualCamera::kChunkTrailerSize : 0;
    size_t offset = 0;
    auto add = [&](uint32_t id, size_t length) {
        layout.chunks[layout.numChunks++] = FrameLayout_t::Chunk_t{id, offset, length};
        offset += length + trailer;
    };
    add(QvVirtualCamera::kChunkIdImage, layout.imageSize);
    for (uint32_t selector = 0; selector < kChunkSelectorCount; ++selector)
        if (settings.chunkEnable[selector])
            add(ChunkIdOfSelector(selector), ChunkDataLength(selector));
    layout.payloadSize = offset;

    uint64_t hash = 0xCBF29CE484222325ull;
    hash = Fnv1a(hash, static_cast<uint64_t>(transport));
    for (size_t i = 0; i < layout.numChunks; ++i)
    {
        hash = Fnv1a(hash, layout.chunks[i].id);
        hash = Fnv1a(hash, layout.chunks[i].offset);
        hash = Fnv1a(hash, layout.chunks[i].length);
    }
    layout.layoutId = hash;
    return layout;
}

} // namespace QvGenTL
