#pragma once

#include <Base/GCString.h>
#include <GenTL/GenTL.h>
#include <QvApi/QvApiDefs.h>

// The 57 GenTL entry points (GenTL 1.0 to 1.5) the loader resolves, in resolution order.
#define QV_GENTL_ENTRY_POINTS(X)                                                                       \
    X(GCCloseLib)                                                                                      \
    X(GCGetInfo)                                                                                       \
    X(GCGetLastError)                                                                                  \
    X(GCInitLib)                                                                                       \
    X(TLClose)                                                                                         \
    X(TLGetInfo)                                                                                       \
    X(TLGetInterfaceID)                                                                                \
    X(TLGetInterfaceInfo)                                                                              \
    X(TLGetNumInterfaces)                                                                              \
    X(TLOpen)                                                                                          \
    X(TLOpenInterface)                                                                                 \
    X(TLUpdateInterfaceList)                                                                           \
    X(IFClose)                                                                                         \
    X(IFGetInfo)                                                                                       \
    X(IFGetDeviceID)                                                                                   \
    X(IFGetDeviceInfo)                                                                                 \
    X(IFGetNumDevices)                                                                                 \
    X(IFOpenDevice)                                                                                    \
    X(IFUpdateDeviceList)                                                                              \
    X(IFGetParentTL)                                                                                   \
    X(DevClose)                                                                                        \
    X(DevGetInfo)                                                                                      \
    X(DevGetDataStreamID)                                                                              \
    X(DevGetNumDataStreams)                                                                            \
    X(DevGetPort)                                                                                      \
    X(DevOpenDataStream)                                                                               \
    X(DevGetParentIF)                                                                                  \
    X(DSAllocAndAnnounceBuffer)                                                                        \
    X(DSAnnounceBuffer)                                                                                \
    X(DSClose)                                                                                         \
    X(DSFlushQueue)                                                                                    \
    X(DSGetBufferID)                                                                                   \
    X(DSGetBufferInfo)                                                                                 \
    X(DSGetInfo)                                                                                       \
    X(DSQueueBuffer)                                                                                   \
    X(DSRevokeBuffer)                                                                                  \
    X(DSStartAcquisition)                                                                              \
    X(DSStopAcquisition)                                                                               \
    X(DSGetBufferChunkData)                                                                            \
    X(DSGetParentDev)                                                                                  \
    X(DSGetNumBufferParts)                                                                             \
    X(DSGetBufferPartInfo)                                                                             \
    X(GCGetPortInfo)                                                                                   \
    X(GCGetPortURL)                                                                                    \
    X(GCGetNumPortURLs)                                                                                \
    X(GCGetPortURLInfo)                                                                                \
    X(GCReadPort)                                                                                      \
    X(GCWritePort)                                                                                     \
    X(GCWritePortStacked)                                                                              \
    X(GCReadPortStacked)                                                                               \
    X(EventFlush)                                                                                      \
    X(EventGetData)                                                                                    \
    X(EventGetDataInfo)                                                                                \
    X(EventGetInfo)                                                                                    \
    X(EventKill)                                                                                       \
    X(GCRegisterEvent)                                                                                 \
    X(GCUnregisterEvent)

namespace QvApi
{
/**
 * \brief The binding to one GenTL producer (.cti): its file, its loader handle and its table
 *        of entry points.
 *
 * The constructor finds the file along GENICAM_GENTL64_PATH, loads it and calls GCInitLib; it
 * either yields a loaded binding or throws. Each system object owns one; every module of that
 * system borrows it and calls the producer through the public entry members, each named as the
 * GenTL function and null when the producer does not export it (call through QV_GENTL_CALL,
 * which turns a null entry into GC_ERR_NOT_IMPLEMENTED).
 *
 * Threads: built and destroyed on the owner's thread; the table is written only then, so any
 * thread may read it in between without a lock.
 */
class QVAPI_API CQvGenTLLib
{
public:
    /**
     * \brief Finds, loads and initialises the producer.
     * \param[in] fileName The producer's bare file name, e.g. "libqvgentl.cti".
     * \throws GenICam::RuntimeException "File %s not found." when no readable candidate exists.
     * \throws CQvLinuxErrorException when the dynamic loader refuses the file.
     * \throws CQvGenTLErrorException "%d = GCInitLib()" when GCInitLib is missing (-1003) or fails.
     * \throws GenICam::BadAllocException when memory runs out.
     */
    explicit CQvGenTLLib(GenICam::gcstring fileName);
    /// Calls GCCloseLib and drops the loader's reference. Never throws.
    ~CQvGenTLLib();
    CQvGenTLLib(const CQvGenTLLib&) = delete;
    CQvGenTLLib& operator=(const CQvGenTLLib&) = delete;
    CQvGenTLLib(CQvGenTLLib&&) = delete;
    CQvGenTLLib& operator=(CQvGenTLLib&&) = delete;

    /**
     * \brief Searches GENICAM_GENTL64_PATH for the file: the first readable candidate wins.
     * \return The directory piece, "/" and the file name, exactly as tested.
     * \throws GenICam::RuntimeException "File %s not found." (unset or empty variable too).
     */
    GenICam::gcstring GetFullPathName() const;
    /// Loads the file at the full path, resolves the table and calls GCInitLib (throws as the
    /// constructor does). Meant for the constructor; there is no reload of a failed binding.
    void LoadLib();
    /// Calls GCCloseLib (result ignored), clears the table and closes the loader handle.
    /// Does nothing when nothing is loaded.
    void UnloadLib();

    /// The file name given to the constructor.
    const GenICam::gcstring& GetFileName() const { return m_fileName; }
    /// The path the search found.
    const GenICam::gcstring& GetFullPath() const { return m_fullPath; }
    /// The dynamic loader's handle; null when nothing is loaded.
    void* GetLibraryHandle() const { return m_hLibrary; }

    // The entry-point table, one member per GenTL function, typed GenTL::P<name>.
#define QV_GENTL_DECLARE_ENTRY(name) GenTL::P##name name = nullptr;
    QV_GENTL_ENTRY_POINTS(QV_GENTL_DECLARE_ENTRY)
#undef QV_GENTL_DECLARE_ENTRY

private:
    GenICam::gcstring m_fileName;
    GenICam::gcstring m_fullPath;
    void* m_hLibrary = nullptr; // owned: one dlopen reference, dropped by UnloadLib()
};
} // namespace QvApi
