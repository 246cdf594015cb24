#include "modules/BufferModule.h"

#include <cstdlib>
#include <new>

#include "modules/DataStreamModule.h"

namespace QvGenTL {

CBufferModule::CBufferModule(std::shared_ptr<CDataStreamModule> stream, std::string id, void* memory, size_t size,
                             void* pPrivate)
    : CModule(std::move(id), stream->TLType(), "Buffer.xml"), m_stream(std::move(stream)), m_pPrivate(pPrivate)
{
    if (memory == nullptr)
    {
        const size_t rounded = (size + kAlignment - 1) / kAlignment * kAlignment;
        m_ownedMemory = std::aligned_alloc(kAlignment, rounded);
        if (m_ownedMemory == nullptr)
            throw std::bad_alloc();
        memory = m_ownedMemory;
    }
    data = static_cast<uint8_t*>(memory);
    this->size = size;

    CDataStreamModule* owner = m_stream.get();
    auto fill = [this, owner](auto field) {
        return owner->ReadFill(*this, [field](CBufferModule& buffer) { return int64_t(field(buffer.m_fill)); });
    };
    m_registers.AddInteger(0x0000, 8, [this] { return int64_t(this->size); });
    m_registers.AddInteger(0x0008, 8, [=] { return fill([](const BufferFill_t& f) { return f.sizeFilled; }); });
    m_registers.AddInteger(0x0010, 8, [=] { return fill([](const BufferFill_t& f) { return f.frameId; }); });
    m_registers.AddInteger(0x0018, 8, [=] { return fill([](const BufferFill_t& f) { return f.timestampNs; }); });
    m_registers.AddInteger(0x0020, 4, [=] { return fill([](const BufferFill_t& f) { return f.incomplete ? 1 : 0; }); });
}

CBufferModule::~CBufferModule()
{
    std::free(m_ownedMemory);
}

bool CBufferModule::SupportsEvent(GenTL::EVENT_TYPE type) const
{
    return type == GenTL::EVENT_ERROR || type == GenTL::EVENT_MODULE;
}

} // namespace QvGenTL
