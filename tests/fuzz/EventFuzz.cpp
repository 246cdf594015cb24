// Fuzz target for the event adapters: GVCP EVENT/EVENTDATA packets, USB3 Vision event messages
// and generic deliveries, then every event feature read through the ports.
//
// Input: one selector byte, then the message. Selector % 3: 0 GEV, 1 U3V, 2 generic (the
// message's first byte gives the length of an ID text taken from the following bytes; the
// rest is the payload).

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <GenApi/EventAdapterGEV.h>
#include <GenApi/EventAdapterGeneric.h>
#include <GenApi/EventAdapterU3V.h>
#include <GenApi/GenApi.h>

using namespace GenApi;

namespace
{
const char* const kDescription = R"(<?xml version="1.0" encoding="utf-8"?>
<RegisterDescription ModelName="Fuzz" VendorName="Qv" ToolTip="event fuzz" StandardNameSpace="None"
  SchemaMajorVersion="1" SchemaMinorVersion="1" SchemaSubMinorVersion="0" MajorVersion="1" MinorVersion="0"
  SubMinorVersion="0" ProductGuid="0" VersionGuid="0" xmlns="http://www.genicam.org/GenApi/Version_1_1">
  <Category Name="Root" NameSpace="Standard"><pFeature>EventControl</pFeature></Category>
  <Category Name="EventControl">
    <pFeature>EvId</pFeature><pFeature>EvTime</pFeature><pFeature>EvData</pFeature>
    <pFeature>EvLE</pFeature><pFeature>EvText</pFeature><pFeature>EvTimestamp</pFeature>
  </Category>
  <Port Name="PA"><EventID>9001</EventID></Port>
  <Port Name="PB"><EventID>0004</EventID></Port>
  <Port Name="PC"><EventID>00</EventID></Port>
  <IntReg Name="EvId"><Address>2</Address><Length>2</Length><AccessMode>RO</AccessMode><pPort>PA</pPort><Cachable>NoCache</Cachable><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>
  <IntReg Name="EvTime"><Address>8</Address><Length>8</Length><AccessMode>RO</AccessMode><pPort>PA</pPort><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>
  <Integer Name="EvTimestamp"><pValue>EvTime</pValue></Integer>
  <IntReg Name="EvData"><Address>16</Address><Length>4</Length><AccessMode>RO</AccessMode><pPort>PB</pPort><Cachable>NoCache</Cachable><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>
  <IntReg Name="EvLE"><Address>4</Address><Length>8</Length><AccessMode>RO</AccessMode><pPort>PC</pPort><Cachable>NoCache</Cachable><Sign>Signed</Sign><Endianess>LittleEndian</Endianess></IntReg>
  <StringReg Name="EvText"><Address>12</Address><Length>8</Length><AccessMode>RO</AccessMode><pPort>PC</pPort><Cachable>NoCache</Cachable></StringReg>
</RegisterDescription>
)";

// One node map per adapter kind, each with its adapter attached for the whole run.
template <class Adapter>
struct Fixture_t
{
    Fixture_t() : adapter(nullptr)
    {
        map._LoadXMLFromString(kDescription);
        map._GetNodes(nodes);
        adapter.AttachNodeMap(map._Ptr);
    }
    CNodeMapRef map;
    NodeList_t nodes;
    Adapter adapter;
};

template <class Adapter>
void ReadEverything(Fixture_t<Adapter>& fixture)
{
    for (INode* pNode : fixture.nodes)
    {
        try
        {
            if (IValue* pValue = dynamic_cast<IValue*>(pNode))
                if (IsReadable(pNode))
                    (void)pValue->ToString();
        }
        catch (const GenICam::GenericException&)
        {
        }
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static Fixture_t<CEventAdapterGEV> gev;
    static Fixture_t<CEventAdapterU3V> u3v;
    static Fixture_t<CEventAdapterGeneric> generic;
    if (size < 1)
        return 0;
    const uint8_t selector = data[0];
    std::vector<uint8_t> message(data + 1, data + size); // exact size: overreads are findings
    const uint8_t* pMessage = message.empty() ? nullptr : message.data();
    const uint32_t length = static_cast<uint32_t>(message.size());
    try
    {
        switch (selector % 3)
        {
        case 0:
            gev.adapter.DeliverMessage(pMessage, length);
            ReadEverything(gev);
            break;
        case 1:
            u3v.adapter.DeliverMessage(pMessage, length);
            ReadEverything(u3v);
            break;
        default:
        {
            const size_t idLength = message.empty() ? 0 : message[0] % 20;
            if (1 + idLength > message.size())
                break;
            const std::string id(reinterpret_cast<const char*>(message.data() + 1), idLength);
            const std::vector<uint8_t> payload(message.begin() + static_cast<long>(1 + idLength), message.end());
            generic.adapter.DeliverMessage(payload.empty() ? nullptr : payload.data(),
                                           static_cast<uint32_t>(payload.size()), GenICam::gcstring(id.c_str(), id.size()));
            ReadEverything(generic);
            break;
        }
        }
    }
    catch (const GenICam::GenericException&)
    {
    }
    return 0;
}
