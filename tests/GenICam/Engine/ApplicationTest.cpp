// A GenApi application as people write them, compiled against this library's public headers only
// and run on a hand-written camera: its own port, the feature tree walked from Root, every value
// interface read and written through the smart pointers, callbacks on a member function, and an
// enumeration bound to a C++ enum with CEnumerationTRef.

#include <cstring>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <GenApi/GenApi.h>
#include <GenApi/PortImpl.h>

using namespace GENICAM_NAMESPACE;
using namespace GENAPI_NAMESPACE;

namespace
{
const char* const kCamera = R"(<?xml version="1.0" encoding="utf-8"?>
<RegisterDescription ModelName="AppCam" VendorName="Qv" ToolTip="Application test camera"
    StandardNameSpace="GEV" SchemaMajorVersion="1" SchemaMinorVersion="1" SchemaSubMinorVersion="0"
    MajorVersion="1" MinorVersion="0" SubMinorVersion="0"
    ProductGuid="11111111-2222-3333-4444-555555555555" VersionGuid="66666666-7777-8888-9999-000000000000"
    xmlns="http://www.genicam.org/GenApi/Version_1_1">
  <Category Name="Root"><pFeature>DeviceControl</pFeature><pFeature>ImageFormatControl</pFeature>
    <pFeature>AcquisitionControl</pFeature></Category>
  <Category Name="DeviceControl"><pFeature>DeviceModelName</pFeature><pFeature>DeviceUserID</pFeature></Category>
  <Category Name="ImageFormatControl"><pFeature>Width</pFeature><pFeature>PixelFormat</pFeature>
    <pFeature>ReverseX</pFeature></Category>
  <Category Name="AcquisitionControl"><pFeature>ExposureTime</pFeature><pFeature>AcquisitionStart</pFeature></Category>
  <StringReg Name="DeviceModelName"><Address>0x00</Address><Length>16</Length><AccessMode>RO</AccessMode><pPort>Device</pPort></StringReg>
  <StringReg Name="DeviceUserID"><Address>0x10</Address><Length>16</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></StringReg>
  <Integer Name="Width"><pValue>WidthReg</pValue><Min>16</Min><Max>1024</Max><Inc>16</Inc></Integer>
  <IntReg Name="WidthReg"><Address>0x20</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
    <Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>
  <Enumeration Name="PixelFormat">
    <EnumEntry Name="Mono8"><Value>0x01080001</Value></EnumEntry>
    <EnumEntry Name="Mono12"><Value>0x01100005</Value></EnumEntry>
    <EnumEntry Name="Mono16"><Value>0x01100007</Value></EnumEntry>
    <pValue>PixelFormatReg</pValue></Enumeration>
  <IntReg Name="PixelFormatReg"><Address>0x24</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
    <Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>
  <Boolean Name="ReverseX"><pValue>ReverseXReg</pValue></Boolean>
  <IntReg Name="ReverseXReg"><Address>0x28</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
    <Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>
  <Float Name="ExposureTime"><pValue>ExposureTimeReg</pValue><Min>10</Min><Max>1000000</Max><Unit>us</Unit></Float>
  <FloatReg Name="ExposureTimeReg"><Address>0x30</Address><Length>8</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
    <Endianess>BigEndian</Endianess></FloatReg>
  <Command Name="AcquisitionStart"><pValue>AcquisitionStartReg</pValue><CommandValue>1</CommandValue></Command>
  <IntReg Name="AcquisitionStartReg"><Address>0x38</Address><Length>4</Length><AccessMode>WO</AccessMode><pPort>Device</pPort>
    <Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>
  <Port Name="Device"/>
</RegisterDescription>
)";

// The application's transport: a register space in memory.
class CCameraPort : public CPortImpl
{
public:
    CCameraPort() : m_registers(0x40, 0)
    {
        std::memcpy(&m_registers[0x00], "AppCam 3000", 11);
        const uint8_t width[] = {0, 0, 0x02, 0x80};           // 640
        const uint8_t mono8[] = {0x01, 0x08, 0x00, 0x01};     // Mono8
        const uint8_t exposure[] = {0x40, 0x8F, 0x40, 0, 0, 0, 0, 0}; // 1000.0
        std::memcpy(&m_registers[0x20], width, 4);
        std::memcpy(&m_registers[0x24], mono8, 4);
        std::memcpy(&m_registers[0x30], exposure, 8);
    }
    EAccessMode GetAccessMode() const override { return RW; }
    void Read(void* pBuffer, int64_t address, int64_t length) override
    {
        std::memcpy(pBuffer, &m_registers[static_cast<size_t>(address)], static_cast<size_t>(length));
    }
    void Write(const void* pBuffer, int64_t address, int64_t length) override
    {
        std::memcpy(&m_registers[static_cast<size_t>(address)], pBuffer, static_cast<size_t>(length));
        ++m_writes[address];
    }
    uint32_t Register32(size_t address) const
    {
        return (uint32_t(m_registers[address]) << 24) | (uint32_t(m_registers[address + 1]) << 16) |
               (uint32_t(m_registers[address + 2]) << 8) | m_registers[address + 3];
    }
    std::vector<uint8_t> m_registers;
    std::map<int64_t, int> m_writes;
};

