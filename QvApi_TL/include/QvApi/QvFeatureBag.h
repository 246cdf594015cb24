#pragma once

#include <stdint.h>

#include <Base/GCString.h>
#include <Base/GCStringVector.h>
#include <QvApi/QvApiDefs.h>
#include <QvApi/QvReleasable.h>

namespace GenApi
{
struct INodeMap;
}

namespace QvApi
{
/**
 * \brief A snapshot of a node map's settings (feature names and values as text) that can be
 *        saved to and read from GenApi persistence files or strings, and applied to a node map.
 *
 * The text it writes: "# {05D8C294-F295-4dfb-9D01-096BD04049F4}", "# GenApi persistence file
 * (version 3.0.0)", "# " and the bag's name (empty), then one "<name>\t<value>" line per
 * feature, each line ended by a line feed. Features that selectors select appear once per
 * selector state, their value starting with the selector values in braces.
 *
 * One thread at a time.
 */
class IQvFeatureBag
{
public:
    /**
     * \brief Replaces the bag's content by the streamable features of \a pNodeMap (typically a
     *        camera's remote node map), selector states included.
     * \param[in] pNodeMap   The node map to read.
     * \param[in] maxEntries Stop after this many entries; -1 for no limit.
     * \return The number of entries stored.
     * \throws InvalidArgumentException "Nodemap pointer is NULL".
     * \note Selectors are stepped through their values on the device meanwhile and put back.
     */
    virtual int64_t StoreNodeMapToBag(GenApi::INodeMap* pNodeMap, int maxEntries = -1) = 0;
    /**
     * \brief Replaces the bag's content by the persistence text \a text.
     * \throws RuntimeException "The stream is eof" for an empty text (the bag is unchanged), or
     *         "The stream is not a GenApi feature stream since it is missing the magic GUID in
     *         the first line" (the bag is then empty).
     */
    virtual void StoreStringToBag(const GenICam::gcstring& text) = 0;
    /**
     * \brief Replaces the bag's content by the persistence file \a fileName.
     * \throws RuntimeException "File %s could not be opened." and those of StoreStringToBag().
     */
    virtual void StoreFileToBag(const GenICam::gcstring& fileName) = 0;
    /**
     * \brief Applies the bag to \a pNodeMap.
     * \param[in] pNodeMap The node map to write.
     * \param[in] verify Read every value back afterwards and compare.
     * \param[out] pErrorList Receives one text per feature that could not be applied or
     *             verified; may be null.
     * \return True when every value was applied (and verified when asked).
     * \throws InvalidArgumentException "Nodemap pointer is NULL"; BadAllocException.
     */
    virtual bool Load(GenApi::INodeMap* pNodeMap, bool verify = true, GenICam::gcstring_vector* pErrorList = nullptr) = 0;
    /// Writes the bag as persistence text into \a text.
    virtual void SaveToString(GenICam::gcstring& text) = 0;
    /**
     * \brief Writes the bag as persistence text to \a fileName (created or truncated).
     * \throws RuntimeException "File %s could not be opened.".
     */
    virtual void SaveToFile(const GenICam::gcstring& fileName) = 0;

protected:
    ~IQvFeatureBag() = default;
};

/// A feature bag as CreateIQvFeatureBag() returns it; Release() destroys it.
class IQvFeatureBagReleasable : public IQvFeatureBag, public IQvReleasable
{
protected:
    ~IQvFeatureBagReleasable() = default;
};
} // namespace QvApi
