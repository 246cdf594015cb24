#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include <GenTL/GenTL.h>

namespace QvApi
{
class CQvGenTLLib;

/**
 * \brief One item of an event record decoded with EventGetDataInfo in two phases (size query,
 *        exact allocation, read), with a spare zero byte behind it so that texts are ended.
 */
struct SQvEventDataItem_
{
    std::unique_ptr<uint8_t[]> pData; ///< null when the item could not be read
    size_t size = 0;                  ///< bytes the producer reported (at most the buffer's)
    GenTL::GC_ERROR result = GenTL::GC_ERR_NOT_IMPLEMENTED; ///< of the reading call
    /// The item as a text (empty without data).
    const char* Text() const { return pData != nullptr ? reinterpret_cast<const char*>(pData.get()) : ""; }
};

/**
 * \brief Reads item \a command of an event record (listener threads).
 * \return The item. When the entry point is missing or the size query fails, no data and that
 *         result. When the read itself fails and \a throwOnReadFailure is false: the allocated
 *         (zeroed) buffer with the read's result.
 * \throws CQvGenTLErrorException "%d = EventGetDataInfo(0x%p, 0x%p, %u, %d, 0x%p, 0x%p, 0x%p)"
 *         when the read fails and \a throwOnReadFailure is true.
 * \throws GenICam::BadAllocException.
 */
SQvEventDataItem_ ReadEventDataItem(CQvGenTLLib* pCQvGenTL, GenTL::EVENT_HANDLE hEvent, const void* pData,
                                    size_t iSize, GenTL::EVENT_DATA_INFO_CMD command, bool throwOnReadFailure = true);
} // namespace QvApi
