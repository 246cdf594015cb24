// Event adapters against the reference vectors (events.md, events-transcript.txt): the exact
// bytes each event port holds after GigE Vision, USB3 Vision and generic deliveries, malformed
// messages, access modes and callbacks.

#include <atomic>
#include <cstdio>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <GenApi/EventAdapterGEV.h>
#include <GenApi/EventAdapterGeneric.h>
#include <GenApi/EventAdapterU3V.h>
#include <GenApi/GenApi.h>

#include "VectorFiles.h"

using namespace GenApi;
using GenICam::gcstring;

namespace
{
const char* const kEventsXml = "vectors/events.xml";

std::vector<uint8_t> Hex(const char* text)
{
    std::vector<uint8_t> bytes;
    unsigned value = 0;
    int consumed = 0;
    while (std::sscanf(text, " %2x%n", &value, &consumed) == 1)
    {
        bytes.push_back(static_cast<uint8_t>(value));
        text += consumed;
    }
    return bytes;
}

std::string HexText(const std::vector<uint8_t>& bytes)
{
    std::string text;
    char item[4];
    for (size_t i = 0; i < bytes.size(); ++i)
    {
        std::snprintf(item, sizeof(item), "%02X", bytes[i]);
        if (i > 0)
            text += (i % 8 == 0) ? "  " : " ";
        text += item;
    }
    return text;
}

// The vectors' messages.
const char* const kGevEventData9001 = "42 01 00 C2 00 14 12 34  00 00 90 01 00 00 00 05  00 00 00 01 00 00 00 02  DE AD BE EF";
const char* const kGevEventTwoItems = "42 00 00 C0 00 20 00 01  00 00 90 02 FF FF 00 07  11 11 11 11 22 22 22 22  "
                                      "00 00 90 01 FF FF 00 08  33 33 33 33 44 44 44 44";
const char* const kGevEventUnknown = "42 00 00 C0 00 10 00 02  00 00 99 99 FF FF 00 09  00 00 00 00 00 00 00 00";
const char* const kGevEvent0004 = "42 00 00 C0 00 10 00 03  00 00 00 04 00 00 00 03  AA AA AA AA BB BB BB BB";
const char* const kGevEventExtended = "42 10 00 C0 00 18 00 04  00 18 90 01 00 00 00 00  00 00 00 00 00 00 00 42  "
                                      "55 55 55 55 66 66 66 66";
const char* const kGevEventDataExtended = "42 10 00 C2 00 1C 00 05  00 1C 90 01 00 00 00 00  00 00 00 00 00 00 00 43  "
                                          "77 77 77 77 88 88 88 88  CA FE BA BE";
const char* const kU3vEvent9001 = "55 33 56 45 00 40 00 0C  10 00 21 00 00 00 01 90  88 77 66 55 44 33 22 11  DE AD BE EF";
const char* const kU3vTwoEvents = "55 33 56 45 00 40 00 0C  20 00 21 00 10 00 01 90  88 77 66 55 44 33 22 11  "
                                  "DE AD BE EF 10 00 02 90  08 07 06 05 04 03 02 01  01 02 03 04";

class EventAdapterTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        QV_REQUIRE_VECTOR(kEventsXml);
        m_map._LoadXMLFromFile(VectorPath(kEventsXml).c_str());
        for (INode* pNode : AllNodes())
            Register(pNode, [this](INode* pFired) { m_fired.insert(pFired->GetName().c_str()); });
    }

    NodeList_t AllNodes()
    {
        NodeList_t nodes;
        m_map._GetNodes(nodes);
        return nodes;
    }
    INode* Node(const char* name) { return m_map._GetNode(name); }
    EAccessMode Access(const char* name) { return Node(name)->GetAccessMode(); }

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

    // The bytes port X holds, walked as the reference probe does: a one-byte Register whose
    // address is the Integer ProbeAddrX, until the port refuses.
    std::string PortBytes(char port)
    {
        const std::string suffix(1, port);
        CIntegerPtr address(Node(("ProbeAddr" + suffix).c_str()));
        CRegisterPtr byteRegister(Node(("Event" + suffix + "_Byte").c_str()));
        std::vector<uint8_t> bytes;
        for (int64_t i = 0; i < 4096; ++i)
        {
            address->SetValue(i);
            uint8_t byte = 0;
            try
            {
                byteRegister->Get(&byte, 1);
            }
            catch (const GenICam::GenericException&)
            {
                break;
            }
            bytes.push_back(byte);
        }
        address->SetValue(0);
        m_fired.clear();
        return HexText(bytes);
    }

    void Deliver(CEventAdapter& adapter, const char* hex)
    {
        const std::vector<uint8_t> message = Hex(hex);
        m_fired.clear();
        adapter.DeliverMessage(message.data(), static_cast<uint32_t>(message.size()));
    }

    std::string Refusal(CEventAdapter& adapter, const std::vector<uint8_t>& message)
    {
        m_fired.clear();
        try
        {
            adapter.DeliverMessage(message.data(), static_cast<uint32_t>(message.size()));
        }
        catch (const GenICam::RuntimeException& e)
        {
            return e.GetDescription();
        }
        return "(accepted)";
    }

    std::set<std::string> m_fired; // outlives the map: callbacks write here until it is gone
    CNodeMapRef m_map;
};

