#include "QvApi_TL/QvStreamBuffer.h"

#include <cstddef>
#include <new>
#include <string>

#include <GenApi/ChunkAdapterGEV.h>
#include <GenApi/ChunkAdapterU3V.h>
#include <GenApi/INodeMap.h>

#include "QvApi_TL/QvDeviceInside.h"
#include "QvApi_TL/QvPortInside.h"
#include "QvGenTLCommon/QvGenTLLib.h"
#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
namespace
{
// The generic adapter reads the producer's SINGLE_CHUNK_DATA list in place.
static_assert(sizeof(GenApi::SingleChunkData_t) == sizeof(GenTL::SINGLE_CHUNK_DATA), "chunk list layout");
static_assert(offsetof(GenApi::SingleChunkData_t, ChunkOffset) == offsetof(GenTL::SINGLE_CHUNK_DATA, ChunkOffset),
              "chunk list layout");
static_assert(offsetof(GenApi::SingleChunkData_t, ChunkLength) == offsetof(GenTL::SINGLE_CHUNK_DATA, ChunkLength),
              "chunk list layout");

// Chunk list capacity when the producer does not tell its maximum.
constexpr size_t kDefaultChunkListCapacity = 64;
} // namespace

CQvStreamBuffer::CQvStreamBuffer(CQvGenTLLib* pCQvGenTL, IQvDataStreamInside* pIQvDataStreamInside, void* pBuffer,
                                 size_t size, void* pContext, size_t index)
    : CQvModule(pCQvGenTL), m_pIQvDataStreamInside(pIQvDataStreamInside),
      m_hDataStream(pIQvDataStreamInside != nullptr ? pIQvDataStreamInside->GetDataStreamHandle() : nullptr),
      m_pUserBuffer(pBuffer), m_size(size), m_pContext(pContext), m_index(index), m_info(pCQvGenTL, m_hDataStream),
      m_image(this)
{
    QV_ASSERT(m_pCQvGenTL != nullptr, "m_pCQvGenTL != NULL");
    QV_ASSERT(m_pIQvDataStreamInside != nullptr, "m_pIQvDataStreamInside != NULL");
    Announce();
    try
    {
        CreatePort(m_hStreamBuffer, GenApi::RW,
                   GenICam::gcstring("StreamBuffer_") + std::to_string(m_index).c_str() + "_");
        CreateEventError(m_hStreamBuffer, this, QvCallbackTypeGenTLEventErrorSB, "QvApi_TL_EventError_SB", __FILE__);
    }
    catch (...)
    {
        try
        {
            RevokeBuffer();
        }
        catch (...)
        {
        }
        throw;
    }
}

CQvStreamBuffer::~CQvStreamBuffer()
{
    try
    {
        RevokeBuffer();
    }
    catch (...)
    {
    }
    m_pChunkAdapter.reset(); // before the chunk node map it reads
    DeleteEventError();
    DeletePort();
}

