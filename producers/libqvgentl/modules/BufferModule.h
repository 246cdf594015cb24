#pragma once

#include <memory>

#include "modules/Module.h"
#include "transport/Transport.h"

namespace QvGenTL {

class CDataStreamModule;

/// Where a buffer is in the acquisition engine of its stream.
enum class EBufferState_t
{
    Announced, ///< in neither queue: new, delivered to the consumer, or flushed out
    Input,     ///< in the input pool
    Filling,   ///< taken by the transport
    Output,    ///< filled, waiting in the output queue
};

/**
 * A GenTL buffer module (DSAnnounceBuffer / DSAllocAndAnnounceBuffer): memory, the consumer's
 * private pointer, its queue state and the information of its last fill. State and fill are
 * guarded by the data stream's lock; the memory is written only by the transport while the
 * buffer is Filling. Its port serves Buffer.xml.
 */
class CBufferModule : public CModule, public StreamBuffer_t
{
public:
    /// memory: the consumer's memory, or null to allocate size bytes here.
    CBufferModule(std::shared_ptr<CDataStreamModule> stream, std::string id, void* memory, size_t size,
                  void* pPrivate);
    ~CBufferModule() override;

    const std::shared_ptr<CDataStreamModule>& Stream() const { return m_stream; }
    void* UserPointer() const { return m_pPrivate; }
    bool OwnsMemory() const { return m_ownedMemory != nullptr; }

    // Guarded by the stream's lock.
    EBufferState_t m_state = EBufferState_t::Announced;
    bool m_newData = false;
    BufferFill_t m_fill;

    static constexpr size_t kAlignment = 64;

protected:
    const char* ModuleName() const override { return "TLBuffer"; }
    const char* PortName() const override { return "BufferPort"; }
    bool SupportsEvent(GenTL::EVENT_TYPE type) const override;

private:
    const std::shared_ptr<CDataStreamModule> m_stream; // kept alive while the buffer lives
    void* const m_pPrivate;
    void* m_ownedMemory = nullptr; // producer-allocated memory, freed with the buffer
};

} // namespace QvGenTL
