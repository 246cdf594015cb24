// Fuzz target for the GenApi feature bag: the persistence text reader (operator>>), then
// LoadFromBag of what it read into a node map with selectors (the "{...}" parsing, retries and
// the verify pass), and the writer/reader round trip.
//
// Input: one flag byte (bit 0: verify), then the persistence text.

#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>

#include <GenApi/GenApi.h>
#include <GenApi/MemoryPort.h>
#include <GenApi/Persistence.h>

using namespace GenApi;

namespace
{
const char* const kDescription = R"(<?xml version="1.0" encoding="utf-8"?>
<RegisterDescription ModelName="Fuzz" VendorName="Qv" ToolTip="bag fuzz" StandardNameSpace="None"
  SchemaMajorVersion="1" SchemaMinorVersion="1" SchemaSubMinorVersion="0" MajorVersion="1" MinorVersion="0"
  SubMinorVersion="0" ProductGuid="0" VersionGuid="0" xmlns="http://www.genicam.org/GenApi/Version_1_1">
  <Category Name="Root" NameSpace="Standard">
    <pFeature>Width</pFeature><pFeature>Sel</pFeature><pFeature>Gain</pFeature><pFeature>Index</pFeature>
    <pFeature>Lut</pFeature><pFeature>Name</pFeature><pFeature>Exposure</pFeature><pFeature>Flag</pFeature>
    <pFeature>Start</pFeature>
  </Category>
  <Integer Name="Width"><Streamable>Yes</Streamable><pValue>WidthReg</pValue><Min>16</Min><Max>4096</Max><Inc>16</Inc></Integer>
  <IntReg Name="WidthReg"><Address>0x100</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>
  <Enumeration Name="Sel"><Streamable>Yes</Streamable>
    <EnumEntry Name="A"><Value>0</Value></EnumEntry><EnumEntry Name="B"><Value>1</Value></EnumEntry>
    <pValue>SelReg</pValue><pSelected>Gain</pSelected><pSelected>Lut</pSelected></Enumeration>
  <IntReg Name="SelReg"><Address>0x200</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>
  <Integer Name="Gain"><Streamable>Yes</Streamable><pValue>GainReg</pValue><Min>0</Min><Max>100</Max></Integer>
  <IntReg Name="GainReg"><pIndex Offset="4">SelReg</pIndex><Address>0x210</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>
  <Integer Name="Index"><Streamable>Yes</Streamable><pValue>IndexReg</pValue><Min>0</Min><Max>3</Max><pSelected>Lut</pSelected></Integer>
  <IntReg Name="IndexReg"><Address>0x300</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>
  <Integer Name="Lut"><Streamable>Yes</Streamable><pValue>LutReg</pValue><Min>0</Min><Max>4095</Max></Integer>
  <IntReg Name="LutReg"><pIndex Offset="4">IndexReg</pIndex><pIndex Offset="16">SelReg</pIndex><Address>0x400</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>
  <StringReg Name="Name"><Streamable>Yes</Streamable><Address>0x500</Address><Length>16</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></StringReg>
  <Float Name="Exposure"><Streamable>Yes</Streamable><pValue>ExposureReg</pValue><Min>10</Min><Max>1000000</Max></Float>
  <FloatReg Name="ExposureReg"><Address>0x510</Address><Length>8</Length><AccessMode>RW</AccessMode><pPort>Device</pPort><Endianess>LittleEndian</Endianess></FloatReg>
  <Boolean Name="Flag"><Streamable>Yes</Streamable><pValue>FlagReg</pValue></Boolean>
  <IntReg Name="FlagReg"><Address>0x520</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>
  <Command Name="Start"><pValue>StartReg</pValue><CommandValue>1</CommandValue></Command>
  <IntReg Name="StartReg"><Address>0x600</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>
  <Port Name="Device"/>
</RegisterDescription>
)";

struct Fixture_t
{
    Fixture_t()
    {
        map._LoadXMLFromString(kDescription);
        map._Connect(&port, "Device");
    }
    CMemoryPort port;
    CNodeMapRef map;
};
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static Fixture_t fixture;
    if (size < 1)
        return 0;
    const bool verify = (data[0] & 1) != 0;
    std::istringstream text(std::string(reinterpret_cast<const char*>(data + 1), size - 1));
    CFeatureBag bag;
    try
    {
        text >> bag;
    }
    catch (const GenICam::GenericException&)
    {
        return 0;
    }
    // What the writer writes, the reader reads back unchanged.
    std::istringstream written(static_cast<std::string>(bag.ToString()));
    CFeatureBag reread;
    written >> reread;
    if (!(reread == bag))
        __builtin_trap();

    GenICam::gcstring_vector errors;
    bag.LoadFromBag(fixture.map._Ptr, verify, &errors);
    CFeatureBag stored;
    stored.StoreToBag(fixture.map._Ptr, 64);
    return 0;
}
