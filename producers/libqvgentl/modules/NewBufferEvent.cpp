#include "modules/NewBufferEvent.h"

#include "modules/DataStreamModule.h"

namespace QvGenTL {

CNewBufferEvent::CNewBufferEvent(std::shared_ptr<CDataStreamModule> stream)
    : CEvent(GenTL::EVENT_NEW_BUFFER, stream->TLType()), m_stream(std::move(stream))
{
}

GenTL::GC_ERROR CNewBufferEvent::GetData(void* pBuffer, size_t* piSize, uint64_t timeoutMs)
{
    return m_stream->WaitNewBuffer(pBuffer, piSize, timeoutMs >= kWaitForeverMs ? kWaitForeverMs : timeoutMs);
}

void CNewBufferEvent::Flush()
{
    m_stream->FlushOutputQueue();
}

void CNewBufferEvent::Kill()
{
    m_stream->KillNewBufferWait();
}

void CNewBufferEvent::Close()
{
    m_stream->CloseNewBufferEvent();
}

size_t CNewBufferEvent::NumInQueue()
{
    return m_stream->OutputQueueSize();
}

uint64_t CNewBufferEvent::NumFired()
{
    return m_stream->NumNewBufferFired();
}

} // namespace QvGenTL
