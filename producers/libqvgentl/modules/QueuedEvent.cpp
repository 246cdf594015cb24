#include "modules/QueuedEvent.h"

#include <chrono>
#include <cstring>

namespace QvGenTL {

CQueuedEvent::CQueuedEvent(GenTL::EVENT_TYPE type, std::string tlType) : CEvent(type, std::move(tlType)) {}

void CQueuedEvent::Post(std::vector<uint8_t> record)
{
    {
        std::lock_guard lock(m_lock);
        if (m_closed)
            return;
        if (m_queue.size() >= kMaxQueued)
            m_queue.pop_front();
        m_queue.push_back(std::move(record));
        ++m_numFired;
    }
    m_changed.notify_one();
}

GenTL::GC_ERROR CQueuedEvent::GetData(void* pBuffer, size_t* piSize, uint64_t timeoutMs)
{
    if (piSize == nullptr || pBuffer == nullptr)
        return GenTL::GC_ERR_INVALID_PARAMETER;
    std::unique_lock lock(m_lock);
    if (m_queue.empty() && !m_closed)
    {
        if (m_killPending)
        {
            m_killPending = false;
            return GenTL::GC_ERR_ABORT;
        }
        const uint64_t generation = m_killGeneration;
        auto ready = [&] {
            return !m_queue.empty() || m_closed || m_killGeneration != generation;
        };
        ++m_waiters;
        if (timeoutMs >= kWaitForeverMs)
            m_changed.wait(lock, ready);
        else
            m_changed.wait_for(lock, std::chrono::milliseconds(timeoutMs), ready);
        --m_waiters;
        if (m_queue.empty() && m_killGeneration != generation)
            return GenTL::GC_ERR_ABORT;
    }
    if (m_queue.empty())
    {
        return m_closed ? GenTL::GC_ERR_ABORT : GenTL::GC_ERR_TIMEOUT;
    }
    const std::vector<uint8_t>& record = m_queue.front();
    if (*piSize < record.size())
    {
        *piSize = record.size();
        return GenTL::GC_ERR_BUFFER_TOO_SMALL;
    }
    std::memcpy(pBuffer, record.data(), record.size());
    *piSize = record.size();
    m_queue.pop_front();
    return GenTL::GC_ERR_SUCCESS;
}

void CQueuedEvent::Flush()
{
    std::lock_guard lock(m_lock);
    m_queue.clear();
}

void CQueuedEvent::Kill()
{
    {
        std::lock_guard lock(m_lock);
        if (m_waiters == 0)
        {
            m_killPending = true;
            return;
        }
        ++m_killGeneration;
    }
    m_changed.notify_all();
}

void CQueuedEvent::Close()
{
    {
        std::lock_guard lock(m_lock);
        m_closed = true;
        m_queue.clear();
    }
    m_changed.notify_all();
}

size_t CQueuedEvent::NumInQueue()
{
    std::lock_guard lock(m_lock);
    return m_queue.size();
}

uint64_t CQueuedEvent::NumFired()
{
    std::lock_guard lock(m_lock);
    return m_numFired;
}

} // namespace QvGenTL