class CWidthWatcher
{
public:
    void OnChanged(INode* pNode)
    {
        ++m_calls;
        m_lastNode = pNode->GetName();
    }
    int m_calls = 0;
    gcstring m_lastNode;
};

void OnAnyChange(INode* /*pNode*/);
int g_functionCalls = 0;
void OnAnyChange(INode* /*pNode*/)
{
    ++g_functionCalls;
}

// Lists "name = value" for every feature below a category, depth-first, as a property grid would.
void ListFeatures(CCategoryPtr ptrCategory, const gcstring& indent, gcstring_vector& lines)
{
    FeatureList_t features;
    ptrCategory->GetFeatures(features);
    for (FeatureList_t::iterator it = features.begin(); it != features.end(); ++it)
    {
        CNodePtr ptrNode = (*it)->GetNode();
        if (ptrNode->GetPrincipalInterfaceType() == intfICategory)
        {
            lines.push_back(indent + ptrNode->GetName() + ":");
            ListFeatures(CCategoryPtr(ptrNode), indent + "  ", lines);
            continue;
        }
        CValuePtr ptrValue = ptrNode;
        gcstring line = indent + ptrNode->GetName() + " = ";
        if (IsReadable(ptrValue))
            line += ptrValue->ToString();
        else
            line += "(" + EAccessModeClass::ToString(ptrNode->GetAccessMode()) + ")";
        lines.push_back(line);
    }
}

enum EPixelFormatEnums
{
    PixelFormat_Mono8,
    PixelFormat_Mono12,
    PixelFormat_Mono16,
    PixelFormat_RGB8 // the application knows it; this camera has no such entry
};
} // namespace

