#include "QvSDKCommon/QvXMLFile.h"

#include <cctype>
#include <cstring>
#include <fstream>
#include <locale>
#include <new>
#include <sstream>
#include <vector>

#include <GenApi/IInteger.h>
#include <GenApi/INode.h>
#include <GenApi/INodeMap.h>

#include "QvGenTLCommon/QvGenTLLib.h"
#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
namespace
{
// The schemes in the order they are tried; the index is the location number.
constexpr const char* kURLSchemes[] = {"local:", "http:", "file:"};

uint64_t ParseHex(const std::string& text)
{
    std::istringstream stream(text);
    uint64_t value = 0;
    stream >> std::hex >> value;
    return stream.fail() ? 0 : value;
}
} // namespace

CQvXMLFile::CQvXMLFile(CQvGenTLLib* pCQvGenTL, GenTL::PORT_HANDLE hPort, GenApi::EAccessMode accessMode,
                       const GenICam::gcstring& nodeMapNamePrefix)
try : m_pCQvGenTL(pCQvGenTL), m_hPort(hPort), m_accessMode(accessMode), m_nodeMapNamePrefix(nodeMapNamePrefix)
{
}
QV_CATCH_BAD_ALLOC()

CQvXMLFile::~CQvXMLFile()
{
    DeleteBuffer();
}

// ---- URL grammar --------------------------------------------------------------------------------

int CQvXMLFile::ParseURLLocation(const GenICam::gcstring& url)
{
    for (int location = 0; location < 3; ++location)
    {
        const char* scheme = kURLSchemes[location];
        if (strncasecmp(url.c_str(), scheme, strlen(scheme)) == 0)
            return location;
    }
    // An unknown scheme is read as local on purpose: some devices send none at all.
    return URLLocation_Local;
}

GenICam::gcstring CQvXMLFile::ParseURLFilePath(const GenICam::gcstring& url)
{
    const std::string& text = url.str();
    const size_t colon = text.find(':');
    const size_t start = colon == std::string::npos ? 0 : colon + 1;
    const size_t semicolon = text.find(';');
    const size_t end = semicolon == std::string::npos ? text.size() : semicolon;
    if (end <= start)
        return GenICam::gcstring();
    return GenICam::gcstring(text.substr(start, end - start));
}

GenICam::gcstring CQvXMLFile::ParseURLFileName(const GenICam::gcstring& filePath)
{
    const std::string& text = filePath.str();
    const size_t backslash = text.rfind('\\');
    return backslash == std::string::npos ? filePath : GenICam::gcstring(text.substr(backslash + 1));
}

uint64_t CQvXMLFile::ParseURLLocalAddress(const GenICam::gcstring& url)
{
    const std::string& text = url.str();
    const size_t first = text.find(';');
    // npos + 1 wraps to 0: without a ';' the whole URL is read (and gives 0).
    return ParseHex(text.substr(first + 1));
}

uint64_t CQvXMLFile::ParseURLLocalLength(const GenICam::gcstring& url)
{
    const std::string& text = url.str();
    const size_t first = text.find(';');
    const size_t second = text.find(';', first + 1);
    return ParseHex(second == std::string::npos ? text : text.substr(second + 1));
}

bool CQvXMLFile::IsZipFileName(const GenICam::gcstring& filePath)
{
    const std::string& text = filePath.str();
    if (text.size() < 3)
        return false;
    const std::locale locale;
    const char* zip = "zip";
    for (size_t i = 0; i < 3; ++i)
    {
        if (std::tolower(text[text.size() - 3 + i], locale) != zip[i])
            return false;
    }
    return true;
}

// ---- Loading ------------------------------------------------------------------------------------

