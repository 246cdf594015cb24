// Chunk adapters against the reference vectors (chunks.md, chunks-transcript.txt) and hand-made
// buffers: values read through chunk ports, layout checks, statistics, access modes, caching
// and callbacks.

#include <atomic>
#include <algorithm>
#include <cstring>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <GenApi/ChunkAdapterGEV.h>
#include <GenApi/ChunkAdapterGeneric.h>
#include <GenApi/ChunkAdapterU3V.h>
#include <GenApi/ChunkPort.h>
#include <GenApi/GenApi.h>

#include "VectorFiles.h"

using namespace GenApi;
using GenICam::gcstring;

namespace
{
const char* const kChunksXml = "vectors/chunks.xml";

// The two 48-byte buffers of the vectors: image 0x11111111 (8), info 0xA1B2 (640, 480), timestamp 0x104.
const std::vector<uint8_t> kGevBuffer = {
    0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF, 0x00, 0x11, 0x11, 0x11, 0x11, 0x11, 0x00, 0x00, 0x00, 0x08,
    0x00, 0x00, 0x02, 0x80, 0x00, 0x00, 0x01, 0xE0, 0x00, 0x00, 0xA1, 0xB2, 0x00, 0x00, 0x00, 0x08,
    0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08, 0x00, 0x00, 0x01, 0x04, 0x00, 0x00, 0x00, 0x08};
const std::vector<uint8_t> kU3vBuffer = {
    0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF, 0x00, 0x11, 0x11, 0x11, 0x11, 0x11, 0x08, 0x00, 0x00, 0x00,
    0x80, 0x02, 0x00, 0x00, 0xE0, 0x01, 0x00, 0x00, 0xB2, 0xA1, 0x00, 0x00, 0x08, 0x00, 0x00, 0x00,
    0x08, 0x07, 0x06, 0x05, 0x04, 0x03, 0x02, 0x01, 0x04, 0x01, 0x00, 0x00, 0x08, 0x00, 0x00, 0x00};

const char* const kFeatures[] = {"ChunkImageFirstWord", "ChunkWidthBE",         "ChunkHeightBE",
                                 "ChunkWidthLE",        "ChunkHeightLE",        "ChunkWidthShortID",
                                 "ChunkWidthLowerID",   "ChunkWidthWideID",     "ChunkTimestampBE",
                                 "ChunkTimestampLE",    "ChunkTimestampCached", "ChunkTimestampWT",
                                 "ChunkTimestamp",      "ChunkInfoLength",      "ChunkInfoBase",
                                 "ChunkInfoBeyond",     "ChunkMissingValue",    "ChunkWritable"};

class ChunkAdapterTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        QV_REQUIRE_VECTOR(kChunksXml);
        m_map._LoadXMLFromFile(VectorPath(kChunksXml).c_str());
    }

    INode* Node(const char* name) { return m_map._GetNode(name); }
    EAccessMode Access(const char* name) { return Node(name)->GetAccessMode(); }

    // ToString(), or "EXC <type>: <description>" as the transcripts write it.
    std::string Value(const char* name)
    {
        try
        {
            return std::string(CValuePtr(Node(name))->ToString().c_str());
        }
        catch (const GenICam::GenericException& e)
        {
            return std::string("EXC ") + e.GetExceptionType() + ": " + e.GetDescription();
        }
    }

    void ExpectAllChunkFeaturesNA(const char* context)
    {
        for (const char* name : kFeatures)
        {
            if (std::string(name) == "ChunkTimestampCached" && std::string(context) == "keeps copy")
                continue;
            EXPECT_EQ(Access(name), NA) << name << " (" << context << ")";
            EXPECT_EQ(Value(name).rfind("EXC AccessException", 0), 0u) << name << " (" << context << ")";
        }
        EXPECT_EQ(Access("ChunkPortInfo"), NA) << context;
        EXPECT_EQ(Access("ChunkPortTimestamp"), NA) << context;
        EXPECT_EQ(Access("ChunkPortMissing"), NA) << context;
    }

    CNodeMapRef m_map;
};

struct ExpectedRow_t
{
    const char* feature;
    const char* gev; // GEV buffer through the GEV adapter (also: the generic adapter with the GEV list)
    const char* u3v; // U3V buffer through the U3V adapter
};

