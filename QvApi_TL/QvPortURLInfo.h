#pragma once

#include <cstddef>
#include <cstdint>

#include <Base/GCString.h>
#include <GenTL/GenTL.h>
#include <QvApi/QvPort.h>

namespace QvApi
{
class CQvGenTLLib;

/**
 * \brief The description URL a port currently selects (GCGetPortURLInfo), with the GenTL 1.0
 *        fallback GCGetPortURL for the first URL of older producers.
 *
 * Embedded in CQvPort, which changes the selected index. Any thread.
 */
class QVAPI_API CQvPortURLInfo : public IQvPortURLInfo
{
public:
    CQvPortURLInfo(CQvGenTLLib* pCQvGenTL, GenTL::PORT_HANDLE hPort);
    virtual ~CQvPortURLInfo() = default;
    CQvPortURLInfo(const CQvPortURLInfo&) = delete;
    CQvPortURLInfo& operator=(const CQvPortURLInfo&) = delete;

    GenICam::gcstring GetURL() const override;
    int32_t GetSchemaVerMajor() const override;
    int32_t GetSchemaVerMinor() const override;
    int32_t GetFileVerMajor() const override;
    int32_t GetFileVerMinor() const override;
    int32_t GetFileVerSubMinor() const override;
    void GetSha1HashBuffer(void* pBuffer, size_t* pSize) const override;
    uint64_t GetFileRegisterAddress() const override;
    uint64_t GetFileSize() const override;
    int32_t GetScheme() const override;
    GenICam::gcstring GetFileName() const override;

    /// \return The selected URL index.
    uint32_t GetURLIndex() const { return m_nURLIndex; }
    /// Selects a URL index; the port checks it first.
    void SetURLIndex(uint32_t nURLIndex) { m_nURLIndex = nURLIndex; }

    /**
     * \brief The first URL through GCGetPortURL.
     * \throws CQvGenTLErrorException "%d = GCGetPortURL(0x%p, 0x%p, 0x%p)" (-1003 when missing)
     *         or, when the read itself fails, "%d = GCGetPortURL(0x%p, %u, %d, 0x%p, 0x%p, 0x%p)".
     */
    GenICam::gcstring GetPortURL() const;

private:
    GenICam::gcstring GetPortInfoURLString(GenTL::URL_INFO_CMD cmd) const;
    template <typename T>
    T GetPortURLInfo(GenTL::URL_INFO_CMD cmd) const;
    void GetPortURLInfo(GenTL::URL_INFO_CMD cmd, void* pBuffer, size_t* pSize) const;

    CQvGenTLLib* const m_pCQvGenTL; // borrowed; outlives the port
    const GenTL::PORT_HANDLE m_hPort;
    uint32_t m_nURLIndex = 0;
};
} // namespace QvApi
