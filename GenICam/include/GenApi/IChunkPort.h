#pragma once

#include <Base/GCTypes.h>
#include <GenApi/IPort.h>

namespace GenApi
{
/// Reading 8 bytes here from a chunk port gives the attached chunk's base address.
#define CHUNK_BASE_ADDRESS_REGISTER (GC_INT64_MAX)
#define CHUNK_BASE_ADDRESS_REGISTER_LEN 8
/// Reading 8 bytes here from a chunk port gives the attached chunk's length.
#define CHUNK_LENGTH_REGISTER (GC_INT64_MAX - 15)
#define CHUNK_LENGTH_REGISTER_LEN 8

/**
 * \brief A Port node that carries chunk data of one chunk ID.
 */
GENICAM_INTERFACE GENAPI_DECL_ABSTRACT IChunkPort : virtual public IPort
{
    /// The chunk ID as written in the description (hex digits), or empty.
    virtual GenICam::gcstring GetChunkID() const = 0;
    /// Whether the chunk data should be copied rather than referenced.
    virtual EYesNo CacheChunkData() const = 0;
};
} // namespace GenApi
