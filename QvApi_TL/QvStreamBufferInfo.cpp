#include "QvApi_TL/QvStreamBufferInfo.h"

#include "QvApi_TL/QvGenTLText.h"
#include "QvGenTLCommon/QvGenTLLib.h"
#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
template <typename X>
X CQvStreamBufferInfo::GetDSBufferInfo(GenTL::BUFFER_INFO_CMD cmd) const
{
    QV_ASSERT(m_hStreamBuffer != nullptr, "m_hStreamBuffer != NULL");
    GenTL::INFO_DATATYPE type = GenTL::INFO_DATATYPE_UNKNOWN;
    X value{};
    size_t size = sizeof(X);
    const GenTL::GC_ERROR err =
        QV_GENTL_CALL(m_pCQvGenTL, DSGetBufferInfo, m_hDataStream, m_hStreamBuffer, cmd, &type, &value, &size);
    QV_CHECK_GENTL(m_pCQvGenTL, err, "DSGetBufferInfo", "%d = DSGetBufferInfo(0x%p, 0x%p, %d, 0x%p, 0x%p, 0x%p)", err,
                   m_hDataStream, m_hStreamBuffer, cmd, static_cast<void*>(&type), static_cast<void*>(&value),
                   static_cast<void*>(&size));
    return value;
}

template bool CQvStreamBufferInfo::GetDSBufferInfo<bool>(GenTL::BUFFER_INFO_CMD) const;
template size_t CQvStreamBufferInfo::GetDSBufferInfo<size_t>(GenTL::BUFFER_INFO_CMD) const;
template int32_t CQvStreamBufferInfo::GetDSBufferInfo<int32_t>(GenTL::BUFFER_INFO_CMD) const;

void* CQvStreamBufferInfo::ReadBaseAddress(CQvGenTLLib* pCQvGenTL, GenTL::DS_HANDLE hDataStream,
                                           GenTL::BUFFER_HANDLE hStreamBuffer)
{
    GenTL::INFO_DATATYPE type = GenTL::INFO_DATATYPE_UNKNOWN;
    void* pBase = nullptr;
    size_t size = sizeof(pBase);
    const GenTL::GC_ERROR err = QV_GENTL_CALL(pCQvGenTL, DSGetBufferInfo, hDataStream, hStreamBuffer,
                                              GenTL::BUFFER_INFO_BASE, &type, &pBase, &size);
    QV_CHECK_GENTL(pCQvGenTL, err, "DSGetBufferInfo", "%d = DSGetBufferInfo(0x%p, 0x%p, %d, 0x%p, 0x%p, 0x%p)", err,
                   hDataStream, hStreamBuffer, GenTL::BUFFER_INFO_BASE, static_cast<void*>(&type),
                   static_cast<void*>(&pBase), static_cast<void*>(&size));
    return pBase;
}

GenICam::gcstring CQvStreamBufferInfo::GetDSBufferInfoString(GenTL::BUFFER_INFO_CMD cmd) const
{
    QV_ASSERT(m_hStreamBuffer != nullptr, "m_hStreamBuffer != NULL");
    GenTL::INFO_DATATYPE type = GenTL::INFO_DATATYPE_UNKNOWN;
    try
    {
        return ReadGenTLText(
            [&](char* pBuffer, size_t* pSize) {
                return QV_GENTL_CALL(m_pCQvGenTL, DSGetBufferInfo, m_hDataStream, m_hStreamBuffer, cmd, &type,
                                     pBuffer, pSize);
            },
            [&](GenTL::GC_ERROR err, void* pBuffer, size_t* pSize) {
                QV_THROW_GENTL(m_pCQvGenTL, err, "DSGetBufferInfo",
                               "%d = DSGetBufferInfo(0x%p, 0x%p, %d, 0x%p, 0x%p, 0x%p)", err, m_hDataStream,
                               m_hStreamBuffer, cmd, static_cast<void*>(&type), pBuffer, static_cast<void*>(pSize));
            });
    }
    QV_CATCH_BAD_ALLOC()
}

uint64_t CQvStreamBufferInfo::GetTimestamp() const
{
    return GetDSBufferInfo<uint64_t>(GenTL::BUFFER_INFO_TIMESTAMP);
}

bool CQvStreamBufferInfo::IsNewData() const
{
    return GetDSBufferInfo<bool>(GenTL::BUFFER_INFO_NEW_DATA);
}

bool CQvStreamBufferInfo::IsQueued() const
{
    return GetDSBufferInfo<bool>(GenTL::BUFFER_INFO_IS_QUEUED);
}

bool CQvStreamBufferInfo::IsAcquiring() const
{
    return GetDSBufferInfo<bool>(GenTL::BUFFER_INFO_IS_ACQUIRING);
}

