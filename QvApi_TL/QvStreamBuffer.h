#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include <GenApi/ChunkAdapter.h>
#include <GenApi/ChunkAdapterGeneric.h>
#include <GenApi/NodeMapRef.h>
#include <GenTL/GenTL.h>
#include <QvApi/QvStreamBuffer.h>

#include "QvApi_TL/QvDataStreamInside.h"
#include "QvApi_TL/QvModule.h"
#include "QvApi_TL/QvStreamBufferImage.h"
#include "QvApi_TL/QvStreamBufferInfo.h"

namespace QvApi
{
/**
 * \brief One GenTL buffer announced on a data stream: announces itself when built and is
 *        revoked before it is deleted; its information, its image, its port, its chunk node
 *        map (made from the camera's chunk description, fed with this buffer's chunk data) and
 *        its error listener.
 *
 * Made and deleted only by CQvDataStream (RegisterStreamBuffer / DeregisterStreamBuffer and its
 * teardown). Release() gives it back to the stream's input queue. Threads: announced, revoked
 * and prepared on the stream's controlling thread; handed to the application between
 * RetrieveBuffer() and Release(), on the application's thread; the new-buffer listener only
 * reads its stream pointer and information.
 */
class QVAPI_API CQvStreamBuffer final
    : public CQvModule<IQvStreamBufferInside, IQvStreamBuffer, IQvCallbackParamGenTLEventErrorSB>
{
public:
    /**
     * \param[in] pCQvGenTL            Producer binding; borrowed.
     * \param[in] pIQvDataStreamInside The announcing stream; borrowed, outlives the buffer.
     * \param[in] pBuffer              Application memory, or null to let the producer allocate.
     * \param[in] size                 Bytes of the buffer.
     * \param[in] pContext             The allocator's context of \a pBuffer, or null.
     * \param[in] index                The buffer's number on its stream.
     * \throws CQvGenTLErrorException of DSAnnounceBuffer / DSAllocAndAnnounceBuffer /
     *         DSGetBufferInfo, of the error listener's registration; BadAllocException. Nothing
     *         stays announced then.
     */
    CQvStreamBuffer(CQvGenTLLib* pCQvGenTL, IQvDataStreamInside* pIQvDataStreamInside, void* pBuffer, size_t size,
                    void* pContext, size_t index);
    /// Revokes the buffer if that has not happened yet (failures swallowed).
    ~CQvStreamBuffer() override;

    // IQvStreamBuffer
    IQvDataStream* GetIQvDataStream() const override;
    IQvPort* GetIQvPort() override;
    IQvStreamBufferInfo* GetIQvStreamBufferInfo() const override;
    IQvImage* GetIQvImage() override;
    GenApi::INodeMap* GetChunkINodeMap() override;
    // IQvStreamBufferInside
    IQvDataStreamInside* GetIQvDataStreamInside() const override { return m_pIQvDataStreamInside; }
    GenTL::BUFFER_HANDLE GetBufferHandle() const override { return m_hStreamBuffer; }
    /**
     * \brief Attaches the chunk data of the last fill to the buffer's chunk node map (the
     *        trailer walk for U3V and GEV cameras, the producer's chunk list otherwise).
     *        Does nothing without a chunk node map.
     * \throws CQvGenTLErrorException of DSGetBufferChunkData; the adapters' layout errors.
     */
    void AttachChunkBuffer() override;
    void DetachChunkBuffer() override;
    /**
     * \brief Builds the chunk node map from the camera's "ChunkData" branch and its adapter
     *        (after the camera port's TL type) unless they exist.
     */
    void PrepareChunkDecode() override;
    /**
     * \brief Queues the buffer again on its stream.
     * \throws CQvGenTLErrorException "%d = DSQueueBuffer(0x%p, 0x%p)".
     */
    void Release() override;

    /**
     * \brief Revokes the buffer: stops and deletes its error listener, ends the ROI view and
     *        calls DSRevokeBuffer. Does nothing when already revoked.
     * \throws CQvGenTLErrorException "%d = DSRevokeBuffer(0x%p, 0x%p, 0x%p, 0x%p)".
     */
    void RevokeBuffer();

    /// \return The buffer's info object (the stream reads it on the listener thread).
    CQvStreamBufferInfo& Info() { return m_info; }
    /// \return The buffer's number on its stream.
    size_t GetIndex() const { return m_index; }
    /// A new fill arrived: records whether it is incomplete and that the image's geometry may have
    /// changed (listener thread, before the buffer enters the filled queue; read after it left the
    /// queue, so the queue lock orders the two).
    void OnFilled(bool incomplete)
    {
        m_bFillIncomplete = incomplete;
        m_image.OnNewFill();
    }
    /// \return Whether the last fill was incomplete, as the listener read it.
    bool IsFillIncomplete() const { return m_bFillIncomplete; }

private:
    void Announce();

    IQvDataStreamInside* const m_pIQvDataStreamInside; // borrowed: the owning stream
    const GenTL::DS_HANDLE m_hDataStream;
    GenTL::BUFFER_HANDLE m_hStreamBuffer = nullptr; // null until announced and after revocation
    void* const m_pUserBuffer;                      // application memory, or null (producer's)
    const size_t m_size;
    void* const m_pContext;
    void* m_pBaseAddress = nullptr;
    const size_t m_index;
    CQvStreamBufferInfo m_info;
    CQvStreamBufferImage m_image;

    // Chunk decoding, made by PrepareChunkDecode(); the adapter goes before the node map.
    GenApi::CNodeMapRef m_chunkNodeMap;
    std::unique_ptr<GenApi::CChunkAdapter> m_pChunkAdapter;
    bool m_bGenericChunks = false;                  // the producer lists the chunks (not U3V/GEV)
    std::vector<GenApi::SingleChunkData_t> m_chunks; // chunk list scratch, sized once
    bool m_bChunkAttached = false;
    bool m_bFillIncomplete = false; // see OnFilled()
};
} // namespace QvApi