GenICam::gcstring CQvXMLFile::GetURL(CQvGenTLLib* pCQvGenTL, GenTL::PORT_HANDLE hPort)
{
    QV_ASSERT(pCQvGenTL != nullptr, "m_pCQvGenTL != NULL");
    size_t size = 0;
    GenTL::GC_ERROR err = QV_GENTL_CALL(pCQvGenTL, GCGetPortURL, hPort, nullptr, &size);
    QV_CHECK_GENTL(pCQvGenTL, err, "GCGetPortURL", "%d = GCGetPortURL(0x%p, 0x%p, 0x%p)", err, hPort,
                   static_cast<void*>(nullptr), static_cast<void*>(&size));
    try
    {
        std::vector<char> buffer(size + 1, '\0');
        err = pCQvGenTL->GCGetPortURL(hPort, buffer.data(), &size);
        QV_CHECK_GENTL(pCQvGenTL, err, "GCGetPortURL", "%d = GCGetPortURL(0x%p, 0x%p, 0x%p)", err, hPort,
                       static_cast<void*>(buffer.data()), static_cast<void*>(&size));
        return GenICam::gcstring(buffer.data());
    }
    QV_CATCH_BAD_ALLOC()
}

void CQvXMLFile::LoadXMLFile(const GenICam::gcstring& url)
{
    const int location = ParseURLLocation(url);
    m_filePath = ParseURLFilePath(url);
    if (location != URLLocation_Local)
        QV_THROW(InvalidArgumentException, "URL location %d is not supported.", location);

    DeleteBuffer();
    const uint64_t address = ParseURLLocalAddress(url);
    const uint64_t length = ParseURLLocalLength(url);
    try
    {
        // A length of 2^64 - 1 would wrap the terminator's byte to an empty allocation.
        if (length >= SIZE_MAX)
            throw std::bad_alloc();
        m_pDescription.reset(new uint8_t[length + 1]);
    }
    QV_CATCH_BAD_ALLOC()

    size_t size = length;
    const GenTL::GC_ERROR err = QV_GENTL_CALL(m_pCQvGenTL, GCReadPort, m_hPort, address, m_pDescription.get(), &size);
    if (QV_UNLIKELY(err != GenTL::GC_ERR_SUCCESS))
    {
        void* pBuffer = m_pDescription.get();
        DeleteBuffer();
        QV_THROW_GENTL(m_pCQvGenTL, err, "GCReadPort", "%d = GCReadPort(0x%p, %I64u, 0x%p, 0x%p)", err, m_hPort,
                       static_cast<unsigned>(address), pBuffer, static_cast<void*>(&size));
    }
    // A shorter answer is kept as it is; a longer one cannot have been written into the buffer.
    m_descriptionSize = size < length ? size : length;
    m_pDescription[m_descriptionSize] = 0;
    m_contentType = IsZipFileName(m_filePath) ? GenApi::ContentType_ZippedXml : GenApi::ContentType_Xml;
}

std::unique_ptr<GenApi::CNodeMapFactory> CQvXMLFile::MakeFactory() const
{
    // The remote device's description never goes through the GenApi cache.
    const GenApi::ECacheUsage_t cacheUsage = m_portName == "Device" ? GenApi::CacheUsage_Ignore
                                                                    : GenApi::CacheUsage_Automatic;
    if (m_contentType == GenApi::ContentType_ZippedXml)
        return std::make_unique<GenApi::CNodeMapFactory>(GenApi::ContentType_ZippedXml, m_pDescription.get(),
                                                         static_cast<size_t>(m_descriptionSize), cacheUsage, false);
    // Plain text ends at its first NUL, whatever the size the producer reported.
    const GenICam::gcstring text(reinterpret_cast<const char*>(m_pDescription.get()));
    return std::make_unique<GenApi::CNodeMapFactory>(GenApi::ContentType_Xml, text.c_str(), text.size(), cacheUsage,
                                                     false);
}

void CQvXMLFile::CreateNodeMap(const GenICam::gcstring& url, GenApi::IPort* pPort, const GenICam::gcstring& portName)
{
    if (m_bCreated)
        return;
    try
    {
        LoadXMLFile(url);
        m_portName = portName;
        m_pNodeMapFactory = MakeFactory();
        // The factory drops its copy of the description: sub-trees rebuild one from our bytes.
        m_nodeMap = m_pNodeMapFactory->CreateNodeMap(m_nodeMapNamePrefix, true);
        if (m_nodeMap._Ptr == nullptr)
            QV_THROW(AccessException, "Feature not present (reference not valid)");
        m_nodeMap._Connect(pPort, portName);
        m_pPort = pPort;
        m_bCreated = true;
    }
    QV_CATCH_BAD_ALLOC()
}

