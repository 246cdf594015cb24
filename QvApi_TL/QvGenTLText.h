#pragma once

#include <cstddef>
#include <new>
#include <vector>

#include <Base/GCString.h>
#include <GenTL/GenTL.h>

namespace QvApi
{
/**
 * \brief Reads a variable-length GenTL text in two phases: size query with a null buffer,
 *        allocation of exactly that size, second call, copy into a gcstring.
 *
 * \param[in] call `GC_ERROR call(char* pBuffer, size_t* pSize)`: one GenTL call.
 * \param[in] fail `void fail(GC_ERROR err, void* pBuffer, size_t* pSize)`: throws the caller's
 *                 message (so that it names the caller's file and line); must not return.
 * A text the producer left without its NUL is ended behind the reported size.
 * \throws What \a fail throws; std::bad_alloc (the caller turns it into BadAllocException).
 */
template <class Call, class Fail>
GenICam::gcstring ReadGenTLText(Call&& call, Fail&& fail)
{
    size_t size = 0;
    GenTL::GC_ERROR err = call(nullptr, &size);
    if (err != GenTL::GC_ERR_SUCCESS)
        fail(err, nullptr, &size);
    if (size == static_cast<size_t>(-1))
        throw std::bad_alloc(); // one byte more for the NUL would wrap
    std::vector<char> buffer(size + 1, '\0');
    err = call(buffer.data(), &size);
    if (err != GenTL::GC_ERR_SUCCESS)
        fail(err, buffer.data(), &size);
    return GenICam::gcstring(buffer.data());
}
} // namespace QvApi