void CQvStreamBuffer::Announce()
{
    // The buffer's own inside interface comes back with every new-buffer event.
    void* pPrivate = static_cast<IQvStreamBufferInside*>(this);
    if (m_pUserBuffer == nullptr)
    {
        const GenTL::GC_ERROR err =
            QV_GENTL_CALL(m_pCQvGenTL, DSAllocAndAnnounceBuffer, m_hDataStream, m_size, pPrivate, &m_hStreamBuffer);
        QV_CHECK_GENTL(m_pCQvGenTL, err, "DSAllocAndAnnounceBuffer", "%d = DSAllocAndAnnounceBuffer(0x%p, %u, 0x%p, 0x%p)",
                       err, m_hDataStream, static_cast<unsigned>(m_size), pPrivate,
                       static_cast<void*>(&m_hStreamBuffer));
        try
        {
            m_pBaseAddress = CQvStreamBufferInfo::ReadBaseAddress(m_pCQvGenTL, m_hDataStream, m_hStreamBuffer);
        }
        catch (...)
        {
            if (m_pCQvGenTL->DSRevokeBuffer != nullptr)
                m_pCQvGenTL->DSRevokeBuffer(m_hDataStream, m_hStreamBuffer, nullptr, nullptr);
            m_hStreamBuffer = nullptr;
            throw;
        }
    }
    else
    {
        const GenTL::GC_ERROR err = QV_GENTL_CALL(m_pCQvGenTL, DSAnnounceBuffer, m_hDataStream, m_pUserBuffer, m_size,
                                                  pPrivate, &m_hStreamBuffer);
        QV_CHECK_GENTL(m_pCQvGenTL, err, "DSAnnounceBuffer", "%d = DSAnnounceBuffer(0x%p, 0x%p, %u, 0x%p, 0x%p)", err,
                       m_hDataStream, m_pUserBuffer, static_cast<unsigned>(m_size), pPrivate,
                       static_cast<void*>(&m_hStreamBuffer));
        m_pBaseAddress = m_pUserBuffer;
    }
    m_info.SetBuffer(m_hStreamBuffer, m_pBaseAddress, m_size, m_pContext);
}

void CQvStreamBuffer::RevokeBuffer()
{
    if (m_hStreamBuffer == nullptr)
        return;
    DeleteEventError(); // registered on the handle that goes now
    m_image.ReleaseROIImage();
    if (m_pChunkAdapter != nullptr)
        m_pChunkAdapter->DetachBuffer();
    m_bChunkAttached = false;
    void* pBuffer = nullptr;
    void* pPrivate = nullptr;
    const GenTL::GC_ERROR err =
        QV_GENTL_CALL(m_pCQvGenTL, DSRevokeBuffer, m_hDataStream, m_hStreamBuffer, &pBuffer, &pPrivate);
    QV_CHECK_GENTL(m_pCQvGenTL, err, "DSRevokeBuffer", "%d = DSRevokeBuffer(0x%p, 0x%p, 0x%p, 0x%p)", err,
                   m_hDataStream, m_hStreamBuffer, static_cast<void*>(&pBuffer), static_cast<void*>(&pPrivate));
    m_hStreamBuffer = nullptr;
    m_info.SetBuffer(nullptr, m_pBaseAddress, m_size, m_pContext);
}

void CQvStreamBuffer::Release()
{
    m_pIQvDataStreamInside->QueueBuffer(this);
}

IQvDataStream* CQvStreamBuffer::GetIQvDataStream() const
{
    return m_pIQvDataStreamInside;
}

IQvPort* CQvStreamBuffer::GetIQvPort()
{
    return m_pCQvPort.get();
}

IQvStreamBufferInfo* CQvStreamBuffer::GetIQvStreamBufferInfo() const
{
    return const_cast<CQvStreamBufferInfo*>(&m_info);
}

IQvImage* CQvStreamBuffer::GetIQvImage()
{
    return &m_image;
}

GenApi::INodeMap* CQvStreamBuffer::GetChunkINodeMap()
{
    return m_chunkNodeMap._Ptr;
}

// ---- Chunk data ---------------------------------------------------------------------------------

