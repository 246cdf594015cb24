#pragma once

#include <cstdint>
#include <vector>

namespace GenApi
{
/// A list of integer values (valid values of an integer feature).
class int64_autovector_t : public std::vector<int64_t>
{
public:
    using std::vector<int64_t>::vector;
};

/// A list of float values (valid values of a float feature).
class double_autovector_t : public std::vector<double>
{
public:
    using std::vector<double>::vector;
};
} // namespace GenApi
