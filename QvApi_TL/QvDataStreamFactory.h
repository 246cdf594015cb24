#pragma once

#include <GenTL/GenTL.h>

namespace QvApi
{
class CQvGenTLLib;
class IQvAllocator;
class IQvDataStreamReleasable;
class IQvDeviceInside;

/**
 * \brief Builds the data stream object of an opened GenTL data stream (the one place where the
 *        device module meets the data stream class).
 * \param[in] pCQvGenTL        Producer binding; borrowed.
 * \param[in] pIQvDeviceInside The device that opened the stream; borrowed, outlives the stream.
 * \param[in] hDataStream      The handle DevOpenDataStream gave; the stream owns it from now on.
 * \param[in] pAllocator       Application memory for the buffers, or null.
 * \return The stream; the caller owns it and ends it with Release().
 * \throws GenICam::BadAllocException (the caller then closes the handle); the stream's own
 *         construction failures.
 */
IQvDataStreamReleasable* CreateQvDataStream(CQvGenTLLib* pCQvGenTL, IQvDeviceInside* pIQvDeviceInside,
                                            GenTL::DS_HANDLE hDataStream, IQvAllocator* pAllocator);
} // namespace QvApi