void CQvStreamBuffer::PrepareChunkDecode()
{
    if (m_chunkNodeMap._Ptr != nullptr)
        return;
    IQvDeviceInside* pDevice = m_pIQvDataStreamInside->GetIQvDeviceInside();
    IQvPortInside* pRemotePort = dynamic_cast<IQvPortInside*>(pDevice->GetRemoteIQvPort());
    if (pRemotePort == nullptr)
        return;
    pRemotePort->CreateSubTreeNodeMapForChunkData(m_chunkNodeMap);
    GenApi::INodeMap* pNodeMap = m_chunkNodeMap._Ptr;
    if (pNodeMap == nullptr)
        return; // the camera describes no chunk data
    try
    {
        const GenICam::gcstring tlType = pRemotePort->GetIQvPortInfo()->GetTLType();
        if (tlType == "U3V")
            m_pChunkAdapter = std::make_unique<GenApi::CChunkAdapterU3V>(pNodeMap);
        else if (tlType == "GEV")
            m_pChunkAdapter = std::make_unique<GenApi::CChunkAdapterGEV>(pNodeMap);
        else
        {
            m_pChunkAdapter = std::make_unique<GenApi::CChunkAdapterGeneric>(pNodeMap);
            m_bGenericChunks = true;
            size_t capacity = kDefaultChunkListCapacity;
            try
            {
                const size_t reported = m_pIQvDataStreamInside->GetIQvDataStreamInfo()->GetNumChunksMax();
                if (reported != 0)
                    capacity = reported;
            }
            catch (const GenICam::GenericException&)
            {
                // Not every producer knows its maximum; the list grows when it is too small.
            }
            m_chunks.resize(capacity);
        }
    }
    catch (...)
    {
        m_pChunkAdapter.reset();
        m_chunkNodeMap._Destroy();
        m_bGenericChunks = false;
        try
        {
            throw;
        }
        QV_CATCH_BAD_ALLOC()
    }
}

void CQvStreamBuffer::AttachChunkBuffer()
{
    if (m_pChunkAdapter == nullptr)
        return;
    uint8_t* pBase = static_cast<uint8_t*>(m_pBaseAddress);
    if (!m_bGenericChunks)
    {
        const size_t length = m_info.GetDeliverdChunkPayloadSize();
        // Set first: a damaged chain throws after attaching its valid chunks, which must be
        // detached with the buffer all the same.
        m_bChunkAttached = true;
        m_pChunkAdapter->AttachBuffer(pBase, static_cast<int64_t>(length), nullptr);
        return;
    }

    size_t count = m_chunks.size();
    GenTL::GC_ERROR err = QV_GENTL_CALL(m_pCQvGenTL, DSGetBufferChunkData, m_hDataStream, m_hStreamBuffer,
                                        reinterpret_cast<GenTL::SINGLE_CHUNK_DATA*>(m_chunks.data()), &count);
    if (QV_UNLIKELY(err == GenTL::GC_ERR_BUFFER_TOO_SMALL || (err == GenTL::GC_ERR_SUCCESS && count > m_chunks.size())))
    {
        // More chunks than the producer announced: grow once and ask again.
        try
        {
            size_t needed = 0;
            err = QV_GENTL_CALL(m_pCQvGenTL, DSGetBufferChunkData, m_hDataStream, m_hStreamBuffer, nullptr, &needed);
            if (err == GenTL::GC_ERR_SUCCESS)
            {
                m_chunks.resize(needed);
                count = needed;
                err = QV_GENTL_CALL(m_pCQvGenTL, DSGetBufferChunkData, m_hDataStream, m_hStreamBuffer,
                                    reinterpret_cast<GenTL::SINGLE_CHUNK_DATA*>(m_chunks.data()), &count);
            }
        }
        QV_CATCH_BAD_ALLOC()
    }
    QV_CHECK_GENTL(m_pCQvGenTL, err, "DSGetBufferChunkData", "%d = DSGetBufferChunkData(0x%p, 0x%p, 0x%p, 0x%p)", err,
                   m_hDataStream, m_hStreamBuffer, static_cast<void*>(m_chunks.data()), static_cast<void*>(&count));
    // Entries are checked against the buffer: a wrong list must not make features read foreign memory.
    m_bChunkAttached = true;
    static_cast<GenApi::CChunkAdapterGeneric*>(m_pChunkAdapter.get())
        ->AttachBuffer(pBase, static_cast<int64_t>(m_size), m_chunks.data(), static_cast<int64_t>(count), nullptr);
}

void CQvStreamBuffer::DetachChunkBuffer()
{
    if (m_bChunkAttached && m_pChunkAdapter != nullptr)
        m_pChunkAdapter->DetachBuffer();
    m_bChunkAttached = false;
}
} // namespace QvApi
