#include "Engine/Nodes/PortNode.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include <Base/GCException.h>
#include <GenApi/IString.h>

#include "Engine/Load/NodeBuilder.h"
#include "Engine/NodeMap/NodeMapImpl.h"

namespace GenApi
{
namespace
{
uint64_t ParseHexId(std::string_view text)
{
    uint64_t value = 0;
    for (char c : text)
    {
        int digit;
        if (c >= '0' && c <= '9')
            digit = c - '0';
        else if (c >= 'a' && c <= 'f')
            digit = c - 'a' + 10;
        else if (c >= 'A' && c <= 'F')
            digit = c - 'A' + 10;
        else if (c == 'x' || c == 'X')
        {
            value = 0; // a "0x" prefix some files carry
            continue;
        }
        else
            continue;
        value = (value << 4) | static_cast<uint64_t>(digit);
    }
    return value;
}
} // namespace

bool CPortNode::ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder)
{
    const EElement_t element = builder.ElementOf(child);
    if (element == EElement_t::ChunkID)
        m_chunkId = CNodeBuilder::TrimmedView(child.text().get());
    else if (element == EElement_t::pChunkID)
        AddReference(m_pChunkId = builder.Ref(child, this));
    else if (element == EElement_t::SwapEndianess)
        m_swapEndianess = builder.YesNo(child, this);
    else if (element == EElement_t::CacheChunkData)
        m_cacheChunkData = builder.YesNo(child, this);
    else
        return CNode::ConfigureElement(child, builder);
    return true;
}

void CPortNode::Link(CNodeBuilder& /*builder*/)
{
}

EAccessMode CPortNode::NaturalAccessLocked(bool /*structural*/)
{
    // A chunk port without a chunk adapter is merely empty (NA), as it is between buffers.
    if (!m_pPort)
        return HasChunkId() ? NA : NI;
    return m_pPort->GetAccessMode();
}

void CPortNode::DropCacheLocked()
{
    CNode::DropCacheLocked();
    m_registerCache.clear();
}

void CPortNode::ConnectPort(IPort* pPort)
{
    CNodeMapImpl::CCallbackScope scope(m_pMap);
    m_pPort = pPort;
    m_pMap->NotifyChangedLocked(this);
}

uint64_t CPortNode::ChunkIdValue()
{
    if (!m_chunkId.empty())
        return ParseHexId(m_chunkId);
    if (IString* pText = dynamic_cast<IString*>(m_pChunkId))
    {
        const GenICam::gcstring text = pText->GetValue();
        return ParseHexId(std::string_view(text.c_str(), text.size()));
    }
    return 0;
}

uint64_t CPortNode::EventIdValue() const
{
    return ParseHexId(m_eventId);
}

void CPortNode::Swap(uint8_t* pBytes, int64_t lengthBytes) const
{
    // Byte order is swapped per 32-bit word, the unit of the register spaces that need it.
    if (lengthBytes % 4 == 0)
    {
        for (int64_t i = 0; i < lengthBytes; i += 4)
            std::reverse(pBytes + i, pBytes + i + 4);
    }
    else
        std::reverse(pBytes, pBytes + lengthBytes);
}

void CPortNode::ReadLocked(void* pBuffer, int64_t address, int64_t lengthBytes)
{
    if (!m_pPort)
        throw ACCESS_EXCEPTION_NODE(NameText(), "Read")("Node is not readable.");
    m_pPort->Read(pBuffer, address, lengthBytes);
    if (m_swapEndianess)
        Swap(static_cast<uint8_t*>(pBuffer), lengthBytes);
}

void CPortNode::WriteLocked(const void* pBuffer, int64_t address, int64_t lengthBytes)
{
    if (!m_pPort)
        throw ACCESS_EXCEPTION_NODE(NameText(), "Write")("Node is not writable.");
    if (!m_swapEndianess)
    {
        m_pPort->Write(pBuffer, address, lengthBytes);
        return;
    }
    std::vector<uint8_t> swapped(static_cast<const uint8_t*>(pBuffer), static_cast<const uint8_t*>(pBuffer) + lengthBytes);
    Swap(swapped.data(), lengthBytes);
    m_pPort->Write(swapped.data(), address, lengthBytes);
}

bool CPortNode::LookupCacheLocked(uint8_t* pBuffer, int64_t address, int64_t lengthBytes) const
{
    auto it = m_registerCache.find({address, lengthBytes});
    if (it == m_registerCache.end())
        return false;
    if (lengthBytes > 0) // a zero-length register has no buffer to copy into
        std::memcpy(pBuffer, it->second.data(), static_cast<size_t>(lengthBytes));
    return true;
}

void CPortNode::StoreCacheLocked(const uint8_t* pBuffer, int64_t address, int64_t lengthBytes)
{
    m_registerCache[{address, lengthBytes}].assign(pBuffer, pBuffer + lengthBytes);
}

void CPortNode::DropCacheEntryLocked(int64_t address, int64_t lengthBytes)
{
    m_registerCache.erase({address, lengthBytes});
}

void CPortNode::Read(void* pBuffer, int64_t address, int64_t lengthBytes)
{
    AutoLock lock(NodeMapLock());
    ReadLocked(pBuffer, address, lengthBytes);
}

void CPortNode::Write(const void* pBuffer, int64_t address, int64_t lengthBytes)
{
    AutoLock lock(NodeMapLock());
    WriteLocked(pBuffer, address, lengthBytes);
}

void CPortNode::SetPortImpl(IPort* pPort)
{
    ConnectPort(pPort);
    // An application port that wants to know its node (CPortImpl) is told; port nodes are not.
    if (IPortConstruct* pConstruct = dynamic_cast<IPortConstruct*>(pPort))
        if (!dynamic_cast<CNode*>(pPort))
            pConstruct->SetPortImpl(this);
}

GenICam::gcstring CPortNode::GetChunkID() const
{
    return GenICam::gcstring(m_chunkId.data(), m_chunkId.size());
}
} // namespace GenApi