const std::set<std::string> kPortACallbacks = {
    "EventA_IdLE", "EventA_DataBE",  "EventA_TimestampBE", "EventA_IdBE", "EventA_Word0BE",   "EventControl", "Root",
    "EventA_Byte", "EventA_TimestampWT", "EventA_Length", "EventA_Base", "EventA_Timestamp", "EventPortA",
    "EventA_TimestampLE"};
} // namespace

TEST_F(EventAdapterTest, EventPortsAreNotImplementedWithoutAdapterAndNotAvailableBeforeTheirFirstEvent)
{
    EXPECT_EQ(Access("EventPortA"), NI);
    EXPECT_EQ(Access("EventA_Word0BE"), NI);
    EXPECT_EQ(Value("EventA_Word0BE").rfind("EXC AccessException", 0), 0u);
    {
        CEventAdapterGEV adapter(m_map._Ptr);
        EXPECT_EQ(Access("EventPortA"), NA);
        EXPECT_EQ(Access("EventA_IdBE"), NA);
        Deliver(adapter, kGevEventData9001);
        EXPECT_EQ(Access("EventPortA"), RO);
        EXPECT_EQ(Access("EventA_IdBE"), RO);
        EXPECT_EQ(Access("EventPortB"), NA);
    }
    EXPECT_EQ(Access("EventPortA"), NI); // the adapter is gone
}

TEST_F(EventAdapterTest, GevEventDataReachesThePortWithItsFirstFieldSetToTheLength)
{
    CEventAdapterGEV adapter(m_map._Ptr);
    std::vector<uint8_t> message = Hex(kGevEventData9001);
    m_fired.clear();
    adapter.DeliverMessage(message.data(), static_cast<uint32_t>(message.size()));
    EXPECT_EQ(m_fired, kPortACallbacks);
    EXPECT_EQ(PortBytes('A'), "00 14 90 01 00 00 00 05  00 00 00 01 00 00 00 02  DE AD BE EF");
    EXPECT_EQ(PortBytes('B'), "");
    EXPECT_EQ(Value("EventA_IdBE"), "0x9001");
    EXPECT_EQ(Value("EventA_TimestampBE"), "0x100000002");
    EXPECT_EQ(Value("EventA_DataBE"), "0xdeadbeef");
    EXPECT_EQ(Value("EventA_IdLE"), "0x190");
    EXPECT_EQ(Value("EventA_TimestampLE"), "0x100000005000000");
    EXPECT_EQ(Value("EventA_Timestamp"), "0x100000002");
    EXPECT_EQ(Value("EventA_Length"), "EXC RuntimeException: CEventPort : Attempt to read address range "
                                      "[9223372036854775792,9223372036854775800] which is outside the buffers "
                                      "address range [0,20]");

    // The port holds a copy: the message buffer may be reused at once.
    std::fill(message.begin(), message.end(), 0xEE);
    EXPECT_EQ(PortBytes('A'), "00 14 90 01 00 00 00 05  00 00 00 01 00 00 00 02  DE AD BE EF");
}

