#pragma once

#include <Base/GCString.h>
#include <GenTL/GenTL.h>
#include <QvApi/QvSystem.h>

namespace QvApi
{
class CQvGenTLLib;

/**
 * \brief Answers the transport layer's information queries (TLGetInfo). Embedded in
 *        CQvSystem, which gives it the binding and handle once TLOpen succeeded and clears them
 *        when it closes. Any thread.
 */
class QVAPI_API CQvSystemInfo : public IQvSystemInfo
{
public:
    CQvSystemInfo() = default;
    virtual ~CQvSystemInfo() = default;
    CQvSystemInfo(const CQvSystemInfo&) = delete;
    CQvSystemInfo& operator=(const CQvSystemInfo&) = delete;

    /// Sets (or, with nulls, clears) what the queries use.
    void Set(CQvGenTLLib* pCQvGenTL, GenTL::TL_HANDLE hTL)
    {
        m_pCQvGenTL = pCQvGenTL;
        m_hTL = hTL;
    }

    GenICam::gcstring GetID() const override;
    GenICam::gcstring GetVendor() const override;
    GenICam::gcstring GetModel() const override;
    GenICam::gcstring GetVersion() const override;
    GenICam::gcstring GetTLType() const override;
    GenICam::gcstring GetName() const override;
    GenICam::gcstring GetPathName() const override;
    GenICam::gcstring GetDisplayName() const override;
    int32_t GetCharEncoding() const override;
    uint32_t GetGenTLVersionMajor() const override;
    uint32_t GetGenTLVersionMinor() const override;

private:
    GenICam::gcstring GetTLInfoString(GenTL::TL_INFO_CMD cmd) const;
    template <typename T>
    T GetTLInfo(GenTL::TL_INFO_CMD cmd) const;

    CQvGenTLLib* m_pCQvGenTL = nullptr; // borrowed from the system
    GenTL::TL_HANDLE m_hTL = nullptr;
};
} // namespace QvApi
