#pragma once

// The library-internal faces of the data stream and its buffers: what the new-buffer listener,
// the buffers and the stream use of each other.

#include <cstddef>

#include <GenTL/GenTL.h>
#include <QvApi/QvDataStream.h>
#include <QvApi/QvStreamBuffer.h>

namespace QvApi
{
class IQvDeviceInside;
class IQvStreamBufferInside;

/**
 * \brief The data stream as its buffers, its listener thread and the pointer array reach it.
 */
class IQvDataStreamInside : public IQvDataStreamReleasable
{
public:
    /// \return The device that opened the stream; borrowed.
    virtual IQvDeviceInside* GetIQvDeviceInside() = 0;
    /// \return The open GenTL stream handle.
    virtual GenTL::DS_HANDLE GetDataStreamHandle() = 0;
    /**
     * \brief A filled buffer arrived (new-buffer listener thread only): count it, queue it as
     *        filled and run the stream's new-buffer callbacks.
     */
    virtual void OnNewBuffer(IQvStreamBufferInside* pIQvStreamBufferInside) = 0;
    /**
     * \brief Makes and announces one buffer object.
     * \param[in] pBuffer  Application memory, or null for the producer's.
     * \param[in] size     Bytes of the buffer.
     * \param[in] pContext The allocator's context for \a pBuffer, or null.
     * \param[in] index    The buffer's number on this stream (names its port).
     * \return The buffer, owned by the stream.
     */
    virtual IQvStreamBuffer* RegisterStreamBuffer(void* pBuffer, size_t size, void* pContext, size_t index) = 0;
    /// \brief Revokes \a pBuffer and deletes its object (its memory stays the caller's).
    virtual void DeregisterStreamBuffer(IQvStreamBuffer* pBuffer) = 0;
    /**
     * \brief Gives \a pBuffer to the producer's input pool (DSQueueBuffer).
     * \throws CQvGenTLErrorException "%d = DSQueueBuffer(0x%p, 0x%p)".
     */
    virtual void QueueBuffer(IQvStreamBuffer* pBuffer) = 0;
    /// \return The filled event (manual reset; set while filled buffers wait), for multi-stream
    ///         waits; null while it is being destroyed.
    virtual void* GetIsFilledStreamBufferEventHandle() = 0;

protected:
    virtual ~IQvDataStreamInside() = default; // ended by the stream's Release()
};

/**
 * \brief A stream buffer as the stream and the new-buffer listener see it. Announced with its
 *        own IQvStreamBufferInside* as the GenTL user pointer (EVENT_NEW_BUFFER_DATA.pUserPointer).
 */
class IQvStreamBufferInside : public IQvStreamBufferReleasable
{
public:
    /// \return The stream that announced the buffer; borrowed.
    virtual IQvDataStreamInside* GetIQvDataStreamInside() const = 0;
    /// \return The GenTL buffer handle; null until announced.
    virtual GenTL::BUFFER_HANDLE GetBufferHandle() const = 0;
    /// \brief Points the buffer's chunk node map at the chunk data of its last fill.
    virtual void AttachChunkBuffer() = 0;
    /// \brief Disconnects the buffer's chunk node map from its memory.
    virtual void DetachChunkBuffer() = 0;
    /// \brief Makes the buffer's chunk node map and adapter unless they exist.
    virtual void PrepareChunkDecode() = 0;

protected:
    virtual ~IQvStreamBufferInside() = default; // owned by its stream
};
} // namespace QvApi