TEST_F(EventAdapterTest, GevEventItemsGoToThePortsOfTheirIds)
{
    CEventAdapterGEV adapter(m_map._Ptr);
    Deliver(adapter, kGevEventData9001);
    Deliver(adapter, kGevEventTwoItems);
    EXPECT_TRUE(m_fired.count("EventPortA") && m_fired.count("EventPortB") && m_fired.count("EventB_Word0BE"));
    EXPECT_EQ(PortBytes('A'), "00 10 90 01 FF FF 00 08  33 33 33 33 44 44 44 44");
    EXPECT_EQ(PortBytes('B'), "00 10 90 02 FF FF 00 07  11 11 11 11 22 22 22 22");
    EXPECT_EQ(Value("EventA_DataBE"), "EXC RuntimeException: CEventPort : Attempt to read address range [16,20] "
                                      "which is outside the buffers address range [0,16]");
    // The WriteThrough timestamp and the Integer on it follow each delivery.
    EXPECT_EQ(Value("EventA_Timestamp"), "0x3333333344444444");

    Deliver(adapter, kGevEventUnknown);
    EXPECT_TRUE(m_fired.empty());
    EXPECT_EQ(PortBytes('A'), "00 10 90 01 FF FF 00 08  33 33 33 33 44 44 44 44");

    Deliver(adapter, kGevEvent0004);
    EXPECT_EQ(m_fired, (std::set<std::string>{"EventC_Byte", "EventPortC"}));
    EXPECT_EQ(PortBytes('C'), "00 10 00 04 00 00 00 03  AA AA AA AA BB BB BB BB");

    Deliver(adapter, kGevEventExtended);
    EXPECT_EQ(PortBytes('A'), "00 18 90 01 00 00 00 00  00 00 00 00 00 00 00 42  55 55 55 55 66 66 66 66");
    EXPECT_EQ(Value("EventA_TimestampBE"), "0x42");
    Deliver(adapter, kGevEventDataExtended);
    EXPECT_EQ(PortBytes('A'),
              "00 1C 90 01 00 00 00 00  00 00 00 00 00 00 00 43  77 77 77 77 88 88 88 88  CA FE BA BE");

    // A header length that is no multiple of the item size delivers the whole items only.
    Deliver(adapter, "42 00 00 C0 00 18 00 01  00 00 90 02 FF FF 00 07  11 11 11 11 22 22 22 22  "
                     "00 00 90 01 FF FF 00 08  33 33 33 33 44 44 44 44");
    EXPECT_TRUE(m_fired.count("EventPortB"));
    EXPECT_FALSE(m_fired.count("EventPortA"));
}

TEST_F(EventAdapterTest, MalformedGevMessagesAreRefusedWithoutDeliveringAnything)
{
    CEventAdapterGEV adapter(m_map._Ptr);
    Deliver(adapter, kGevEventDataExtended);
    const std::string before = PortBytes('A');

    std::vector<uint8_t> message = Hex(kGevEventData9001);
    message[0] = 0x43;
    EXPECT_EQ(Refusal(adapter, message), "Malformed message - wrong magic 43 (42 expected)");
    message = Hex(kGevEventData9001);
    message[3] = 0xC4;
    EXPECT_EQ(Refusal(adapter, message), "Malformed message - unknown tag c400");
    message = Hex(kGevEventData9001);
    message[5] = 0x40;
    EXPECT_EQ(Refusal(adapter, message), "Malformed message - too large");
    message = Hex(kGevEventData9001);
    message.resize(12);
    EXPECT_EQ(Refusal(adapter, message), "Malformed message - too large");
    EXPECT_EQ(Refusal(adapter, Hex("42 01 00 C2")), "Malformed message - too small");
    EXPECT_EQ(Refusal(adapter, Hex("42 01 00 C2 00 08 00 00  00 00 90 01 00 00 00 00")),
              "Malformed message - too small"); // EVENTDATA shorter than its item
    EXPECT_EQ(Refusal(adapter, {}), "Malformed message - too small");
    EXPECT_TRUE(m_fired.empty());
    EXPECT_EQ(PortBytes('A'), before);
}

TEST_F(EventAdapterTest, U3vEventsDeliverTheCommandDataUnchanged)
{
    CEventAdapterU3V adapter(m_map._Ptr);
    Deliver(adapter, kU3vEvent9001);
    EXPECT_EQ(m_fired, kPortACallbacks);
    EXPECT_EQ(PortBytes('A'), "00 00 01 90 88 77 66 55  44 33 22 11 DE AD BE EF");
    EXPECT_EQ(Value("EventA_IdLE"), "0x9001");
    EXPECT_EQ(Value("EventA_TimestampLE"), "0x1122334455667788");

    // Several events in one message are not split: all of it goes to the first event's ID.
    Deliver(adapter, kU3vTwoEvents);
    EXPECT_EQ(PortBytes('A'), "10 00 01 90 88 77 66 55  44 33 22 11 DE AD BE EF  10 00 02 90 08 07 06 05  "
                              "04 03 02 01 01 02 03 04");
    EXPECT_EQ(PortBytes('B'), "");

    std::vector<uint8_t> message = Hex(kU3vEvent9001);
    message[0] = 0x56;
    EXPECT_EQ(Refusal(adapter, message), "Malformed message - wrong prefix 45563356 (45563355 expected)");
    message = Hex(kU3vEvent9001);
    message[6] = 0x02;
    EXPECT_EQ(Refusal(adapter, message), "Malformed message - wrong command ID c02 (c00 expected)");
    message = Hex(kU3vEvent9001);
    message.resize(20);
    EXPECT_EQ(Refusal(adapter, message), "Malformed message - too small");
    message = Hex(kU3vEvent9001);
    message[8] = 0x20; // announces more command data than given
    EXPECT_EQ(Refusal(adapter, message), "Malformed message - too small");
    message = Hex(kU3vEvent9001);
    message[8] = 0x04; // less than a basic event
    EXPECT_EQ(Refusal(adapter, message), "Malformed message - too small");
    EXPECT_TRUE(m_fired.empty());
}

