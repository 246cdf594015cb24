#include "modules/Port.h"

#include "modules/GenTLError.h"

namespace QvGenTL {

CInfoValue CPort::PortInfo(GenTL::PORT_INFO_CMD command) const
{
    const PortIdentity_t identity = PortIdentity();
    switch (command)
    {
    case GenTL::PORT_INFO_ID: return CInfoValue::String(identity.id);
    case GenTL::PORT_INFO_VENDOR: return CInfoValue::String(identity.vendor);
    case GenTL::PORT_INFO_MODEL: return CInfoValue::String(identity.model);
    case GenTL::PORT_INFO_TLTYPE: return CInfoValue::String(identity.tlType);
    case GenTL::PORT_INFO_MODULE: return CInfoValue::String(identity.module);
    case GenTL::PORT_INFO_LITTLE_ENDIAN: return CInfoValue::Bool8(identity.littleEndian);
    case GenTL::PORT_INFO_BIG_ENDIAN: return CInfoValue::Bool8(!identity.littleEndian);
    case GenTL::PORT_INFO_ACCESS_READ: return CInfoValue::Bool8(identity.readable);
    case GenTL::PORT_INFO_ACCESS_WRITE: return CInfoValue::Bool8(identity.writable);
    case GenTL::PORT_INFO_ACCESS_NA: return CInfoValue::Bool8(!identity.readable && !identity.writable);
    case GenTL::PORT_INFO_ACCESS_NI: return CInfoValue::Bool8(false);
    case GenTL::PORT_INFO_VERSION: return CInfoValue::String(identity.version);
    case GenTL::PORT_INFO_PORTNAME: return CInfoValue::String(identity.portName);
    default: ThrowGenTL(GenTL::GC_ERR_INVALID_PARAMETER, "Unknown PORT_INFO_CMD %d", command);
    }
}

CInfoValue CPort::UrlInfo(uint32_t index, GenTL::URL_INFO_CMD command) const
{
    const std::vector<PortUrl_t> urls = PortUrls();
    if (index >= urls.size())
        ThrowGenTL(GenTL::GC_ERR_INVALID_INDEX, "URL index %u is not below the URL count %zu", index, urls.size());
    const PortUrl_t& url = urls[index];
    switch (command)
    {
    case GenTL::URL_INFO_URL: return CInfoValue::String(LocalUrl(url));
    case GenTL::URL_INFO_SCHEMA_VER_MAJOR: return CInfoValue::Int32(url.file->schemaMajor);
    case GenTL::URL_INFO_SCHEMA_VER_MINOR: return CInfoValue::Int32(url.file->schemaMinor);
    case GenTL::URL_INFO_FILE_VER_MAJOR: return CInfoValue::Int32(url.file->fileMajor);
    case GenTL::URL_INFO_FILE_VER_MINOR: return CInfoValue::Int32(url.file->fileMinor);
    case GenTL::URL_INFO_FILE_VER_SUBMINOR: return CInfoValue::Int32(url.file->fileSubMinor);
    case GenTL::URL_INFO_FILE_SHA1_HASH: return CInfoValue::Buffer(url.file->sha1, sizeof(url.file->sha1));
    case GenTL::URL_INFO_FILE_REGISTER_ADDRESS: return CInfoValue::UInt64(url.address);
    case GenTL::URL_INFO_FILE_SIZE: return CInfoValue::UInt64(url.file->size);
    case GenTL::URL_INFO_SCHEME: return CInfoValue::Int32(GenTL::URL_SCHEME_LOCAL);
    case GenTL::URL_INFO_FILENAME:
        ThrowGenTL(GenTL::GC_ERR_NOT_AVAILABLE, "URL_INFO_FILENAME applies to file: URLs only");
    default: ThrowGenTL(GenTL::GC_ERR_INVALID_PARAMETER, "Unknown URL_INFO_CMD %d", command);
    }
}

} // namespace QvGenTL
