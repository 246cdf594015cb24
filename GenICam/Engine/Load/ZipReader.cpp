#include "Engine/Load/ZipReader.h"

#include <cstring>
#include <memory>

#include <zip.h>

#include <Base/GCException.h>

namespace GenApi
{
namespace
{
bool EndsWithXml(const char* name)
{
    const size_t length = std::strlen(name);
    return length >= 4 && strcasecmp(name + length - 4, ".xml") == 0;
}

struct ZipCloser
{
    void operator()(zip_t* pZip) const { zip_discard(pZip); }
};
struct ZipFileCloser
{
    void operator()(zip_file_t* pFile) const { zip_fclose(pFile); }
};
} // namespace

std::string CZipReader::ExtractDescription(const void* pData, size_t dataSize, size_t maxBytes)
{
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t* pSource = zip_source_buffer_create(pData, dataSize, 0, &error);
    if (!pSource)
    {
        zip_error_fini(&error);
        throw RUNTIME_EXCEPTION("Zipped description: cannot read the data");
    }
    std::unique_ptr<zip_t, ZipCloser> pZip(zip_open_from_source(pSource, ZIP_RDONLY, &error));
    if (!pZip)
    {
        zip_source_free(pSource);
        const std::string text = zip_error_strerror(&error);
        zip_error_fini(&error);
        throw RUNTIME_EXCEPTION("Zipped description: not a zip archive (%s)", text.c_str());
    }
    zip_error_fini(&error);

    const zip_int64_t count = zip_get_num_entries(pZip.get(), 0);
    zip_int64_t chosen = -1;
    for (zip_int64_t i = 0; i < count && chosen < 0; ++i)
    {
        const char* name = zip_get_name(pZip.get(), static_cast<zip_uint64_t>(i), 0);
        if (name && EndsWithXml(name))
            chosen = i;
    }
    for (zip_int64_t i = 0; i < count && chosen < 0; ++i)
    {
        const char* name = zip_get_name(pZip.get(), static_cast<zip_uint64_t>(i), 0);
        if (name && name[0] != '\0' && name[std::strlen(name) - 1] != '/')
            chosen = i;
    }
    if (chosen < 0)
        throw RUNTIME_EXCEPTION("Zipped description: the archive holds no description");

    zip_stat_t stat;
    zip_stat_init(&stat);
    if (zip_stat_index(pZip.get(), static_cast<zip_uint64_t>(chosen), 0, &stat) != 0 || !(stat.valid & ZIP_STAT_SIZE))
        throw RUNTIME_EXCEPTION("Zipped description: cannot read the entry's size");
    if (stat.size > maxBytes)
        throw RUNTIME_EXCEPTION("Zipped description: the entry unpacks to %llu bytes; more than %zu are refused",
                                static_cast<unsigned long long>(stat.size), maxBytes);

    std::unique_ptr<zip_file_t, ZipFileCloser> pFile(zip_fopen_index(pZip.get(), static_cast<zip_uint64_t>(chosen), 0));
    if (!pFile)
        throw RUNTIME_EXCEPTION("Zipped description: cannot open the entry (%s)", zip_strerror(pZip.get()));
    std::string text(static_cast<size_t>(stat.size), '\0');
    size_t done = 0;
    while (done < text.size())
    {
        const zip_int64_t got = zip_fread(pFile.get(), &text[done], text.size() - done);
        if (got < 0)
            throw RUNTIME_EXCEPTION("Zipped description: the entry is damaged (%s)", zip_file_strerror(pFile.get()));
        if (got == 0)
            break;
        done += static_cast<size_t>(got);
    }
    // One more read lets libzip check the CRC at the end of the entry.
    char extra;
    if (zip_fread(pFile.get(), &extra, 1) < 0)
        throw RUNTIME_EXCEPTION("Zipped description: the entry is damaged (%s)", zip_file_strerror(pFile.get()));
    text.resize(done);
    return text;
}
} // namespace GenApi
