#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <GenTL/GenTL.h>

namespace QvGenTL {

/// Longest error text an error record carries (with its NUL); longer texts are cut.
constexpr size_t kMaxErrorTextSize = 1020;

/// Error event record: code (int32 little-endian) then the NUL-terminated text.
std::vector<uint8_t> EncodeErrorRecord(GenTL::GC_ERROR code, std::string_view text);

/// Generic event record: numeric event ID (u64 little-endian) then the payload.
std::vector<uint8_t> EncodeGenericRecord(uint64_t eventId, const uint8_t* payload, size_t size);

/// EVENT_FEATURE_CHANGE record: the feature name, then its new value as text, each NUL-terminated.
std::vector<uint8_t> EncodeFeatureChangeRecord(std::string_view name, std::string_view value);
/// EVENT_FEATURE_INVALIDATE record: the NUL-terminated feature name.
std::vector<uint8_t> EncodeFeatureInvalidateRecord(std::string_view name);

/// Hex text of an event ID as GenICam writes EventID: an even number of upper-case digits.
std::string EventIdText(uint64_t eventId);

/// Little/big-endian stores used by the record encoders.
inline void StoreLE(uint8_t* out, uint64_t value, size_t length)
{
    for (size_t i = 0; i < length; ++i)
        out[i] = static_cast<uint8_t>(value >> (8 * i));
}
inline void StoreBE(uint8_t* out, uint64_t value, size_t length)
{
    for (size_t i = 0; i < length; ++i)
        out[length - 1 - i] = static_cast<uint8_t>(value >> (8 * i));
}
inline uint64_t LoadLE(const uint8_t* in, size_t length)
{
    uint64_t value = 0;
    for (size_t i = 0; i < length; ++i)
        value |= uint64_t(in[i]) << (8 * i);
    return value;
}
inline uint64_t LoadBE(const uint8_t* in, size_t length)
{
    uint64_t value = 0;
    for (size_t i = 0; i < length; ++i)
        value = (value << 8) | in[i];
    return value;
}

} // namespace QvGenTL
