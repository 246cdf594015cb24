#include "GenICamDumper.h"

#include <strings.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include <GenApi/GenApi.h>
#include <GenApi/MemoryPort.h>

using namespace GenApi;

namespace
{
std::string JsonString(const std::string& text)
{
    std::string out = "\"";
    for (unsigned char c : text)
    {
        switch (c)
        {
        case '"':
            out += "\\\"";
            break;
        case '\\':
            out += "\\\\";
            break;
        case '\n':
            out += "\\n";
            break;
        case '\r':
            out += "\\r";
            break;
        case '\t':
            out += "\\t";
            break;
        default:
            if (c < 0x20 || c == 0x7F)
            {
                char escaped[8];
                std::snprintf(escaped, sizeof(escaped), "\\u%04x", c);
                out += escaped;
            }
            else
                out += static_cast<char>(c);
        }
    }
    return out + "\"";
}

std::string JsonFloat(double value)
{
    if (std::isnan(value) || std::isinf(value))
        return JsonString(std::to_string(value));
    char text[64];
    std::snprintf(text, sizeof(text), "%.17g", value);
    std::string result = text;
    if (result.find_first_of(".eE") == std::string::npos)
        result += ".0";
    return result;
}

/// One JSON object written field by field; failing fields are skipped, the first error kept.
class CLine
{
public:
    void Add(const char* key, const std::string& jsonValue)
    {
        m_text += m_text.empty() ? "{" : ",";
        m_text += JsonString(key) + ":" + jsonValue;
    }
    template <class F>
    void Try(const char* key, F produce)
    {
        try
        {
            Add(key, produce());
        }
        catch (const GenICam::GenericException& error)
        {
            if (m_error.empty())
                m_error = error.GetDescription();
        }
    }
    std::string Finish()
    {
        if (!m_error.empty())
            Add("error", JsonString(m_error));
        return m_text + "}";
    }

private:
    std::string m_text;
    std::string m_error;
};

const char* kAccess[] = {"NI", "NA", "WO", "RO", "RW"};

std::string DumpNode(INode* pNode)
{
    CLine line;
    line.Add("name", JsonString(pNode->GetName().str()));
    line.Add("type", JsonString(EInterfaceTypeClass::ToString(pNode->GetPrincipalInterfaceType()).str()));
    EAccessMode access = NI;
    line.Try("access", [&] {
        access = pNode->GetAccessMode();
        return JsonString(access <= RW ? kAccess[access] : "NI");
    });
    line.Try("visibility", [&] { return JsonString(EVisibilityClass::ToString(pNode->GetVisibility()).str()); });
    line.Add("caching", JsonString(ECachingModeClass::ToString(pNode->GetCachingMode()).str()));
    line.Add("is_feature", pNode->IsFeature() ? "true" : "false");

    if (CEnumEntryPtr pEntry = pNode)
    {
        if (IsReadable(access))
            line.Try("value", [&] { return JsonString(pEntry->ToString().str()); });
        line.Add("symbolic", JsonString(pEntry->GetSymbolic().str()));
        line.Add("entry_value", std::to_string(pEntry->GetValue()));
        return line.Finish();
    }
    if (CCategoryPtr pCategory = pNode)
    {
        if (IsReadable(access))
            line.Try("value", [&] { return JsonString(pCategory->ToString().str()); });
        FeatureList_t features;
        pCategory->GetFeatures(features);
        std::string list = "[";
        for (size_t i = 0; i < features.size(); ++i)
            list += (i ? "," : "") + JsonString(features[i]->GetNode()->GetName().str());
        line.Add("features", list + "]");
        return line.Finish();
    }
    if (!IsReadable(access))
        return line.Finish();
    if (CValuePtr pValue = pNode)
        line.Try("value", [&] { return JsonString(pValue->ToString().str()); });
    if (CIntegerPtr pInteger = pNode)
    {
        line.Try("min", [&] { return std::to_string(pInteger->GetMin()); });
        line.Try("max", [&] { return std::to_string(pInteger->GetMax()); });
        line.Try("inc", [&] { return std::to_string(pInteger->GetInc()); });
        line.Try("inc_mode", [&] { return JsonString(EIncModeClass::ToString(pInteger->GetIncMode()).str()); });
        line.Try("repr", [&] { return JsonString(ERepresentationClass::ToString(pInteger->GetRepresentation()).str()); });
        line.Try("unit", [&] { return JsonString(pInteger->GetUnit().str()); });
    }
    else if (CFloatPtr pFloat = pNode)
    {
        line.Try("min", [&] { return JsonFloat(pFloat->GetMin()); });
        line.Try("max", [&] { return JsonFloat(pFloat->GetMax()); });
        bool hasInc = false;
        line.Try("has_inc", [&] {
            hasInc = pFloat->HasInc();
            return std::string(hasInc ? "true" : "false");
        });
        if (hasInc)
            line.Try("inc", [&] { return JsonFloat(pFloat->GetInc()); });
        line.Try("repr", [&] { return JsonString(ERepresentationClass::ToString(pFloat->GetRepresentation()).str()); });
        line.Try("unit", [&] { return JsonString(pFloat->GetUnit().str()); });
    }
    else if (CEnumerationPtr pEnumeration = pNode)
    {
        line.Try("int_value", [&] { return std::to_string(pEnumeration->GetIntValue()); });
        line.Try("entries", [&] {
            StringList_t symbolics;
            pEnumeration->GetSymbolics(symbolics);
            std::string list = "[";
            for (size_t i = 0; i < symbolics.size(); ++i)
                list += (i ? "," : "") + JsonString(symbolics[i].str());
            return list + "]";
        });
    }
    else if (CStringPtr pString = pNode)
        line.Try("max_length", [&] { return std::to_string(pString->GetMaxLength()); });
    else if (CRegisterPtr pRegister = pNode)
    {
        line.Try("address", [&] { return std::to_string(pRegister->GetAddress()); });
        line.Try("length", [&] { return std::to_string(pRegister->GetLength()); });
    }
    return line.Finish();
}

bool EndsWith(const std::string& text, const char* suffix)
{
    const size_t length = std::strlen(suffix);
    return text.size() >= length && strcasecmp(text.c_str() + text.size() - length, suffix) == 0;
}

} // namespace

void DumpDescription(const std::string& fileName, const std::string& registerFile, FILE* out, FILE* warningsOut)
{
    CNodeMapRef nodeMap;
    if (EndsWith(fileName, ".zip"))
        nodeMap._LoadXMLFromZIPFile(fileName.c_str());
    else
        nodeMap._LoadXMLFromFile(fileName.c_str());

    if (warningsOut != nullptr)
    {
        GenICam::gcstring_vector warnings;
        CLoadWarningsPtr(nodeMap._Ptr)->GetLoadWarnings(warnings);
        for (const GenICam::gcstring& warning : warnings)
            std::fprintf(warningsOut, "warning: %s\n", warning.c_str());
    }

    CMemoryPort memory;
    if (!registerFile.empty())
        memory.LoadRegisterFile(registerFile);
    NodeList_t nodes;
    nodeMap._GetNodes(nodes);
    for (INode* pNode : nodes)
        if (pNode->GetPrincipalInterfaceType() == intfIPort)
            nodeMap._Connect(&memory, pNode->GetName());

    std::vector<std::pair<std::string, INode*>> sorted;
    for (INode* pNode : nodes)
        sorted.emplace_back(pNode->GetName().str(), pNode);
    std::sort(sorted.begin(), sorted.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    for (const auto& item : sorted)
        std::fprintf(out, "%s\n", DumpNode(item.second).c_str());
}
