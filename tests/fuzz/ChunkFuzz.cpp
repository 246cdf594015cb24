// Fuzz target for the chunk adapters: GigE Vision and USB3 Vision trailer chains and generic
// chunk lists, then every chunk feature read through the attached ports.
//
// Input: one selector byte, then the payload. Selector % 3: 0 GEV trailers, 1 U3V trailers,
// 2 a generic list (the payload's first bytes give entries of 5: ID byte, offset byte, length
// byte, two spare) attached bounds-checked to the rest. Bit 2 of the selector: attach twice
// with UpdateBuffer in between; bit 3: a cache limit of 0.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include <GenApi/ChunkAdapterGEV.h>
#include <GenApi/ChunkAdapterGeneric.h>
#include <GenApi/ChunkAdapterU3V.h>
#include <GenApi/GenApi.h>

using namespace GenApi;

namespace
{
// Chunk ports with small IDs (so random trailers hit them), every register length, a copying
// port, the two pseudo registers and a writable register.
const char* const kDescription = R"(<?xml version="1.0" encoding="utf-8"?>
<RegisterDescription ModelName="Fuzz" VendorName="Qv" ToolTip="chunk fuzz" StandardNameSpace="None"
  SchemaMajorVersion="1" SchemaMinorVersion="1" SchemaSubMinorVersion="0" MajorVersion="1" MinorVersion="0"
  SubMinorVersion="0" ProductGuid="0" VersionGuid="0" xmlns="http://www.genicam.org/GenApi/Version_1_1">
  <Category Name="Root" NameSpace="Standard"><pFeature>ChunkData</pFeature></Category>
  <Category Name="ChunkData">
    <pFeature>ChunkA</pFeature><pFeature>ChunkB</pFeature><pFeature>ChunkC</pFeature>
    <pFeature>ChunkD</pFeature><pFeature>ChunkLen</pFeature><pFeature>ChunkBase</pFeature>
    <pFeature>ChunkW</pFeature><pFeature>ChunkS</pFeature><pFeature>ChunkF</pFeature>
  </Category>
  <Port Name="P0"><ChunkID>00</ChunkID></Port>
  <Port Name="P1"><ChunkID>01</ChunkID></Port>
  <Port Name="P2"><ChunkID>0002</ChunkID><CacheChunkData>Yes</CacheChunkData></Port>
  <Port Name="P3"><ChunkID>A1B2</ChunkID></Port>
  <IntReg Name="ChunkA"><Address>0</Address><Length>1</Length><AccessMode>RO</AccessMode><pPort>P0</pPort><Cachable>NoCache</Cachable><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>
  <IntReg Name="ChunkB"><Address>2</Address><Length>4</Length><AccessMode>RO</AccessMode><pPort>P1</pPort><Sign>Signed</Sign><Endianess>LittleEndian</Endianess></IntReg>
  <IntReg Name="ChunkC"><Address>0</Address><Length>8</Length><AccessMode>RO</AccessMode><pPort>P2</pPort><Cachable>NoCache</Cachable><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>
  <MaskedIntReg Name="ChunkD"><Address>4</Address><Length>4</Length><AccessMode>RO</AccessMode><pPort>P3</pPort><Cachable>NoCache</Cachable><LSB>3</LSB><MSB>12</MSB><Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></MaskedIntReg>
  <IntReg Name="ChunkLen"><Address>0x7FFFFFFFFFFFFFF0</Address><Length>8</Length><AccessMode>RO</AccessMode><pPort>P3</pPort><Cachable>NoCache</Cachable><Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>
  <IntReg Name="ChunkBase"><Address>0x7FFFFFFFFFFFFFFF</Address><Length>8</Length><AccessMode>RO</AccessMode><pPort>P1</pPort><Cachable>NoCache</Cachable><Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>
  <IntReg Name="ChunkW"><Address>1</Address><Length>2</Length><AccessMode>RW</AccessMode><pPort>P0</pPort><Cachable>NoCache</Cachable><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>
  <StringReg Name="ChunkS"><Address>0</Address><Length>16</Length><AccessMode>RO</AccessMode><pPort>P3</pPort><Cachable>NoCache</Cachable></StringReg>
  <FloatReg Name="ChunkF"><Address>0</Address><Length>4</Length><AccessMode>RO</AccessMode><pPort>P1</pPort><Endianess>BigEndian</Endianess></FloatReg>
</RegisterDescription>
)";

struct Fixture_t
{
    Fixture_t()
    {
        map._LoadXMLFromString(kDescription);
        map._GetNodes(nodes);
    }
    CNodeMapRef map;
    NodeList_t nodes;
};

void ReadEverything(Fixture_t& fixture)
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
    try
    {
        CIntegerPtr(fixture.map._GetNode("ChunkW"))->SetValue(0x1234);
    }
    catch (const GenICam::GenericException&)
    {
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static Fixture_t fixture;
    if (size < 1)
        return 0;
    const uint8_t selector = data[0];
    // An exact-size heap copy, so that a read past the payload is a sanitizer finding.
    std::vector<uint8_t> payload(data + 1, data + size);
    uint8_t* pBuffer = payload.empty() ? nullptr : payload.data();
    const int64_t length = static_cast<int64_t>(payload.size());
    const int64_t cacheLimit = (selector & 8) ? 0 : -1;

    std::unique_ptr<CChunkAdapter> pAdapter;
    switch (selector % 3)
    {
    case 0: pAdapter.reset(new CChunkAdapterGEV(fixture.map._Ptr, cacheLimit)); break;
    case 1: pAdapter.reset(new CChunkAdapterU3V(fixture.map._Ptr, cacheLimit)); break;
    default: pAdapter.reset(new CChunkAdapterGeneric(fixture.map._Ptr, cacheLimit)); break;
    }

    try
    {
        if (selector % 3 == 2)
        {
            // Entries from the first bytes, offsets and lengths around the buffer's size.
            const size_t count = payload.empty() ? 0 : payload[0] % 8;
            std::vector<SingleChunkData_t> list;
            for (size_t i = 0; i < count && 1 + 5 * (i + 1) <= payload.size(); ++i)
            {
                const uint8_t* pEntry = payload.data() + 1 + 5 * i;
                const uint64_t ids[] = {0, 1, 2, 0xA1B2};
                list.push_back({ids[pEntry[0] % 4], static_cast<ptrdiff_t>(static_cast<int8_t>(pEntry[1])) * 3,
                                static_cast<size_t>(pEntry[2] | ((pEntry[3] & 1) ? ~size_t(0xFF) : 0))});
            }
            static_cast<CChunkAdapterGeneric*>(pAdapter.get())
                ->AttachBuffer(pBuffer, length, list.data(), static_cast<int64_t>(list.size()));
        }
        else
        {
            const bool valid = pAdapter->CheckBufferLayout(pBuffer, length);
            AttachStatistics_t statistics{};
            try
            {
                pAdapter->AttachBuffer(pBuffer, length, &statistics);
                if (!valid)
                    __builtin_trap(); // the check and the attach must agree
            }
            catch (const GenICam::RuntimeException&)
            {
                if (valid)
                    __builtin_trap();
            }
        }
    }
    catch (const GenICam::GenericException&)
    {
    }
    ReadEverything(fixture);
    if (selector & 4)
    {
        std::vector<uint8_t> moved = payload;
        pAdapter->UpdateBuffer(moved.empty() ? nullptr : moved.data());
        ReadEverything(fixture);
        pAdapter->DetachBuffer();
    }
    else
        pAdapter->DetachBuffer();
    ReadEverything(fixture); // copies only
    pAdapter->ClearCaches();
    return 0;
}
