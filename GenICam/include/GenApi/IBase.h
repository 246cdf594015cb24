#pragma once

#include <GenApi/Types.h>

#ifndef GENICAM_INTERFACE
#define GENICAM_INTERFACE struct
#endif

namespace GenApi
{
/**
 * \brief Root of every GenApi interface: anything that has an access mode.
 *
 * Interfaces derive from it virtually, so one node object exposes one IBase whatever interface
 * it is reached through, and dynamic_cast moves between its interfaces.
 */
GENICAM_INTERFACE GENAPI_DECL_ABSTRACT IBase
{
    /// Current access mode (NI, NA, WO, RO or RW). Thread: any (locks the node map).
    virtual EAccessMode GetAccessMode() const = 0;

protected:
    virtual ~IBase() = default;
};
} // namespace GenApi