// chunks.md, "Expected feature values"; ChunkInfoBase is checked apart (a pointer).
const ExpectedRow_t kExpected[] = {
    {"ChunkImageFirstWord", "0xaabbccdd", "0xaabbccdd"},
    {"ChunkWidthBE", "640", "2147614720"},
    {"ChunkHeightBE", "480", "3758161920"},
    {"ChunkWidthLE", "2147614720", "640"},
    {"ChunkHeightLE", "3758161920", "480"},
    {"ChunkWidthShortID", "640", "2147614720"},
    {"ChunkWidthLowerID", "640", "2147614720"},
    {"ChunkWidthWideID", "640", "2147614720"},
    {"ChunkTimestampBE", "0x102030405060708", "0x807060504030201"},
    {"ChunkTimestampLE", "0x807060504030201", "0x102030405060708"},
    {"ChunkTimestampCached", "0x102030405060708", "0x807060504030201"},
    {"ChunkTimestampWT", "0x102030405060708", "0x807060504030201"},
    {"ChunkTimestamp", "0x102030405060708", "0x807060504030201"},
    {"ChunkInfoLength", "8", "8"},
    {"ChunkInfoBeyond", "EXC RuntimeException: Range error reading(6, 4)", "EXC RuntimeException: Range error reading(6, 4)"},
    {"ChunkMissingValue", "EXC AccessException", "EXC AccessException"},
    {"ChunkWritable", "640", "2147614720"},
};

void ExpectStatistics(const AttachStatistics_t& statistics, int ports, int chunks, int attached)
{
    EXPECT_EQ(statistics.NumChunkPorts, ports);
    EXPECT_EQ(statistics.NumChunks, chunks);
    EXPECT_EQ(statistics.NumAttachedChunks, attached);
}
} // namespace

TEST_F(ChunkAdapterTest, EveryChunkFeatureIsNotAvailableWithoutAdapterOrBuffer)
{
    ExpectAllChunkFeaturesNA("no adapter");
    CChunkAdapterGEV adapter(m_map._Ptr);
    ExpectAllChunkFeaturesNA("adapter, no buffer");
}

TEST_F(ChunkAdapterTest, GevBufferReadsAsTheReferenceVectors)
{
    std::vector<uint8_t> buffer = kGevBuffer;
    CChunkAdapterGEV adapter(m_map._Ptr);
    EXPECT_TRUE(adapter.CheckBufferLayout(buffer.data(), 48));
    AttachStatistics_t statistics{-1, -1, -1};
    adapter.AttachBuffer(buffer.data(), 48, &statistics);
    ExpectStatistics(statistics, 8, 3, 7);
    for (const ExpectedRow_t& row : kExpected)
        EXPECT_EQ(Value(row.feature).substr(0, std::strlen(row.gev)), row.gev) << row.feature;
    EXPECT_EQ(CIntegerPtr(Node("ChunkInfoBase"))->GetValue(), static_cast<int64_t>(reinterpret_cast<intptr_t>(buffer.data() + 16)));
    EXPECT_EQ(Access("ChunkWidthBE"), RO);
    EXPECT_EQ(Access("ChunkWritable"), RW);
    EXPECT_EQ(Access("ChunkPortInfo"), RW);
    EXPECT_EQ(Access("ChunkPortTimestamp"), RW);
    EXPECT_EQ(Access("ChunkPortMissing"), NA);
    EXPECT_EQ(Access("ChunkMissingValue"), NA);
}

TEST_F(ChunkAdapterTest, U3vBufferReadsAsTheReferenceVectors)
{
    std::vector<uint8_t> buffer = kU3vBuffer;
    CChunkAdapterU3V adapter(m_map._Ptr);
    EXPECT_TRUE(adapter.CheckBufferLayout(buffer.data(), 48));
    AttachStatistics_t statistics{-1, -1, -1};
    adapter.AttachBuffer(buffer.data(), 48, &statistics);
    ExpectStatistics(statistics, 8, 3, 7);
    for (const ExpectedRow_t& row : kExpected)
        EXPECT_EQ(Value(row.feature).substr(0, std::strlen(row.u3v)), row.u3v) << row.feature;
    EXPECT_EQ(CIntegerPtr(Node("ChunkInfoBase"))->GetValue(), static_cast<int64_t>(reinterpret_cast<intptr_t>(buffer.data() + 16)));
}

