#pragma once

#include <stdint.h>

#include <Base/GCString.h>
#include <QvApi/QvApiDefs.h>

namespace GenApi
{
struct INodeMap;
}

namespace QvApi
{
/**
 * \brief One description URL of a GenTL port (GCGetPortURLInfo), for the URL index the owning
 *        port currently selects.
 *
 * Owned by its port; valid while the port lives. Every getter asks the producer.
 * Any thread; the producer serialises.
 * Every getter throws CQvGenTLErrorException "%d = GCGetPortURLInfo(...)" when the producer
 * fails (-1003 when it lacks GCGetPortURLInfo).
 */
class IQvPortURLInfo
{
public:
    /// \return The URL, e.g. "local:Camera.zip;8000;1A3F". Falls back to GCGetPortURL for index 0.
    virtual GenICam::gcstring GetURL() const = 0;
    /// \return Major version of the GenICam schema the description follows.
    virtual int32_t GetSchemaVerMajor() const = 0;
    /// \return Minor version of the schema.
    virtual int32_t GetSchemaVerMinor() const = 0;
    /// \return Major version of the description file.
    virtual int32_t GetFileVerMajor() const = 0;
    /// \return Minor version of the description file.
    virtual int32_t GetFileVerMinor() const = 0;
    /// \return Sub-minor version of the description file.
    virtual int32_t GetFileVerSubMinor() const = 0;
    /**
     * \brief Copies the SHA-1 hash of the description file.
     * \param[out]    pBuffer Receives the raw hash bytes (20); null asks for the size only.
     * \param[in,out] pSize   Capacity in bytes on input, bytes written on output.
     */
    virtual void GetSha1HashBuffer(void* pBuffer, size_t* pSize) const = 0;
    /// \return Register address of a "local:" description in the port, in bytes.
    virtual uint64_t GetFileRegisterAddress() const = 0;
    /// \return Size of the description file in bytes.
    virtual uint64_t GetFileSize() const = 0;
    /// \return The GenTL URL scheme: 0 local, 1 http, 2 file.
    virtual int32_t GetScheme() const = 0;
    /// \return The description's file name.
    virtual GenICam::gcstring GetFileName() const = 0;

protected:
    ~IQvPortURLInfo() = default; // owned by the port
};

/**
 * \brief Properties of a GenTL port (GCGetPortInfo). Owned by its port; any thread.
 * Every getter throws CQvGenTLErrorException "%d = GCGetPortInfo(...)" when the producer fails.
 */
class IQvPortInfo
{
public:
    /// \return The port's ID.
    virtual GenICam::gcstring GetID() const = 0;
    /// \return The vendor of the module the port belongs to.
    virtual GenICam::gcstring GetVendor() const = 0;
    /// \return The model of that module.
    virtual GenICam::gcstring GetModel() const = 0;
    /// \return The transport-layer type, e.g. "U3V", "GEV", "CXP".
    virtual GenICam::gcstring GetTLType() const = 0;
    /// \return The GenTL module kind, e.g. "TLSystem", "Device".
    virtual GenICam::gcstring GetModule() const = 0;
    /// \return True when the registers are little-endian.
    virtual bool IsLittleEndian() const = 0;
    /// \return True when the registers are big-endian.
    virtual bool IsBigEndian() const = 0;
    /// \return True when the port can be read.
    virtual bool IsAccessRead() const = 0;
    /// \return True when the port can be written.
    virtual bool IsAccessWrite() const = 0;
    /// \return True when the port is not available at the moment.
    virtual bool IsAccessNA() const = 0;
    /// \return True when the port is not implemented.
    virtual bool IsAccessNI() const = 0;
    /// \return The port's version text.
    virtual GenICam::gcstring GetVersion() const = 0;
    /// \return The name of the Port node the description connects to (a camera: "Device").
    virtual GenICam::gcstring GetPortName() const = 0;

protected:
    ~IQvPortInfo() = default; // owned by the port
};

/**
 * \brief The register space of a GenTL module, its description URLs and its GenApi node map.
 *
 * Every module (system, interface, local device, remote device, data stream, buffer) has one,
 * owned by the module and valid while the module lives. The node map is built from the
 * description on first use and never reloaded. Register access through the node map is
 * serialised by the node map's lock; the port itself takes no lock.
 */
class IQvPort
{
public:
    /**
     * \return How many description URLs the port offers (GCGetNumPortURLs, or 1 when only
     *         the older GCGetPortURL answers, or 0).
     * \throws CQvGenTLErrorException "%d = GCGetNumPortURLs(0x%p, 0x%p)".
     */
    virtual uint32_t GetPortURLCount() = 0;
    /// \return The URL index that GetIQvPortURLInfo() describes and the node map is loaded from.
    virtual uint32_t GetPortURLIndex() = 0;
    /**
     * \brief Selects another URL. Affects the node map only when it has not been created yet.
     * \throws GenICam::OutOfRangeException "%s = %ld must be smaller than Max = %ld" ("nURLIndex")
     *         when the index is not below GetPortURLCount(); the index is then unchanged.
     */
    virtual void SetPortURLIndex(uint32_t nURLIndex) = 0;
    /// \return The URL information of the selected URL; owned by the port.
    virtual IQvPortURLInfo* GetIQvPortURLInfo() = 0;
    /**
     * \brief The port's node map, loaded from the selected URL on first call.
     * \return The node map; owned by the port, valid while the module lives. Its features may be
     *         used from any thread (the node map locks).
     * \throws GenICam::InvalidArgumentException "URL location %d is not supported." for
     *         "http:" and "file:" URLs.
     * \throws CQvGenTLErrorException when the description cannot be read from the port.
     * \throws GenICam exceptions of the node-map engine for a faulty description.
     */
    virtual GenApi::INodeMap* GetINodeMap() = 0;
    /// \return The port properties; owned by the port.
    virtual IQvPortInfo* GetIQvPortInfo() = 0;
    /**
     * \brief The file name of the description (the URL's path after its last backslash).
     * \throws As GetINodeMap().
     */
    virtual GenICam::gcstring GetXMLFileName() = 0;
    /**
     * \brief Writes the description bytes, as read from the port (a zip stays zipped), to a file.
     * \param[in] fileName Path of the file; an existing file is replaced.
     * \throws GenICam::RuntimeException "File %s could not be opened." or "File %s is unwritable.".
     * \throws As GetINodeMap().
     */
    virtual void SaveXMLFile(const GenICam::gcstring& fileName) = 0;

protected:
    ~IQvPort() = default; // owned by its module
};
} // namespace QvApi