TEST_F(EventAdapterTest, GenericDeliveriesMatchIdsByValue)
{
    CEventAdapterGeneric adapter(m_map._Ptr);
    const std::vector<uint8_t> payload = Hex("A0 A1 A2 A3 A4 A5 A6 A7 A8 A9 AA AB");
    const char* const kPayloadText = "A0 A1 A2 A3 A4 A5 A6 A7  A8 A9 AA AB";

    m_fired.clear();
    adapter.DeliverMessage(payload.data(), 12, gcstring("9001"));
    EXPECT_EQ(m_fired, kPortACallbacks);
    EXPECT_EQ(PortBytes('A'), kPayloadText);
    EXPECT_EQ(Value("EventA_IdBE"), "0xa2a3");

    adapter.DeliverMessage(payload.data(), 12, uint64_t(0x9002));
    EXPECT_EQ(PortBytes('B'), kPayloadText);

    m_fired.clear();
    adapter.DeliverMessage(payload.data(), 12, gcstring("0x9001"));
    EXPECT_TRUE(m_fired.empty());

    for (const char* id : {"04"})
    {
        adapter.DeliverMessage(payload.data(), 12, gcstring(id));
        EXPECT_EQ(PortBytes('C'), kPayloadText);
    }
    try
    {
        adapter.DeliverMessage(payload.data(), 12, gcstring("4"));
        FAIL();
    }
    catch (const GenICam::RuntimeException& e)
    {
        EXPECT_STREQ(e.GetDescription(), "Invalid event ID delivered: 4");
    }

    // Zero bytes: the port is RO and every read is out of range.
    adapter.DeliverMessage(nullptr, 0, uint64_t(0x9001));
    EXPECT_EQ(Access("EventPortA"), RO);
    EXPECT_EQ(PortBytes('A'), "");
    EXPECT_EQ(Value("EventA_IdBE"), "EXC RuntimeException: CEventPort : Attempt to read address range [2,4] which "
                                    "is outside the buffers address range [0,0]");

    // Without an ID nothing happens.
    m_fired.clear();
    adapter.DeliverMessage(payload.data(), 12);
    const std::vector<uint8_t> gev = Hex("42 00 00 C0 00 10 00 01  00 00 90 02 00 00 00 01  00 00 00 02 00 00 00 03");
    adapter.DeliverMessage(gev.data(), static_cast<uint32_t>(gev.size()));
    EXPECT_TRUE(m_fired.empty());
    EXPECT_EQ(PortBytes('B'), kPayloadText);
    EXPECT_THROW(adapter.DeliverMessage(nullptr, 4, uint64_t(0x9001)), GenICam::RuntimeException);
}