TEST_F(ChunkAdapterTest, GenericAdapterAttachesTheProducersListAsTheReferenceVectors)
{
    std::vector<uint8_t> buffer = kGevBuffer;
    CChunkAdapterGeneric adapter(m_map._Ptr);
    EXPECT_FALSE(adapter.CheckBufferLayout(buffer.data(), 48));
    AttachStatistics_t statistics{-1, -1, -1};
    adapter.AttachBuffer(buffer.data(), 48, &statistics); // a bare buffer: nothing to do
    ExpectStatistics(statistics, -1, -1, -1);
    EXPECT_EQ(Access("ChunkWidthBE"), NA);

    SingleChunkData_t list[] = {{0x11111111, 0, 8}, {0xA1B2, 16, 8}, {0x104, 32, 8}};
    adapter.AttachBuffer(buffer.data(), list, 3, &statistics);
    ExpectStatistics(statistics, 8, 3, 7);
    for (const ExpectedRow_t& row : kExpected)
        EXPECT_EQ(Value(row.feature).substr(0, std::strlen(row.gev)), row.gev) << row.feature;

    // The bounds-checked form attaches the same.
    adapter.DetachBuffer();
    statistics = {-1, -1, -1};
    adapter.AttachBuffer(buffer.data(), 48, list, 3, &statistics);
    ExpectStatistics(statistics, 8, 3, 7);
    EXPECT_EQ(Value("ChunkHeightBE"), "480");
}

TEST_F(ChunkAdapterTest, GenericTextIdsCompareByValueAndAnOddDigitCountIsRefused)
{
    std::vector<uint8_t> buffer = kGevBuffer;
    CChunkAdapterGeneric adapter(m_map._Ptr);
    for (const char* id : {"0000A1B2", "A1B2", "a1b2", "000000000000A1B2"})
    {
        SingleChunkDataStr_t list[] = {{id, 16, 8}};
        AttachStatistics_t statistics{-1, -1, -1};
        adapter.AttachBuffer(buffer.data(), list, 1, &statistics);
        ExpectStatistics(statistics, 8, 1, 4);
        for (const char* feature : {"ChunkWidthBE", "ChunkWidthShortID", "ChunkWidthLowerID", "ChunkWidthWideID"})
            EXPECT_EQ(Value(feature), "640") << id << " " << feature;
    }

    SingleChunkDataStr_t hexPrefix[] = {{"0xA1B2", 16, 8}};
    AttachStatistics_t statistics{-1, -1, -1};
    adapter.AttachBuffer(buffer.data(), hexPrefix, 1, &statistics);
    ExpectStatistics(statistics, 8, 1, 0);
    EXPECT_EQ(Access("ChunkWidthBE"), NA);

    SingleChunkDataStr_t valid[] = {{"A1B2", 16, 8}};
    adapter.AttachBuffer(buffer.data(), valid, 1);
    SingleChunkDataStr_t odd[] = {{"41394", 16, 8}};
    try
    {
        adapter.AttachBuffer(buffer.data(), odd, 1, &statistics);
        FAIL() << "an odd number of hex digits must be refused";
    }
    catch (const GenICam::RuntimeException& e)
    {
        EXPECT_STREQ(e.GetDescription(), "Invalid chunk ID delivered: 41394");
    }
    ExpectStatistics(statistics, 8, 0, 0);
    EXPECT_EQ(Access("ChunkWidthBE"), NA); // the earlier attach is gone too
}

