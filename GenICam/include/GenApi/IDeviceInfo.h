#pragma once

#include <GenApi/Types.h>

namespace GenApi
{
/**
 * \brief The description's header (model, vendor, versions); cast a node map to it.
 */
GENICAM_INTERFACE GENAPI_DECL_ABSTRACT IDeviceInfo
{
    virtual GenICam::gcstring GetModelName() = 0;
    virtual GenICam::gcstring GetVendorName() = 0;
    virtual GenICam::gcstring GetToolTip() = 0;
    virtual EStandardNameSpace GetStandardNameSpace() = 0;
    /// Version of this engine's GenApi compatibility level.
    virtual void GetGenApiVersion(Version_t& version, uint16_t& build) = 0;
    /// Schema version of the description.
    virtual void GetSchemaVersion(Version_t& version) = 0;
    /// Version of the description file.
    virtual void GetDeviceVersion(Version_t& version) = 0;
    virtual GenICam::gcstring GetProductGuid() = 0;
    virtual GenICam::gcstring GetVersionGuid() = 0;

protected:
    virtual ~IDeviceInfo() = default;
};
} // namespace GenApi
