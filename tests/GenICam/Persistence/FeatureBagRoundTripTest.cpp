// Feature bag round trips on real camera descriptions backed by memory: settings changed on one
// node map (selected features in every selector state included) are stored, applied to a fresh
// node map and stored again; both bags must be the same.

#include <algorithm>
#include <cctype>
#include <iostream>
#include <map>
#include <sstream>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <GenApi/GenApi.h>
#include <GenApi/Persistence.h>

#include "../Adapters/VectorFiles.h"

using namespace GenApi;
using GenICam::gcstring;
using GenICam::gcstring_vector;

namespace
{
// A register space reading \a fill where nothing was written: with 0xFF, descriptions that
// ask their device which features it implements find them all; with 0, few.
class CFilledMemoryPort : public IPort
{
public:
    explicit CFilledMemoryPort(uint8_t fill) : m_fill(fill) {}
    EAccessMode GetAccessMode() const override { return RW; }
    void Read(void* pBuffer, int64_t address, int64_t lengthBytes) override
    {
        for (int64_t i = 0; i < lengthBytes; ++i)
        {
            auto it = m_pages.find((address + i) / kPageBytes);
            static_cast<uint8_t*>(pBuffer)[i] = it == m_pages.end() ? m_fill : it->second[(address + i) % kPageBytes];
        }
    }
    void Write(const void* pBuffer, int64_t address, int64_t lengthBytes) override
    {
        for (int64_t i = 0; i < lengthBytes; ++i)
        {
            std::vector<uint8_t>& page = m_pages[(address + i) / kPageBytes];
            if (page.empty())
                page.assign(kPageBytes, m_fill);
            page[(address + i) % kPageBytes] = static_cast<const uint8_t*>(pBuffer)[i];
        }
    }

private:
    static constexpr int64_t kPageBytes = 4096;
    const uint8_t m_fill;
    std::map<int64_t, std::vector<uint8_t>> m_pages;
};

// A description connected to a memory register space on every port it declares.
class CMemoryDevice
{
public:
    CMemoryDevice(const std::string& file, uint8_t fill)
    {
        m_map._LoadXMLFromFile(VectorPath(file).c_str());
        NodeList_t nodes;
        m_map._GetNodes(nodes);
        for (INode* pNode : nodes)
        {
            // Chunk and event ports are fed by adapters, not by the device's register space.
            if (pNode->GetPrincipalInterfaceType() != intfIPort || CChunkPortPtr(pNode)->GetChunkID().size() > 0 ||
                pNode->GetEventID().size() > 0)
                continue;
            m_ports.emplace_back(new CFilledMemoryPort(fill));
            m_map._Connect(m_ports.back().get(), pNode->GetName());
        }
    }
    ~CMemoryDevice() { m_map._Destroy(); }
    INodeMap* Map() { return m_map._Ptr; }

private:
    std::vector<std::unique_ptr<CFilledMemoryPort>> m_ports; // outlive the map (destroyed first)
    CNodeMapRef m_map;
};

// Moves a writable feature to another valid value; \a seed varies the choice. Failures (values
// the description refuses, features that are not really writable) are ignored.
void Perturb(INode* pNode, int seed)
{
    if (!IsWritable(pNode) || !IsReadable(pNode))
        return;
    try
    {
        if (CIntegerPtr pInteger = pNode)
        {
            const int64_t min = pInteger->GetMin(), max = pInteger->GetMax();
            const int64_t inc = std::max<int64_t>(pInteger->GetInc(), 1);
            const int64_t steps = (max - min) / inc;
            if (steps > 0)
                pInteger->SetValue(min + inc * (1 + seed % std::min<int64_t>(steps, 97)));
        }
        else if (CFloatPtr pFloat = pNode)
        {
            const double min = pFloat->GetMin(), max = pFloat->GetMax();
            if (max > min && max - min < 1e12)
                pFloat->SetValue(min + (max - min) * (1 + seed % 7) / 8.0);
        }
        else if (CEnumerationPtr pEnumeration = pNode)
        {
            NodeList_t entries, available;
            pEnumeration->GetEntries(entries);
            for (INode* pEntry : entries)
                if (IsAvailable(pEntry))
                    available.push_back(pEntry);
            if (!available.empty())
                pEnumeration->SetIntValue(CEnumEntryPtr(available[seed % available.size()])->GetValue());
        }
        else if (CBooleanPtr pBoolean = pNode)
            pBoolean->SetValue(!pBoolean->GetValue());
        else if (CStringPtr pString = pNode)
            pString->SetValue(gcstring(("qv" + std::to_string(seed)).c_str()).substr(0, static_cast<size_t>(std::max<int64_t>(pString->GetMaxLength() - 1, 0))));
    }
    catch (const GenICam::GenericException&)
    {
    }
}

// Changes every streamable feature, and each selected one once per value of each of its
// selectors, so that a bag of the result differs from one of the power-on state.
void PerturbAll(INodeMap* pMap)
{
    NodeList_t nodes;
    pMap->GetNodes(nodes);
    int seed = 1;
    for (INode* pNode : nodes)
        if (pNode->IsStreamable() && !CSelectorPtr(pNode)->IsSelector())
            Perturb(pNode, seed++);
    for (INode* pSelector : nodes)
    {
        if (!CSelectorPtr(pSelector)->IsSelector() || !IsWritable(pSelector))
            continue;
        FeatureList_t selected;
        CSelectorPtr(pSelector)->GetSelectedFeatures(selected);
        CEnumerationPtr pEnumeration = pSelector;
        if (!pEnumeration)
            continue;
        NodeList_t entries;
        pEnumeration->GetEntries(entries);
        for (INode* pEntry : entries)
        {
            if (!IsAvailable(pEntry))
                continue;
            try
            {
                pEnumeration->SetIntValue(CEnumEntryPtr(pEntry)->GetValue());
            }
            catch (const GenICam::GenericException&)
            {
                continue;
            }
            for (IValue* pValue : selected)
                if (pValue->GetNode()->IsStreamable())
                    Perturb(pValue->GetNode(), seed++);
        }
    }
}

// The entries of a bag by key: the name plus the selector states ("Gain\t{GainSelector=Red}")
// mapped to the value text. Selectors' own entries repeat with the same value; the last counts.
std::map<std::string, std::string> Entries(const CFeatureBag& bag)
{
    std::map<std::string, std::string> entries;
    std::istringstream lines(bag.ToString().c_str());
    std::string line;
    while (std::getline(lines, line))
    {
        if (line.empty() || line[0] == '#')
            continue;
        const size_t split = line.rfind('\t');
        entries[line.substr(0, split)] = line.substr(split + 1);
    }
    return entries;
}

size_t CountSelected(const std::map<std::string, std::string>& entries)
{
    size_t count = 0;
    for (const auto& entry : entries)
        count += entry.first.find("\t{") != std::string::npos ? 1 : 0;
    return count;
}

struct Description_t
{
    const char* file;
    uint8_t fill; // the power-on content of the register space that gives the most features
};

class FeatureBagRoundTripTest : public ::testing::TestWithParam<Description_t>
{
};
} // namespace

