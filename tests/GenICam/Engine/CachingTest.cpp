#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <GenApi/GenApi.h>

#include "GenApiSnippet.h"

using namespace GenApi;
using QvTest::IntReg;
using QvTest::LoadSnippet;

namespace
{
struct Counted_t
{
    int64_t value;
    int64_t reads;
};

Counted_t Read(CMemoryPort& port, CNodeMapRef& nodeMap, const char* name, bool verify = false, bool ignoreCache = false)
{
    const int64_t before = port.GetReadCount();
    const int64_t value = CIntegerPtr(nodeMap._GetNode(name))->GetValue(verify, ignoreCache);
    return {value, port.GetReadCount() - before};
}
} // namespace

TEST(Caching, ModesDecideWhenTheDeviceIsRead)
{
    CMemoryPort port;
    port.Poke(0, {1, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0});
    CNodeMapRef nodeMap = LoadSnippet(IntReg("WT", 0) + IntReg("WA", 4, "<Cachable>WriteAround</Cachable>") +
                                          IntReg("NC", 8, "<Cachable>NoCache</Cachable>"),
                                      &port);
    EXPECT_EQ(Read(port, nodeMap, "WT").reads, 1);
    EXPECT_EQ(Read(port, nodeMap, "WA").reads, 1);
    EXPECT_EQ(Read(port, nodeMap, "NC").reads, 1);
    port.Poke(0, {11, 0, 0, 0, 12, 0, 0, 0, 13, 0, 0, 0});
    EXPECT_EQ(Read(port, nodeMap, "WT").value, 1);
    EXPECT_EQ(Read(port, nodeMap, "WT").reads, 0);
    EXPECT_EQ(Read(port, nodeMap, "WA").value, 2);
    const Counted_t noCache = Read(port, nodeMap, "NC");
    EXPECT_EQ(noCache.value, 13);
    EXPECT_EQ(noCache.reads, 1);

    CIntegerPtr(nodeMap._GetNode("WT"))->SetValue(21);
    CIntegerPtr(nodeMap._GetNode("WA"))->SetValue(22);
    CIntegerPtr(nodeMap._GetNode("NC"))->SetValue(23);
    EXPECT_EQ(Read(port, nodeMap, "WT").reads, 0);
    EXPECT_EQ(Read(port, nodeMap, "WA").reads, 1);
    EXPECT_EQ(Read(port, nodeMap, "NC").reads, 1);
    EXPECT_EQ(Read(port, nodeMap, "WT", false, true).reads, 1);
    EXPECT_EQ(Read(port, nodeMap, "WT", true).reads, 1);
    EXPECT_EQ(nodeMap._GetNode("NC")->GetCachingMode(), NoCache);
    EXPECT_FALSE(nodeMap._GetNode("NC")->IsCachable());
}

TEST(Caching, PollingInvalidatesWhenTheTimeIsUpAndRestartsAtZero)
{
    CMemoryPort port;
    port.Poke(0, {4, 0, 0, 0});
    CNodeMapRef nodeMap = LoadSnippet(IntReg("PT", 0, "<PollingTime>100</PollingTime>") +
                                          "<Integer Name=\"Wrap\"><pValue>PT</pValue></Integer>",
                                      &port);
    EXPECT_EQ(Read(port, nodeMap, "Wrap").value, 4);
    port.Poke(0, {24, 0, 0, 0});
    nodeMap._Poll(50);
    EXPECT_EQ(Read(port, nodeMap, "Wrap").value, 4);
    nodeMap._Poll(49);
    EXPECT_EQ(Read(port, nodeMap, "PT").reads, 0);
    nodeMap._Poll(1);
    EXPECT_EQ(Read(port, nodeMap, "Wrap").value, 24);
    port.Poke(0, {34, 0, 0, 0});
    nodeMap._Poll(150);
    EXPECT_EQ(Read(port, nodeMap, "PT").value, 34);
    port.Poke(0, {44, 0, 0, 0});
    nodeMap._Poll(60);
    EXPECT_EQ(Read(port, nodeMap, "PT").value, 34);
    EXPECT_EQ(nodeMap._GetNode("PT")->GetPollingTime(), 100);
    EXPECT_EQ(nodeMap._GetNode("Wrap")->GetPollingTime(), -1);
}

