#pragma once

#include <stddef.h>
#include <stdint.h>

#include <Base/GCString.h>
#include <GenTL/GenTL.h>
#include <QvApi/QvApiDefs.h>
#include <QvApi/QvCallback.h>
#include <QvApi/QvEventCtrl.h>
#include <QvApi/QvReleasable.h>

namespace QvApi
{
class IQvDeviceReleasable;
class IQvInterface;
class IQvPort;

/// Which producer a system loads (CreateIQvSystem); the file is searched on GENICAM_GENTL64_PATH.
enum _EQvSystemVendor_t : uint32_t
{
    QvSystemVendor_Default = 0,  ///< "libqvgentl.cti", the SDK's own producer; the mask as given
    QvSystemVendor_Coaxlink = 1, ///< "coaxlink.cti"; CoaXPress interfaces only
    QvSystemVendor_KYFG = 2,     ///< "KYFGLibGenTL.cti"; CoaXPress interfaces only
    QvSystemVendor_SiSo = 3      ///< "siso_gentl.cti"; CoaXPress interfaces only
};
typedef _EQvSystemVendor_t EQvSystemVendor_t;

/// Transport layers, as a bit mask: which interfaces a system opens.
enum _EQvInterfaceType_t : uint32_t
{
    QvInterfaceType_USB3Vision = 1, ///< GenTL TL type "U3V"
    QvInterfaceType_GigEVision = 2, ///< GenTL TL type "GEV"
    QvInterfaceType_CoaXPress = 4,  ///< GenTL TL type "CXP"
    QvInterfaceType_All = 0xFFFFFFFF ///< every type
};
typedef _EQvInterfaceType_t EQvInterfaceType_t;

/**
 * \brief Information about the transport layer (TLGetInfo). Owned by the system; any thread.
 * Every getter throws CQvGenTLErrorException "%d = TLGetInfo(...)" when the producer fails.
 */
class IQvSystemInfo
{
public:
    /// \return The transport layer's ID.
    virtual GenICam::gcstring GetID() const = 0;
    /// \return The producer's vendor.
    virtual GenICam::gcstring GetVendor() const = 0;
    /// \return The producer's model.
    virtual GenICam::gcstring GetModel() const = 0;
    /// \return The producer's version text.
    virtual GenICam::gcstring GetVersion() const = 0;
    /// \return The transport-layer type, e.g. "U3V", "GEV", "CXP", "Mixed".
    virtual GenICam::gcstring GetTLType() const = 0;
    /// \return The producer's file name.
    virtual GenICam::gcstring GetName() const = 0;
    /// \return The producer's full path.
    virtual GenICam::gcstring GetPathName() const = 0;
    /// \return A name to show to users.
    virtual GenICam::gcstring GetDisplayName() const = 0;
    /// \return The character encoding of the producer's texts (0 ASCII, 1 UTF-8).
    virtual int32_t GetCharEncoding() const = 0;
    /// \return The GenTL major version the producer implements.
    virtual uint32_t GetGenTLVersionMajor() const = 0;
    /// \return The GenTL minor version the producer implements.
    virtual uint32_t GetGenTLVersionMinor() const = 0;

protected:
    ~IQvSystemInfo() = default; // owned by the system
};

/**
 * \brief One loaded GenTL producer with its open transport layer and the list of its
 *        interfaces, filtered by the interface-type mask given to CreateIQvSystem().
 *
 * Reference counted: CreateIQvSystem() hands it out with one reference; Release() drops one and
 * the last closes every interface, the transport layer and the producer. Release the devices
 * opened through it first. The interface list: any thread (one lock). Callbacks (transport
 * layer error events) run on the system's listener thread.
 */
class IQvSystem : public IQvRegisterCallback, public IQvEventCtrl
{
public:
    /// \return The vendor the system was created for.
    virtual _EQvSystemVendor_t GetQvSystemVendor() = 0;
    /// \return The transport layer's port (its node map describes the system); owned by it.
    virtual IQvPort* GetIQvPort() = 0;
    /// \return The transport-layer information; owned by the system.
    virtual IQvSystemInfo* GetIQvSystemInfo() const = 0;
    /**
     * \brief Asks the producer for its interfaces (TLUpdateInterfaceList, time-out 250 ms) and
     *        rebuilds the list when it changed: interfaces still listed are kept (same object),
     *        gone ones are released, new ones of a type in the mask are opened.
     * \return True when the list was rebuilt.
     * \throws CQvGenTLErrorException for the failing GenTL call.
     */
    virtual bool UpdateInterfaceList() = 0;
    /// \return Number of interfaces in the list.
    virtual size_t GetInterfaceCount() const = 0;
    /**
     * \return Interface \a nIndex; owned by the system, valid until the list is rebuilt or the
     *         system ends.
     * \throws GenICam::OutOfRangeException naming "GetInterface" for a bad index.
     */
    virtual IQvInterface* GetIQvInterface(size_t nIndex) = 0;
    /**
     * \brief Opens the first device that any interface, in list order, can open with \a flags.
     * \return The device; the caller ends it with Release().
     * \throws GenICam::RuntimeException "There is no available device.".
     */
    virtual IQvDeviceReleasable* CreateFirstIQvDevice(GenTL::DEVICE_ACCESS_FLAGS flags = GenTL::DEVICE_ACCESS_CONTROL) = 0;

protected:
    ~IQvSystem() = default; // ended with IQvSystemReleasable::Release()
};

/**
 * \brief A system as CreateIQvSystem() hands it out: reference counted, ended by the last
 *        Release(). AddRef()/Release() from any thread.
 */
class IQvSystemReleasable : public IQvSystem, public IQvReleasable
{
public:
    /// \brief Adds a reference. \return The new count.
    virtual int64_t AddRef() = 0;

protected:
    ~IQvSystemReleasable() = default;
};
} // namespace QvApi
