#pragma once

#include <exception>
#include <memory>
#include <new>
#include <string>
#include <type_traits>

#include <GenTL/GenTL.h>

#include "exports/Library.h"
#include "exports/LastError.h"
#include "modules/GenTLError.h"
#include "modules/HandleTable.h"
#include "modules/InfoValue.h"

namespace QvGenTL {

/**
 * Runs the body of an entry point and turns every outcome into a GC_ERROR: the one place
 * where exceptions stop. A body returns void (success unless it throws) or a GC_ERROR (for
 * results that are not failures of the producer, such as event time-outs); every non-success
 * is recorded for GCGetLastError of the calling thread.
 */
template <class Body>
GenTL::GC_ERROR GuardedCall(const char* function, Body&& body) noexcept
{
    try
    {
        if constexpr (std::is_void_v<std::invoke_result_t<Body>>)
        {
            body();
            return GenTL::GC_ERR_SUCCESS;
        }
        else
        {
            const GenTL::GC_ERROR result = body();
            if (result != GenTL::GC_ERR_SUCCESS)
                RecordError(result, std::string(function) + " returned " + std::to_string(result));
            return result;
        }
    }
    catch (const CGenTLError& error)
    {
        return RecordError(error.Code(), std::string(function) + ": " + error.what());
    }
    catch (const std::bad_alloc&)
    {
        return RecordError(GenTL::GC_ERR_OUT_OF_MEMORY, std::string(function) + ": out of memory");
    }
    catch (const std::exception& error)
    {
        return RecordError(GenTL::GC_ERR_ERROR, std::string(function) + ": " + error.what());
    }
    catch (...)
    {
        return RecordError(GenTL::GC_ERR_ERROR, std::string(function) + ": unknown failure");
    }
}

/// The live object behind a handle, after checking that GCInitLib was called.
template <class T>
std::shared_ptr<T> Lookup(void* handle)
{
    CLibrary::Instance().CheckInitialized();
    return Handles().Get<T>(handle);
}

/// Throws GC_ERR_INVALID_PARAMETER for a required pointer that is null.
inline void Require(const void* pointer, const char* name)
{
    if (pointer == nullptr)
        ThrowGenTL(GenTL::GC_ERR_INVALID_PARAMETER, "%s is null", name);
}

/// Copies an information value out under the two-phase rule; throws on failure.
inline void Answer(const CInfoValue& value, GenTL::INFO_DATATYPE* piType, void* pBuffer, size_t* piSize)
{
    const GenTL::GC_ERROR result = value.CopyTo(piType, pBuffer, piSize);
    if (result == GenTL::GC_ERR_INVALID_PARAMETER)
        ThrowGenTL(result, "piSize is null");
    if (result == GenTL::GC_ERR_BUFFER_TOO_SMALL)
        ThrowGenTL(result, "The buffer holds fewer than the %zu bytes of the answer", value.Size());
}

/// Copies a text (with its NUL) out under the two-phase rule (IDs and URLs).
inline void AnswerText(const std::string& text, char* pBuffer, size_t* piSize)
{
    Answer(CInfoValue::String(text), nullptr, pBuffer, piSize);
}

} // namespace QvGenTL