TEST(Caching, InvalidatorsAndTheSharedRegisterCache)
{
    CMemoryPort port;
    port.Poke(0, {21, 0, 0, 0});
    CNodeMapRef nodeMap = LoadSnippet(IntReg("WT", 0) + IntReg("Alias", 0) +
                                          IntReg("Inv", 0, "<pInvalidator>Alias</pInvalidator>"),
                                      &port);
    EXPECT_EQ(Read(port, nodeMap, "Inv").value, 21);
    EXPECT_EQ(Read(port, nodeMap, "Alias").reads, 0); // same bytes, already read through this port
    port.Poke(0, {55, 0, 0, 0});
    CIntegerPtr(nodeMap._GetNode("WT"))->SetValue(66); // no link: the others keep their values
    EXPECT_EQ(Read(port, nodeMap, "Inv").value, 21);
    CIntegerPtr(nodeMap._GetNode("Alias"))->SetValue(77);
    const Counted_t afterAlias = Read(port, nodeMap, "Inv");
    EXPECT_EQ(afterAlias.value, 77);
    EXPECT_EQ(afterAlias.reads, 0);
    port.Poke(0, {88, 0, 0, 0});
    nodeMap._GetNode("Alias")->InvalidateNode();
    const Counted_t afterInvalidate = Read(port, nodeMap, "Inv");
    EXPECT_EQ(afterInvalidate.value, 88);
    EXPECT_EQ(afterInvalidate.reads, 1);
    EXPECT_EQ(Read(port, nodeMap, "WT").value, 66);
    nodeMap._InvalidateNodes();
    EXPECT_EQ(Read(port, nodeMap, "WT").value, 88);
}

TEST(Caching, DependentsAreRecomputedAfterAWrite)
{
    CMemoryPort port;
    CNodeMapRef nodeMap = LoadSnippet(IntReg("Reg", 0) + IntReg("MaxReg", 4) +
                                          "<Integer Name=\"Feat\"><pValue>Reg</pValue><pMax>MaxReg</pMax></Integer>"
                                          "<IntSwissKnife Name=\"Twice\"><pVariable Name=\"F\">Feat</pVariable><Formula>F*2</Formula></IntSwissKnife>",
                                      &port);
    CIntegerPtr(nodeMap._GetNode("MaxReg"))->SetValue(50);
    CIntegerPtr feature = nodeMap._GetNode("Feat");
    EXPECT_EQ(feature->GetMax(), 50);
    feature->SetValue(5);
    EXPECT_EQ(CIntegerPtr(nodeMap._GetNode("Twice"))->GetValue(), 10);
    CIntegerPtr(nodeMap._GetNode("MaxReg"))->SetValue(8);
    EXPECT_EQ(feature->GetMax(), 8);
    EXPECT_FALSE(feature->IsValueCacheValid()); // MaxReg invalidated it
    feature->GetValue();
    EXPECT_TRUE(feature->IsValueCacheValid());
}

TEST(Caching, EveryWriteReachesEveryDependentAgain)
{
    // A chain Base -> ... -> Top where each node is invalidated by the one below it, a formula
    // reading Top, and a listener. Every node of the chain is written in turn, several times:
    // each write must reach the whole chain above it, whether the walk is replayed from a list
    // kept by an earlier write or (once such lists grow large) walked afresh. pInvalidator links
    // are walked like pValue ones, but do not nest evaluation: a chain of 200 pValue forwarders
    // would be deeper than the evaluation bound.
    constexpr int kChain = 200; // lists of 20000 nodes in all
    std::string nodes = "<Integer Name=\"N0\"><Value>0</Value></Integer>";
    for (int i = 1; i < kChain; ++i)
        nodes += "<Integer Name=\"N" + std::to_string(i) + "\"><Value>0</Value><pInvalidator>N" + std::to_string(i - 1) +
                 "</pInvalidator></Integer>";
    const std::string top = "N" + std::to_string(kChain - 1);
    nodes += "<IntSwissKnife Name=\"Twice\"><pVariable Name=\"T\">" + top + "</pVariable><Formula>T*2</Formula></IntSwissKnife>";
    CNodeMapRef nodeMap = LoadSnippet(nodes);
    CIntegerPtr twice = nodeMap._GetNode("Twice");
    CIntegerPtr topNode = nodeMap._GetNode(top.c_str());
    int calls = 0;
    struct Counter_t
    {
        int* pCalls;
        void OnChange(INode*) { ++*pCalls; }
    } counter{&calls};
    Register(twice->GetNode(), counter, &Counter_t::OnChange);
    int64_t value = 0;
    for (int round = 0; round < 2; ++round)
        for (int i = 0; i < kChain; i += round == 0 ? 1 : 9)
        {
            ++value;
            const int64_t topValue = topNode->GetValue();
            EXPECT_EQ(twice->GetValue(), 2 * topValue);
            EXPECT_TRUE(topNode->IsValueCacheValid());
            const int before = calls;
            CIntegerPtr(nodeMap._GetNode(("N" + std::to_string(i)).c_str()))->SetValue(value);
            EXPECT_EQ(calls, before + 1) << "N" << i;
            if (i != kChain - 1) // a write keeps the written value cached
            {
                EXPECT_FALSE(topNode->IsValueCacheValid()) << "N" << i;
            }
            EXPECT_EQ(twice->GetValue(), 2 * (i == kChain - 1 ? value : topValue)) << "N" << i;
        }
}

