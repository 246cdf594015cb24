#include "QvApi_TL/QvPort.h"

#include <new>

#include <GenApi/ChunkAdapterGEV.h>
#include <GenApi/ChunkAdapterGeneric.h>
#include <GenApi/ChunkAdapterU3V.h>
#include <GenApi/INodeMap.h>

#include "QvGenTLCommon/QvGenTLLib.h"
#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
namespace
{
// Largest chunk a CacheChunkData port copies out of a buffer.
constexpr int64_t kMaxChunkCacheSize = 2048;
} // namespace

CQvPort::CQvPort(CQvGenTLLib* pCQvGenTL, GenTL::PORT_HANDLE hPort, GenApi::EAccessMode accessMode,
                 const GenICam::gcstring& nodeMapNamePrefix)
    : m_pCQvGenTL(pCQvGenTL), m_hPort(hPort), m_portURLInfo(pCQvGenTL, hPort), m_portInfo(pCQvGenTL, hPort),
      m_accessMode(accessMode), m_xmlFile(pCQvGenTL, hPort, accessMode, nodeMapNamePrefix)
{
    QV_ASSERT(m_pCQvGenTL != nullptr, "m_pCQvGenTL != NULL");
    QV_ASSERT(m_hPort != nullptr, "m_hPort != NULL");
}

CQvPort::~CQvPort()
{
    // The adapter detaches itself from the node map, which goes with m_xmlFile after us.
    m_pChunkAdapter.reset();
}

// ---- Register access ----------------------------------------------------------------------------

void CQvPort::Read(void* pBuffer, int64_t address, int64_t lengthBytes)
{
    QV_ASSERT(m_pCQvGenTL != nullptr, "m_pCQvGenTL != NULL");
    QV_ASSERT(m_hPort != nullptr, "m_hPort != NULL");
    size_t size = static_cast<size_t>(lengthBytes);
    const GenTL::GC_ERROR err =
        QV_GENTL_CALL(m_pCQvGenTL, GCReadPort, m_hPort, static_cast<uint64_t>(address), pBuffer, &size);
    QV_CHECK_GENTL(m_pCQvGenTL, err, "GCReadPort", "%d = GCReadPort(0x%p, %I64d, 0x%p, 0x%p)", err, m_hPort,
                   static_cast<int>(address), pBuffer, static_cast<void*>(&size));
    if (QV_UNLIKELY(static_cast<int64_t>(size) != lengthBytes))
    {
        // The blanks inside "0x % p" belong to the message as it has always been printed.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat"
        QV_THROW_GENTL(m_pCQvGenTL, GenTL::GC_ERR_SUCCESS, "GCReadPort",
                       "%d = GCReadPort(0x%p, %I64d, 0x % p, 0x % p) Length:%I64d != %I64d", GenTL::GC_ERR_SUCCESS,
                       m_hPort, static_cast<int>(address), pBuffer, static_cast<void*>(&size),
                       static_cast<int>(lengthBytes), static_cast<int>(size));
#pragma GCC diagnostic pop
    }
}

void CQvPort::Write(const void* pBuffer, int64_t address, int64_t lengthBytes)
{
    QV_ASSERT(m_pCQvGenTL != nullptr, "m_pCQvGenTL != NULL");
    QV_ASSERT(m_hPort != nullptr, "m_hPort != NULL");
    if (m_accessMode != GenApi::WO && m_accessMode != GenApi::RW)
        QV_THROW(RuntimeException, "Port is not writable.");
    size_t size = static_cast<size_t>(lengthBytes);
    const GenTL::GC_ERROR err =
        QV_GENTL_CALL(m_pCQvGenTL, GCWritePort, m_hPort, static_cast<uint64_t>(address), pBuffer, &size);
    // Only a negative result fails a write; a positive one is a warning some producers give.
    if (QV_UNLIKELY(err < 0))
        QV_THROW_GENTL(m_pCQvGenTL, err, "GCWritePort", "%d = GCWritePort(0x%p, %I64d, 0x%p, 0x%p)", err, m_hPort,
                       static_cast<int>(address), pBuffer, static_cast<void*>(&size));
    if (QV_UNLIKELY(static_cast<int64_t>(size) != lengthBytes))
        QV_THROW_GENTL(m_pCQvGenTL, err, "GCWritePort", "%d = GCWritePort(0x%p, %I64d, 0x%p, 0x%p) Length:%I64d != %d",
                       err, m_hPort, static_cast<int>(address), pBuffer, static_cast<void*>(&size),
                       static_cast<int>(lengthBytes), static_cast<int>(size));
}

GenApi::EAccessMode CQvPort::GetAccessMode() const
{
    return m_accessMode;
}

GenTL::PORT_HANDLE CQvPort::GetPortHandle()
{
    return m_hPort;
}

// ---- URLs and information -----------------------------------------------------------------------

