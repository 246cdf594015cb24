#pragma once

#include <cstdint>

#include <GenApi/IPort.h>

namespace GenApi
{
/**
 * \brief A list of recorded port writes that can be replayed later (e.g. to restore a camera
 *        after a reconnect).
 */
GENICAM_INTERFACE GENAPI_DECL_ABSTRACT IPortWriteList
{
    /// Appends one write of \a lengthBytes bytes at \a address.
    virtual void Write(const void* pBuffer, int64_t address, int64_t lengthBytes) = 0;
    /// Writes every recorded entry to \a pPort, in order.
    virtual void Replay(IPort* pPort) = 0;
    /// A value the owner may attach to the list (e.g. the description it belongs to).
    virtual void SetCookie(const int64_t cookie) = 0;
    virtual int64_t GetCookie() = 0;

protected:
    virtual ~IPortWriteList() = default;
};

/// A port that can replay a write list into itself.
GENICAM_INTERFACE GENAPI_DECL_ABSTRACT IPortReplay : virtual public IPort
{
    /// Replays \a pPortRecorder; \a invalidate drops the caches of what was written.
    virtual void Replay(IPortWriteList* pPortRecorder, bool invalidate = true) = 0;
};

/// A port that can also record its writes into a write list.
GENICAM_INTERFACE GENAPI_DECL_ABSTRACT IPortRecorder : virtual public IPortReplay
{
    /// Starts copying every write into \a pPortRecorder.
    virtual void StartRecording(IPortWriteList* pPortRecorder) = 0;
    /// Stops recording.
    virtual void StopRecording() = 0;
};
} // namespace GenApi
