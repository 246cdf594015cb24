#pragma once

#include <cstdint>
#include <memory>

#include <Base/GCString.h>
#include <GenApi/IPort.h>
#include <GenApi/NodeMapFactory.h>
#include <GenApi/NodeMapRef.h>
#include <GenApi/Types.h>
#include <GenTL/GenTL.h>
#include <QvApi/QvApiDefs.h>

namespace QvApi
{
class CQvGenTLLib;

/**
 * \brief Turns a GenTL port's description URL into a GenApi node map: reads the description
 *        (plain or zipped XML) from the port's registers, builds and connects the node map, and
 *        keeps the description so that sub-trees (chunk data) can be cut from it and the bytes
 *        saved to a file.
 *
 * Only "local:" URLs are supported. Owned by one CQvPort; one thread at a time (the port's
 * owner serialises). The node map itself may then be used from any thread.
 */
class QVAPI_API CQvXMLFile
{
public:
    /// Where a URL says the description lies.
    enum EURLLocation_t
    {
        URLLocation_Local = 0, ///< "local:" (and anything unrecognised)
        URLLocation_Http = 1,  ///< "http:"
        URLLocation_File = 2   ///< "file:"
    };

    /**
     * \param[in] pCQvGenTL         Producer binding; borrowed, must outlive this object.
     * \param[in] hPort             The port the description is read from.
     * \param[in] accessMode        The port's access mode (kept for the owner).
     * \param[in] nodeMapNamePrefix Device name of every node map made here, e.g. "System_TL0".
     * \throws GenICam::BadAllocException.
     */
    CQvXMLFile(CQvGenTLLib* pCQvGenTL, GenTL::PORT_HANDLE hPort, GenApi::EAccessMode accessMode,
               const GenICam::gcstring& nodeMapNamePrefix);
    /// Deletes the factory and the bytes, then the chunk factory, then drops the node map.
    ~CQvXMLFile();
    CQvXMLFile(const CQvXMLFile&) = delete;
    CQvXMLFile& operator=(const CQvXMLFile&) = delete;

    /**
     * \brief Loads the description named by \a url and builds the node map, connected to
     *        \a pPort under \a portName. Does nothing once a node map exists (no reload).
     * \throws GenICam::InvalidArgumentException "URL location %d is not supported.".
     * \throws CQvGenTLErrorException "%d = GCReadPort(0x%p, %I64u, 0x%p, 0x%p)".
     * \throws GenICam::AccessException "Feature not present (reference not valid)".
     * \throws The node-map engine's exceptions for a faulty description (the next call retries).
     */
    void CreateNodeMap(const GenICam::gcstring& url, GenApi::IPort* pPort, const GenICam::gcstring& portName);
    /// \return The node map once created, else null. Owned here.
    GenApi::INodeMap* GetNodeMap() const;
    /// \return The description's file name. \throws GenICam::RuntimeException "XML File is not loaded.".
    GenICam::gcstring GetXMLFileName() const;
    /**
     * \brief Writes the description bytes to \a fileName (plain XML without trailing NULs).
     * \throws GenICam::RuntimeException "XML File is not loaded.", "File %s could not be
     *         opened." or "File %s is unwritable.".
     */
    void SaveToFile(const GenICam::gcstring& fileName);
    /// \brief Builds into \a nodeMap a node map of the branch under \a rootName, connected to
    ///        the same port; nothing happens before the node map exists.
    void CreateSubTreeNodeMap(const GenICam::gcstring& rootName, GenApi::CNodeMapRef& nodeMap, bool doRenameToRoot);
    /// \brief Keeps the branch under \a rootName as the chunk factory (once created).
    void CreateNodeMapFactoryForChunkData(const GenICam::gcstring& rootName, bool doRenameToRoot);
    /// \brief Builds into \a nodeMap a node map from the chunk factory, connected to the same
    ///        port, with "TLParamsLock" set to 1 when it is a writable integer.
    void CreateSubTreeNodeMapForChunkData(GenApi::CNodeMapRef& nodeMap);
    /// \return True while no chunk factory was prepared.
    bool IsChunkFactoryEmpty() const { return m_chunkFactory.IsEmpty(); }
    /// \return The content type of the last load.
    GenApi::EContentType_t GetContentType() const { return m_contentType; }
    /// \return The size in bytes of the loaded description; 0 when nothing is loaded.
    uint64_t GetDescriptionSize() const { return m_descriptionSize; }
    /// \return The access mode given at construction.
    GenApi::EAccessMode GetAccessMode() const { return m_accessMode; }

    /**
     * \brief The port's first URL through the GenTL 1.0 call GCGetPortURL.
     * \throws CQvGenTLErrorException "%d = GCGetPortURL(0x%p, 0x%p, 0x%p)" (-1003 when missing).
     */
    static GenICam::gcstring GetURL(CQvGenTLLib* pCQvGenTL, GenTL::PORT_HANDLE hPort);

    // The URL grammar: scheme ':' path ';' hex address ';' hex length, each part found by a
    // plain character search.
    /// \return 0 "local:", 1 "http:", 2 "file:" (case-insensitive); anything else counts as local.
    static int ParseURLLocation(const GenICam::gcstring& url);
    /// \return The text after the first ':' up to the first ';'.
    static GenICam::gcstring ParseURLFilePath(const GenICam::gcstring& url);
    /// \return The part of \a filePath after its last backslash.
    static GenICam::gcstring ParseURLFileName(const GenICam::gcstring& filePath);
    /// \return The hexadecimal number after the first ';' (0 when there is none).
    static uint64_t ParseURLLocalAddress(const GenICam::gcstring& url);
    /// \return The hexadecimal number after the second ';' (0 when there is none).
    static uint64_t ParseURLLocalLength(const GenICam::gcstring& url);
    /// \return True when \a filePath ends in "zip", any case (the dot is not examined).
    static bool IsZipFileName(const GenICam::gcstring& filePath);

private:
    void LoadXMLFile(const GenICam::gcstring& url);
    void DeleteBuffer();
    void DeleteNodeMapFactory();
    /// A factory over the loaded bytes (ContentType after the file name).
    std::unique_ptr<GenApi::CNodeMapFactory> MakeFactory() const;
    /// The main factory, rebuilt from the bytes when creating the node map released its data.
    GenApi::CNodeMapFactory& MainFactoryWithData();
    /// Connects a node map made from a sub-tree to the remembered port.
    void ConnectSubTree(GenApi::INodeMap* pNodeMap, GenApi::CNodeMapRef& nodeMap);

    CQvGenTLLib* const m_pCQvGenTL; // borrowed from the system, which outlives every port
    const GenTL::PORT_HANDLE m_hPort;
    const GenApi::EAccessMode m_accessMode;
    GenApi::EContentType_t m_contentType = GenApi::ContentType_Xml;
    GenICam::gcstring m_filePath;
    uint64_t m_descriptionSize = 0;
    std::unique_ptr<uint8_t[]> m_pDescription; // size + 1 bytes, NUL-terminated
    GenApi::CNodeMapRef m_nodeMap;
    std::unique_ptr<GenApi::CNodeMapFactory> m_pNodeMapFactory; // null when nothing is loaded
    GenApi::CNodeMapFactory m_chunkFactory;                     // empty until chunk data is prepared
    bool m_bCreated = false;
    GenApi::IPort* m_pPort = nullptr; // borrowed: the owning CQvPort
    GenICam::gcstring m_portName;
    const GenICam::gcstring m_nodeMapNamePrefix;
};
} // namespace QvApi