uint32_t CQvPort::GetPortURLCount()
{
    if (m_pCQvGenTL->GCGetNumPortURLs != nullptr)
    {
        uint32_t count = 0;
        const GenTL::GC_ERROR err = m_pCQvGenTL->GCGetNumPortURLs(m_hPort, &count);
        QV_CHECK_GENTL(m_pCQvGenTL, err, "GCGetNumPortURLs", "%d = GCGetNumPortURLs(0x%p, 0x%p)", err, m_hPort,
                       static_cast<void*>(&count));
        return count;
    }
    if (m_pCQvGenTL->GCGetPortURL != nullptr)
    {
        // A GenTL 1.0 producer has exactly one URL, if it answers at all.
        size_t size = 0;
        return m_pCQvGenTL->GCGetPortURL(m_hPort, nullptr, &size) == GenTL::GC_ERR_SUCCESS ? 1 : 0;
    }
    return 0;
}

uint32_t CQvPort::GetPortURLIndex()
{
    return m_portURLInfo.GetURLIndex();
}

void CQvPort::SetPortURLIndex(uint32_t nURLIndex)
{
    QV_CHECK_BELOW("nURLIndex", nURLIndex, GetPortURLCount());
    m_portURLInfo.SetURLIndex(nURLIndex);
}

IQvPortURLInfo* CQvPort::GetIQvPortURLInfo()
{
    return &m_portURLInfo;
}

IQvPortInfo* CQvPort::GetIQvPortInfo()
{
    return &m_portInfo;
}

// ---- Node map -----------------------------------------------------------------------------------

void CQvPort::CreateNodeMap()
{
    if (m_xmlFile.GetNodeMap() != nullptr)
        return;
    const GenICam::gcstring portName = m_portInfo.GetPortName();
    const GenICam::gcstring url = m_portURLInfo.GetURL();
    m_xmlFile.CreateNodeMap(url, static_cast<GenApi::IPort*>(this), portName);
}

GenApi::INodeMap* CQvPort::GetINodeMap()
{
    CreateNodeMap();
    return m_xmlFile.GetNodeMap();
}

GenICam::gcstring CQvPort::GetXMLFileName()
{
    CreateNodeMap();
    return m_xmlFile.GetXMLFileName();
}

void CQvPort::SaveXMLFile(const GenICam::gcstring& fileName)
{
    CreateNodeMap();
    m_xmlFile.SaveToFile(fileName);
}

void CQvPort::CreateSubTreeNodeMap(GenICam::gcstring rootName, GenApi::CNodeMapRef& nodeMap, bool doRenameToRoot)
{
    CreateNodeMap();
    m_xmlFile.CreateSubTreeNodeMap(rootName, nodeMap, doRenameToRoot);
}

// ---- Chunk data ---------------------------------------------------------------------------------

void CQvPort::CreateNodeMapFactoryForChunkData(bool doRenameToRoot)
{
    CreateNodeMap();
    GenApi::INodeMap* pNodeMap = m_xmlFile.GetNodeMap();
    if (pNodeMap == nullptr)
        QV_THROW(LogicalErrorException, "NULL pointer dereferenced");
    if (!m_xmlFile.IsChunkFactoryEmpty())
        return;
    if (pNodeMap->GetNode("ChunkData") != nullptr)
        m_xmlFile.CreateNodeMapFactoryForChunkData("ChunkData", doRenameToRoot);
    else if (pNodeMap->GetNode("ChunkDataControl") != nullptr)
        m_xmlFile.CreateNodeMapFactoryForChunkData("ChunkDataControl", doRenameToRoot);
}

void CQvPort::CreateSubTreeNodeMapForChunkData(GenApi::CNodeMapRef& nodeMap)
{
    CreateNodeMap();
    CreateNodeMapFactoryForChunkData(true);
    m_xmlFile.CreateSubTreeNodeMapForChunkData(nodeMap);
}

void CQvPort::AttachChunkBuffer(uint8_t* pBuffer, int64_t lengthBytes)
{
    try
    {
        if (m_pChunkAdapter == nullptr)
        {
            const GenICam::gcstring tlType = m_portInfo.GetTLType();
            GenApi::INodeMap* pNodeMap = GetINodeMap();
            if (tlType == "U3V")
                m_pChunkAdapter = std::make_unique<GenApi::CChunkAdapterU3V>(pNodeMap, kMaxChunkCacheSize);
            else if (tlType == "GEV")
                m_pChunkAdapter = std::make_unique<GenApi::CChunkAdapterGEV>(pNodeMap, kMaxChunkCacheSize);
            else
                m_pChunkAdapter = std::make_unique<GenApi::CChunkAdapterGeneric>(pNodeMap, kMaxChunkCacheSize);
        }
        m_pChunkAdapter->AttachBuffer(pBuffer, lengthBytes, nullptr);
    }
    QV_CATCH_BAD_ALLOC()
}

void CQvPort::DetachChunkBuffer()
{
    if (m_pChunkAdapter != nullptr)
        m_pChunkAdapter->DetachBuffer();
}
} // namespace QvApi
