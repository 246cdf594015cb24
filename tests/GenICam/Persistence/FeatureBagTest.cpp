// CFeatureBag against the reference vectors (featurebag-*.txt): StoreToBag output and the
// selector writes it makes, entry limits and filters, LoadFromBag with and without verification
// and its error lists, the stream format; plus the retries a strict device needs.

#include <cstring>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <GenApi/GenApi.h>
#include <GenApi/Persistence.h>

#include "../Adapters/VectorFiles.h"
#include "TracingPort.h"

using namespace GenApi;
using GenICam::gcstring;
using GenICam::gcstring_vector;

namespace
{
const char* const kSelectorsXml = "vectors/featurebag-selectors.xml";

std::string Text(const CFeatureBag& bag)
{
    std::ostringstream text;
    text << bag;
    return text.str();
}

CFeatureBag BagFromText(const std::string& text)
{
    CFeatureBag bag;
    std::istringstream stream(text);
    stream >> bag;
    return bag;
}

// The part of a transcript from the line starting with \a marker up to the next line that
// starts like the marker's own line ("# " or "== " headings).
std::string Section(const std::string& text, const std::string& marker)
{
    const size_t start = text.find(marker);
    if (start == std::string::npos)
        return std::string();
    const std::string heading = "\n" + marker.substr(0, marker.find(' ') + 1);
    const size_t end = text.find(heading, start + marker.size());
    return text.substr(start, end == std::string::npos ? std::string::npos : end - start);
}

class FeatureBagTest : public ::testing::Test
{
protected:
    void SetUp() override { QV_REQUIRE_VECTOR(kSelectorsXml); }

    // The selectors description on a fresh memory port filled from \a prefill.
    void Load(const char* prefill, const char* xml = kSelectorsXml)
    {
        m_map._Destroy();
        m_pPort.reset(new CTracingPort());
        m_map._LoadXMLFromFile(VectorPath(xml).c_str());
        if (prefill)
            m_pPort->LoadImage(VectorPath(prefill));
        ASSERT_TRUE(m_map._Connect(m_pPort.get(), "Device"));
        m_pPort->m_writes.clear();
    }

    std::string Value(const char* name)
    {
        try
        {
            return CValuePtr(m_map._GetNode(name))->ToString().c_str();
        }
        catch (const GenICam::GenericException& e)
        {
            return std::string("EXC ") + e.GetExceptionType();
        }
    }
    void Set(const char* name, const char* value) { CValuePtr(m_map._GetNode(name))->FromString(value); }

    std::unique_ptr<CTracingPort> m_pPort; // outlives the map, which reads through it
    CNodeMapRef m_map;
};
} // namespace

TEST_F(FeatureBagTest, StoreToBagWritesTheReferenceTextAndWalksTheSelectorsAsItDoes)
{
    Load("vectors/featurebag-selectors.prefill");
    CFeatureBag bag;
    EXPECT_EQ(bag.StoreToBag(m_map._Ptr), 24);
    EXPECT_EQ(Text(bag), ReadVectorFile("vectors/featurebag-selectors.txt"));

    const std::string details = ReadVectorFile("vectors/featurebag-store-details.txt");
    EXPECT_EQ(m_pPort->m_writes, TraceLines(Section(details, "# featurebag trace")));
    // The selectors are back where they were.
    EXPECT_EQ(Value("GainSelector"), "Red");
    EXPECT_EQ(Value("LUTSelector"), "Red");
    EXPECT_EQ(Value("LUTIndex"), "2");
    EXPECT_EQ(Value("LUTValue"), "202");
}

