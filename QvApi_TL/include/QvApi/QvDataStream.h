#pragma once

#include <stddef.h>
#include <stdint.h>

#include <Base/GCString.h>
#include <GenTL/GenTL.h>
#include <QvApi/QvApiDefs.h>
#include <QvApi/QvCallback.h>
#include <QvApi/QvEventCtrl.h>
#include <QvApi/QvPtrArray.h>
#include <QvApi/QvReleasable.h>
#include <QvApi/QvStreamBuffer.h>

namespace QvApi
{
class IQvDevice;
class IQvPort;

/// What RetrieveBuffer() does when its time-out expires.
enum EQvTimeoutHandling_t
{
    QvTimeoutHandling_ReturnNull = 0, ///< return null (any value other than 1 does the same)
    QvTimeoutHandling_Throw = 1       ///< throw GenICam::TimeoutException
};

/**
 * \brief The GenTL information of a data stream (DSGetInfo). Owned by the stream; any thread.
 * Every getter throws CQvGenTLErrorException "%d = DSGetInfo(0x%p, %d, 0x%p, 0x%p, 0x%p)" when
 * the producer fails (GC_ERR_NOT_IMPLEMENTED when it lacks the call), except as noted.
 */
class IQvDataStreamInfo
{
public:
    /// \return The stream ID.
    virtual GenICam::gcstring GetID() const = 0;
    /// \return Buffers delivered since the last acquisition start.
    virtual uint64_t GetNumDelivered() const = 0;
    /// \return Frames lost because no buffer was queued.
    virtual uint64_t GetNumUnderrun() const = 0;
    /// \return Buffers announced.
    virtual size_t GetNumAnnounced() const = 0;
    /// \return Buffers in the producer's input pool.
    virtual size_t GetNumQueued() const = 0;
    /// \return Filled buffers waiting in the producer's output queue.
    virtual size_t GetNumAwaitDelivery() const = 0;
    /// \return Buffers filled (started) since the stream was opened.
    virtual uint64_t GetNumStarted() const = 0;
    /**
     * \return Bytes one buffer must hold. A producer that does not know answers through the
     *         camera's "PayloadSize" feature instead.
     * \throws GenICam::LogicalErrorException "NULL pointer dereferenced" without a camera node
     *         map, GenICam::RuntimeException "Node %s not found." without "PayloadSize".
     */
    virtual size_t GetPayloadSize() const = 0;
    /// \return True while the producer acquires.
    virtual bool IsGrabbing() const = 0;
    /// \return True when the stream, not the camera, defines the payload size.
    virtual bool DefinesPayloadSize() const = 0;
    /// \return The transport-layer type, e.g. "GEV".
    virtual GenICam::gcstring GetTLType() const = 0;
    /// \return Most chunks a buffer can carry.
    virtual size_t GetNumChunksMax() const = 0;
    /// \return Fewest buffers that must be announced before acquisition starts.
    virtual size_t GetBufAnnounceMin() const = 0;
    /// \return Alignment in bytes that application memory for buffers must have.
    virtual size_t GetBufAlignment() const = 0;

protected:
    ~IQvDataStreamInfo() = default; // owned by its stream
};

/**
 * \brief One data stream of an open device: its buffers, acquisition start and stop, and the
 *        delivery of filled buffers by polling (RetrieveBuffer()) or by callback.
 *
 * Typical use: SetStreamBufferCount() (optional, 6 by default), StartAcquisition(), then the
 * device's AcquisitionStart(); in a loop RetrieveBuffer() and the buffer's Release(); the
 * device's AcquisitionStop(), then StopAcquisition(). Buffers are allocated and announced by
 * StartAcquisition() and stay announced until a later start needs other ones or the stream ends.
 *
 * Threads: RetrieveBuffer(), Release() of buffers, the rate getters and callback registration
 * from any thread; StartAcquisition(), StopAcquisition(), SetStreamBufferCount() and Release()
 * of the stream from one controlling thread at a time (StopAcquisition() may run while other
 * threads wait in RetrieveBuffer(): they return null). New-buffer callbacks (callback type 5,
 * IQvCallbackParamGenTLEventNewBuffer) run on the stream's listener thread, one at a time, with
 * the stream's callback lock held; a callback may call RetrieveBuffer() itself.
 */
class IQvDataStream : public IQvRegisterCallback, public IQvEventCtrl
{
public:
    /// \return The device the stream belongs to; borrowed.
    virtual IQvDevice* GetIQvDevice() = 0;
    /// \return The data stream module's port; owned by the stream.
    virtual IQvPort* GetIQvPort() = 0;
    /// \return The stream's GenTL information; owned by the stream.
    virtual IQvDataStreamInfo* GetIQvDataStreamInfo() const = 0;
    /// \return The number of buffers the next StartAcquisition() announces (default 6).
    virtual size_t GetStreamBufferCount() const = 0;
    /**
     * \brief Sets the number of buffers; it takes effect at the next StartAcquisition().
     * \throws GenICam::OutOfRangeException "%s = %ld must be equal or greater than Min = %ld"
     *         ("nCount") below the producer's minimum, "%s = %ld must be equal or smaller than
     *         Max = %ld" above 65535.
     * \throws CQvGenTLErrorException when the minimum cannot be read.
     */
    virtual void SetStreamBufferCount(size_t nCount) = 0;
    /**
     * \brief Waits for the oldest filled buffer.
     * \param[in] timeoutMs How long to wait, in milliseconds; 0xFFFFFFFF waits for ever.
     * \param[in] handling  Whether a time-out throws or returns null.
     * \return The buffer (its Release() queues it again), or null once the stream is stopped
     *         (also before the first start), or on a time-out with QvTimeoutHandling_ReturnNull.
     * \throws GenICam::TimeoutException "A timeout occurred during the processing of
     *         IQvDataStream::RetrieveBuffer(%u, %u)" with QvTimeoutHandling_Throw.
     * \throws GenICam::AccessException "The device is lost.".
     * \throws CQvGenTLErrorException "%d = EventGetData(0x%p 0x%p, %I64u, %I64u)" when the
     *         listener failed to receive buffers (reported once per failure).
     * \throws The chunk adapters' exceptions when the buffer's chunk data cannot be parsed; the
     *         buffer is then queued again.
     */
    virtual IQvStreamBufferReleasable* RetrieveBuffer(uint32_t timeoutMs,
                                                      EQvTimeoutHandling_t handling = QvTimeoutHandling_ReturnNull) = 0;
    /**
     * \brief Allocates, announces and queues the buffers (keeping those of an earlier start when
     *        they are enough and large enough), starts the listener and the producer's
     *        acquisition. Start the camera afterwards with the device's AcquisitionStart().
     * \param[in] count Buffers to acquire before the producer stops; GENTL_INFINITE: until stopped.
     * \param[in] flags GenTL ACQ_START_FLAGS.
     * \throws GenICam::AccessException "The device is lost.".
     * \throws CQvGenTLErrorException "%d = DSStartAcquisition(0x%p, %d, %I64d)" and the failures
     *         of announcing (the buffers and the listener are then taken down again).
     * \throws GenICam::BadAllocException when the application allocator returns null.
     */
    virtual void StartAcquisition(uint64_t count = GENTL_INFINITE,
                                  GenTL::ACQ_START_FLAGS flags = GenTL::ACQ_START_FLAGS_DEFAULT) = 0;
    /**
     * \brief Wakes every RetrieveBuffer() (they return null), stops the producer's acquisition
     *        and the listener. Buffers stay announced. Does nothing while not started.
     * \throws CQvGenTLErrorException "%d = DSStopAcquisition(0x%p, %d)" (after the listener stopped).
     */
    virtual void StopAcquisition(GenTL::ACQ_STOP_FLAGS flags = GenTL::ACQ_STOP_FLAGS_DEFAULT) = 0;
    /**
     * \return True while the producer acquires, and afterwards while delivered buffers still
     *         wait to be retrieved.
     */
    virtual bool IsGrabbing() = 0;
    /// \return Complete frames per second over the last 500 buffers.
    virtual double GetCurrentFPS() const = 0;
    /// \return Bytes per second over the last 500 buffers.
    virtual double GetCurrentBPS() const = 0;

protected:
    ~IQvDataStream() = default; // ended with IQvDataStreamReleasable::Release()
};

/**
 * \brief A stream as a device hands it out: Release() stops it, revokes its buffers, closes it
 *        and deletes it. Release every retrieved buffer first, and the stream before its device.
 */
class IQvDataStreamReleasable : public IQvDataStream, public IQvReleasable
{
protected:
    ~IQvDataStreamReleasable() = default;
};

extern template class QVAPI_API CQvAutoPtrArray<IQvDataStreamReleasable, IQvDataStream>;

/**
 * \brief Several streams (typically one per camera) started, stopped and polled together.
 *        One thread at a time.
 */
class QVAPI_API CIQvDataStreamPtrArray : public CQvAutoPtrArray<IQvDataStreamReleasable, IQvDataStream>
{
public:
    CIQvDataStreamPtrArray() = default;
    /// Releases every stream (exceptions are swallowed).
    ~CIQvDataStreamPtrArray() override;

