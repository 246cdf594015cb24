#pragma once

#include <GenApi/IPort.h>

namespace GenApi
{
/**
 * \brief A port that can be bound to another port.
 *
 * Port nodes implement it: SetPortImpl() connects the application's IPort. An application port
 * that implements it too (CPortImpl) is told the port node it was connected to, so that it can
 * invalidate that node.
 */
GENICAM_INTERFACE GENAPI_DECL_ABSTRACT IPortConstruct : virtual public IPort
{
    /// Binds the other side of the connection.
    virtual void SetPortImpl(IPort* pPort) = 0;
    /// Whether every access through this port swaps its bytes.
    virtual EYesNo GetSwapEndianess() = 0;
};
} // namespace GenApi