TEST_F(FeatureBagTest, EntryLimitsFiltersAndInfoLinesMatchTheReference)
{
    Load("vectors/featurebag-selectors.prefill");
    const std::string details = ReadVectorFile("vectors/featurebag-store-details.txt");
    auto expected = [&details](const std::string& marker) {
        const std::string section = Section(details, marker);
        return section.substr(section.find('\n') + 1) + "\n";
    };
    struct Limit_t
    {
        int maxEntries;
        int64_t returned;
        const char* marker;
    };
    for (const Limit_t& limit : {Limit_t{0, 1, "== MaxNumPersistSkriptEntries=0"},
                                 Limit_t{1, 1, "== MaxNumPersistSkriptEntries=1"},
                                 Limit_t{3, 3, "== MaxNumPersistSkriptEntries=3"}})
    {
        CFeatureBag bag;
        EXPECT_EQ(bag.StoreToBag(m_map._Ptr, limit.maxEntries), limit.returned);
        EXPECT_EQ(Text(bag), expected(limit.marker)) << limit.maxEntries;
    }
    gcstring_vector filter{"Gain", "Width", "LUTValue"};
    CFeatureBag filtered;
    EXPECT_EQ(filtered.StoreToBag(m_map._Ptr, -1, &filter), 12);
    EXPECT_EQ(Text(filtered), expected("== pFeatureFilter"));

    // StoreToBag writes the device line whatever info was set before.
    CFeatureBag withInfo;
    withInfo.SetInfo("my info line");
    EXPECT_EQ(withInfo.StoreToBag(m_map._Ptr), 24);
    EXPECT_EQ(Text(withInfo).substr(0, Text(filtered).find("Width")), Text(filtered).substr(0, Text(filtered).find("Width")));

    CFeatureBag empty;
    EXPECT_EQ(Text(empty), "# {05D8C294-F295-4dfb-9D01-096BD04049F4}\n");
    empty.SetInfo("only info");
    EXPECT_EQ(Text(empty), "# {05D8C294-F295-4dfb-9D01-096BD04049F4}\n# GenApi persistence file (version 3.4.0)\n"
                           "# only info\n");

    CFeatureBag first, second, truncated;
    first.StoreToBag(m_map._Ptr);
    second.StoreToBag(m_map._Ptr);
    truncated.StoreToBag(m_map._Ptr, 3);
    EXPECT_TRUE(first == second);
    EXPECT_FALSE(first == truncated);
}

TEST_F(FeatureBagTest, AFileWithoutStreamableFeaturesGivesTheHeaderOnly)
{
    QV_REQUIRE_VECTOR("aravis_fake-camera.xml");
    Load("vectors/featurebag-fake-camera.prefill", "aravis_fake-camera.xml");
    CFeatureBag bag;
    EXPECT_EQ(bag.StoreToBag(m_map._Ptr), 0);
    EXPECT_EQ(Text(bag), ReadVectorFile("vectors/featurebag-fake-camera.txt"));
}

TEST_F(FeatureBagTest, LoadFromBagWithoutVerificationWritesAsTheReference)
{
    Load("vectors/featurebag-load.prefill");
    CFeatureBag bag = BagFromText(ReadVectorFile("vectors/featurebag-selectors.txt"));
    gcstring_vector errors;
    EXPECT_TRUE(bag.LoadFromBag(m_map._Ptr, false, &errors));
    EXPECT_TRUE(errors.empty());
    const std::string transcript = ReadVectorFile("vectors/featurebag-loadfrombag-selectors.txt");
    EXPECT_EQ(m_pPort->m_writes, TraceLines(Section(transcript, "# LoadFromBag of featurebag-selectors.txt into "
                                                                "featurebag-selectors.xml, memory "
                                                                "featurebag-load.prefill, noverify")));
    EXPECT_EQ(Value("Width"), "640");
    EXPECT_EQ(Value("GainSelector"), "Red");
    EXPECT_EQ(Value("Gain"), "20");
    EXPECT_EQ(Value("BlackLevel"), "EXC AccessException");
    EXPECT_EQ(Value("LUTIndex"), "2");
    EXPECT_EQ(Value("LUTValue"), "202");
    EXPECT_EQ(Value("DeviceUserID"), "mycam");
    EXPECT_EQ(Value("ExposureTime"), "2000");
    Set("GainSelector", "All");
    EXPECT_EQ(Value("Gain"), "10");
    EXPECT_EQ(Value("BlackLevel"), "1.5");
    Set("LUTSelector", "Luminance");
    Set("LUTIndex", "1");
    EXPECT_EQ(Value("LUTValue"), "101");
    EXPECT_EQ(Value("LUTEnable"), "0");
}

