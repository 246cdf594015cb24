#pragma once

#include <cstddef>
#include <memory>

#include <Base/GCBase.h>
#include <GenApi/Synch.h>
#include <GenApi/Types.h>

namespace GenApi
{
struct INodeMap;
class CNodeMapFactoryData;

/// How a factory uses the preprocessed-description cache.
typedef enum
{
    CacheUsage_Automatic = 0,
    CacheUsage_ForceWrite = 1,
    CacheUsage_ForceRead = 2,
    CacheUsage_Ignore = 3
} ECacheUsage_t;

/// Form of the description data handed to a factory.
typedef enum
{
    ContentType_Xml = 0,
    ContentType_ZippedXml = 1
} EContentType_t;

/**
 * \brief Holds one device description and makes node maps from it.
 *
 * The data are copied in (or read from the file) at construction; a zipped description is
 * unpacked when it is first needed. Copies of a factory share the same data. CreateNodeMap may be
 * called several times for independent node maps unless the data were released.
 *
 * The preprocessed-description cache is not used: loading is fast enough that the cache usage
 * argument is accepted and ignored.
 *
 * Thread: one thread at a time per factory (and its copies).
 */
class GENICAM_API CNodeMapFactory
{
public:
    /// An empty factory (IsEmpty() is true).
    CNodeMapFactory();
    /**
     * \brief A factory reading a description file.
     * \throws InvalidArgumentException for an empty file name, RuntimeException when the file cannot be read.
     */
    CNodeMapFactory(EContentType_t contentType, const GenICam::gcstring& fileName,
                    ECacheUsage_t cacheUsage = CacheUsage_Automatic, bool suppressStringsOnLoad = false);
    /**
     * \brief A factory holding a copy of \a dataSize bytes at \a pData.
     * \throws InvalidArgumentException for null data or size 0.
     */
    CNodeMapFactory(EContentType_t contentType, const void* pData, size_t dataSize,
                    ECacheUsage_t cacheUsage = CacheUsage_Automatic, bool suppressStringsOnLoad = false);
    /// A factory holding plain XML text.
    explicit CNodeMapFactory(const GenICam::gcstring& xmlData, ECacheUsage_t cacheUsage = CacheUsage_Automatic,
                             bool suppressStringsOnLoad = false);
    CNodeMapFactory(const CNodeMapFactory& other);
    CNodeMapFactory& operator=(const CNodeMapFactory& other);
    virtual ~CNodeMapFactory();

    /// Whether the factory holds no description.
    bool IsEmpty() const;
    /// Adds a description whose nodes are merged into (and override) this one's when loading.
    void AddInjectionData(CNodeMapFactory& injectionData);
    /// Unpacks the data and merges the injection data.
    void LoadAndInject();
    /// Whether the data were unpacked (LoadAndInject or a node map created).
    bool IsLoaded() const;
    /**
     * \brief A new factory holding only the node \a rootName and every node it references,
     *        directly or not.
     * \param[in] rootName       Name of the root of the branch, e.g. "ChunkData".
     * \param[in] doRenameToRoot Rename that node to "Root".
     * \throws RuntimeException when the node does not exist, or for errors in the description.
     */
    CNodeMapFactory ExtractSubtree(const GenICam::gcstring& rootName, bool doRenameToRoot = false);
    /// Checks the description and makes it ready for CreateNodeMap (same as LoadAndInject).
    void Preprocess();
    /// Whether Preprocess (or a node map creation) has run.
    bool IsPreprocessed() const;
    /// Drops the description data; no further node maps can be created.
    void ReleaseCameraDescriptionFileData();
    /// Whether the data were dropped.
    bool IsCameraDescriptionFileDataReleased() const;
    /**
     * \brief Builds a node map from the description.
     * \param[in] deviceName Name the node map reports (GetDeviceName).
     * \param[in] doReleaseCameraDescriptionFileData Drop the description data afterwards.
     * \return A new node map; the caller owns it (release with IDestroy::Destroy or a CNodeMapRef).
     * \throws RuntimeException for errors in the description (naming the node and the line).
     */
    INodeMap* CreateNodeMap(const GenICam::gcstring& deviceName = "Device",
                            bool doReleaseCameraDescriptionFileData = true);
    /// As CreateNodeMap, but the node map uses \a userLock (which must outlive it) instead of its own.
    INodeMap* CreateNodeMap(CLock& userLock, const GenICam::gcstring& deviceName = "Device",
                            bool doReleaseCameraDescriptionFileData = true);
    /// A node map with no node.
    static INodeMap* CreateEmptyNodeMap();
    /// Clears the preprocessed-description cache (nothing to do: no cache is kept).
    static void ClearCache();
    /// Schema versions this engine loads: "1.0", "1.1".
    static GenICam::gcstring_vector GetSupportedSchemaVersions();
    /// A short text naming the factory's content.
    GenICam::gcstring ToString();
    /// The plain XML text of the description (unpacked, injection not applied).
    GenICam::gcstring ToXml();

private:
    std::shared_ptr<CNodeMapFactoryData> m_pData; // shared by copies of this factory
};
} // namespace GenApi
