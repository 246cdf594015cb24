#include <string>

#include <gtest/gtest.h>

#include <GenApi/GenApi.h>

#include "GenApiSnippet.h"

using namespace GenApi;
using QvTest::ErrorOf;
using QvTest::IntReg;
using QvTest::LoadSnippet;

namespace
{
// Flags and helper nodes the access-mode cases share.
const std::string kFlags = "<Integer Name=\"Zero\"><Value>0</Value></Integer>"
                           "<Integer Name=\"One\"><Value>1</Value></Integer>"
                           "<Integer Name=\"Gone\"><Value>5</Value><pIsAvailable>Zero</pIsAvailable></Integer>";

struct Outcome_t
{
    EAccessMode access;
    bool unverifiedWriteWorks;
    int portWrites; // by the unverified write
};

Outcome_t Probe(const std::string& nodes)
{
    CMemoryPort port;
    port.Poke(0, {7, 0, 0, 0});
    CNodeMapRef nodeMap = LoadSnippet(kFlags + nodes, &port);
    CIntegerPtr node = nodeMap._GetNode("I");
    Outcome_t outcome{node->GetAccessMode(), true, 0};
    port.ResetCounts();
    try
    {
        node->SetValue(9, false);
    }
    catch (const GenICam::AccessException&)
    {
        outcome.unverifiedWriteWorks = false;
    }
    outcome.portWrites = static_cast<int>(port.GetWriteCount());
    // Braces: EXPECT_EQ expands to an if/else of its own.
    if (!IsWritable(outcome.access))
    {
        EXPECT_EQ(ErrorOf([&] { node->SetValue(9, true); }), "Node is not writable.") << nodes;
    }
    if (!IsReadable(outcome.access))
    {
        EXPECT_EQ(ErrorOf([&] { node->GetValue(); }), "Node is not readable.") << nodes;
    }
    if (!IsAvailable(outcome.access))
    {
        EXPECT_EQ(ErrorOf([&] { node->GetMin(); }), "Node is not available.") << nodes;
    }
    return outcome;
}
} // namespace

TEST(AccessMode, VerifyFalseSkipsAvailabilityAndLockButNotTheNaturalMode)
{
    struct Case_t
    {
        const char* what;
        std::string nodes;
        EAccessMode access;
        bool unverifiedWriteWorks;
        int portWrites;
    };
    const Case_t cases[] = {
        {"pIsAvailable=0", IntReg("R", 0) + "<Integer Name=\"I\"><pIsAvailable>Zero</pIsAvailable><pValue>R</pValue></Integer>", NA, true, 1},
        {"pIsImplemented=0", IntReg("R", 0) + "<Integer Name=\"I\"><pIsImplemented>Zero</pIsImplemented><pValue>R</pValue></Integer>", NI, false, 0},
        {"pIsLocked=1", IntReg("R", 0) + "<Integer Name=\"I\"><pIsLocked>One</pIsLocked><pValue>R</pValue></Integer>", RO, true, 1},
        {"ImposedAccessMode RO", IntReg("R", 0) + "<Integer Name=\"I\"><ImposedAccessMode>RO</ImposedAccessMode><pValue>R</pValue></Integer>", RO, false, 0},
        {"over RO IntReg", IntReg("R", 0, "", "RO") + "<Integer Name=\"I\"><pValue>R</pValue></Integer>", RO, false, 0},
        {"over WO IntReg", IntReg("R", 0, "", "WO") + "<Integer Name=\"I\"><pValue>R</pValue></Integer>", WO, true, 1},
        {"pMax NA node", IntReg("R", 0) + "<Integer Name=\"I\"><pValue>R</pValue><pMax>Gone</pMax></Integer>", NA, true, 1},
        {"pIsAvailable to NA node", IntReg("R", 0) + "<Integer Name=\"I\"><pIsAvailable>Gone</pIsAvailable><pValue>R</pValue></Integer>", NA, true, 1},
        {"own Value, pIsAvailable=0", "<Integer Name=\"I\"><pIsAvailable>Zero</pIsAvailable><Value>3</Value></Integer>", NA, true, 0},
    };
    for (const Case_t& c : cases)
    {
        const Outcome_t outcome = Probe(c.nodes);
        EXPECT_EQ(outcome.access, c.access) << c.what;
        EXPECT_EQ(outcome.unverifiedWriteWorks, c.unverifiedWriteWorks) << c.what;
        EXPECT_EQ(outcome.portWrites, c.portWrites) << c.what;
    }
}

TEST(AccessMode, UnavailableAddressNodeMakesTheRegisterNotAvailable)
{
    CMemoryPort port;
    CNodeMapRef nodeMap = LoadSnippet(kFlags + "<IntReg Name=\"I\"><pAddress>Gone</pAddress><Length>4</Length>"
                                               "<AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>",
                                      &port);
    CIntegerPtr node = nodeMap._GetNode("I");
    EXPECT_EQ(node->GetAccessMode(), NA);
    EXPECT_EQ(ErrorOf([&] { node->SetValue(9, false); }), "Node is not readable.");
    EXPECT_EQ(port.GetWriteCount(), 0);
}

