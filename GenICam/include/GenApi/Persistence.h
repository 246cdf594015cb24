#pragma once

#include <cstdint>
#include <iosfwd>

#include <Base/GCLinkage.h>
#include <Base/GCString.h>
#include <Base/GCStringVector.h>

namespace GenApi
{
struct INodeMap;
struct IValue;

/// Stands in the first line of every persistence file.
#define GENAPI_PERSISTENCE_MAGIC "{05D8C294-F295-4dfb-9D01-096BD04049F4}"
/// First line of a file holding several bags (not read by CFeatureBag).
#define GENAPI_PERSISTENCE_MAGIC_FEATUREBAGGER "{4709CB3C-7322-4460-84C3-DA11DDA09939}"

/**
 * \brief A snapshot of the settings of a node map: an ordered list of feature names and values
 *        as text, which can be stored from a node map, written to and read from a stream in the
 *        GenApi persistence format, and applied to a node map again.
 *
 * A feature that selectors select is stored once per selector state, its value text then
 * starting with the selector values in braces: "Gain\t{GainSelector=Red}\t20" is the name
 * "Gain" with the value "{GainSelector=Red}\t20". Each such group ends with plain entries that
 * put the selectors back to the values they had.
 *
 * Text format (operator<< and operator>>): a first line holding GENAPI_PERSISTENCE_MAGIC, then,
 * when the bag has an info text, "# GenApi persistence file (version 3.4.0)" and "# <info>";
 * then one "<name>\t<value>" line per entry.
 *
 * Threads: one thread at a time per bag; the node map's own lock guards the map.
 */
class GENICAM_API CFeatureBag
{
public:
    /// An empty bag named \a bagName.
    explicit CFeatureBag(const GenICam::gcstring& bagName = "");
    virtual ~CFeatureBag();

    /// Sets the info text written in the header (StoreToBag() replaces it).
    void SetInfo(const GenICam::gcstring& info) { m_Info = info; }
    /// The info text; after StoreToBag() it describes the device.
    const GenICam::gcstring& GetInfo() const { return m_Info; }
    /// The bag's name (not part of the text format).
    const GenICam::gcstring& GetBagName() const { return m_BagName; }
    void SetBagName(const GenICam::gcstring& bagName) { m_BagName = bagName; }

    /// Appends the feature's name and its current value (ToString()). \throws what ToString() throws.
    bool PersistFeature(IValue& item);

    /**
     * \brief Clears the bag and stores every streamable feature of \a pNodeMap in node-map order.
     *
     * Stored are features (reachable from Root) marked Streamable that are readable and
     * writable, except selectors themselves and commands. A selected feature is stored for
     * every combination of its selectors' values in which it is readable (enumeration entries
     * that are available, integers Min..Max by Inc, at most 65536 values per selector); the
     * selectors are written through the node map meanwhile and put back afterwards, and their
     * values are appended as plain entries. The info text becomes the device line
     * "Device = <Vendor>::<Model> -- <ToolTip> -- Device version = ... -- Product GUID = ...
     * -- Product version GUID = ...".
     * \param[in] pNodeMap The node map to read.
     * \param[in] maxEntries Stop once the bag holds this many entries (0 counts as 1; negative:
     *            no limit).
     * \param[in] pFeatureFilter Only these feature names (with their selectors' entries), or null.
     * \return The number of entries stored.
     * \throws InvalidArgumentException "Node map pointer is NULL" when \a pNodeMap is null.
     */
    int64_t StoreToBag(INodeMap* pNodeMap, int maxEntries = -1, GenICam::gcstring_vector* pFeatureFilter = nullptr);

    /**
     * \brief Applies the bag to \a pNodeMap.
     *
     * Writes every entry in bag order without range checks (FromString with Verify false;
     * a command entry executes the command; for a "{...}" entry the listed selectors are
     * written first, unknown ones ignored). Entries that fail are retried once the others are
     * written, and the bag is replayed in order when a retry succeeded, so that values whose
     * acceptance depends on other values get in. Each entry that still fails is reported.
     * When \a verify is true and every write succeeded, the bag is replayed once more: selectors
     * are written again and every other value is read back with verification and compared as
     * text.
     * \param[in] pNodeMap The node map to write.
     * \param[in] verify   Read every value back afterwards and compare it.
     * \param[out] pErrorList Receives one text per failure ("Error while writing node
     *             '<name>': ...", "Error while verifying node '<name>'. Expected '...', but found
     *             '...'", ...), appended; may be null.
     * \return True when every entry was applied (and verified when asked).
     * \throws InvalidArgumentException "Node map pointer is NULL" when \a pNodeMap is null.
     */
    bool LoadFromBag(INodeMap* pNodeMap, bool verify = true, GenICam::gcstring_vector* pErrorList = nullptr);

    /// Whether both bags hold the same names and values in the same order.
    bool operator==(const CFeatureBag& other) const;
    bool operator!=(const CFeatureBag& other) const { return !(*this == other); }
    /// The bag in the text format (what operator<< writes).
    GenICam::gcstring ToString() const;

    /// Number of entries.
    size_t GetNumEntries() const { return m_Names.size(); }

    /// Writes the bag in the text format.
    friend GENICAM_API std::ostream& operator<<(std::ostream& stream, const CFeatureBag& bag);
    /**
     * \brief Replaces the bag's entries by those read from \a stream.
     *
     * The first line must hold GENAPI_PERSISTENCE_MAGIC; lines starting with '#' and blank
     * lines are skipped; every other line is "<name>\t<value>" (the name is trimmed, the value
     * kept as it is, a trailing carriage return included).
     * \throws RuntimeException "The stream is not a GenApi feature stream since it is missing the
     *         magic GUID in the first line" (also for an empty stream) or "The stream holds
     *         incomplete key - value - set" for a line without a tab or with an empty name or value.
     */
    friend GENICAM_API std::istream& operator>>(std::istream& stream, CFeatureBag& bag);

protected:
    GenICam::gcstring_vector m_Names;  ///< feature names, in bag order
    GenICam::gcstring_vector m_Values; ///< one value text per name
    GenICam::gcstring m_Info;          ///< header info text
    GenICam::gcstring m_BagName;
};

GENICAM_API std::ostream& operator<<(std::ostream& stream, const CFeatureBag& bag);
GENICAM_API std::istream& operator>>(std::istream& stream, CFeatureBag& bag);
} // namespace GenApi
