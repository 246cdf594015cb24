#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <GenTL/GenTL.h>

#include "modules/EmbeddedFile.h"
#include "modules/HandleObject.h"
#include "modules/InfoValue.h"

namespace QvGenTL {

/// What GCGetPortInfo reports about a port.
struct PortIdentity_t
{
    std::string id;
    std::string vendor;
    std::string model;
    std::string tlType;
    std::string module;   ///< "TLSystem", "TLInterface", "TLDevice", "TLDataStream", "TLBuffer", "Device"
    std::string version;
    std::string portName; ///< the Port node of the description to connect to
    bool littleEndian;
    bool readable;
    bool writable;
};

/**
 * A GenTL port: register access, its identity and the URLs of its descriptions. Every module
 * handle is a port, and so is the remote device handle of DevGetPort.
 * Any thread; implementations lock what they share.
 */
class CPort : public CHandleObject
{
public:
    /// Reads *piSize bytes at address; throws CGenTLError on failure.
    virtual void ReadPort(uint64_t address, void* pBuffer, size_t size) = 0;
    /// Writes size bytes at address; throws CGenTLError on failure.
    virtual void WritePort(uint64_t address, const void* pBuffer, size_t size) = 0;
    virtual PortIdentity_t PortIdentity() const = 0;
    virtual std::vector<PortUrl_t> PortUrls() const = 0;

    CInfoValue PortInfo(GenTL::PORT_INFO_CMD command) const;
    CInfoValue UrlInfo(uint32_t index, GenTL::URL_INFO_CMD command) const;
};

} // namespace QvGenTL
