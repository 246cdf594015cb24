#pragma once

#include <stddef.h>
#include <stdint.h>

#include <Base/GCString.h>
#include <GenTL/GenTL.h>
#include <QvApi/QvApiDefs.h>
#include <QvApi/QvCallback.h>
#include <QvApi/QvEventCtrl.h>
#include <QvApi/QvReleasable.h>

namespace GenApi
{
struct INodeMap;
}

namespace QvApi
{
class IQvDataStream;
class IQvImage;
class IQvPort;

/**
 * \brief The GenTL information of one stream buffer (DSGetBufferInfo), as the producer reports
 *        it for the buffer's last fill. Owned by the buffer.
 *
 * Every getter except the first three asks the producer and throws CQvGenTLErrorException
 * "%d = DSGetBufferInfo(0x%p, 0x%p, %d, 0x%p, 0x%p, 0x%p)" when it fails (GC_ERR_NOT_IMPLEMENTED
 * when the producer lacks the call). Read a buffer's information between RetrieveBuffer() and
 * Release(): afterwards the producer may be filling it again. Any thread.
 */
class IQvStreamBufferInfo
{
public:
    /// \return Start of the buffer's memory (the application's or the producer's).
    virtual void* GetBaseAddress() const = 0;
    /// \return Size of the buffer's memory in bytes.
    virtual size_t GetBufferSize() const = 0;
    /// \return The context the application allocator returned with the memory, or null.
    virtual void* GetUserPtr() const = 0;
    /// \return Timestamp in device ticks (see the device's timestamp frequency).
    virtual uint64_t GetTimestamp() const = 0;
    /// \return True when the buffer was filled since it was last queued.
    virtual bool IsNewData() const = 0;
    /// \return True while the buffer waits in the producer's input pool or output queue.
    virtual bool IsQueued() const = 0;
    /// \return True while the producer writes into the buffer.
    virtual bool IsAcquiring() const = 0;
    /// \return True when the last fill ended with an error (missing data).
    virtual bool IsIncomplete() const = 0;
    /// \return The transport-layer type of the buffer, e.g. "U3V".
    virtual GenICam::gcstring GetTLType() const = 0;
    /// \return Bytes written by the last fill.
    virtual size_t GetSizeFilled() const = 0;
    /// \return Image width in pixels.
    virtual size_t GetWidth() const = 0;
    /// \return Image height in lines.
    virtual size_t GetHeight() const = 0;
    /// \return Horizontal offset of the image on the sensor, in pixels.
    virtual size_t GetXOffset() const = 0;
    /// \return Vertical offset of the image on the sensor, in lines.
    virtual size_t GetYOffset() const = 0;
    /// \return Bytes of padding at the end of each line.
    virtual size_t GetXPadding() const = 0;
    /// \return Bytes of padding at the end of the image.
    virtual size_t GetYPadding() const = 0;
    /// \return The frame ID (the camera's block ID).
    virtual uint64_t GetFrameID() const = 0;
    /// \return True when the buffer carries an image.
    virtual bool IsImagePresent() const = 0;
    /// \return Offset in bytes of the image from the base address.
    virtual size_t GetImageOffset() const = 0;
    /// \return The GenTL payload type (1 image, 4 chunk data, 8 extended chunk, ...).
    virtual size_t GetPayloadType() const = 0;
    /// \return The pixel format as the producer reports it (see GetPixelFormatNameSpace()).
    virtual uint64_t GetPixelFormat() const = 0;
    /// \return The namespace of GetPixelFormat() (4: 32-bit PFNC).
    virtual uint64_t GetPixelFormatNameSpace() const = 0;
    /// \return Lines actually delivered (line-scan or aborted frames).
    virtual size_t GetDeliverdImageHeight() const = 0;
    /// \return Bytes of chunk payload delivered (for the trailer formats: the whole payload).
    virtual size_t GetDeliverdChunkPayloadSize() const = 0;
    /// \return An ID that changes whenever the set, order or sizes of the chunks change.
    virtual uint64_t GetChunkLayoutID() const = 0;
    /// \return The file name of a file payload.
    virtual GenICam::gcstring GetFileName() const = 0;
    /// \return The GenTL pixel endianness (1 little, 2 big, 0 unknown).
    virtual int32_t GetPixelEndianness() const = 0;
    /// \return Bytes the producer meant to write (may exceed the buffer).
    virtual size_t GetDataSize() const = 0;
    /// \return Timestamp in nanoseconds.
    virtual uint64_t GetTimestampNS() const = 0;
    /// \return True when the data did not fit into the buffer.
    virtual bool IsDataLargerThanBuffer() const = 0;
    /// \return True when the buffer carries chunk data.
    virtual bool HasChunkData() const = 0;

protected:
    ~IQvStreamBufferInfo() = default; // owned by its buffer
};

/**
 * \brief One buffer of a data stream, as RetrieveBuffer() hands it out: its GenTL information,
 *        its image and, in chunk mode, its chunk data.
 *
 * The buffer belongs to its stream; Release() of IQvStreamBufferReleasable gives it back (the
 * producer fills it again). Use it from one thread at a time, between RetrieveBuffer() and
 * Release(). Error callbacks (GenTL error events of the buffer) run on the buffer's listener
 * thread once StartEventAcquisitionThread() was called.
 */
class IQvStreamBuffer : public IQvRegisterCallback, public IQvEventCtrl
{
public:
    /// \return The stream the buffer belongs to; borrowed.
    virtual IQvDataStream* GetIQvDataStream() const = 0;
    /// \return The buffer module's port (GenTL buffer features); owned by the buffer.
    virtual IQvPort* GetIQvPort() = 0;
    /// \return The buffer's GenTL information; owned by the buffer.
    virtual IQvStreamBufferInfo* GetIQvStreamBufferInfo() const = 0;
    /**
     * \return The buffer's image (geometry from the buffer information, with the chunk features
     *         as fall-back); owned by the buffer, valid while the buffer is announced.
     */
    virtual IQvImage* GetIQvImage() = 0;
    /**
     * \return The node map of this buffer's chunk data (ChunkTimestamp, ChunkFrameID, ...), made
     *         when acquisition starts with the camera's ChunkModeActive on; null otherwise.
     *         Its values are those of the last fill once RetrieveBuffer() returned the buffer.
     *         Owned by the buffer.
     */
    virtual GenApi::INodeMap* GetChunkINodeMap() = 0;

protected:
    ~IQvStreamBuffer() = default; // owned by its stream
};

/**
 * \brief A retrieved buffer: Release() queues it again on its stream (it is not destroyed).
 */
class IQvStreamBufferReleasable : public IQvStreamBuffer, public IQvReleasable
{
protected:
    ~IQvStreamBufferReleasable() = default;
};
} // namespace QvApi
