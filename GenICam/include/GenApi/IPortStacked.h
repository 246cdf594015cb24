#pragma once

#include <cstddef>
#include <cstdint>

#include <GenApi/IPort.h>

namespace GenApi
{
/// One register of a stacked access: \a Size bytes at \a Address, read into or written from \a pBuffer.
struct PORT_REGISTER_STACK_ENTRY
{
    uint64_t Address;
    void* pBuffer;
    size_t Size;
};

/**
 * \brief A port that can transfer several registers in one device transaction.
 *
 * Transports with a stacked command (GigE Vision READREG/WRITEREG of many addresses, for one)
 * implement it to save round trips; a port without it is used register by register.
 */
GENICAM_INTERFACE GENAPI_DECL_ABSTRACT IPortStacked : virtual public IPort
{
    using IPort::Read;
    using IPort::Write;

    /// Reads every entry (each into its own buffer).
    virtual void Read(PORT_REGISTER_STACK_ENTRY* pEntries, size_t numEntries) = 0;
    /// Writes every entry, in order.
    virtual void Write(PORT_REGISTER_STACK_ENTRY* pEntries, size_t numEntries) = 0;
};
} // namespace GenApi
