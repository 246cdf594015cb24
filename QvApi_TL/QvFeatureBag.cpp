// The SDK's feature bag: persistence text in files and strings, GenApi for the node maps.
#include "QvApi_TL/QvFeatureBag.h"

#include <cstring>
#include <fstream>
#include <new>
#include <sstream>
#include <stdexcept>
#include <string>

#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
namespace
{
const char* const kMagicGuid = "{05D8C294-F295-4dfb-9D01-096BD04049F4}";
// Names and the first line are read into buffers of this size (values have no limit).
constexpr std::streamsize kLineBufferSize = 1024;

// Skips lines that start with '#' at the start of a record.
void SkipComments(std::istream& stream)
{
    if (stream.eof())
        return;
    while (stream.peek() == '#')
        stream.ignore(kLineBufferSize, '\n');
}
} // namespace

int64_t CQvFeatureBag::StoreNodeMapToBag(GenApi::INodeMap* pNodeMap, int maxEntries)
{
    if (pNodeMap == nullptr)
        QV_THROW(InvalidArgumentException, "Nodemap pointer is NULL");
    return m_FeatureBag.StoreToBag(pNodeMap, maxEntries);
}

void CQvFeatureBag::StoreStringToBag(const GenICam::gcstring& text)
{
    std::istringstream stream(std::string(text.c_str(), text.size()));
    ReadStream(stream);
}

void CQvFeatureBag::StoreFileToBag(const GenICam::gcstring& fileName)
{
    std::ifstream stream(fileName.c_str());
    if (!stream.is_open())
        QV_THROW(RuntimeException, "File %s could not be opened.", fileName.c_str());
    ReadStream(stream);
    stream.close();
}

bool CQvFeatureBag::Load(GenApi::INodeMap* pNodeMap, bool verify, GenICam::gcstring_vector* pErrorList)
{
    if (pNodeMap == nullptr)
        QV_THROW(InvalidArgumentException, "Nodemap pointer is NULL");
    try
    {
        return m_FeatureBag.LoadFromBag(pNodeMap, verify, pErrorList);
    }
    catch (const std::length_error& lengthError)
    {
        QV_THROW(InvalidArgumentException, "%s", lengthError.what());
    }
    QV_CATCH_BAD_ALLOC()
}

void CQvFeatureBag::SaveToString(GenICam::gcstring& text)
{
    std::ostringstream stream;
    WriteStream(stream);
    text = GenICam::gcstring(stream.str());
}

void CQvFeatureBag::SaveToFile(const GenICam::gcstring& fileName)
{
    std::ofstream stream(fileName.c_str(), std::ios::out | std::ios::trunc);
    if (!stream.is_open())
        QV_THROW(RuntimeException, "File %s could not be opened.", fileName.c_str());
    WriteStream(stream);
    stream.close();
}

void CQvFeatureBag::Release()
{
    delete this;
}

void CQvFeatureBag::ReadStream(std::istream& stream)
{
    if (stream.peek() == std::char_traits<char>::eof())
        QV_THROW(RuntimeException, "The stream is eof");
    m_FeatureBag.m_Names.clear();
    m_FeatureBag.m_Values.clear();

    char firstLine[kLineBufferSize] = {};
    stream.getline(firstLine, kLineBufferSize);
    if (std::strstr(firstLine, kMagicGuid) == nullptr)
        QV_THROW(RuntimeException,
                 "The stream is not a GenApi feature stream since it is missing the magic GUID in the first line");
    SkipComments(stream);

    while (!stream.eof())
    {
        // A name longer than the buffer, or no tab before the end, fails the stream: reading ends.
        char name[kLineBufferSize] = {};
        stream.getline(name, kLineBufferSize, '\t');
        if (stream.fail())
            break;
        std::string value;
        std::getline(stream, value, '\n');
        if (stream.fail())
            break;
        m_FeatureBag.m_Names.push_back(GenICam::gcstring(name));
        m_FeatureBag.m_Values.push_back(GenICam::gcstring(value));
        if (stream.eof())
            break;
        SkipComments(stream);
    }
}

void CQvFeatureBag::WriteStream(std::ostream& stream)
{
    stream << "# " << kMagicGuid << "\n";
    stream << "# GenApi persistence file (version " << 3 << "." << 0 << "." << 0 << ")\n";
    stream << "# " << m_FeatureBag.m_BagName.c_str() << "\n";
    QV_ASSERT(m_FeatureBag.m_Names.size() == m_FeatureBag.m_Values.size(),
              "FeatureBag.m_Names.size() == FeatureBag.m_Values.size()");
    // Whole strings, so that a value holding a NUL is written as it was read.
    for (size_t i = 0; i < m_FeatureBag.m_Names.size(); ++i)
    {
        const GenICam::gcstring& name = m_FeatureBag.m_Names[i];
        const GenICam::gcstring& value = m_FeatureBag.m_Values[i];
        stream.write(name.c_str(), static_cast<std::streamsize>(name.size()));
        stream << '\t';
        stream.write(value.c_str(), static_cast<std::streamsize>(value.size()));
        stream << '\n';
    }
}
} // namespace QvApi
