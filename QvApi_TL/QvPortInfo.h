#pragma once

#include <Base/GCString.h>
#include <GenTL/GenTL.h>
#include <QvApi/QvPort.h>

namespace QvApi
{
class CQvGenTLLib;

/**
 * \brief The properties of a GenTL port (GCGetPortInfo). Embedded in CQvPort; any thread.
 */
class QVAPI_API CQvPortInfo : public IQvPortInfo
{
public:
    CQvPortInfo(CQvGenTLLib* pCQvGenTL, GenTL::PORT_HANDLE hPort);
    virtual ~CQvPortInfo() = default;
    CQvPortInfo(const CQvPortInfo&) = delete;
    CQvPortInfo& operator=(const CQvPortInfo&) = delete;

    GenICam::gcstring GetID() const override;
    GenICam::gcstring GetVendor() const override;
    GenICam::gcstring GetModel() const override;
    GenICam::gcstring GetTLType() const override;
    GenICam::gcstring GetModule() const override;
    bool IsLittleEndian() const override;
    bool IsBigEndian() const override;
    bool IsAccessRead() const override;
    bool IsAccessWrite() const override;
    bool IsAccessNA() const override;
    bool IsAccessNI() const override;
    GenICam::gcstring GetVersion() const override;
    GenICam::gcstring GetPortName() const override;

private:
    GenICam::gcstring GetPortInfoString(GenTL::PORT_INFO_CMD cmd) const;
    bool GetPortInfoBool(GenTL::PORT_INFO_CMD cmd) const;

    CQvGenTLLib* const m_pCQvGenTL; // borrowed; outlives the port
    const GenTL::PORT_HANDLE m_hPort;
};
} // namespace QvApi
