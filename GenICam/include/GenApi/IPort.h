#pragma once

#include <GenApi/IBase.h>

namespace GenApi
{
/**
 * \brief Access to a register space (a device, a chunk buffer, a memory block).
 *
 * Applications implement it and connect it to a Port node with INodeMap::Connect. The node map
 * calls it with its lock held; exceptions thrown here reach the caller of the node unchanged.
 */
GENICAM_INTERFACE GENAPI_DECL_ABSTRACT IPort : virtual public IBase
{
    /// Reads \a lengthBytes bytes at \a address into \a pBuffer.
    virtual void Read(void* pBuffer, int64_t address, int64_t lengthBytes) = 0;
    /// Writes \a lengthBytes bytes from \a pBuffer at \a address.
    virtual void Write(const void* pBuffer, int64_t address, int64_t lengthBytes) = 0;
};
} // namespace GenApi
