#pragma once

// The library-internal faces of the data stream and its buffers, as far as the module tree and
// the new-buffer listener need them. The acquisition path extends both (public bases, the
// operations of the stream and the buffer); what is declared here must stay.

namespace QvApi
{
class IQvStreamBufferInside;

/**
 * \brief The data stream as its listener thread reaches it.
 */
class IQvDataStreamInside
{
public:
    /**
     * \brief A filled buffer arrived (new-buffer listener thread only): count it, queue it as
     *        filled and run the stream's new-buffer callbacks.
     */
    virtual void OnNewBuffer(IQvStreamBufferInside* pIQvStreamBufferInside) = 0;

protected:
    virtual ~IQvDataStreamInside() = default; // ended by the stream's Release()
};

/**
 * \brief A stream buffer as the new-buffer listener finds it: announced with its own
 *        IQvStreamBufferInside* as the GenTL user pointer (EVENT_NEW_BUFFER_DATA.pUserPointer).
 */
class IQvStreamBufferInside
{
public:
    /// \return The stream that announced the buffer; borrowed.
    virtual IQvDataStreamInside* GetIQvDataStreamInside() const = 0;

protected:
    virtual ~IQvStreamBufferInside() = default; // owned by its stream
};
} // namespace QvApi
