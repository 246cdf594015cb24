#include "QvSDKCommon/LineCopy.h"

#include <emmintrin.h>

#include <cstring>

namespace QvApi
{
namespace
{
// From this many bytes on, a copy is larger than the caches could keep anyway.
constexpr size_t kStreamingBytes = size_t(8) << 20;

// One line with SSE2 non-temporal stores: the unaligned head by memcpy, 64-byte blocks streamed,
// the tail by memcpy.
void StreamLine(uint8_t* pDst, const uint8_t* pSrc, size_t bytes)
{
    size_t head = (16 - (reinterpret_cast<uintptr_t>(pDst) & 15)) & 15;
    if (head > bytes)
        head = bytes;
    std::memcpy(pDst, pSrc, head);
    pDst += head;
    pSrc += head;
    bytes -= head;
    for (; bytes >= 64; bytes -= 64, pDst += 64, pSrc += 64)
    {
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pSrc));
        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pSrc + 16));
        const __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pSrc + 32));
        const __m128i d = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pSrc + 48));
        _mm_stream_si128(reinterpret_cast<__m128i*>(pDst), a);
        _mm_stream_si128(reinterpret_cast<__m128i*>(pDst + 16), b);
        _mm_stream_si128(reinterpret_cast<__m128i*>(pDst + 32), c);
        _mm_stream_si128(reinterpret_cast<__m128i*>(pDst + 48), d);
    }
    std::memcpy(pDst, pSrc, bytes);
}
} // namespace

void CopyLines(uint8_t* pDst, size_t dstPitch, const uint8_t* pSrc, size_t srcPitch, size_t lineBytes, size_t lines)
{
    if (lines == 0 || lineBytes == 0)
        return;
    const uintptr_t dst = reinterpret_cast<uintptr_t>(pDst);
    const uintptr_t src = reinterpret_cast<uintptr_t>(pSrc);
    const size_t dstSpan = (lines - 1) * dstPitch + lineBytes;
    const size_t srcSpan = (lines - 1) * srcPitch + lineBytes;
    const bool overlap = dst < src + srcSpan && src < dst + dstSpan;
    if (overlap || lineBytes * lines < kStreamingBytes)
    {
        for (size_t line = 0; line < lines; ++line)
            std::memmove(pDst + line * dstPitch, pSrc + line * srcPitch, lineBytes);
        return;
    }
    for (size_t line = 0; line < lines; ++line)
        StreamLine(pDst + line * dstPitch, pSrc + line * srcPitch, lineBytes);
    _mm_sfence(); // the streamed stores are visible before the copy is reported done
}
} // namespace QvApi
