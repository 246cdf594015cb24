#pragma once

#include <memory>
#include <string>
#include <string_view>

#include <Base/GCString.h>
#include <GenApi/Synch.h>

namespace GenApi
{
class CNodeMapImpl;

/**
 * \brief Builds a node map from description text.
 *
 * Parses the text with pugixml in place, creates every node with its name in one pass, resolves
 * references and reads properties in a second, links (formulas, checks, caching modes) in a third,
 * then drops the document. Errors are RuntimeExceptions naming the node and the line.
 * Stateless; any thread.
 */
class CXmlLoader
{
public:
    /// Largest description accepted (unzipped).
    static constexpr size_t kMaxDescriptionBytes = 64u << 20;
    /// Most nodes accepted: real descriptions hold a few thousand, and every node costs memory
    /// and load time, so a description of millions of tiny nodes is refused early.
    static constexpr size_t kMaxNodes = 1u << 18;

    /**
     * \brief Loads \a xmlText into a new node map.
     * \param[in] xmlText   The description (any encoding pugixml detects, BOM or not).
     * \param[in] deviceName Name the node map reports.
     * \param[in] pUserLock Lock to use instead of the map's own, or null.
     */
    static std::unique_ptr<CNodeMapImpl> Load(const std::string& xmlText, const GenICam::gcstring& deviceName,
                                              CLock* pUserLock);

    /**
     * \brief The description reduced to \a rootName and every node it references, directly or
     *        not; \a renameToRoot renames that node "Root". Returns XML text.
     */
    static std::string ExtractSubtree(const std::string& xmlText, const std::string& rootName, bool renameToRoot);
};
} // namespace GenApi
