#include <GenApi/Persistence.h>

#include <algorithm>
#include <cstdint>
#include <istream>
#include <ostream>
#include <sstream>
#include <string>
#include <unordered_map>
#include <vector>

#include <Base/GCException.h>
#include <GenApi/ICategory.h>
#include <GenApi/ICommand.h>
#include <GenApi/IDeviceInfo.h>
#include <GenApi/INode.h>
#include <GenApi/INodeMap.h>
#include <GenApi/IPort.h>
#include <GenApi/ISelector.h>
#include <GenApi/IValue.h>

#include "Engine/Persistence/BagLoader.h"
#include "Engine/Persistence/SelectorOdometer.h"

namespace GenApi
{
namespace
{
// The format level written: the one that knows selector-qualified entries and the device line.
const char* const kFormatVersionLine = "# GenApi persistence file (version 3.4.0)";

GenICam::gcstring DeviceLine(INodeMap* pNodeMap)
{
    IDeviceInfo* pInfo = dynamic_cast<IDeviceInfo*>(pNodeMap);
    if (!pInfo)
        return GenICam::gcstring();
    Version_t version{0, 0, 0};
    pInfo->GetDeviceVersion(version);
    std::ostringstream line;
    line << "Device = " << pInfo->GetVendorName().c_str() << "::" << pInfo->GetModelName().c_str() << " -- "
         << pInfo->GetToolTip().c_str() << " -- Device version = " << version.Major << "." << version.Minor << "."
         << version.SubMinor << " -- Product GUID = " << pInfo->GetProductGuid().c_str()
         << " -- Product version GUID = " << pInfo->GetVersionGuid().c_str();
    return GenICam::gcstring(line.str());
}

bool IsSelectorNode(INode* pNode)
{
    ISelector* pSelector = dynamic_cast<ISelector*>(pNode);
    return pSelector && pSelector->IsSelector();
}

bool IsStorable(INode* pNode)
{
    return IsReadable(pNode) && IsWritable(pNode);
}

std::string Trimmed(const std::string& text)
{
    const char* const kBlanks = " \t\r\n";
    const size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string::npos)
        return std::string();
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/// Collects the entries of one StoreToBag() call, up to the limit.
class CBagWriter
{
public:
    CBagWriter(GenICam::gcstring_vector& names, GenICam::gcstring_vector& values, int maxEntries)
        : m_names(names), m_values(values),
          m_limit(maxEntries < 0 ? SIZE_MAX : static_cast<size_t>(maxEntries == 0 ? 1 : maxEntries))
    {
    }
    bool Full() const { return m_names.size() >= m_limit; }
    void Add(const GenICam::gcstring& name, const GenICam::gcstring& value)
    {
        m_names.push_back(name);
        m_values.push_back(value);
    }

private:
    GenICam::gcstring_vector& m_names;
    GenICam::gcstring_vector& m_values;
    const size_t m_limit;
};

// Stores \a pNode once per combination of its selectors in which it can be stored, then the
// selectors' own values.
void StoreSelected(CBagWriter& writer, INode* pNode, IValue* pValue, CSelectorOdometer& odometer)
{
    bool stored = false;
    if (odometer.Start())
    {
        do
        {
            if (!IsStorable(pNode))
                continue;
            try
            {
                GenICam::gcstring text = odometer.QualifierText();
                text += '\t';
                text += pValue->ToString();
                writer.Add(pNode->GetName(), text);
                stored = true;
            }
            catch (const GenICam::GenericException&)
            {
                // A state whose value cannot be read is left out, as an unreadable one.
            }
        } while (!writer.Full() && odometer.Next());
    }
    odometer.Restore();
    if (!stored)
        return;
    for (size_t i = 0; i < odometer.Count() && !writer.Full(); ++i)
        writer.Add(odometer.Name(i), odometer.OriginalText(i));
}
} // namespace

CFeatureBag::CFeatureBag(const GenICam::gcstring& bagName) : m_BagName(bagName)
{
}

CFeatureBag::~CFeatureBag() = default;

bool CFeatureBag::PersistFeature(IValue& item)
{
    const GenICam::gcstring value = item.ToString();
    m_Names.push_back(item.GetNode()->GetName());
    m_Values.push_back(value);
    return true;
}

int64_t CFeatureBag::StoreToBag(INodeMap* pNodeMap, int maxEntries, GenICam::gcstring_vector* pFeatureFilter)
{
    if (!pNodeMap)
        throw INVALID_ARGUMENT_EXCEPTION("Node map pointer is NULL");
    m_Names.clear();
    m_Values.clear();
    m_Info = DeviceLine(pNodeMap);
    CBagWriter writer(m_Names, m_Values, maxEntries);

    NodeList_t nodes;
    pNodeMap->GetNodes(nodes);
    std::unordered_map<INode*, size_t> order; // node-map position, to list selectors outer first
    for (size_t i = 0; i < nodes.size(); ++i)
        order.emplace(nodes[i], i);

    for (INode* pNode : nodes)
    {
        if (writer.Full())
            break;
        if (!pNode->IsFeature() || !pNode->IsStreamable() || IsSelectorNode(pNode))
            continue;
        IValue* pValue = dynamic_cast<IValue*>(pNode);
        if (!pValue || dynamic_cast<ICommand*>(pNode) || dynamic_cast<ICategory*>(pNode) || dynamic_cast<IPort*>(pNode))
            continue;
        if (pFeatureFilter && !pFeatureFilter->contains(pNode->GetName()))
            continue;

        std::vector<INode*> selectors;
        if (ISelector* pSelected = dynamic_cast<ISelector*>(pNode))
        {
            FeatureList_t selecting;
            pSelected->GetSelectingFeatures(selecting);
            for (IValue* pSelectingValue : selecting)
            {
                INode* pSelector = pSelectingValue->GetNode();
                if (pSelector != pNode && IsSelectorNode(pSelector))
                    selectors.push_back(pSelector);
            }
            std::sort(selectors.begin(), selectors.end(), [&order](INode* a, INode* b) { return order[a] < order[b]; });
        }
        CSelectorOdometer odometer(selectors);
        if (odometer.Empty())
        {
            if (!IsStorable(pNode))
                continue;
            try
            {
                writer.Add(pNode->GetName(), pValue->ToString());
            }
            catch (const GenICam::GenericException&)
            {
                // Readable by its access mode but not in fact (a value outside its entries): skip.
            }
            continue;
        }
        StoreSelected(writer, pNode, pValue, odometer);
    }
    return static_cast<int64_t>(m_Names.size());
}

bool CFeatureBag::LoadFromBag(INodeMap* pNodeMap, bool verify, GenICam::gcstring_vector* pErrorList)
{
    if (!pNodeMap)
        throw INVALID_ARGUMENT_EXCEPTION("Node map pointer is NULL");
    CBagLoader loader(pNodeMap, m_Names, m_Values);
    return loader.Load(verify, pErrorList);
}

bool CFeatureBag::operator==(const CFeatureBag& other) const
{
    return m_Names == other.m_Names && m_Values == other.m_Values;
}

GenICam::gcstring CFeatureBag::ToString() const
{
    std::ostringstream text;
    text << *this;
    return GenICam::gcstring(text.str());
}

std::ostream& operator<<(std::ostream& stream, const CFeatureBag& bag)
{
    stream << "# " << GENAPI_PERSISTENCE_MAGIC << "\n";
    if (!bag.m_Info.empty())
        stream << kFormatVersionLine << "\n# " << bag.m_Info.c_str() << "\n";
    const size_t count = bag.m_Names.size() < bag.m_Values.size() ? bag.m_Names.size() : bag.m_Values.size();
    // Whole strings, embedded NULs included: what was read is written back unchanged.
    for (size_t i = 0; i < count; ++i)
    {
        stream.write(bag.m_Names[i].c_str(), static_cast<std::streamsize>(bag.m_Names[i].size()));
        stream << '\t';
        stream.write(bag.m_Values[i].c_str(), static_cast<std::streamsize>(bag.m_Values[i].size()));
        stream << '\n';
    }
    return stream;
}

std::istream& operator>>(std::istream& stream, CFeatureBag& bag)
{
    bag.m_Names.clear();
    bag.m_Values.clear();
    std::string line;
    if (!std::getline(stream, line) || line.find(GENAPI_PERSISTENCE_MAGIC) == std::string::npos)
        throw RUNTIME_EXCEPTION(
            "The stream is not a GenApi feature stream since it is missing the magic GUID in the first line");
    while (std::getline(stream, line))
    {
        const std::string trimmed = Trimmed(line);
        if (trimmed.empty() || trimmed[0] == '#')
            continue;
        const size_t tab = line.find('\t');
        const std::string name = tab == std::string::npos ? std::string() : Trimmed(line.substr(0, tab));
        if (name.empty() || tab + 1 >= line.size())
            throw RUNTIME_EXCEPTION("The stream holds incomplete key - value - set");
        bag.m_Names.push_back(GenICam::gcstring(name));
        bag.m_Values.push_back(GenICam::gcstring(line.substr(tab + 1)));
    }
    return stream;
}
} // namespace GenApi