GenApi::INodeMap* CQvXMLFile::GetNodeMap() const
{
    return m_bCreated ? m_nodeMap._Ptr : nullptr;
}

GenICam::gcstring CQvXMLFile::GetXMLFileName() const
{
    if (m_pDescription == nullptr)
        QV_THROW(RuntimeException, "XML File is not loaded.");
    return ParseURLFileName(m_filePath);
}

void CQvXMLFile::SaveToFile(const GenICam::gcstring& fileName)
{
    if (m_pDescription == nullptr)
        QV_THROW(RuntimeException, "XML File is not loaded.");
    uint64_t size = m_descriptionSize;
    if (m_contentType == GenApi::ContentType_Xml)
    {
        while (size > 0 && m_pDescription[size - 1] == 0)
            --size;
    }
    std::ofstream file(fileName.c_str(), std::ios::binary | std::ios::out | std::ios::trunc);
    if (!file.is_open())
        QV_THROW(RuntimeException, "File %s could not be opened.", fileName.c_str());
    file.write(reinterpret_cast<const char*>(m_pDescription.get()), static_cast<std::streamsize>(size));
    file.flush();
    if (file.fail())
        QV_THROW(RuntimeException, "File %s is unwritable.", fileName.c_str());
}

// ---- Sub-trees ----------------------------------------------------------------------------------

GenApi::CNodeMapFactory& CQvXMLFile::MainFactoryWithData()
{
    if (m_pNodeMapFactory == nullptr || m_pNodeMapFactory->IsCameraDescriptionFileDataReleased())
        m_pNodeMapFactory = MakeFactory();
    return *m_pNodeMapFactory;
}

void CQvXMLFile::ConnectSubTree(GenApi::INodeMap* pNodeMap, GenApi::CNodeMapRef& nodeMap)
{
    nodeMap = pNodeMap;
    if (nodeMap._Ptr == nullptr)
        QV_THROW(AccessException, "Feature not present (reference not valid)");
    nodeMap._Connect(m_pPort, m_portName);
}

void CQvXMLFile::CreateSubTreeNodeMap(const GenICam::gcstring& rootName, GenApi::CNodeMapRef& nodeMap,
                                      bool doRenameToRoot)
{
    if (!m_bCreated)
        return;
    try
    {
        GenApi::CNodeMapFactory subTree = MainFactoryWithData().ExtractSubtree(rootName, doRenameToRoot);
        ConnectSubTree(subTree.CreateNodeMap(m_nodeMapNamePrefix, true), nodeMap);
    }
    QV_CATCH_BAD_ALLOC()
}

void CQvXMLFile::CreateNodeMapFactoryForChunkData(const GenICam::gcstring& rootName, bool doRenameToRoot)
{
    if (!m_bCreated || m_pDescription == nullptr)
        return;
    try
    {
        m_chunkFactory = MainFactoryWithData().ExtractSubtree(rootName, doRenameToRoot);
    }
    QV_CATCH_BAD_ALLOC()
}

void CQvXMLFile::CreateSubTreeNodeMapForChunkData(GenApi::CNodeMapRef& nodeMap)
{
    if (!m_bCreated || m_chunkFactory.IsEmpty())
        return;
    try
    {
        // The chunk factory keeps its data: every buffer gets its own node map from it.
        ConnectSubTree(m_chunkFactory.CreateNodeMap(m_nodeMapNamePrefix, false), nodeMap);
        GenApi::INode* pNode = nodeMap._GetNode("TLParamsLock");
        GenApi::IInteger* pLock = dynamic_cast<GenApi::IInteger*>(pNode);
        if (pLock != nullptr)
        {
            const GenApi::EAccessMode mode = pLock->GetAccessMode();
            if (mode == GenApi::WO || mode == GenApi::RW)
                pLock->SetValue(1, true);
        }
    }
    QV_CATCH_BAD_ALLOC()
}

// ---- Teardown -----------------------------------------------------------------------------------

void CQvXMLFile::DeleteNodeMapFactory()
{
    m_pNodeMapFactory.reset();
}

void CQvXMLFile::DeleteBuffer()
{
    DeleteNodeMapFactory();
    m_pDescription.reset();
    m_descriptionSize = 0;
}
} // namespace QvApi