TEST(Caching, ConverterRangesFollowTheirInputs)
{
    // Range of the converters = FormulaFrom(range of P) * Scale; P's Max is a register. Kept
    // between reads, the range must still follow a write to the Max register or the scale, and
    // must not be kept at all when the Max register is NoCache (it may change on the device).
    CMemoryPort port;
    port.Poke(0, {100, 0, 0, 0, 10, 0, 0, 0, 200, 0, 0, 0});
    CNodeMapRef nodeMap = LoadSnippet(
        IntReg("MaxReg", 0) + IntReg("PReg", 4) + IntReg("VolatileMax", 8, "<Cachable>NoCache</Cachable>") +
            "<Integer Name=\"Scale\"><Value>2</Value></Integer>"
            "<Integer Name=\"P\"><pValue>PReg</pValue><Min>0</Min><pMax>MaxReg</pMax></Integer>"
            "<Integer Name=\"Q\"><pValue>PReg</pValue><Min>0</Min><pMax>VolatileMax</pMax></Integer>"
            "<IntConverter Name=\"C\"><pVariable Name=\"S\">Scale</pVariable><FormulaTo>FROM/S</FormulaTo>"
            "<FormulaFrom>TO*S</FormulaFrom><pValue>P</pValue><Slope>Increasing</Slope></IntConverter>"
            "<Converter Name=\"F\"><pVariable Name=\"S\">Scale</pVariable><FormulaTo>FROM/S</FormulaTo>"
            "<FormulaFrom>TO*S</FormulaFrom><pValue>P</pValue><Slope>Increasing</Slope></Converter>"
            "<IntConverter Name=\"V\"><FormulaTo>FROM</FormulaTo><FormulaFrom>TO*3</FormulaFrom>"
            "<pValue>Q</pValue><Slope>Increasing</Slope></IntConverter>",
        &port);
    CIntegerPtr c = nodeMap._GetNode("C");
    CFloatPtr f = nodeMap._GetNode("F");
    CIntegerPtr v = nodeMap._GetNode("V");
    EXPECT_EQ(c->GetMax(), 200);
    EXPECT_EQ(f->GetMax(), 200.0);
    EXPECT_EQ(v->GetMax(), 600);
    EXPECT_EQ(c->GetValue(true), 20); // a verified read checks the kept range

    CIntegerPtr(nodeMap._GetNode("MaxReg"))->SetValue(50);
    EXPECT_EQ(c->GetMax(), 100);
    EXPECT_EQ(f->GetMax(), 100.0);
    CIntegerPtr(nodeMap._GetNode("Scale"))->SetValue(3);
    EXPECT_EQ(c->GetMax(), 150);
    EXPECT_EQ(f->GetMax(), 150.0);
    EXPECT_THROW(c->SetValue(153), GenICam::OutOfRangeException);
    c->SetValue(150);
    EXPECT_EQ(CIntegerPtr(nodeMap._GetNode("PReg"))->GetValue(), 50);

    // Nothing announces a change of a NoCache register: its converter computes the range anew.
    port.Poke(8, {40, 0, 0, 0});
    EXPECT_EQ(v->GetMax(), 120);
    port.Poke(8, {41, 0, 0, 0});
    EXPECT_EQ(v->GetMax(), 123);
    // And the cached range of C is not kept past InvalidateNodes.
    port.Poke(0, {70, 0, 0, 0});
    EXPECT_EQ(c->GetMax(), 150);
    nodeMap._InvalidateNodes();
    EXPECT_EQ(c->GetMax(), 210);
}