bool CQvStreamBufferInfo::IsIncomplete() const
{
    return GetDSBufferInfo<bool>(GenTL::BUFFER_INFO_IS_INCOMPLETE);
}

GenICam::gcstring CQvStreamBufferInfo::GetTLType() const
{
    return GetDSBufferInfoString(GenTL::BUFFER_INFO_TLTYPE);
}

size_t CQvStreamBufferInfo::GetSizeFilled() const
{
    return GetDSBufferInfo<size_t>(GenTL::BUFFER_INFO_SIZE_FILLED);
}

size_t CQvStreamBufferInfo::GetWidth() const
{
    return GetDSBufferInfo<size_t>(GenTL::BUFFER_INFO_WIDTH);
}

size_t CQvStreamBufferInfo::GetHeight() const
{
    return GetDSBufferInfo<size_t>(GenTL::BUFFER_INFO_HEIGHT);
}

size_t CQvStreamBufferInfo::GetXOffset() const
{
    return GetDSBufferInfo<size_t>(GenTL::BUFFER_INFO_XOFFSET);
}

size_t CQvStreamBufferInfo::GetYOffset() const
{
    return GetDSBufferInfo<size_t>(GenTL::BUFFER_INFO_YOFFSET);
}

size_t CQvStreamBufferInfo::GetXPadding() const
{
    return GetDSBufferInfo<size_t>(GenTL::BUFFER_INFO_XPADDING);
}

size_t CQvStreamBufferInfo::GetYPadding() const
{
    return GetDSBufferInfo<size_t>(GenTL::BUFFER_INFO_YPADDING);
}

uint64_t CQvStreamBufferInfo::GetFrameID() const
{
    return GetDSBufferInfo<uint64_t>(GenTL::BUFFER_INFO_FRAMEID);
}

bool CQvStreamBufferInfo::IsImagePresent() const
{
    return GetDSBufferInfo<bool>(GenTL::BUFFER_INFO_IMAGEPRESENT);
}

size_t CQvStreamBufferInfo::GetImageOffset() const
{
    return GetDSBufferInfo<size_t>(GenTL::BUFFER_INFO_IMAGEOFFSET);
}

size_t CQvStreamBufferInfo::GetPayloadType() const
{
    return GetDSBufferInfo<size_t>(GenTL::BUFFER_INFO_PAYLOADTYPE);
}

uint64_t CQvStreamBufferInfo::GetPixelFormat() const
{
    return GetDSBufferInfo<uint64_t>(GenTL::BUFFER_INFO_PIXELFORMAT);
}

uint64_t CQvStreamBufferInfo::GetPixelFormatNameSpace() const
{
    return GetDSBufferInfo<uint64_t>(GenTL::BUFFER_INFO_PIXELFORMAT_NAMESPACE);
}

size_t CQvStreamBufferInfo::GetDeliverdImageHeight() const
{
    return GetDSBufferInfo<size_t>(GenTL::BUFFER_INFO_DELIVERED_IMAGEHEIGHT);
}

size_t CQvStreamBufferInfo::GetDeliverdChunkPayloadSize() const
{
    return GetDSBufferInfo<size_t>(GenTL::BUFFER_INFO_DELIVERED_CHUNKPAYLOADSIZE);
}

uint64_t CQvStreamBufferInfo::GetChunkLayoutID() const
{
    return GetDSBufferInfo<uint64_t>(GenTL::BUFFER_INFO_CHUNKLAYOUTID);
}

GenICam::gcstring CQvStreamBufferInfo::GetFileName() const
{
    return GetDSBufferInfoString(GenTL::BUFFER_INFO_FILENAME);
}

int32_t CQvStreamBufferInfo::GetPixelEndianness() const
{
    return GetDSBufferInfo<int32_t>(GenTL::BUFFER_INFO_PIXEL_ENDIANNESS);
}

size_t CQvStreamBufferInfo::GetDataSize() const
{
    return GetDSBufferInfo<size_t>(GenTL::BUFFER_INFO_DATA_SIZE);
}

uint64_t CQvStreamBufferInfo::GetTimestampNS() const
{
    return GetDSBufferInfo<uint64_t>(GenTL::BUFFER_INFO_TIMESTAMP_NS);
}

bool CQvStreamBufferInfo::IsDataLargerThanBuffer() const
{
    return GetDSBufferInfo<bool>(GenTL::BUFFER_INFO_DATA_LARGER_THAN_BUFFER);
}

bool CQvStreamBufferInfo::HasChunkData() const
{
    return GetDSBufferInfo<bool>(GenTL::BUFFER_INFO_CONTAINS_CHUNKDATA);
}
} // namespace QvApi