TEST_F(ChunkAdapterTest, BoundsCheckedListAttachesWhatFitsAndReportsTheRest)
{
    std::vector<uint8_t> buffer = kGevBuffer;
    CChunkAdapterGeneric adapter(m_map._Ptr);
    // The vectors' "list pointing past the buffer" entry: the reference attaches it and reads
    // foreign memory; the checked form keeps that port NA and still attaches the timestamp.
    const SingleChunkData_t list[] = {{0xA1B2, 44, 100}, {0x104, 32, 8}};
    AttachStatistics_t statistics{-1, -1, -1};
    try
    {
        adapter.AttachBuffer(buffer.data(), 48, list, 2, &statistics);
        FAIL() << "an entry outside the buffer must be reported";
    }
    catch (const GenICam::RuntimeException& e)
    {
        EXPECT_STREQ(e.GetDescription(), "Chunk 0xa1b2 at offset 44 with length 100 lies outside the buffer of 48 bytes");
    }
    ExpectStatistics(statistics, 8, 2, 2);
    EXPECT_EQ(Access("ChunkWidthBE"), NA);
    EXPECT_EQ(Value("ChunkTimestampBE"), "0x102030405060708");

    // Negative offsets, lengths wider than the buffer and offset + length overflow all stay out.
    const SingleChunkData_t hostile[] = {{0xA1B2, -8, 8}, {0xA1B2, 8, static_cast<size_t>(-1)},
                                         {0xA1B2, PTRDIFF_MAX, 8}, {0xA1B2, 48, 1}};
    for (const SingleChunkData_t& entry : hostile)
    {
        EXPECT_THROW(adapter.AttachBuffer(buffer.data(), 48, &entry, 1), GenICam::RuntimeException);
        EXPECT_EQ(Access("ChunkWidthBE"), NA);
    }
    // An empty chunk at the very end fits.
    const SingleChunkData_t empty = {0xA1B2, 48, 0};
    adapter.AttachBuffer(buffer.data(), 48, &empty, 1);
    EXPECT_EQ(Access("ChunkPortInfo"), RW);
    EXPECT_EQ(Value("ChunkInfoLength"), "0");
    EXPECT_EQ(Value("ChunkWidthBE"), "EXC RuntimeException: Range error reading(0, 4)");
}

TEST_F(ChunkAdapterTest, ChunkDataIsReadInPlaceAndCopiedOnlyForCachingPorts)
{
    std::vector<uint8_t> buffer = kGevBuffer;
    CChunkAdapterGEV adapter(m_map._Ptr);
    adapter.AttachBuffer(buffer.data(), 48);
    EXPECT_EQ(Value("ChunkTimestampWT"), "0x102030405060708"); // now cached by its register

    buffer[0x13] = 0x00; // width 640 -> 512 in place
    buffer[0x12] = 0x04;
    buffer[0x20] = 0x11;
    EXPECT_EQ(Value("ChunkWidthBE"), "1024");
    EXPECT_EQ(Value("ChunkWidthLE"), "262144");
    EXPECT_EQ(Value("ChunkTimestampBE"), "0x1102030405060708");
    EXPECT_EQ(Value("ChunkTimestampCached"), "0x102030405060708"); // copied at attach time
    EXPECT_EQ(Value("ChunkTimestampWT"), "0x102030405060708");     // WriteThrough cache holds

    adapter.AttachBuffer(buffer.data(), 48); // a new attach invalidates every chunk node
    EXPECT_EQ(Value("ChunkTimestampCached"), "0x1102030405060708");
    EXPECT_EQ(Value("ChunkTimestampWT"), "0x1102030405060708");

    // A writable chunk register writes into the buffer.
    CIntegerPtr(Node("ChunkWritable"))->SetValue(0x12345678);
    EXPECT_EQ(buffer[16], 0x12);
    EXPECT_EQ(buffer[19], 0x78);
    EXPECT_EQ(Value("ChunkWidthBE"), "305419896");

    // UpdateBuffer: same layout elsewhere; the copying port copies again.
    std::vector<uint8_t> moved = buffer;
    moved[0x24] = 0x99;
    adapter.UpdateBuffer(moved.data());
    EXPECT_EQ(Value("ChunkTimestampBE"), "0x1102030499060708");
    EXPECT_EQ(Value("ChunkTimestampCached"), "0x1102030499060708");
    EXPECT_EQ(CIntegerPtr(Node("ChunkInfoBase"))->GetValue(), static_cast<int64_t>(reinterpret_cast<intptr_t>(moved.data() + 16)));

    // DetachBuffer: everything NA except the copy, which stays readable (RO).
    adapter.DetachBuffer();
    ExpectAllChunkFeaturesNA("keeps copy");
    EXPECT_EQ(Access("ChunkTimestampCached"), RO);
    EXPECT_EQ(Value("ChunkTimestampCached"), "0x1102030499060708");
    adapter.ClearCaches();
    EXPECT_EQ(Access("ChunkTimestampCached"), NA);
}

TEST_F(ChunkAdapterTest, MaximumChunkCacheSizeZeroDisablesCopying)
{
    for (int64_t maxCache : {int64_t(-1), int64_t(0), int64_t(7), int64_t(8)})
    {
        std::vector<uint8_t> buffer = kGevBuffer;
        CChunkAdapterGEV adapter(m_map._Ptr, maxCache);
        adapter.AttachBuffer(buffer.data(), 48);
        buffer[32] = 0x77;
        const bool copies = maxCache < 0 || maxCache >= 8;
        EXPECT_EQ(Value("ChunkTimestampCached"), copies ? "0x102030405060708" : "0x7702030405060708") << maxCache;
        EXPECT_EQ(Value("ChunkTimestampBE"), "0x7702030405060708");
    }
}