TEST_P(FeatureBagRoundTripTest, StoredSettingsComeBackOnAFreshDevice)
{
    const Description_t description = GetParam();
    QV_REQUIRE_VECTOR(description.file);
    CFeatureBag powerOn, changed, changedAgain, restored;
    gcstring_vector sourceErrors, freshErrors;
    {
        CMemoryDevice device(description.file, description.fill);
        powerOn.StoreToBag(device.Map());
        PerturbAll(device.Map());
        changed.StoreToBag(device.Map());
        // What a memory device cannot give back even to itself (registers shared by several
        // features, lossy converters, raw values beyond a float's six printed digits) is no
        // fault of the bag: applying the bag to its own device shows which entries those are.
        changed.LoadFromBag(device.Map(), false, &sourceErrors);
        changedAgain.StoreToBag(device.Map());
    }
    CMemoryDevice fresh(description.file, description.fill);
    changed.LoadFromBag(fresh.Map(), false, &freshErrors);
    restored.StoreToBag(fresh.Map());

    const std::map<std::string, std::string> before = Entries(powerOn), after = Entries(changed),
                                             again = Entries(changedAgain), back = Entries(restored);
    size_t stable = 0, moved = 0;
    for (const auto& entry : after)
    {
        auto itAgain = again.find(entry.first);
        if (itAgain == again.end() || itAgain->second != entry.second)
            continue;
        ++stable;
        auto itBefore = before.find(entry.first);
        moved += (itBefore == before.end() || itBefore->second != entry.second) ? 1 : 0;
        auto itBack = back.find(entry.first);
        EXPECT_TRUE(itBack != back.end() && itBack->second == entry.second)
            << entry.first << " = " << entry.second << " came back as "
            << (itBack == back.end() ? std::string("(missing)") : itBack->second);
    }
    std::cout << description.file << ": " << after.size() << " entries (" << CountSelected(after)
              << " selector-qualified), " << stable << " stable, " << moved << " changed from power-on\n";
    // The test means something: many entries, most of them stable, selected ones among them,
    // and the perturbation moved values away from the power-on state.
    EXPECT_GT(after.size(), 20u);
    EXPECT_GE(stable * 10, after.size() * 9) << stable << " of " << after.size() << " entries are stable";
    EXPECT_GT(CountSelected(after), 0u);
    EXPECT_GT(moved, 5u);
    // The fresh device refuses nothing that the source device took.
    for (const gcstring& error : freshErrors)
        EXPECT_TRUE(sourceErrors.contains(error)) << error;
}

INSTANTIATE_TEST_SUITE_P(RealDescriptions, FeatureBagRoundTripTest,
                         ::testing::Values(Description_t{"basler_aca1300-60gm.xml", 0xFF},
                                           Description_t{"basler_a2a2600-20gmbas.xml", 0x00},
                                           Description_t{"jai_am-201ge_stripped.xml", 0x00},
                                           Description_t{"hikrobot_mv-ca013-a0um.xml", 0xFF},
                                           Description_t{"avt_gc1350c.xml", 0xFF},
                                           Description_t{"avt_swir_cl_cameralink.xml", 0xFF},
                                           Description_t{"flir_a35_ax5.xml", 0xFF},
                                           Description_t{"photonicscience_fdi3.xml", 0xFF}),
                         [](const ::testing::TestParamInfo<Description_t>& info) {
                             std::string name = info.param.file;
                             name = name.substr(0, name.find('.'));
                             std::replace_if(name.begin(), name.end(), [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); }, '_');
                             return name;
                         });
