#pragma once

#include <memory>

#include "modules/Event.h"

namespace QvGenTL {

class CDataStreamModule;

/**
 * EVENT_NEW_BUFFER of a data stream. Its entries are the stream's output queue itself (one
 * entry per filled buffer), so the event only forwards to the stream. Any thread.
 */
class CNewBufferEvent : public CEvent
{
public:
    explicit CNewBufferEvent(std::shared_ptr<CDataStreamModule> stream);

    GenTL::GC_ERROR GetData(void* pBuffer, size_t* piSize, uint64_t timeoutMs) override;
    void Flush() override;
    void Kill() override;
    void Close() override;
    size_t NumInQueue() override;
    uint64_t NumFired() override;

private:
    // Kept alive so that a wait in progress never outlives the stream it waits on; the stream
    // drops its reference to this event when it closes, which breaks the cycle.
    const std::shared_ptr<CDataStreamModule> m_stream;
};

} // namespace QvGenTL
