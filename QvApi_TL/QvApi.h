#pragma once

#include <atomic>
#include <cstdint>

namespace QvApi
{
class CQvPixelComponentInfo;
class CQvPixelFormatInfo;

// Process-wide state of the library, defined in QvApi.cpp.

/// How many QvApiInitialize() calls have no matching QvApiTerminate() yet.
extern std::atomic<int64_t> m_lInitializedCount;
/// The pixel format table; null while the library is not initialised (that is the test).
extern CQvPixelFormatInfo* gpCQvPixelFormatInfo;
/// The pixel component table; null while the library is not initialised.
extern CQvPixelComponentInfo* gpCQvPixelComponentInfo;
} // namespace QvApi
