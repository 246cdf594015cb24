#pragma once

#include <Base/GCString.h>
#include <GenTL/GenTL.h>
#include <QvApi/QvInterface.h>

namespace QvApi
{
class CQvGenTLLib;

/**
 * \brief Answers an interface's information queries (IFGetInfo). Embedded in CQvInterface;
 *        any thread.
 */
class QVAPI_API CQvInterfaceInfo : public IQvInterfaceInfo
{
public:
    CQvInterfaceInfo(CQvGenTLLib* pCQvGenTL, GenTL::IF_HANDLE hIF) : m_pCQvGenTL(pCQvGenTL), m_hIF(hIF) {}
    virtual ~CQvInterfaceInfo() = default;
    CQvInterfaceInfo(const CQvInterfaceInfo&) = delete;
    CQvInterfaceInfo& operator=(const CQvInterfaceInfo&) = delete;

    GenICam::gcstring GetID() const override;
    GenICam::gcstring GetDisplayName() const override;
    GenICam::gcstring GetTLType() const override;

private:
    GenICam::gcstring GetIFInfoString(GenTL::INTERFACE_INFO_CMD cmd) const;

    CQvGenTLLib* const m_pCQvGenTL; // borrowed from the system
    const GenTL::IF_HANDLE m_hIF;
};
} // namespace QvApi