TEST(AccessMode, FollowsThePortConnection)
{
    CNodeMapRef nodeMap = LoadSnippet(IntReg("R", 0) + "<Port Name=\"Other\"/>" +
                                      "<IntReg Name=\"R2\"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Other</pPort></IntReg>");
    CIntegerPtr node = nodeMap._GetNode("R");
    EXPECT_EQ(nodeMap._GetNode("Device")->GetAccessMode(), NI);
    EXPECT_EQ(node->GetAccessMode(), NI);
    EXPECT_THROW(node->GetValue(), GenICam::AccessException);

    CMemoryPort port(RO);
    EXPECT_TRUE(nodeMap._Connect(&port));
    EXPECT_EQ(nodeMap._GetNode("Device")->GetAccessMode(), RO);
    EXPECT_EQ(node->GetAccessMode(), RO);
    EXPECT_EQ(ErrorOf([&] { node->SetValue(1); }), "Node is not writable.");
    port.SetAccessMode(WO);
    port.InvalidateNode();
    EXPECT_EQ(node->GetAccessMode(), WO);
    EXPECT_EQ(nodeMap._GetNode("R2")->GetAccessMode(), NI);
    EXPECT_FALSE(nodeMap._Connect(&port, "Nope"));
}

TEST(AccessMode, PortExceptionsReachTheCaller)
{
    struct CFailingPort : CPortImpl
    {
        EAccessMode GetAccessMode() const override { return RW; }
        void Read(void*, int64_t, int64_t) override { throw RUNTIME_EXCEPTION("MemPort: read out of range"); }
        void Write(const void*, int64_t, int64_t) override {}
    } port;
    CNodeMapRef nodeMap = LoadSnippet(IntReg("R", 0), &port);
    EXPECT_EQ(ErrorOf([&] { CIntegerPtr(nodeMap._GetNode("R"))->GetValue(); }), "MemPort: read out of range");
}

TEST(AccessMode, CategoriesFollowTheirFeatures)
{
    struct Case_t
    {
        const char* what;
        std::string features;
        EAccessMode access;
        EVisibility visibility;
    };
    const std::string ni = "<pIsImplemented>Zero</pIsImplemented>";
    const Case_t cases[] = {
        {"Guru + Expert", "<Integer Name=\"F1\"><Visibility>Guru</Visibility><Value>1</Value></Integer>"
                          "<Integer Name=\"F2\"><Visibility>Expert</Visibility><Value>1</Value></Integer>", RO, Expert},
        {"NI Beginner + Expert", "<Integer Name=\"F1\">" + ni + "<Value>1</Value></Integer>"
                                 "<Integer Name=\"F2\"><Visibility>Expert</Visibility><Value>1</Value></Integer>", RO, Beginner},
        {"all NI", "<Integer Name=\"F1\"><Visibility>Expert</Visibility>" + ni + "<Value>1</Value></Integer>"
                   "<Integer Name=\"F2\"><Visibility>Guru</Visibility>" + ni + "<Value>1</Value></Integer>", NI, Expert},
        {"NA only", "<Integer Name=\"F1\"><pIsAvailable>Zero</pIsAvailable><Value>1</Value></Integer>"
                    "<Integer Name=\"F2\"><pIsAvailable>Zero</pIsAvailable><Value>1</Value></Integer>", RO, Beginner},
    };
    for (const Case_t& c : cases)
    {
        CNodeMapRef nodeMap = LoadSnippet(kFlags + "<Category Name=\"Root\"><pFeature>Cat</pFeature></Category>"
                                                   "<Category Name=\"Cat\"><Visibility>Guru</Visibility><pFeature>F1</pFeature><pFeature>F2</pFeature></Category>" +
                                          c.features);
        INode* pCategory = nodeMap._GetNode("Cat");
        EXPECT_EQ(pCategory->GetAccessMode(), c.access) << c.what;
        EXPECT_EQ(pCategory->GetVisibility(), c.visibility) << c.what;
        EXPECT_EQ(nodeMap._GetNode("Root")->GetAccessMode(), c.access) << c.what;
        EXPECT_TRUE(nodeMap._GetNode("F1")->IsFeature());
        EXPECT_FALSE(nodeMap._GetNode("Zero")->IsFeature());
    }
    CNodeMapRef empty = LoadSnippet("<Category Name=\"Cat\"><Visibility>Expert</Visibility></Category>");
    EXPECT_EQ(empty._GetNode("Cat")->GetAccessMode(), NI);
    EXPECT_EQ(empty._GetNode("Cat")->GetVisibility(), Expert);
    EXPECT_EQ(CCategoryPtr(empty._GetNode("Cat"))->ToString(), "Cat");
}

TEST(AccessMode, HelpersAcceptModesPointersAndSmartPointers)
{
    CNodeMapRef nodeMap = LoadSnippet(kFlags);
    CIntegerPtr one = nodeMap._GetNode("One");
    CIntegerPtr gone = nodeMap._GetNode("Gone");
    CIntegerPtr invalid;
    EXPECT_TRUE(IsReadable(one));
    EXPECT_TRUE(IsWritable(one));
    EXPECT_FALSE(IsAvailable(gone));
    EXPECT_TRUE(IsImplemented(gone));
    EXPECT_FALSE(IsReadable(invalid));
    EXPECT_FALSE(IsReadable(static_cast<IBase*>(nullptr)));
    EXPECT_EQ(Combine(RO, WO), NA);
    EXPECT_EQ(Combine(NA, NI), NI);
    EXPECT_EQ(ErrorOf([&] { invalid->GetValue(); }), "NULL pointer dereferenced");
    EXPECT_FALSE(CFloatPtr(nodeMap._GetNode("One")).IsValid());
}