TEST_F(ChunkAdapterTest, ChunkPortReadsOnlyInsideTheChunk)
{
    std::vector<uint8_t> buffer = kGevBuffer;
    CChunkAdapterGEV adapter(m_map._Ptr);
    CPortPtr port(Node("ChunkPortInfo"));
    uint8_t bytes[8] = {};
    EXPECT_THROW(port->Read(bytes, 0, 4), GenICam::GenericException); // detached

    adapter.AttachBuffer(buffer.data(), 48);
    port->Read(bytes, 4, 4);
    EXPECT_EQ(bytes[2], 0x01);
    EXPECT_EQ(bytes[3], 0xE0);
    try
    {
        port->Read(bytes, 8, 1);
        FAIL();
    }
    catch (const GenICam::RuntimeException& e)
    {
        EXPECT_STREQ(e.GetDescription(), "Range error reading(8, 1)");
    }
    // The reference reads the byte before the chunk here; this engine keeps to the chunk.
    EXPECT_THROW(port->Read(bytes, -1, 1), GenICam::RuntimeException);
    EXPECT_THROW(port->Read(bytes, 4, INT64_MAX), GenICam::RuntimeException);
    EXPECT_THROW(port->Write(bytes, 6, 4), GenICam::RuntimeException);
    EXPECT_EQ(CChunkPortPtr(Node("ChunkPortInfoLower"))->GetChunkID(), gcstring("0000a1b2"));

    adapter.DetachBuffer();
    try
    {
        port->Read(bytes, 0, 4);
        FAIL();
    }
    catch (const GenICam::RuntimeException& e)
    {
        EXPECT_STREQ(e.GetDescription(), "Range error reading(0, 4)");
    }
}

namespace
{
struct LayoutCase_t
{
    const char* what;
    std::vector<uint8_t> bytes;
    int64_t length;
    bool valid;
    std::vector<const char*> kept = {}; // of an invalid chain: chunks read before the fault
};

std::vector<uint8_t> Patched(std::vector<uint8_t> bytes, size_t offset, uint8_t value)
{
    bytes[offset] = value;
    return bytes;
}

std::vector<uint8_t> Appended(std::vector<uint8_t> bytes, size_t count)
{
    bytes.resize(bytes.size() + count, 0);
    return bytes;
}
} // namespace

