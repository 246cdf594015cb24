#include <GenApi/ChunkPort.h>

#include <cstring>

#include <Base/GCException.h>
#include <GenApi/IChunkPort.h>
#include <GenApi/INode.h>
#include <GenApi/INodeMap.h>
#include <GenApi/IPortConstruct.h>
#include <GenApi/Synch.h>

#include "Engine/Nodes/PortNode.h"

namespace GenApi
{
namespace
{
// Locks the node map of \a pNode for the lifetime of the object (no-op while unconnected).
class CPortLock
{
public:
    explicit CPortLock(INode* pNode) : m_pLock(pNode ? &pNode->GetNodeMap()->GetLock() : nullptr)
    {
        if (m_pLock)
            m_pLock->Lock();
    }
    CPortLock(const CPortLock&) = delete;
    CPortLock& operator=(const CPortLock&) = delete;
    ~CPortLock()
    {
        if (m_pLock)
            m_pLock->Unlock();
    }

private:
    CLock* const m_pLock;
};

bool OutsideChunk(int64_t address, int64_t lengthBytes, int64_t chunkLength)
{
    return address < 0 || lengthBytes < 0 || address > chunkLength || lengthBytes > chunkLength - address;
}
} // namespace

CChunkPort::CChunkPort(IPortConstruct* pPort)
{
    if (pPort)
        AttachPort(pPort);
}

CChunkPort::~CChunkPort()
{
    try
    {
        DetachPort();
    }
    catch (...)
    {
        // A destructor must not throw; the port node is simply left as it is.
    }
}

bool CChunkPort::AttachPort(IPortConstruct* pPort)
{
    DetachPort();
    CPortNode* pPortNode = dynamic_cast<CPortNode*>(pPort);
    if (!pPortNode || !pPortNode->HasChunkId())
        return false;
    {
        CPortLock lock(pPortNode);
        m_chunkIdNumber = pPortNode->ChunkIdValue();
        m_cacheChunkData = pPortNode->CacheChunkData() == Yes;
        m_pPort = pPort;
        m_pNode = pPortNode;
    }
    pPort->SetPortImpl(this);
    return true;
}

void CChunkPort::DetachPort()
{
    if (!m_pNode)
        return;
    CPortNode* pPortNode = dynamic_cast<CPortNode*>(m_pNode);
    {
        CPortLock lock(m_pNode);
        m_state = EState_t::Detached;
        m_pBufferBase = nullptr;
        m_copy.clear();
    }
    // Another adapter may have taken the node over meanwhile; leave its connection alone.
    if (pPortNode && pPortNode->ConnectedPort() == this)
        m_pPort->SetPortImpl(nullptr);
    m_pPort = nullptr;
    m_pNode = nullptr;
    m_chunkIdNumber = 0;
}

void CChunkPort::AttachChunk(uint8_t* pBaseAddress, int64_t chunkOffset, int64_t length, bool cache)
{
    {
        CPortLock lock(m_pNode);
        m_pBufferBase = pBaseAddress;
        m_chunkOffset = chunkOffset;
        m_length = length;
        if (cache)
        {
            m_copy.assign(pBaseAddress + chunkOffset, pBaseAddress + chunkOffset + length);
            m_state = EState_t::Copied;
        }
        else
            m_state = EState_t::InBuffer;
    }
    Invalidate();
}

void CChunkPort::DetachChunk()
{
    {
        CPortLock lock(m_pNode);
        if (m_state == EState_t::Copied || m_state == EState_t::KeptCopy)
            m_state = EState_t::KeptCopy;
        else
            m_state = EState_t::Detached;
        m_pBufferBase = nullptr;
    }
    Invalidate();
}

void CChunkPort::UpdateBuffer(uint8_t* pBaseAddress)
{
    {
        CPortLock lock(m_pNode);
        if (m_state == EState_t::InBuffer)
            m_pBufferBase = pBaseAddress;
        else if (m_state == EState_t::Copied)
        {
            m_pBufferBase = pBaseAddress;
            if (m_length > 0) // an empty copy has no storage to copy into
                std::memcpy(m_copy.data(), pBaseAddress + m_chunkOffset, static_cast<size_t>(m_length));
        }
    }
    Invalidate();
}

void CChunkPort::ClearCache()
{
    {
        CPortLock lock(m_pNode);
        m_copy.clear();
        if (m_state == EState_t::KeptCopy)
            m_state = EState_t::Detached;
        else if (m_state == EState_t::Copied)
            m_state = m_pBufferBase ? EState_t::InBuffer : EState_t::Detached;
    }
    Invalidate();
}

uint8_t* CChunkPort::Data()
{
    switch (m_state)
    {
    case EState_t::InBuffer: return m_pBufferBase + m_chunkOffset;
    case EState_t::Copied:
    case EState_t::KeptCopy: return m_copy.data();
    case EState_t::Detached: break;
    }
    return nullptr;
}

void CChunkPort::Invalidate()
{
    if (m_pNode)
        m_pNode->InvalidateNode();
}

EAccessMode CChunkPort::GetAccessMode() const
{
    switch (m_state)
    {
    case EState_t::InBuffer:
    case EState_t::Copied: return RW;
    case EState_t::KeptCopy: return RO;
    case EState_t::Detached: break;
    }
    return NA;
}

void CChunkPort::Read(void* pBuffer, int64_t address, int64_t lengthBytes)
{
    CPortLock lock(m_pNode);
    if (m_state != EState_t::Detached && lengthBytes == CHUNK_BASE_ADDRESS_REGISTER_LEN)
    {
        // The pseudo registers, in host byte order: what a description reads as LittleEndian.
        if (address == CHUNK_BASE_ADDRESS_REGISTER)
        {
            const uint64_t base = static_cast<uint64_t>(reinterpret_cast<uintptr_t>(Data()));
            std::memcpy(pBuffer, &base, sizeof(base));
            return;
        }
        if (address == CHUNK_LENGTH_REGISTER)
        {
            const uint64_t length = static_cast<uint64_t>(m_length);
            std::memcpy(pBuffer, &length, sizeof(length));
            return;
        }
    }
    if (m_state == EState_t::Detached || OutsideChunk(address, lengthBytes, m_length))
        throw RUNTIME_EXCEPTION("Range error reading(%lld, %lld)", static_cast<long long>(address),
                                static_cast<long long>(lengthBytes));
    if (lengthBytes > 0)
        std::memcpy(pBuffer, Data() + address, static_cast<size_t>(lengthBytes));
}

void CChunkPort::Write(const void* pBuffer, int64_t address, int64_t lengthBytes)
{
    CPortLock lock(m_pNode);
    if (!IsAttached() || OutsideChunk(address, lengthBytes, m_length))
        throw RUNTIME_EXCEPTION("Range error writing(%lld, %lld)", static_cast<long long>(address),
                                static_cast<long long>(lengthBytes));
    if (lengthBytes > 0)
        std::memcpy(Data() + address, pBuffer, static_cast<size_t>(lengthBytes));
}
} // namespace GenApi