// A transport adapter and a generic one on the same node map (remote events and events the
// producer forwards generically): either delivery reads through the node, and the node stays
// served, with its last event, when one of the adapters goes.
TEST_F(EventAdapterTest, TwoAdaptersOnOneNodeMapShareEachPortsLastEvent)
{
    CEventAdapterGEV gev(m_map._Ptr);
    auto pGeneric = std::make_unique<CEventAdapterGeneric>(m_map._Ptr);
    const std::vector<uint8_t> payload = Hex("A0 A1 A2 A3 A4 A5 A6 A7 A8 A9 AA AB");

    m_fired.clear();
    pGeneric->DeliverMessage(payload.data(), 12, gcstring("9001"));
    EXPECT_EQ(m_fired, kPortACallbacks);
    EXPECT_EQ(Access("EventPortA"), RO);
    EXPECT_EQ(PortBytes('A'), "A0 A1 A2 A3 A4 A5 A6 A7  A8 A9 AA AB");

    Deliver(gev, kGevEventData9001);
    EXPECT_EQ(m_fired, kPortACallbacks);
    EXPECT_EQ(PortBytes('A'), "00 14 90 01 00 00 00 05  00 00 00 01 00 00 00 02  DE AD BE EF");

    pGeneric->DeliverMessage(payload.data(), 12, uint64_t(0x9002));
    EXPECT_EQ(PortBytes('B'), "A0 A1 A2 A3 A4 A5 A6 A7  A8 A9 AA AB");
    pGeneric.reset();
    EXPECT_EQ(PortBytes('B'), "A0 A1 A2 A3 A4 A5 A6 A7  A8 A9 AA AB") << "kept by the remaining adapter";
    Deliver(gev, kGevEventTwoItems);
    EXPECT_EQ(PortBytes('B'), "00 10 90 02 FF FF 00 07  11 11 11 11 22 22 22 22");

    // Created the other way round, the first adapter's port goes first.
    CEventAdapterGeneric late(m_map._Ptr);
    late.DeliverMessage(payload.data(), 12, gcstring("9001"));
    EXPECT_EQ(PortBytes('A'), "A0 A1 A2 A3 A4 A5 A6 A7  A8 A9 AA AB");
}

TEST_F(EventAdapterTest, EveryCutOfAValidMessageIsDeliveredOrRefusedCleanly)
{
    CEventAdapterGEV gev(m_map._Ptr);
    for (const char* hex : {kGevEventData9001, kGevEventTwoItems, kGevEventDataExtended})
    {
        const std::vector<uint8_t> whole = Hex(hex);
        for (size_t size = 0; size <= whole.size(); ++size)
        {
            // A heap copy of exactly the cut length: a read past it would be caught by ASan.
            std::vector<uint8_t> cut(whole.begin(), whole.begin() + static_cast<long>(size));
            const std::string result = Refusal(gev, cut);
            EXPECT_TRUE(result == "(accepted)" || result.rfind("Malformed message", 0) == 0) << size << ": " << result;
        }
    }
    gev.DetachNodeMap();
    CEventAdapterU3V u3v(m_map._Ptr);
    const std::vector<uint8_t> whole = Hex(kU3vTwoEvents);
    for (size_t size = 0; size <= whole.size(); ++size)
    {
        std::vector<uint8_t> cut(whole.begin(), whole.begin() + static_cast<long>(size));
        const std::string result = Refusal(u3v, cut);
        EXPECT_EQ(result == "(accepted)", size == whole.size()) << size << ": " << result;
    }
}

TEST_F(EventAdapterTest, CallbacksCanReadTheEventData)
{
    std::vector<std::string> seen; // outlives the adapter, whose detaching fires callbacks too
    CEventAdapterGEV adapter(m_map._Ptr);
    Register(Node("EventA_TimestampBE"),
             [this, &seen](INode*) { seen.push_back(Value("EventA_TimestampBE")); }, cbPostOutsideLock);
    Deliver(adapter, kGevEventData9001);
    Deliver(adapter, kGevEventTwoItems);
    EXPECT_EQ(seen, (std::vector<std::string>{"0x100000002", "0x3333333344444444"}));
}

TEST_F(EventAdapterTest, DeliveriesFromAListenerThreadAreSeenWhole)
{
    CEventAdapterGEV adapter(m_map._Ptr);
    std::atomic<bool> done{false};
    // The listener delivers events whose timestamp carries the same number in both halves; a
    // reader must never see halves of two events.
    std::thread listener([&] {
        std::vector<uint8_t> message = Hex(kGevEventData9001);
        for (uint32_t i = 1; i <= 5000; ++i)
        {
            for (int half = 0; half < 2; ++half)
                for (int byte = 0; byte < 4; ++byte)
                    message[16 + half * 4 + byte] = static_cast<uint8_t>(i >> (24 - 8 * byte));
            adapter.DeliverMessage(message.data(), static_cast<uint32_t>(message.size()));
        }
        done = true;
    });
    CIntegerPtr timestamp(Node("EventA_TimestampBE"));
    size_t reads = 0;
    while (!done)
    {
        if (!IsReadable(timestamp))
            continue;
        const uint64_t value = static_cast<uint64_t>(timestamp->GetValue());
        ASSERT_EQ(value >> 32, value & 0xFFFFFFFFu);
        ++reads;
    }
    listener.join();
    EXPECT_EQ(static_cast<uint64_t>(timestamp->GetValue()), (uint64_t(5000) << 32) | 5000u);
    EXPECT_GT(reads, 0u);
}
