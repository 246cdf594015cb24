#pragma once

#include <cstddef>
#include <string>

namespace GenApi
{
/**
 * \brief Takes the description out of a zipped description (libzip): the first entry whose name
 *        ends in ".xml", else the first file entry.
 *
 * Stateless; any thread.
 */
class CZipReader
{
public:
    /**
     * \brief The unpacked description.
     * \param[in] maxBytes Largest unpacked size accepted.
     * \throws RuntimeException for data that is not a zip, an empty zip, an entry too large or a
     *         damaged entry (CRC error).
     */
    static std::string ExtractDescription(const void* pData, size_t dataSize, size_t maxBytes);
};
} // namespace GenApi
