#include <GenApi/NodeMapFactory.h>

#include <fstream>
#include <iterator>
#include <sstream>

#include <pugixml.hpp>

#include <Base/GCException.h>
#include <GenApi/INodeMap.h>

#include "Engine/Load/NodeMapFactoryData.h"
#include "Engine/Load/XmlLoader.h"
#include "Engine/Load/ZipReader.h"
#include "Engine/NodeMap/NodeMapImpl.h"

namespace GenApi
{
namespace
{
std::string ReadFile(const GenICam::gcstring& fileName)
{
    std::ifstream in(fileName.c_str(), std::ios::binary);
    if (!in)
        throw RUNTIME_EXCEPTION("File %s could not be opened.", fileName.c_str());
    in.seekg(0, std::ios::end);
    const std::streamoff size = in.tellg();
    if (size < 0 || static_cast<size_t>(size) > CXmlLoader::kMaxDescriptionBytes)
        throw RUNTIME_EXCEPTION("File %s is too large for a description.", fileName.c_str());
    in.seekg(0, std::ios::beg);
    std::string data(static_cast<size_t>(size), '\0');
    in.read(&data[0], size);
    if (!in)
        throw RUNTIME_EXCEPTION("File %s could not be read.", fileName.c_str());
    return data;
}

// Nodes of an injection description replace nodes of the same name and add the others.
std::string Inject(const std::string& target, const std::string& injection)
{
    pugi::xml_document targetDocument, injectionDocument;
    if (!targetDocument.load_buffer(target.data(), target.size()) ||
        !injectionDocument.load_buffer(injection.data(), injection.size()))
        throw RUNTIME_EXCEPTION("Injection: a description does not parse");
    pugi::xml_node targetRoot = targetDocument.document_element();
    for (pugi::xml_node node = injectionDocument.document_element().first_child(); node; node = node.next_sibling())
    {
        if (node.type() != pugi::node_element)
            continue;
        const char* name = node.attribute("Name").value();
        if (name[0] != '\0')
            if (pugi::xml_node existing = targetRoot.find_child_by_attribute("Name", name))
                targetRoot.remove_child(existing);
        targetRoot.append_copy(node);
    }
    std::ostringstream out;
    targetDocument.save(out, "", pugi::format_raw);
    return out.str();
}
} // namespace

void CNodeMapFactoryData::Load()
{
    if (loaded)
        return;
    if (released)
        throw LOGICAL_ERROR_EXCEPTION("The description data were released.");
    if (contentType == ContentType_ZippedXml)
        xmlText = CZipReader::ExtractDescription(rawData.data(), rawData.size(), CXmlLoader::kMaxDescriptionBytes);
    else
        xmlText.swap(rawData);
    rawData.clear();
    rawData.shrink_to_fit();
    for (CNodeMapFactory& injection : injections)
        xmlText = Inject(xmlText, injection.ToXml().str());
    injections.clear();
    loaded = true;
}

CNodeMapFactory::CNodeMapFactory() : m_pData(std::make_shared<CNodeMapFactoryData>())
{
}

CNodeMapFactory::CNodeMapFactory(EContentType_t contentType, const GenICam::gcstring& fileName, ECacheUsage_t,
                                 bool)
    : m_pData(std::make_shared<CNodeMapFactoryData>())
{
    if (fileName.empty())
        throw INVALID_ARGUMENT_EXCEPTION("The file name must not be empty.");
    m_pData->contentType = contentType;
    m_pData->rawData = ReadFile(fileName);
    m_pData->empty = false;
}

CNodeMapFactory::CNodeMapFactory(EContentType_t contentType, const void* pData, size_t dataSize, ECacheUsage_t, bool)
    : m_pData(std::make_shared<CNodeMapFactoryData>())
{
    if (!pData || dataSize == 0)
        throw INVALID_ARGUMENT_EXCEPTION("The description data must not be empty.");
    m_pData->contentType = contentType;
    m_pData->rawData.assign(static_cast<const char*>(pData), dataSize);
    m_pData->empty = false;
}

CNodeMapFactory::CNodeMapFactory(const GenICam::gcstring& xmlData, ECacheUsage_t, bool)
    : m_pData(std::make_shared<CNodeMapFactoryData>())
{
    if (xmlData.empty())
        throw INVALID_ARGUMENT_EXCEPTION("The description data must not be empty.");
    m_pData->contentType = ContentType_Xml;
    m_pData->rawData = xmlData.str();
    m_pData->empty = false;
}

CNodeMapFactory::CNodeMapFactory(const CNodeMapFactory& other) = default;
CNodeMapFactory& CNodeMapFactory::operator=(const CNodeMapFactory& other) = default;
CNodeMapFactory::~CNodeMapFactory() = default;

bool CNodeMapFactory::IsEmpty() const
{
    return m_pData->empty;
}

void CNodeMapFactory::AddInjectionData(CNodeMapFactory& injectionData)
{
    if (m_pData->loaded)
        throw LOGICAL_ERROR_EXCEPTION("Injection data must be added before the description is loaded.");
    m_pData->injections.push_back(injectionData);
}

void CNodeMapFactory::LoadAndInject()
{
    if (m_pData->empty)
        throw LOGICAL_ERROR_EXCEPTION("The factory holds no description.");
    m_pData->Load();
}

bool CNodeMapFactory::IsLoaded() const
{
    return m_pData->loaded;
}

CNodeMapFactory CNodeMapFactory::ExtractSubtree(const GenICam::gcstring& rootName, bool doRenameToRoot)
{
    LoadAndInject();
    const std::string text = CXmlLoader::ExtractSubtree(m_pData->xmlText, rootName.str(), doRenameToRoot);
    return CNodeMapFactory(GenICam::gcstring(text));
}

void CNodeMapFactory::Preprocess()
{
    LoadAndInject();
}

bool CNodeMapFactory::IsPreprocessed() const
{
    return m_pData->loaded;
}

void CNodeMapFactory::ReleaseCameraDescriptionFileData()
{
    m_pData->rawData.clear();
    m_pData->rawData.shrink_to_fit();
    m_pData->xmlText.clear();
    m_pData->xmlText.shrink_to_fit();
    m_pData->released = true;
    m_pData->loaded = false;
}

bool CNodeMapFactory::IsCameraDescriptionFileDataReleased() const
{
    return m_pData->released;
}

INodeMap* CNodeMapFactory::CreateNodeMap(const GenICam::gcstring& deviceName, bool doReleaseCameraDescriptionFileData)
{
    LoadAndInject();
    std::unique_ptr<CNodeMapImpl> pMap = CXmlLoader::Load(m_pData->xmlText, deviceName, nullptr);
    if (doReleaseCameraDescriptionFileData)
        ReleaseCameraDescriptionFileData();
    return pMap.release();
}

INodeMap* CNodeMapFactory::CreateNodeMap(CLock& userLock, const GenICam::gcstring& deviceName,
                                         bool doReleaseCameraDescriptionFileData)
{
    LoadAndInject();
    std::unique_ptr<CNodeMapImpl> pMap = CXmlLoader::Load(m_pData->xmlText, deviceName, &userLock);
    if (doReleaseCameraDescriptionFileData)
        ReleaseCameraDescriptionFileData();
    return pMap.release();
}

INodeMap* CNodeMapFactory::CreateEmptyNodeMap()
{
    auto pMap = std::make_unique<CNodeMapImpl>("Device", nullptr);
    pMap->FinishLoading();
    return pMap.release();
}

void CNodeMapFactory::ClearCache()
{
}

GenICam::gcstring_vector CNodeMapFactory::GetSupportedSchemaVersions()
{
    return GenICam::gcstring_vector{"1.0", "1.1"};
}

GenICam::gcstring CNodeMapFactory::ToString()
{
    if (m_pData->empty)
        return "CNodeMapFactory: empty";
    if (m_pData->released)
        return "CNodeMapFactory: description released";
    return m_pData->contentType == ContentType_ZippedXml ? "CNodeMapFactory: zipped XML description"
                                                         : "CNodeMapFactory: XML description";
}

GenICam::gcstring CNodeMapFactory::ToXml()
{
    LoadAndInject();
    return GenICam::gcstring(m_pData->xmlText);
}
} // namespace GenApi
