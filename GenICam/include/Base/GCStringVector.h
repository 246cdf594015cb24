#pragma once

#include <initializer_list>
#include <vector>

#include <Base/GCString.h>

namespace GenICam
{
/**
 * \brief A list of gcstring with the usual vector operations.
 */
class GENICAM_API gcstring_vector : public std::vector<gcstring>
{
public:
    using std::vector<gcstring>::vector;
    gcstring_vector() = default;
    gcstring_vector(std::initializer_list<gcstring> items) : std::vector<gcstring>(items) {}
    /// Whether the list holds a string equal to text.
    bool contains(const gcstring& text) const;
};
} // namespace GenICam
