#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include <Base/GCString.h>
#include <Base/GCStringVector.h>

namespace GenApi
{
struct INodeMap;

/**
 * \brief Applies the entries of a feature bag to a node map: the write passes with their
 *        retries, then the optional verify pass, collecting one error text per failure.
 *
 * Threads: the caller's; lives for one LoadFromBag() call.
 */
class CBagLoader
{
public:
    /// Entries are borrowed from the bag for the loader's lifetime.
    CBagLoader(INodeMap* pNodeMap, const GenICam::gcstring_vector& names, const GenICam::gcstring_vector& values);

    /// Writes (and verifies when asked); appends the errors. \return True without errors.
    bool Load(bool verify, GenICam::gcstring_vector* pErrorList);

private:
    struct Entry_t
    {
        GenICam::gcstring name;
        GenICam::gcstring value; ///< the value text without the selector prefix
        std::vector<std::pair<GenICam::gcstring, GenICam::gcstring>> selectors; ///< "{Sel=v\t...}" prefix
    };
    struct Failure_t
    {
        size_t index;
        GenICam::gcstring text;
    };

    static Entry_t Parse(const GenICam::gcstring& name, const GenICam::gcstring& value);
    /// Writes the entries \a indices in order; returns those that failed with their texts.
    std::vector<Failure_t> WritePass(const std::vector<size_t>& indices);
    /// Writes one entry; false with \a error set on failure.
    bool WriteEntry(const Entry_t& entry, GenICam::gcstring& error);
    /// Replays one entry for verification; false with \a error set on a mismatch or failure.
    bool VerifyEntry(const Entry_t& entry, GenICam::gcstring& error);
    /// Writes the "{...}" selectors of an entry (unknown names ignored). \throws what the writes throw.
    void WriteSelectors(const Entry_t& entry);

    INodeMap* const m_pNodeMap; // borrowed for the call
    std::vector<Entry_t> m_entries;
};
} // namespace GenApi
