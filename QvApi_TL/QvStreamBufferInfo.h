#pragma once

#include <Base/GCString.h>
#include <GenTL/GenTL.h>
#include <QvApi/QvStreamBuffer.h>

namespace QvApi
{
class CQvGenTLLib;

/**
 * \brief Answers one stream buffer's information queries (DSGetBufferInfo). The base address,
 *        size and user pointer are the ones the buffer stored when it was announced; every other
 *        getter asks the producer. Embedded in CQvStreamBuffer; any thread.
 */
class QVAPI_API CQvStreamBufferInfo final : public IQvStreamBufferInfo
{
public:
    /// \param[in] pCQvGenTL Producer binding; borrowed.  \param[in] hDataStream The buffer's stream.
    CQvStreamBufferInfo(CQvGenTLLib* pCQvGenTL, GenTL::DS_HANDLE hDataStream)
        : m_pCQvGenTL(pCQvGenTL), m_hDataStream(hDataStream)
    {
    }
    ~CQvStreamBufferInfo() = default;
    CQvStreamBufferInfo(const CQvStreamBufferInfo&) = delete;
    CQvStreamBufferInfo& operator=(const CQvStreamBufferInfo&) = delete;

    /// Records the announced buffer (null handle: revoked).
    void SetBuffer(GenTL::BUFFER_HANDLE hStreamBuffer, void* pBaseAddress, size_t size, void* pUserPtr)
    {
        m_hStreamBuffer = hStreamBuffer;
        m_pBaseAddress = pBaseAddress;
        m_size = size;
        m_pUserPtr = pUserPtr;
    }

    void* GetBaseAddress() const override { return m_pBaseAddress; }
    size_t GetBufferSize() const override { return m_size; }
    void* GetUserPtr() const override { return m_pUserPtr; }
    uint64_t GetTimestamp() const override;
    bool IsNewData() const override;
    bool IsQueued() const override;
    bool IsAcquiring() const override;
    bool IsIncomplete() const override;
    GenICam::gcstring GetTLType() const override;
    size_t GetSizeFilled() const override;
    size_t GetWidth() const override;
    size_t GetHeight() const override;
    size_t GetXOffset() const override;
    size_t GetYOffset() const override;
    size_t GetXPadding() const override;
    size_t GetYPadding() const override;
    uint64_t GetFrameID() const override;
    bool IsImagePresent() const override;
    size_t GetImageOffset() const override;
    size_t GetPayloadType() const override;
    uint64_t GetPixelFormat() const override;
    uint64_t GetPixelFormatNameSpace() const override;
    size_t GetDeliverdImageHeight() const override;
    size_t GetDeliverdChunkPayloadSize() const override;
    uint64_t GetChunkLayoutID() const override;
    GenICam::gcstring GetFileName() const override;
    int32_t GetPixelEndianness() const override;
    size_t GetDataSize() const override;
    uint64_t GetTimestampNS() const override;
    bool IsDataLargerThanBuffer() const override;
    bool HasChunkData() const override;

    /**
     * \brief One DSGetBufferInfo query of a fixed-size value of type \a X.
     * \throws CQvGenTLErrorException "%d = DSGetBufferInfo(0x%p, 0x%p, %d, 0x%p, 0x%p, 0x%p)".
     */
    template <typename X>
    X GetDSBufferInfo(GenTL::BUFFER_INFO_CMD cmd) const;

    /**
     * \brief Reads BUFFER_INFO_BASE of a buffer the producer allocated.
     * \throws As GetDSBufferInfo().
     */
    static void* ReadBaseAddress(CQvGenTLLib* pCQvGenTL, GenTL::DS_HANDLE hDataStream,
                                 GenTL::BUFFER_HANDLE hStreamBuffer);

private:
    GenICam::gcstring GetDSBufferInfoString(GenTL::BUFFER_INFO_CMD cmd) const;

    CQvGenTLLib* const m_pCQvGenTL; // borrowed from the system
    const GenTL::DS_HANDLE m_hDataStream;
    // Written by the owning buffer while it is announced or revoked (stream's controlling thread).
    GenTL::BUFFER_HANDLE m_hStreamBuffer = nullptr;
    void* m_pBaseAddress = nullptr;
    size_t m_size = 0;
    void* m_pUserPtr = nullptr;
};
} // namespace QvApi
