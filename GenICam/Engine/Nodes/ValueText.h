#pragma once

#include <cstdint>
#include <string>

#include <GenApi/Types.h>

namespace GenApi
{
/**
 * \brief Text forms of values: integers by representation, floats by notation and precision.
 *
 * Stateless functions; any thread.
 */
namespace ValueText
{
/// Integer as text for a representation (HexNumber "0x..", IPV4Address dotted, MACAddress ...).
std::string FormatInt(int64_t value, ERepresentation representation);
/// Parses integer text for a representation; false when it does not convert.
bool ParseInt(const char* pText, ERepresentation representation, int64_t& value);
/// Float as text like printf %.<precision>g / f / e.
std::string FormatFloat(double value, EDisplayNotation notation, int64_t precision);
/**
 * \brief Float as text, nudged back inside [minimum, maximum] when the rounded text falls
 *        outside (half a unit of the text's last decimal place is added or subtracted).
 */
std::string FormatFloatInRange(double value, EDisplayNotation notation, int64_t precision, double minimum,
                               double maximum);
/// Parses float text (sign, spaces, decimal or 0x hex, stops at the first unusable character).
bool ParseFloat(const char* pText, double& value);
} // namespace ValueText
} // namespace GenApi
