#include "modules/EmbeddedFile.h"

#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <stdexcept>

namespace QvGenTL {

const EmbeddedFile_t& FindEmbeddedFile(const std::string& name)
{
    for (size_t i = 0; i < kEmbeddedFileCount; ++i)
        if (name == kEmbeddedFiles[i].name)
            return kEmbeddedFiles[i];
    throw std::logic_error("description not embedded: " + name);
}

std::string LocalUrl(const PortUrl_t& url)
{
    // No "///" before the name: consumers that take the text between ':' and ';' as the file
    // name then get the bare name.
    char text[256];
    std::snprintf(text, sizeof(text), "local:%s;%" PRIX64 ";%zX?SchemaVersion=%d.%d.%d", url.file->name,
                  url.address, url.file->size, url.file->schemaMajor, url.file->schemaMinor,
                  url.file->schemaSubMinor);
    return text;
}

} // namespace QvGenTL
