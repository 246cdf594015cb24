#pragma once

#include <Base/GCString.h>
#include <GenTL/GenTL.h>
#include <QvApi/QvDataStream.h>

namespace QvApi
{
class CQvGenTLLib;
class IQvDeviceInside;

/**
 * \brief Answers a data stream's information queries (DSGetInfo). Embedded in CQvDataStream;
 *        any thread (the producer serialises its own answers).
 */
class QVAPI_API CQvDataStreamInfo final : public IQvDataStreamInfo
{
public:
    /**
     * \param[in] pCQvGenTL        Producer binding; borrowed.
     * \param[in] hDataStream      The stream handle.
     * \param[in] pIQvDeviceInside The stream's device (the payload size's fall-back); borrowed.
     */
    CQvDataStreamInfo(CQvGenTLLib* pCQvGenTL, GenTL::DS_HANDLE hDataStream, IQvDeviceInside* pIQvDeviceInside)
        : m_pCQvGenTL(pCQvGenTL), m_hDataStream(hDataStream), m_pIQvDeviceInside(pIQvDeviceInside)
    {
    }
    ~CQvDataStreamInfo() = default;
    CQvDataStreamInfo(const CQvDataStreamInfo&) = delete;
    CQvDataStreamInfo& operator=(const CQvDataStreamInfo&) = delete;

    GenICam::gcstring GetID() const override;
    uint64_t GetNumDelivered() const override;
    uint64_t GetNumUnderrun() const override;
    size_t GetNumAnnounced() const override;
    size_t GetNumQueued() const override;
    size_t GetNumAwaitDelivery() const override;
    uint64_t GetNumStarted() const override;
    size_t GetPayloadSize() const override;
    bool IsGrabbing() const override;
    bool DefinesPayloadSize() const override;
    GenICam::gcstring GetTLType() const override;
    size_t GetNumChunksMax() const override;
    size_t GetBufAnnounceMin() const override;
    size_t GetBufAlignment() const override;

private:
    GenICam::gcstring GetDSInfoString(GenTL::STREAM_INFO_CMD cmd) const;
    template <typename T>
    T GetDSInfo(GenTL::STREAM_INFO_CMD cmd) const;

    CQvGenTLLib* const m_pCQvGenTL; // borrowed from the system
    const GenTL::DS_HANDLE m_hDataStream;
    IQvDeviceInside* const m_pIQvDeviceInside; // borrowed: the device outlives its streams
};
} // namespace QvApi