    /// \brief Deregisters and releases every stream, first to last.
    virtual void Release();
    /**
     * \brief Waits until any stream has a filled buffer and retrieves it; when several have one,
     *        the lowest-numbered stream wins.
     * \return The buffer, or null on a time-out with QvTimeoutHandling_ReturnNull. Stopped
     *         streams are not waited for: an array of stopped streams waits for the time-out.
     * \throws As IQvDataStream::RetrieveBuffer().
     */
    virtual IQvStreamBufferReleasable* RetrieveBuffer(uint32_t timeoutMs,
                                                      EQvTimeoutHandling_t handling = QvTimeoutHandling_ReturnNull);
    /// \brief StartAcquisition() on each stream in index order. \throws The first failure.
    virtual void StartAcquisition(uint64_t count = GENTL_INFINITE,
                                  GenTL::ACQ_START_FLAGS flags = GenTL::ACQ_START_FLAGS_DEFAULT);
    /// \brief StopAcquisition() on each stream in index order. \throws The first failure.
    virtual void StopAcquisition(GenTL::ACQ_STOP_FLAGS flags = GenTL::ACQ_STOP_FLAGS_DEFAULT);
    /// \return True when every stream is grabbing (false for an empty array).
    virtual bool IsGrabbingAll();
    /// \return True when any stream is grabbing.
    virtual bool IsGrabbingAny();
};
} // namespace QvApi
