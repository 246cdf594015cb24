// The SDK's feature bag: its persistence text writer and reader (header lines, comments, long
// values and names, truncated files), files and strings, its messages, and storing and loading
// real node maps through it.

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include <QvApi_TL.h>

#include "tests/GenICam/Adapters/VectorFiles.h"
#include "tests/GenICam/Persistence/TracingPort.h"

using GenICam::gcstring;
using GenICam::gcstring_vector;
using namespace QvApi;

namespace
{
const std::string kMagic = "# {05D8C294-F295-4dfb-9D01-096BD04049F4}\n";
const std::string kHeader = kMagic + "# GenApi persistence file (version 3.0.0)\n# \n";

struct BagDeleter_t
{
    void operator()(IQvFeatureBagReleasable* pBag) const { pBag->Release(); }
};
using BagPtr_t = std::unique_ptr<IQvFeatureBagReleasable, BagDeleter_t>;

class QvFeatureBagTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        QvApiInitialize();
        m_pBag.reset(CreateIQvFeatureBag());
    }
    void TearDown() override
    {
        m_pBag.reset();
        QvApiTerminate();
    }

    std::string Saved()
    {
        gcstring text;
        m_pBag->SaveToString(text);
        return text.c_str();
    }
    // The description of what \a action throws, "" when nothing.
    template <class F>
    static std::string Error(F action)
    {
        try
        {
            action();
        }
        catch (const GenICam::GenericException& e)
        {
            return e.GetDescription();
        }
        return std::string();
    }

    BagPtr_t m_pBag;
};

std::string TempPath(const char* name)
{
    const char* pDir = std::getenv("TMPDIR");
    return std::string(pDir ? pDir : "/tmp") + "/qvfeaturebag-" + std::to_string(::getpid()) + "-" + name;
}
} // namespace

TEST(QvFeatureBagFactory, NeedsAnInitialisedLibrary)
{
    try
    {
        CreateIQvFeatureBag();
        FAIL() << "created without initialisation";
    }
    catch (const GenICam::RuntimeException& e)
    {
        EXPECT_STREQ(e.GetDescription(), "QvApi is not initialized.");
    }
}

TEST_F(QvFeatureBagTest, AnEmptyBagIsTheThreeHeaderLines)
{
    EXPECT_EQ(Saved(), kHeader);
}

TEST_F(QvFeatureBagTest, ReaderSkipsCommentsAndKeepsValuesAsTheyAre)
{
    m_pBag->StoreStringToBag(kHeader + "Width\t640\n# a comment\n#\tanother\nName\tvalue # with hash\n"
                                       "Gain\t{GainSelector=All}\t10\nLast\tno line feed");
    EXPECT_EQ(Saved(), kHeader + "Width\t640\nName\tvalue # with hash\nGain\t{GainSelector=All}\t10\nLast\tno line feed\n");

    // The GUID may stand anywhere in the first line, with or without "# ".
    m_pBag->StoreStringToBag("{05D8C294-F295-4dfb-9D01-096BD04049F4}\nA\t1\n");
    EXPECT_EQ(Saved(), kHeader + "A\t1\n");
    m_pBag->StoreStringToBag("xx {05D8C294-F295-4dfb-9D01-096BD04049F4} yy\nA\t2\n");
    EXPECT_EQ(Saved(), kHeader + "A\t2\n");

    // A truncated last line without a tab is dropped silently.
    m_pBag->StoreStringToBag(kMagic + "A\t3\nB");
    EXPECT_EQ(Saved(), kHeader + "A\t3\n");
}

TEST_F(QvFeatureBagTest, ReaderRefusesEmptyStreamsAndStreamsWithoutTheGuid)
{
    m_pBag->StoreStringToBag(kMagic + "Kept\t1\n");
    EXPECT_EQ(Error([&] { m_pBag->StoreStringToBag(""); }), "The stream is eof");
    EXPECT_EQ(Saved(), kHeader + "Kept\t1\n"); // unchanged

    // The version line first: refused, and the lists were already cleared.
    EXPECT_EQ(Error([&] { m_pBag->StoreStringToBag("# GenApi persistence file (version 3.0.0)\n" + kMagic + "A\t1\n"); }),
              "The stream is not a GenApi feature stream since it is missing the magic GUID in the first line");
    EXPECT_EQ(Saved(), kHeader);
}

TEST_F(QvFeatureBagTest, LongValuesSurviveAndLongNamesEndReading)
{
    const std::string longValue(5000, 'v');
    m_pBag->StoreStringToBag(kMagic + "Long\t" + longValue + "\nAfter\t1\n");
    EXPECT_EQ(Saved(), kHeader + "Long\t" + longValue + "\nAfter\t1\n");
    gcstring text;
    m_pBag->SaveToString(text);
    m_pBag->StoreStringToBag(text);
    EXPECT_EQ(Saved(), kHeader + "Long\t" + longValue + "\nAfter\t1\n");

    for (size_t nameLength : {size_t(1023), size_t(1024), size_t(1500)})
    {
        m_pBag->StoreStringToBag(kMagic + "Before\t0\n" + std::string(nameLength, 'n') + "\t1\nAfter\t2\n");
        const std::string kept = nameLength < 1024 ? std::string(nameLength, 'n') + "\t1\nAfter\t2\n" : "";
        EXPECT_EQ(Saved(), kHeader + "Before\t0\n" + kept) << nameLength;
    }
}

