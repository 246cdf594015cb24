#pragma once

#include <cstddef>
#include <cstdint>

namespace GenApi
{
/// How a chunk or event ID delivered as text reads.
enum class EDeliveredId_t
{
    Valid,     ///< hex digits in pairs: the value is set
    NoMatch,   ///< pairs, but not all hex digits ("0x9001") or wider than 64 bits: matches no port
    OddDigits  ///< an odd number of characters: the producer sent something broken
};

/**
 * \brief Reads an ID as a producer delivers it in text: hex digits without "0x", a whole number
 *        of bytes (two digits each), compared by value so that leading zeros and letter case do
 *        not matter ("A1B2", "0000a1b2" and "000000000000A1B2" are the same ID).
 */
inline EDeliveredId_t ParseDeliveredId(const char* pText, size_t length, uint64_t& value)
{
    value = 0;
    if (length % 2 != 0)
        return EDeliveredId_t::OddDigits;
    if (length == 0)
        return EDeliveredId_t::NoMatch;
    int significantDigits = 0;
    for (size_t i = 0; i < length; ++i)
    {
        const char c = pText[i];
        unsigned digit;
        if (c >= '0' && c <= '9')
            digit = static_cast<unsigned>(c - '0');
        else if (c >= 'a' && c <= 'f')
            digit = static_cast<unsigned>(c - 'a' + 10);
        else if (c >= 'A' && c <= 'F')
            digit = static_cast<unsigned>(c - 'A' + 10);
        else
            return EDeliveredId_t::NoMatch;
        if (significantDigits > 0 || digit != 0)
            ++significantDigits;
        if (significantDigits > 16)
            return EDeliveredId_t::NoMatch;
        value = (value << 4) | digit;
    }
    return EDeliveredId_t::Valid;
}
} // namespace GenApi