TEST_F(FeatureBagTest, LoadFromBagWithVerificationReplaysTheBagAndReadsBack)
{
    Load("vectors/featurebag-load.prefill");
    CFeatureBag bag = BagFromText(ReadVectorFile("vectors/featurebag-selectors.txt"));
    gcstring_vector errors;
    EXPECT_EQ(bag.LoadFromBag(m_map._Ptr, true, &errors), errors.empty());
    const std::string transcript = ReadVectorFile("vectors/featurebag-loadfrombag-selectors.txt");
    EXPECT_EQ(m_pPort->m_writes, TraceLines(Section(transcript, "# LoadFromBag of featurebag-selectors.txt into "
                                                                "featurebag-selectors.xml, memory "
                                                                "featurebag-load.prefill, verify")));
    // The reference's one error: its lossy converter has the range 0..0 and 42 reads back out
    // of it. This engine derives the converter's range differently; whatever it reports must
    // be that verification, for that node.
    EXPECT_LE(errors.size(), 1u);
    for (const gcstring& error : errors)
        EXPECT_EQ(std::string(error.c_str()).rfind("Error while verifying the value of node 'Lossy': ", 0), 0u) << error;
}

namespace
{
// The error texts a reference transcript lists after "error list (n):".
std::vector<std::string> ErrorLines(const std::string& section)
{
    std::vector<std::string> lines;
    std::istringstream stream(section);
    std::string line;
    while (std::getline(stream, line))
    {
        const size_t bracket = line.find("] Error while");
        if (line.compare(0, 3, "  [") == 0 && bracket != std::string::npos)
            lines.push_back(line.substr(bracket + 2));
    }
    return lines;
}

// What this engine shares with the reference in an error text: everything before the
// exception's own description (which each engine words its own way).
std::string Lead(const std::string& error)
{
    const size_t quote = error.find("': ");
    return quote == std::string::npos ? error : error.substr(0, quote + 3);
}
} // namespace

TEST_F(FeatureBagTest, LoadFromBagReportsEveryFailingEntryOfTheReferenceErrorBag)
{
    for (bool verify : {true, false})
    {
        Load("vectors/featurebag-load.prefill");
        CFeatureBag bag = BagFromText(ReadVectorFile("vectors/featurebag-load-errors.bag"));
        gcstring_vector errors;
        EXPECT_FALSE(bag.LoadFromBag(m_map._Ptr, verify, &errors));
        const std::string section =
            Section(ReadVectorFile("vectors/featurebag-loadfrombag-load-errors.txt"),
                    std::string("# LoadFromBag of featurebag-load-errors.bag into featurebag-selectors.xml, memory "
                                "featurebag-load.prefill, ") +
                        (verify ? "verify" : "noverify"));
        EXPECT_EQ(m_pPort->m_writes, TraceLines(section)) << verify;
        const std::vector<std::string> expected = ErrorLines(section);
        ASSERT_EQ(errors.size(), expected.size()) << verify;
        for (size_t i = 0; i < expected.size(); ++i)
            EXPECT_EQ(Lead(errors[i].c_str()), Lead(expected[i])) << errors[i];
        EXPECT_EQ(errors[0], gcstring("Error while writing node: 'NoSuchNode' not found "));
        // Written without range checks, as the reference does.
        EXPECT_EQ(Value("Width"), "17");
        EXPECT_EQ(Value("Height"), "300");
        EXPECT_EQ(Value("PixelFormat"), "RGB8");
        EXPECT_EQ(Value("GainSelector"), "All");
        EXPECT_EQ(Value("Gain"), "7");
        EXPECT_EQ(Value("LUTIndex"), "7");
        EXPECT_EQ(Value("DeviceUserID"), "");
    }
}