// chunks.md, "Layout checks": each row through CheckBufferLayout and AttachBuffer.
TEST_F(ChunkAdapterTest, LayoutChecksMatchTheReferenceTable)
{
    const std::vector<LayoutCase_t> gevCases = {
        {"unchanged", kGevBuffer, 48, true},
        {"last trailer covers everything before it", Patched(kGevBuffer, 47, 0x28), 48, true},
        {"last trailer longer than the bytes before it", Patched(kGevBuffer, 47, 0x30), 48, false},
        {"middle trailer lies", Patched(kGevBuffer, 31, 0x40), 48, false, {"ChunkTimestampBE"}},
        {"first trailer leaves 4 bytes", Patched(kGevBuffer, 15, 0x04), 48, false,
         {"ChunkTimestampBE", "ChunkWidthBE", "ChunkImageFirstWord"}},
        {"last chunk cut", kGevBuffer, 40, false},
        {"ends inside a trailer", kGevBuffer, 44, false},
        {"4 bytes", kGevBuffer, 4, false},
        {"empty", kGevBuffer, 0, false},
        {"zero bytes appended", Appended(kGevBuffer, 4), 52, false},
        {"zero-length chunk after garbage",
         {0, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0xA1, 0xB2, 0, 0, 0, 0}, 16, false, {"ChunkWidthBE"}},
        {"6-byte chunk", {0, 0, 0x02, 0x80, 0x01, 0x02, 0, 0, 0xA1, 0xB2, 0, 0, 0, 6}, 14, true},
        {"little-endian buffer", kU3vBuffer, 48, false},
    };
    for (const LayoutCase_t& row : gevCases)
    {
        std::vector<uint8_t> buffer = row.bytes;
        CChunkAdapterGEV adapter(m_map._Ptr);
        EXPECT_EQ(adapter.CheckBufferLayout(buffer.data(), row.length), row.valid) << row.what;
        AttachStatistics_t statistics{-1, -1, -1};
        if (row.valid)
        {
            EXPECT_NO_THROW(adapter.AttachBuffer(buffer.data(), row.length, &statistics)) << row.what;
            continue;
        }
        try
        {
            adapter.AttachBuffer(buffer.data(), row.length, &statistics);
            ADD_FAILURE() << row.what << ": attached an invalid layout";
        }
        catch (const GenICam::RuntimeException& e)
        {
            EXPECT_STREQ(e.GetDescription(), "Invalid layout of buffer attached to chunk parser!") << row.what;
        }
        // The chunks the walk read before the fault stay attached, every other port is detached.
        EXPECT_EQ(statistics.NumChunkPorts, 8) << row.what;
        EXPECT_EQ(statistics.NumAttachedChunks == 0, row.kept.empty()) << row.what;
        for (const char* feature : {"ChunkWidthBE", "ChunkTimestampBE", "ChunkImageFirstWord"})
        {
            const bool kept = std::find_if(row.kept.begin(), row.kept.end(), [&](const char* name) {
                                  return std::strcmp(name, feature) == 0;
                              }) != row.kept.end();
            EXPECT_EQ(Access(feature), kept ? RO : NA) << row.what << " " << feature;
            if (kept && std::strcmp(feature, "ChunkTimestampBE") == 0)
            {
                EXPECT_EQ(Value(feature), "0x102030405060708") << row.what;
            }
        }
    }

    const std::vector<LayoutCase_t> u3vCases = {
        {"unchanged", kU3vBuffer, 48, true},
        {"last trailer lies", Patched(kU3vBuffer, 44, 0x30), 48, false},
        {"big-endian buffer", kGevBuffer, 48, false},
    };
    for (const LayoutCase_t& row : u3vCases)
    {
        std::vector<uint8_t> buffer = row.bytes;
        CChunkAdapterU3V adapter(m_map._Ptr);
        EXPECT_EQ(adapter.CheckBufferLayout(buffer.data(), row.length), row.valid) << row.what;
        if (row.valid)
            EXPECT_NO_THROW(adapter.AttachBuffer(buffer.data(), row.length)) << row.what;
        else
            EXPECT_THROW(adapter.AttachBuffer(buffer.data(), row.length), GenICam::RuntimeException) << row.what;
    }
}

TEST_F(ChunkAdapterTest, ValidOddLayoutsAttachAsTheReference)
{
    CChunkAdapterGEV adapter(m_map._Ptr);
    std::vector<uint8_t> whole = Patched(kGevBuffer, 47, 0x28);
    AttachStatistics_t statistics{};
    adapter.AttachBuffer(whole.data(), 48, &statistics);
    ExpectStatistics(statistics, 8, 1, 2);
    EXPECT_EQ(Value("ChunkTimestampBE"), "0xaabbccddeeff0011");
    EXPECT_EQ(Access("ChunkWidthBE"), NA);
    EXPECT_EQ(Access("ChunkImageFirstWord"), NA);

    std::vector<uint8_t> six = {0, 0, 0x02, 0x80, 0x01, 0x02, 0, 0, 0xA1, 0xB2, 0, 0, 0, 6};
    adapter.AttachBuffer(six.data(), 14, &statistics);
    ExpectStatistics(statistics, 8, 1, 4);
    EXPECT_EQ(Value("ChunkWidthBE"), "640");
    EXPECT_EQ(Value("ChunkHeightBE"), "EXC RuntimeException: Range error reading(4, 4)");
    EXPECT_EQ(Access("ChunkTimestampBE"), NA);
}

TEST_F(ChunkAdapterTest, HostileTrailerChainsAreWalkedWithinTheBuffer)
{
    CChunkAdapterGEV adapter(m_map._Ptr);
    // A megabyte of zeros is 131072 empty chunks of ID 0: valid, none wanted, nothing kept.
    std::vector<uint8_t> zeros(1 << 20, 0);
    AttachStatistics_t statistics{};
    adapter.AttachBuffer(zeros.data(), static_cast<int64_t>(zeros.size()), &statistics);
    ExpectStatistics(statistics, 8, 131072, 0);
    // Every trailer claims the largest possible length.
    std::vector<uint8_t> lying(64, 0xFF);
    EXPECT_FALSE(adapter.CheckBufferLayout(lying.data(), 64));
    EXPECT_FALSE(adapter.CheckBufferLayout(nullptr, 64));
    EXPECT_FALSE(adapter.CheckBufferLayout(lying.data(), -8));
    EXPECT_THROW(adapter.AttachBuffer(nullptr, 48), GenICam::RuntimeException);
    // A chunk ID that no port knows is simply not attached.
    std::vector<uint8_t> unknown = {1, 2, 3, 4, 0x12, 0x34, 0x56, 0x78, 0, 0, 0, 4};
    adapter.AttachBuffer(unknown.data(), 12, &statistics);
    ExpectStatistics(statistics, 8, 1, 0);
}

