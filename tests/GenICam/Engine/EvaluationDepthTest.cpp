// The evaluation-depth guard: how deep a chain of references may nest before a read fails.

#include <string>

#include <gtest/gtest.h>

#include <GenApi/GenApi.h>

#include "GenApiSnippet.h"

using namespace GenApi;
using QvTest::ErrorOf;
using QvTest::LoadSnippet;

namespace
{
// N0 holds the value; each Ni forwards to N(i-1) through pValue, so reading N(k) nests k + 1 levels.
std::string PValueChain(int length)
{
    std::string nodes = "<Integer Name=\"N0\"><Value>7</Value></Integer>";
    for (int i = 1; i < length; ++i)
        nodes += "<Integer Name=\"N" + std::to_string(i) + "\"><pValue>N" + std::to_string(i - 1) + "</pValue></Integer>";
    return nodes;
}

std::string Name(int index)
{
    return "N" + std::to_string(index);
}
} // namespace

TEST(EvaluationDepth, ChainsOfSixtyReferencesReadAndDeeperOnesFailCheaply)
{
    // Real descriptions nest at most 19 levels; a hostile one with a hundred thousand nodes
    // chained deeper than the bound must fail each read after a few dozen levels, not hundreds.
    // Nothing is read before: cached values and access modes lower in the chain would end the
    // nesting there.
    CNodeMapRef nodeMap = LoadSnippet(PValueChain(100));
    const std::string error = ErrorOf([&] { CIntegerPtr(nodeMap._GetNode(Name(99).c_str()))->GetValue(); });
    EXPECT_NE(error.find("nested more than 64 levels deep"), std::string::npos) << error;
    EXPECT_NE(error.find("'" + Name(99 - 64) + "'"), std::string::npos) << "names the node where the bound was hit: " << error;
    // A write nests as deep as its target's chain, whatever is cached.
    EXPECT_EQ(CIntegerPtr(nodeMap._GetNode(Name(60).c_str()))->GetValue(), 7);
    EXPECT_NE(ErrorOf([&] { CIntegerPtr(nodeMap._GetNode(Name(70).c_str()))->SetValue(8); }).find("levels deep"),
              std::string::npos);

    // The failures leave no depth behind: shallow reads and writes work as before.
    CIntegerPtr(nodeMap._GetNode(Name(50).c_str()))->SetValue(9);
    EXPECT_EQ(CIntegerPtr(nodeMap._GetNode(Name(62).c_str()))->GetValue(), 9);
    EXPECT_EQ(CIntegerPtr(nodeMap._GetNode("N0"))->GetValue(), 9);
}