TEST_F(FeatureBagTest, VerificationReportsValuesThatDoNotReadBack)
{
    Load("vectors/featurebag-load.prefill");
    CFeatureBag bag = BagFromText(ReadVectorFile("vectors/featurebag-load-verify.bag"));
    gcstring_vector errors;
    EXPECT_FALSE(bag.LoadFromBag(m_map._Ptr, true, &errors));
    const std::string section = Section(ReadVectorFile("vectors/featurebag-loadfrombag-load-verify.txt"),
                                        "# LoadFromBag of featurebag-load-verify.bag into featurebag-selectors.xml, "
                                        "memory featurebag-load.prefill, verify");
    EXPECT_EQ(m_pPort->m_writes, TraceLines(section));
    const std::vector<std::string> expected = ErrorLines(section);
    ASSERT_EQ(errors.size(), expected.size());
    // The first is the lossy converter: the reference finds 4 outside its converter's range
    // 0..0, this engine (another range) finds that 4 does not read back as the 5 written.
    EXPECT_EQ(errors[0], gcstring("Error while verifying node 'Lossy'. Expected '5', but found '4'"));
    for (size_t i = 1; i < expected.size(); ++i)
        EXPECT_EQ(Lead(errors[i].c_str()), Lead(expected[i])) << errors[i];
    EXPECT_TRUE(errors.contains("Error while verifying node 'Width'. Expected '0x280', but found '640'"));
    EXPECT_TRUE(errors.contains("Error while verifying node 'Height'. Expected '  300  ', but found '301'"));

    // Without verification every write of that bag succeeds.
    Load("vectors/featurebag-load.prefill");
    errors.clear();
    EXPECT_TRUE(bag.LoadFromBag(m_map._Ptr, false, &errors));
    EXPECT_TRUE(errors.empty());
    EXPECT_EQ(Value("Height"), "301");
    EXPECT_EQ(Value("LUTValue"), "77");
}

namespace
{
// A device that refuses a width beyond SensorWidth - OffsetX and, when asked, every gain write:
// what makes the order of a bag matter.
class CStrictPort : public CTracingPort
{
public:
    void Write(const void* pBuffer, int64_t address, int64_t lengthBytes) override
    {
        uint32_t value = 0;
        std::memcpy(&value, pBuffer, sizeof(value));
        if (address == 0x100 && value > Word(0x10C) - Word(0x108))
            throw GenICam::RuntimeException("device refuses the width", __FILE__, __LINE__);
        if (m_refuseGain && address >= 0x210 && address < 0x220)
            throw GenICam::RuntimeException("device refuses the gain", __FILE__, __LINE__);
        CTracingPort::Write(pBuffer, address, lengthBytes);
    }
    bool m_refuseGain = false;

private:
    uint32_t Word(int64_t address) const
    {
        const std::vector<uint8_t> bytes = Peek(address, 4);
        return uint32_t(bytes[0]) | (uint32_t(bytes[1]) << 8) | (uint32_t(bytes[2]) << 16) | (uint32_t(bytes[3]) << 24);
    }
};

const char* const kMagicLine = "# {05D8C294-F295-4dfb-9D01-096BD04049F4}\n";
} // namespace

