#pragma once

#include <cstdint>

namespace GenApi
{
/**
 * \brief Walks the chunk trailers of a GigE Vision (big-endian) or USB3 Vision (little-endian)
 *        payload: each chunk is its data followed by an 8-byte trailer (ChunkID, data length),
 *        and the chain can only be read backwards from the end of the valid bytes.
 *
 * Calls \a visit(chunkId, dataOffset, dataLength) for every chunk, last chunk first, while
 * checking the chain. Returns true only when the chain ends exactly at offset 0 after at least
 * one chunk; a trailer that does not fit, a length larger than the bytes before its trailer or
 * bytes left over at the start make the layout invalid (chunks visited before the fault have
 * been visited and lie inside the buffer). Never reads outside
 * [pBuffer, pBuffer + bufferLength). Each step moves back at least 8 bytes, so the walk ends
 * after at most bufferLength / 8 chunks.
 */
template <class Visitor>
bool WalkChunkTrailers(const uint8_t* pBuffer, int64_t bufferLength, bool bigEndian, Visitor&& visit)
{
    if (pBuffer == nullptr || bufferLength <= 0)
        return false;
    auto read32 = [bigEndian](const uint8_t* p) -> uint32_t {
        return bigEndian ? (uint32_t(p[0]) << 24) | (uint32_t(p[1]) << 16) | (uint32_t(p[2]) << 8) | uint32_t(p[3])
                         : (uint32_t(p[3]) << 24) | (uint32_t(p[2]) << 16) | (uint32_t(p[1]) << 8) | uint32_t(p[0]);
    };
    int64_t position = bufferLength;
    while (position > 0)
    {
        if (position < 8)
            return false;
        const uint32_t chunkId = read32(pBuffer + position - 8);
        const int64_t dataLength = read32(pBuffer + position - 4);
        if (dataLength > position - 8)
            return false;
        const int64_t dataOffset = position - 8 - dataLength;
        visit(static_cast<uint64_t>(chunkId), dataOffset, dataLength);
        position = dataOffset;
    }
    return true;
}
} // namespace GenApi
