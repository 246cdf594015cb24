#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <vector>

#include "modules/Event.h"

namespace QvGenTL {

/**
 * An event whose entries are byte records posted by the producer (errors, module events,
 * remote-device events, feature events). The queue is bounded: when full the oldest entry is
 * dropped, so a consumer that stops reading cannot make the producer grow without limit.
 * Any thread.
 */
class CQueuedEvent : public CEvent
{
public:
    CQueuedEvent(GenTL::EVENT_TYPE type, std::string tlType);

    void Post(std::vector<uint8_t> record);

    GenTL::GC_ERROR GetData(void* pBuffer, size_t* piSize, uint64_t timeoutMs) override;
    void Flush() override;
    void Kill() override;
    void Close() override;
    size_t NumInQueue() override;
    uint64_t NumFired() override;

private:
    static constexpr size_t kMaxQueued = 1024;

    std::mutex m_lock;
    std::condition_variable m_changed;
    // Guarded by m_lock.
    std::deque<std::vector<uint8_t>> m_queue;
    uint64_t m_numFired = 0;
    uint64_t m_killGeneration = 0;
    unsigned m_waiters = 0;
    bool m_killPending = false;
    bool m_closed = false;
};

} // namespace QvGenTL