TEST_F(QvFeatureBagTest, FilesRoundTripAndUnopenableFilesAreReported)
{
    const std::string path = TempPath("round-trip.txt");
    m_pBag->StoreStringToBag(kMagic + "Width\t640\nGain\t{GainSelector=Red}\t20\n");
    m_pBag->SaveToFile(path.c_str());
    std::ifstream written(path);
    std::stringstream content;
    content << written.rdbuf();
    EXPECT_EQ(content.str(), kHeader + "Width\t640\nGain\t{GainSelector=Red}\t20\n");

    BagPtr_t pOther(CreateIQvFeatureBag());
    pOther->StoreFileToBag(path.c_str());
    gcstring text;
    pOther->SaveToString(text);
    EXPECT_EQ(std::string(text.c_str()), Saved());
    std::remove(path.c_str());

    const std::string missing = TempPath("no-such-dir") + "/bag.txt";
    EXPECT_EQ(Error([&] { m_pBag->StoreFileToBag(missing.c_str()); }), "File " + missing + " could not be opened.");
    EXPECT_EQ(Error([&] { m_pBag->SaveToFile(missing.c_str()); }), "File " + missing + " could not be opened.");
    std::ofstream(TempPath("empty.txt")).close();
    EXPECT_EQ(Error([&] { m_pBag->StoreFileToBag(TempPath("empty.txt").c_str()); }), "The stream is eof");
    std::remove(TempPath("empty.txt").c_str());
}

TEST_F(QvFeatureBagTest, NodeMapsAreStoredAndLoadedThroughGenApi)
{
    EXPECT_EQ(Error([&] { m_pBag->StoreNodeMapToBag(nullptr, -1); }), "Nodemap pointer is NULL");
    EXPECT_EQ(Error([&] { m_pBag->Load(nullptr, true, nullptr); }), "Nodemap pointer is NULL");
    if (!VectorFileExists("vectors/featurebag-selectors.xml"))
        GTEST_SKIP() << "shared description corpus not found (QV_GENICAM_XML_DIR)";

    CTracingPort sourcePort;
    sourcePort.LoadImage(VectorPath("vectors/featurebag-selectors.prefill"));
    GenApi::CNodeMapRef source;
    source._LoadXMLFromFile(VectorPath("vectors/featurebag-selectors.xml").c_str());
    source._Connect(&sourcePort, "Device");
    EXPECT_EQ(m_pBag->StoreNodeMapToBag(source._Ptr, -1), 24);
    // The reference's entries under this writer's header.
    const std::string reference = ReadVectorFile("vectors/featurebag-selectors.txt");
    const size_t entries = reference.find("\nWidth\t") + 1;
    EXPECT_EQ(Saved(), kHeader + reference.substr(entries));
    EXPECT_EQ(m_pBag->StoreNodeMapToBag(source._Ptr, 3), 3);
    m_pBag->StoreNodeMapToBag(source._Ptr, -1);

    // Through text into a fresh device: every selector state comes back.
    gcstring text;
    m_pBag->SaveToString(text);
    BagPtr_t pLoaded(CreateIQvFeatureBag());
    pLoaded->StoreStringToBag(text);
    CTracingPort targetPort;
    targetPort.LoadImage(VectorPath("vectors/featurebag-load.prefill"));
    GenApi::CNodeMapRef target;
    target._LoadXMLFromFile(VectorPath("vectors/featurebag-selectors.xml").c_str());
    target._Connect(&targetPort, "Device");
    gcstring_vector errors;
    EXPECT_TRUE(pLoaded->Load(target._Ptr, false, &errors));
    EXPECT_TRUE(errors.empty());
    EXPECT_EQ(targetPort.Peek(0x400, 12), sourcePort.Peek(0x400, 12)); // LUTValue[Luminance][0..2]
    EXPECT_EQ(targetPort.Peek(0x410, 12), sourcePort.Peek(0x410, 12)); // LUTValue[Red][0..2]
    EXPECT_EQ(targetPort.Peek(0x210, 8), sourcePort.Peek(0x210, 8));   // Gain[All], Gain[Red]
    EXPECT_EQ(GenApi::CEnumerationPtr(target._GetNode("LUTSelector"))->ToString(), gcstring("Red"));
    BagPtr_t pAgain(CreateIQvFeatureBag());
    pAgain->StoreNodeMapToBag(target._Ptr, -1);
    gcstring again;
    pAgain->SaveToString(again);
    EXPECT_EQ(again, text);

    // Verified: everything reads back as stored.
    errors.clear();
    EXPECT_TRUE(pLoaded->Load(target._Ptr, true, &errors));
    EXPECT_TRUE(errors.empty()) << errors[0];
    target._Destroy();
    source._Destroy();
}