TEST_F(FeatureBagTest, EntriesADeviceRefusesUntilOthersAreSetAreRetried)
{
    m_map._Destroy();
    std::unique_ptr<CStrictPort> pStrict(new CStrictPort());
    pStrict->LoadImage(VectorPath("vectors/featurebag-load.prefill")); // OffsetX 1000, SensorWidth 2048
    m_map._LoadXMLFromFile(VectorPath(kSelectorsXml).c_str());
    ASSERT_TRUE(m_map._Connect(pStrict.get(), "Device"));

    // The width only fits once the offset is 0, which the bag sets after it.
    CFeatureBag bag = BagFromText(std::string(kMagicLine) + "Width\t1504\nOffsetX\t0\nHeight\t100\n");
    gcstring_vector errors;
    EXPECT_TRUE(bag.LoadFromBag(m_map._Ptr, true, &errors));
    EXPECT_TRUE(errors.empty()) << errors[0];
    EXPECT_EQ(Value("Width"), "1504");
    EXPECT_EQ(Value("OffsetX"), "0");

    // A value the device never takes is reported once, and the selector its entry moved ends as
    // the bag's later entries leave it.
    pStrict->m_refuseGain = true;
    CFeatureBag refused = BagFromText(std::string(kMagicLine) + "Gain\t{GainSelector=All}\t10\nGainSelector\tRed\n");
    errors.clear();
    EXPECT_FALSE(refused.LoadFromBag(m_map._Ptr, false, &errors));
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(Lead(errors[0].c_str()), "Error while writing node 'Gain': ");
    EXPECT_EQ(Value("GainSelector"), "Red");
    m_map._Destroy(); // before the port it reads through
}

TEST_F(FeatureBagTest, StreamFormatReadsWhatTheReferenceReads)
{
    const std::string magic = kMagicLine;
    // The GUID may stand anywhere in the first line; comments, blank lines and names are
    // trimmed away, values are kept as they are.
    CFeatureBag bag = BagFromText("xx {05D8C294-F295-4dfb-9D01-096BD04049F4} yy\n# comment\n\n  Width \t 640 \r\n"
                                  "Gain\t{GainSelector=All}\t10\nName\ta # b\n#\tnot\tan entry\n");
    EXPECT_EQ(Text(bag), magic + "Width\t 640 \r\nGain\t{GainSelector=All}\t10\nName\ta # b\n");
    EXPECT_EQ(bag.GetNumEntries(), 3u);

    auto refusal = [](const std::string& text) {
        try
        {
            BagFromText(text);
        }
        catch (const GenICam::RuntimeException& e)
        {
            return std::string(e.GetDescription());
        }
        return std::string("(accepted)");
    };
    const std::string noMagic =
        "The stream is not a GenApi feature stream since it is missing the magic GUID in the first line";
    EXPECT_EQ(refusal(""), noMagic);
    EXPECT_EQ(refusal("# GenApi persistence file (version 3.4.0)\n" + magic), noMagic);
    EXPECT_EQ(refusal("# {4709CB3C-7322-4460-84C3-DA11DDA09939}\nWidth\t1\n"), noMagic);
    EXPECT_EQ(refusal(magic + "Width\n"), "The stream holds incomplete key - value - set");
    EXPECT_EQ(refusal(magic + "Width\t\n"), "The stream holds incomplete key - value - set");
    EXPECT_EQ(refusal(magic + " \t5\n"), "The stream holds incomplete key - value - set");
    EXPECT_EQ(refusal(magic), "(accepted)");

    // Embedded NULs are data like any other byte (a regression the fuzzer found).
    const std::string withNul = magic + std::string("A\0B\tv\0w\n", 8);
    EXPECT_EQ(Text(BagFromText(withNul)), withNul);

    // What the writer writes, the reader reads back unchanged.
    Load("vectors/featurebag-selectors.prefill");
    CFeatureBag stored;
    stored.StoreToBag(m_map._Ptr);
    CFeatureBag reread = BagFromText(Text(stored));
    EXPECT_TRUE(reread == stored);
    EXPECT_EQ(stored.ToString(), gcstring(Text(stored)));
    EXPECT_THROW(stored.StoreToBag(nullptr), GenICam::InvalidArgumentException);
    EXPECT_THROW(stored.LoadFromBag(nullptr), GenICam::InvalidArgumentException);
}
