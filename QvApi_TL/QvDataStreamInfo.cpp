#include "QvApi_TL/QvDataStreamInfo.h"

#include <GenApi/IInteger.h>
#include <GenApi/INode.h>
#include <GenApi/INodeMap.h>
#include <QvApi/QvPort.h>

#include "QvApi_TL/QvDeviceInside.h"
#include "QvApi_TL/QvGenTLText.h"
#include "QvGenTLCommon/QvGenTLLib.h"
#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
GenICam::gcstring CQvDataStreamInfo::GetDSInfoString(GenTL::STREAM_INFO_CMD cmd) const
{
    GenTL::INFO_DATATYPE type = GenTL::INFO_DATATYPE_UNKNOWN;
    try
    {
        return ReadGenTLText(
            [&](char* pBuffer, size_t* pSize) {
                return QV_GENTL_CALL(m_pCQvGenTL, DSGetInfo, m_hDataStream, cmd, &type, pBuffer, pSize);
            },
            [&](GenTL::GC_ERROR err, void* pBuffer, size_t* pSize) {
                QV_THROW_GENTL(m_pCQvGenTL, err, "DSGetInfo", "%d = DSGetInfo(0x%p, %d, 0x%p, 0x%p, 0x%p)", err,
                               m_hDataStream, cmd, static_cast<void*>(&type), pBuffer, static_cast<void*>(pSize));
            });
    }
    QV_CATCH_BAD_ALLOC()
}

template <typename T>
T CQvDataStreamInfo::GetDSInfo(GenTL::STREAM_INFO_CMD cmd) const
{
    GenTL::INFO_DATATYPE type = GenTL::INFO_DATATYPE_UNKNOWN;
    T value{};
    size_t size = sizeof(value);
    const GenTL::GC_ERROR err = QV_GENTL_CALL(m_pCQvGenTL, DSGetInfo, m_hDataStream, cmd, &type, &value, &size);
    QV_CHECK_GENTL(m_pCQvGenTL, err, "DSGetInfo", "%d = DSGetInfo(0x%p, %d, 0x%p, 0x%p, 0x%p)", err, m_hDataStream,
                   cmd, static_cast<void*>(&type), static_cast<void*>(&value), static_cast<void*>(&size));
    return value;
}

GenICam::gcstring CQvDataStreamInfo::GetID() const
{
    return GetDSInfoString(GenTL::STREAM_INFO_ID);
}

uint64_t CQvDataStreamInfo::GetNumDelivered() const
{
    return GetDSInfo<uint64_t>(GenTL::STREAM_INFO_NUM_DELIVERED);
}

uint64_t CQvDataStreamInfo::GetNumUnderrun() const
{
    return GetDSInfo<uint64_t>(GenTL::STREAM_INFO_NUM_UNDERRUN);
}

size_t CQvDataStreamInfo::GetNumAnnounced() const
{
    return GetDSInfo<size_t>(GenTL::STREAM_INFO_NUM_ANNOUNCED);
}

size_t CQvDataStreamInfo::GetNumQueued() const
{
    return GetDSInfo<size_t>(GenTL::STREAM_INFO_NUM_QUEUED);
}

size_t CQvDataStreamInfo::GetNumAwaitDelivery() const
{
    return GetDSInfo<size_t>(GenTL::STREAM_INFO_NUM_AWAIT_DELIVERY);
}

uint64_t CQvDataStreamInfo::GetNumStarted() const
{
    return GetDSInfo<uint64_t>(GenTL::STREAM_INFO_NUM_STARTED);
}

size_t CQvDataStreamInfo::GetPayloadSize() const
{
    GenTL::INFO_DATATYPE type = GenTL::INFO_DATATYPE_UNKNOWN;
    size_t value = 0;
    size_t size = sizeof(value);
    const GenTL::GC_ERROR err =
        QV_GENTL_CALL(m_pCQvGenTL, DSGetInfo, m_hDataStream, GenTL::STREAM_INFO_PAYLOAD_SIZE, &type, &value, &size);
    if (err == GenTL::GC_ERR_SUCCESS)
        return value;
    if (err != GenTL::GC_ERR_NOT_IMPLEMENTED)
        QV_THROW_GENTL(m_pCQvGenTL, err, "DSGetInfo", "%d = DSGetInfo(0x%p, %d, 0x%p, 0x%p, 0x%p)", err,
                       m_hDataStream, GenTL::STREAM_INFO_PAYLOAD_SIZE, static_cast<void*>(&type),
                       static_cast<void*>(&value), static_cast<void*>(&size));

    // A producer that leaves the payload to the camera: ask the camera.
    IQvPort* pRemotePort = m_pIQvDeviceInside->GetRemoteIQvPort();
    GenApi::INodeMap* pNodeMap = pRemotePort != nullptr ? pRemotePort->GetINodeMap() : nullptr;
    if (pNodeMap == nullptr)
        QV_THROW(LogicalErrorException, "NULL pointer dereferenced");
    GenApi::IInteger* pPayloadSize = dynamic_cast<GenApi::IInteger*>(pNodeMap->GetNode("PayloadSize"));
    if (pPayloadSize == nullptr)
        QV_THROW(RuntimeException, "Node %s not found.", "PayloadSize");
    return static_cast<size_t>(pPayloadSize->GetValue());
}

bool CQvDataStreamInfo::IsGrabbing() const
{
    return GetDSInfo<bool>(GenTL::STREAM_INFO_IS_GRABBING);
}

bool CQvDataStreamInfo::DefinesPayloadSize() const
{
    return GetDSInfo<bool>(GenTL::STREAM_INFO_DEFINES_PAYLOADSIZE);
}

GenICam::gcstring CQvDataStreamInfo::GetTLType() const
{
    return GetDSInfoString(GenTL::STREAM_INFO_TLTYPE);
}

size_t CQvDataStreamInfo::GetNumChunksMax() const
{
    return GetDSInfo<size_t>(GenTL::STREAM_INFO_NUM_CHUNKS_MAX);
}

size_t CQvDataStreamInfo::GetBufAnnounceMin() const
{
    return GetDSInfo<size_t>(GenTL::STREAM_INFO_BUF_ANNOUNCE_MIN);
}

size_t CQvDataStreamInfo::GetBufAlignment() const
{
    return GetDSInfo<size_t>(GenTL::STREAM_INFO_BUF_ALIGNMENT);
}
} // namespace QvApi
