#pragma once

#include <cstddef>
#include <cstdint>

namespace QvApi
{
/**
 * \brief Copies \a lines lines of \a lineBytes bytes from lines \a srcPitch apart to lines
 *        \a dstPitch apart.
 *
 * Overlapping ranges (an in-place crop) are copied line by line forwards with memmove, so the
 * destination must not lie after its source within one block. Large copies of separate blocks
 * store around the cache, as memcpy does for a large block: line-sized calls would otherwise
 * read every destination line into the cache before overwriting it.
 */
void CopyLines(uint8_t* pDst, size_t dstPitch, const uint8_t* pSrc, size_t srcPitch, size_t lineBytes, size_t lines);
} // namespace QvApi
