#pragma once

#include <GenApi/IValue.h>

namespace GenApi
{
/**
 * \brief Raw bytes of a register.
 *
 * Thread: any; each call locks the node map's lock.
 */
GENICAM_INTERFACE GENAPI_DECL_ABSTRACT IRegister : virtual public IValue
{
    /**
     * \brief Writes the register's bytes.
     * \param[in] pBuffer     Bytes in address order.
     * \param[in] lengthBytes Number of bytes; must equal GetLength().
     * \param[in] verify      Check the access mode and read the value back afterwards.
     */
    virtual void Set(const uint8_t* pBuffer, int64_t lengthBytes, bool verify = true) = 0;
    /// Reads the register's bytes into \a pBuffer (\a lengthBytes must equal GetLength()).
    virtual void Get(uint8_t* pBuffer, int64_t lengthBytes, bool verify = false, bool ignoreCache = false) = 0;
    /// Length in bytes.
    virtual int64_t GetLength() = 0;
    /// Address in the port's register space.
    virtual int64_t GetAddress() = 0;
};
} // namespace GenApi
