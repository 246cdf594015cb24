#pragma once

#include <GenApi/IBase.h>

namespace GenApi
{
/// An object released by calling Destroy() rather than delete.
GENICAM_INTERFACE GENAPI_DECL_ABSTRACT IDestroy
{
    /// Deletes the object.
    virtual void Destroy() = 0;

protected:
    virtual ~IDestroy() = default;
};
} // namespace GenApi