TEST(Application, TypicalGenApiCodeCompilesAndRuns)
{
    CNodeMapRef nodeMap;
    nodeMap._LoadXMLFromString(kCamera);
    CCameraPort port;
    ASSERT_TRUE(nodeMap._Connect(&port, "Device"));

    // Device information through the node map.
    CDeviceInfoPtr ptrInfo(nodeMap._Ptr);
    EXPECT_EQ(ptrInfo->GetModelName(), "AppCam");
    EXPECT_EQ(ptrInfo->GetStandardNameSpace(), GEV);

    // Walk the tree from Root.
    gcstring_vector lines;
    ListFeatures(nodeMap._GetNode("Root"), "", lines);
    const gcstring_vector expected = {"DeviceControl:",
                                      "  DeviceModelName = AppCam 3000",
                                      "  DeviceUserID = ",
                                      "ImageFormatControl:",
                                      "  Width = 640",
                                      "  PixelFormat = Mono8",
                                      "  ReverseX = 0",
                                      "AcquisitionControl:",
                                      "  ExposureTime = 1000",
                                      "  AcquisitionStart = (WO)"};
    EXPECT_EQ(lines, expected);

    // Integer: range, increment, verified writes.
    CIntegerPtr ptrWidth = nodeMap._GetNode("Width");
    ASSERT_TRUE(ptrWidth.IsValid());
    EXPECT_TRUE(IsReadable(ptrWidth) && IsWritable(ptrWidth));
    EXPECT_EQ(ptrWidth->GetMin(), 16);
    EXPECT_EQ(ptrWidth->GetMax(), 1024);
    EXPECT_EQ(ptrWidth->GetInc(), 16);
    ptrWidth->SetValue(800);
    EXPECT_EQ(port.Register32(0x20), 800u);
    *ptrWidth = 320;
    EXPECT_EQ(ptrWidth->GetValue(), 320);
    EXPECT_EQ((*ptrWidth)(), 320);
    EXPECT_THROW(ptrWidth->SetValue(2048), OutOfRangeException);
    EXPECT_THROW(ptrWidth->SetValue(321), OutOfRangeException);

    // Float.
    CFloatPtr ptrExposure = nodeMap._GetNode("ExposureTime");
    EXPECT_EQ(ptrExposure->GetUnit(), "us");
    ptrExposure->SetValue(2500.5);
    EXPECT_DOUBLE_EQ(ptrExposure->GetValue(), 2500.5);
    EXPECT_THROW(ptrExposure->SetValue(1.0), OutOfRangeException);

    // Enumeration through the generic pointer.
    CEnumerationPtr ptrPixelFormat = nodeMap._GetNode("PixelFormat");
    StringList_t symbolics;
    ptrPixelFormat->GetSymbolics(symbolics);
    EXPECT_EQ(symbolics.size(), 3u);
    ptrPixelFormat->FromString("Mono12");
    EXPECT_EQ(port.Register32(0x24), 0x01100005u);
    CEnumEntryPtr ptrMono16 = ptrPixelFormat->GetEntryByName("Mono16");
    ptrPixelFormat->SetIntValue(ptrMono16->GetValue());
    EXPECT_EQ(ptrPixelFormat->ToString(), "Mono16");
    EXPECT_EQ(ptrPixelFormat->GetCurrentEntry()->GetSymbolic(), "Mono16");

    // Boolean and String.
    CBooleanPtr ptrReverseX = nodeMap._GetNode("ReverseX");
    ptrReverseX->SetValue(true);
    EXPECT_TRUE(ptrReverseX->GetValue());
    EXPECT_EQ(port.Register32(0x28), 1u);
    CStringPtr ptrUserId = nodeMap._GetNode("DeviceUserID");
    ptrUserId->SetValue("left camera");
    EXPECT_EQ(ptrUserId->GetValue(), "left camera");
    EXPECT_EQ(ptrUserId->GetMaxLength(), 16);
    CStringPtr ptrModel = nodeMap._GetNode("DeviceModelName");
    EXPECT_FALSE(IsWritable(ptrModel));
    EXPECT_THROW(ptrModel->SetValue("x"), AccessException);

    // Command on a write-only register.
    CCommandPtr ptrStart = nodeMap._GetNode("AcquisitionStart");
    EXPECT_FALSE(IsReadable(ptrStart));
    EXPECT_TRUE(IsWritable(ptrStart));
    ptrStart->Execute();
    EXPECT_EQ(port.Register32(0x38), 1u);
    EXPECT_TRUE(ptrStart->IsDone());

    // Pointers to absent nodes or to nodes of another interface.
    CIntegerPtr ptrNothing = nodeMap._GetNode("NoSuchFeature");
    EXPECT_FALSE(ptrNothing.IsValid());
    EXPECT_FALSE(IsReadable(ptrNothing));
    CIntegerPtr ptrNotAnInteger = nodeMap._GetNode("ExposureTime");
    EXPECT_FALSE(ptrNotAnInteger.IsValid());
    EXPECT_THROW(ptrNotAnInteger->GetValue(), LogicalErrorException);

    // Callbacks: a member function and a plain function.
    CWidthWatcher watcher;
    CallbackHandleType hMember = Register(ptrWidth->GetNode(), watcher, &CWidthWatcher::OnChanged);
    CallbackHandleType hFunction = Register(ptrWidth->GetNode(), &OnAnyChange, cbPostOutsideLock);
    g_functionCalls = 0;
    ptrWidth->SetValue(480);
    EXPECT_EQ(watcher.m_calls, 1);
    EXPECT_EQ(watcher.m_lastNode, "Width");
    EXPECT_EQ(g_functionCalls, 1);
    Deregister(hMember);
    Deregister(hFunction);
    ptrWidth->SetValue(496);
    EXPECT_EQ(watcher.m_calls, 1);
    EXPECT_EQ(g_functionCalls, 1);

    // The enumeration bound to a C++ enum, as generated parameter classes do it.
    CEnumerationTRef<EPixelFormatEnums> PixelFormat;
    EXPECT_EQ(PixelFormat.GetAccessMode(), NI);
    EXPECT_FALSE(IsReadable(PixelFormat));
    PixelFormat.SetReference(nodeMap._GetNode("PixelFormat"));
    PixelFormat.SetNumEnums(4);
    PixelFormat.SetEnumReference(PixelFormat_Mono8, "Mono8");
    PixelFormat.SetEnumReference(PixelFormat_Mono12, "Mono12");
    PixelFormat.SetEnumReference(PixelFormat_Mono16, "Mono16");
    PixelFormat.SetEnumReference(PixelFormat_RGB8, "RGB8");
    EXPECT_TRUE(IsWritable(PixelFormat));
    EXPECT_EQ(PixelFormat.GetValue(), PixelFormat_Mono16);
    PixelFormat = PixelFormat_Mono8;
    EXPECT_EQ(port.Register32(0x24), 0x01080001u);
    EXPECT_EQ(PixelFormat(), PixelFormat_Mono8);
    PixelFormat.SetValue(PixelFormat_Mono12);
    EXPECT_EQ(*PixelFormat, "Mono12");
    EXPECT_EQ(PixelFormat.GetEntry(PixelFormat_Mono16)->GetSymbolic(), "Mono16");
    EXPECT_EQ(PixelFormat.GetEntry(PixelFormat_RGB8), nullptr);
    EXPECT_THROW(PixelFormat.SetValue(PixelFormat_RGB8), AccessException);
    PixelFormat = "Mono16";
    EXPECT_EQ(PixelFormat.GetValue(), PixelFormat_Mono16);
    IEnumerationT<EPixelFormatEnums>& generic = PixelFormat;
    EXPECT_EQ(generic.GetIntValue(), 0x01100007);
    CEnumerationTRef<EPixelFormatEnums> unbound;
    EXPECT_THROW(unbound.GetValue(), AccessException);

    // The invalidation an application triggers after the device changed behind the node map.
    const uint8_t width1024[] = {0, 0, 0x04, 0x00};
    std::memcpy(&port.m_registers[0x20], width1024, 4);
    EXPECT_EQ(ptrWidth->GetValue(), 496) << "cached";
    port.InvalidateNode();
    EXPECT_EQ(ptrWidth->GetValue(), 1024);
}