TEST_F(ChunkAdapterTest, AttachingAndDetachingFiresCallbacksOfChunkNodes)
{
    std::multiset<std::string> fired;
    for (const char* name : {"ChunkWidthBE", "ChunkTimestamp", "ChunkPortMissing", "ChunkMissingValue", "ChunkDataControl"})
        Register(Node(name), [&fired](INode* pNode) { fired.insert(pNode->GetName().c_str()); });

    std::vector<uint8_t> buffer = kGevBuffer;
    CChunkAdapterGEV adapter(m_map._Ptr);
    fired.clear();
    adapter.AttachBuffer(buffer.data(), 48);
    // Attached and absent ports alike, each node once per operation.
    EXPECT_EQ(fired, (std::multiset<std::string>{"ChunkWidthBE", "ChunkTimestamp", "ChunkPortMissing",
                                                  "ChunkMissingValue", "ChunkDataControl"}));
    fired.clear();
    adapter.DetachBuffer();
    EXPECT_EQ(fired.count("ChunkWidthBE"), 1u);
    EXPECT_EQ(fired.count("ChunkTimestamp"), 1u);
    fired.clear();
    adapter.UpdateBuffer(buffer.data());
    EXPECT_EQ(fired.count("ChunkWidthBE"), 1u);

    // A failed attach detaches, and says so.
    adapter.AttachBuffer(buffer.data(), 48);
    fired.clear();
    EXPECT_THROW(adapter.AttachBuffer(buffer.data(), 40), GenICam::RuntimeException);
    EXPECT_EQ(fired.count("ChunkWidthBE"), 1u);
}

TEST_F(ChunkAdapterTest, DestroyingTheAdapterLeavesThePortsUnattached)
{
    std::vector<uint8_t> buffer = kGevBuffer;
    {
        CChunkAdapterU3V adapter(m_map._Ptr);
        std::vector<uint8_t> u3v = kU3vBuffer;
        adapter.AttachBuffer(u3v.data(), 48);
        EXPECT_EQ(Value("ChunkWidthLE"), "640");
    }
    ExpectAllChunkFeaturesNA("adapter destroyed");
    CChunkAdapterGEV adapter;
    adapter.AttachNodeMap(m_map._Ptr);
    adapter.AttachBuffer(buffer.data(), 48);
    EXPECT_EQ(Value("ChunkWidthBE"), "640");
    adapter.DetachNodeMap();
    ExpectAllChunkFeaturesNA("node map detached");
}

TEST_F(ChunkAdapterTest, BuffersAttachedOnOneThreadAreReadWholeOnAnother)
{
    // Two buffers whose timestamp chunks differ in every byte; the stream thread attaches them
    // in turn while the application reads: each read shows one buffer or the other, never a mix.
    std::vector<uint8_t> first = kGevBuffer, second = kGevBuffer;
    for (size_t i = 32; i < 40; ++i)
        second[i] = 0xEE;
    CChunkAdapterGEV adapter(m_map._Ptr);
    adapter.AttachBuffer(first.data(), 48);
    std::atomic<bool> done{false};
    std::thread stream([&] {
        for (int i = 0; i < 5000; ++i)
            adapter.AttachBuffer((i % 2 ? first : second).data(), 48);
        done = true;
    });
    CIntegerPtr timestamp(Node("ChunkTimestampBE"));
    size_t reads = 0;
    while (!done)
    {
        const int64_t value = timestamp->GetValue();
        ASSERT_TRUE(value == 0x0102030405060708 || value == static_cast<int64_t>(0xEEEEEEEEEEEEEEEEull)) << std::hex << value;
        ++reads;
    }
    stream.join();
    EXPECT_GT(reads, 0u);
}