TEST(Application, BaseUtilities)
{
    setenv("QV_APPLICATION_TEST", "camera files", 1);
    gcstring value;
    EXPECT_TRUE(GetValueOfEnvironmentVariable("QV_APPLICATION_TEST", value));
    EXPECT_EQ(value, "camera files");
    EXPECT_EQ(GetValueOfEnvironmentVariable("QV_APPLICATION_TEST"), "camera files");
    EXPECT_TRUE(DoesEnvironmentVariableExist("QV_APPLICATION_TEST"));
    unsetenv("QV_APPLICATION_TEST_ABSENT");
    EXPECT_FALSE(GetValueOfEnvironmentVariable("QV_APPLICATION_TEST_ABSENT", value));
    EXPECT_EQ(value, "camera files");
    EXPECT_FALSE(DoesEnvironmentVariableExist("QV_APPLICATION_TEST_ABSENT"));
    EXPECT_THROW(GetValueOfEnvironmentVariable("QV_APPLICATION_TEST_ABSENT"), RuntimeException);

    gcstring path = "$(QV_APPLICATION_TEST)/$(QV_APPLICATION_TEST_ABSENT)x.xml";
    ReplaceEnvironmentVariables(path);
    EXPECT_EQ(path, "camera files/x.xml");
    path = "$(QV_APPLICATION_TEST) $(unclosed";
    ReplaceEnvironmentVariables(path, true);
    EXPECT_EQ(path, "camera%20files%20$(unclosed");

    EXPECT_EQ(UrlEncode("a b/ü~"), "a%20b%2F%C3%BC~");
    EXPECT_EQ(UrlDecode("a%20b%2F%C3%BC~%zz%4"), "a b/ü~%zz%4");

    gcstring_vector tokens;
    EXPECT_EQ(Tokenize("  Width,Height  OffsetX ", tokens, ", "), 3u);
    EXPECT_EQ(tokens, (gcstring_vector{"Width", "Height", "OffsetX"}));
    EXPECT_EQ(Tokenize("", tokens), 0u);
    EXPECT_STRNE(PLATFORM_NAME, "");
}

// A stacked port is an IPort too: connected the ordinary way, it serves single reads and writes.
TEST(Application, StackedPortConnectsAsAPlainPort)
{
    class CStackedPort : public CCameraPort, public IPortStacked
    {
    public:
        using CCameraPort::Read;
        using CCameraPort::Write;
        EAccessMode GetAccessMode() const override { return RW; }
        void Read(PORT_REGISTER_STACK_ENTRY* pEntries, size_t numEntries) override
        {
            for (size_t i = 0; i < numEntries; ++i)
                Read(pEntries[i].pBuffer, static_cast<int64_t>(pEntries[i].Address), static_cast<int64_t>(pEntries[i].Size));
        }
        void Write(PORT_REGISTER_STACK_ENTRY* pEntries, size_t numEntries) override
        {
            for (size_t i = 0; i < numEntries; ++i)
                Write(pEntries[i].pBuffer, static_cast<int64_t>(pEntries[i].Address), static_cast<int64_t>(pEntries[i].Size));
        }
    } port;
    CNodeMapRef nodeMap;
    nodeMap._LoadXMLFromString(kCamera);
    ASSERT_TRUE(nodeMap._Connect(static_cast<IPortStacked*>(&port), "Device"));
    EXPECT_EQ(CIntegerPtr(nodeMap._GetNode("Width"))->GetValue(), 640);
    uint32_t values[2] = {};
    PORT_REGISTER_STACK_ENTRY entries[2] = {{0x20, &values[0], 4}, {0x24, &values[1], 4}};
    static_cast<IPortStacked&>(port).Read(entries, 2);
    EXPECT_EQ(values[0], 0x80020000u); // bytes 00 00 02 80 read on a little-endian host
}
