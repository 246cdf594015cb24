// Conformance of libqvgentl.cti's module tree through raw GenTL calls: library state, handles,
// enumeration, information commands with their types, ports and descriptions, events.

#include <atomic>
#include <chrono>
#include <cstring>
#include <map>
#include <thread>

#include <QvGenTL/VirtualCamera.h>

#include "tests/producers/ProducerFixture.h"

using namespace GenTL;
using namespace QvGenTLTest;

namespace {

class ProducerModule : public ProducerTest
{
};

TEST(ProducerLibrary, ExportsEveryEntryPointAndRefusesCallsBeforeInit)
{
    const std::string path = FindQvGenTL();
    ASSERT_FALSE(path.empty()) << "libqvgentl.cti not found on GENICAM_GENTL64_PATH";
    auto gentl = CGenTLProducer::Load(path);
    ASSERT_NE(gentl, nullptr);
    int missing = 0;
#define QV_GENTL_ENTRY(name) \
    if (gentl->name == nullptr) \
    { \
        ADD_FAILURE() << #name " is not exported"; \
        ++missing; \
    }
#include "tests/producers/GenTLEntryPoints.inc"
#undef QV_GENTL_ENTRY
    ASSERT_EQ(missing, 0);

    // GCGetInfo answers before GCInitLib; the rest refuses.
    InfoAnswer_t vendor = QueryInfo([&](INFO_DATATYPE* t, void* d, size_t* s) {
        return gentl->GCGetInfo(TL_INFO_VENDOR, t, d, s);
    });
    EXPECT_EQ(vendor.result, GC_ERR_SUCCESS);
    EXPECT_EQ(vendor.Text(), "QvApi");
    TL_HANDLE system = nullptr;
    EXPECT_EQ(gentl->TLOpen(&system), GC_ERR_NOT_INITIALIZED);
    EXPECT_EQ(gentl->GCCloseLib(), GC_ERR_NOT_INITIALIZED);

    ASSERT_EQ(gentl->GCInitLib(), GC_ERR_SUCCESS);
    EXPECT_EQ(gentl->GCInitLib(), GC_ERR_RESOURCE_IN_USE);
    ASSERT_EQ(gentl->TLOpen(&system), GC_ERR_SUCCESS);
    TL_HANDLE second = nullptr;
    EXPECT_EQ(gentl->TLOpen(&second), GC_ERR_RESOURCE_IN_USE);
    // GCCloseLib closes what is still open.
    EXPECT_EQ(gentl->GCCloseLib(), GC_ERR_SUCCESS);
    uint32_t count = 0;
    EXPECT_EQ(gentl->TLGetNumInterfaces(system, &count), GC_ERR_NOT_INITIALIZED);
}

TEST_F(ProducerModule, ListsOneInterfaceOfEachTypeWithOneCameraByDefault)
{
    ASSERT_GC_OK(m_gentl->TLOpen(&m_system));
    uint32_t count = 99;
    ASSERT_GC_OK(m_gentl->TLGetNumInterfaces(m_system, &count));
    EXPECT_EQ(count, 0u) << "the list is empty until the first update";
    bool8_t changed = false;
    ASSERT_GC_OK(m_gentl->TLUpdateInterfaceList(m_system, &changed, 100));
    EXPECT_TRUE(changed);
    ASSERT_GC_OK(m_gentl->TLUpdateInterfaceList(m_system, &changed, 100));
    EXPECT_FALSE(changed);
    ASSERT_GC_OK(m_gentl->TLGetNumInterfaces(m_system, &count));
    ASSERT_EQ(count, 3u);
    std::map<std::string, int> types;
    for (uint32_t i = 0; i < count; ++i)
    {
        const std::string id = QueryText([&](char* t, size_t* s) { return m_gentl->TLGetInterfaceID(m_system, i, t, s); });
        ++types[QueryInfo([&](INFO_DATATYPE* t, void* d, size_t* s) {
                    return m_gentl->TLGetInterfaceInfo(m_system, id.c_str(), INTERFACE_INFO_TLTYPE, t, d, s);
                }).Text()];
    }
    EXPECT_EQ(types, (std::map<std::string, int>{{"CXP", 1}, {"GEV", 1}, {"U3V", 1}}));
    char id[64];
    size_t size = sizeof(id);
    EXPECT_EQ(m_gentl->TLGetInterfaceID(m_system, 3, id, &size), GC_ERR_INVALID_INDEX);

    for (const char* type : {"U3V", "GEV", "CXP"})
    {
        IF_HANDLE iface = OpenInterface(type);
        uint32_t devices = 0;
        ASSERT_GC_OK(m_gentl->IFGetNumDevices(iface, &devices));
        EXPECT_EQ(devices, 1u) << type;
        TL_HANDLE parent = nullptr;
        ASSERT_GC_OK(m_gentl->IFGetParentTL(iface, &parent));
        EXPECT_EQ(parent, m_system);
    }
}

TEST_F(ProducerModule, QvgentlVirtualSetsInterfacesCamerasAndSensorSizes)
{
    OpenSystem(" u3v:2 , GEV:0, CXP:1@640x480 ,U3V:1");
    uint32_t count = 0;
    ASSERT_GC_OK(m_gentl->TLGetNumInterfaces(m_system, &count));
    ASSERT_EQ(count, 4u);
    std::vector<uint32_t> cameras;
    std::vector<IF_HANDLE> interfaces;
    for (uint32_t i = 0; i < count; ++i)
    {
        const std::string id = QueryText([&](char* t, size_t* s) { return m_gentl->TLGetInterfaceID(m_system, i, t, s); });
        IF_HANDLE iface = nullptr;
        ASSERT_GC_OK(m_gentl->TLOpenInterface(m_system, id.c_str(), &iface));
        EXPECT_EQ(m_gentl->TLOpenInterface(m_system, id.c_str(), &iface), GC_ERR_RESOURCE_IN_USE);
        bool8_t changed = false;
        ASSERT_GC_OK(m_gentl->IFUpdateDeviceList(iface, &changed, 100));
        uint32_t devices = 0;
        ASSERT_GC_OK(m_gentl->IFGetNumDevices(iface, &devices));
        cameras.push_back(devices);
        interfaces.push_back(iface);
        EXPECT_EQ(changed, devices != 0);
    }
    EXPECT_EQ(cameras, (std::vector<uint32_t>{2, 0, 1, 1}));

    // The CXP camera has the sensor it was given, the others the default one.
    m_device = OpenDevice(interfaces[2]);
    ASSERT_GC_OK(m_gentl->DevGetPort(m_device, &m_remote));
    auto camera = Features(m_remote);
    EXPECT_EQ(camera->GetInt("SensorWidth"), 640);
    EXPECT_EQ(camera->GetInt("HeightMax"), 480);
    EXPECT_EQ(camera->GetInt("Width"), 640);
}

TEST_F(ProducerModule, BadQvgentlVirtualFailsTLOpenWithAnExplanation)
{
    for (const char* config : {"USB:1", "U3V", "U3V:17", "GEV:1@63x480", "CXP:1@640x481", "U3V:1,,GEV:1"})
    {
        setenv("QVGENTL_VIRTUAL", config, 1);
        TL_HANDLE system = nullptr;
        EXPECT_EQ(m_gentl->TLOpen(&system), GC_ERR_INVALID_PARAMETER) << config;
        EXPECT_NE(ErrorText(*m_gentl).find("QVGENTL_VIRTUAL"), std::string::npos) << ErrorText(*m_gentl);
    }
    setenv("QVGENTL_VIRTUAL", "", 1);
    ASSERT_GC_OK(m_gentl->TLOpen(&m_system));
    ASSERT_GC_OK(m_gentl->TLUpdateInterfaceList(m_system, nullptr, 0));
    uint32_t count = 9;
    ASSERT_GC_OK(m_gentl->TLGetNumInterfaces(m_system, &count));
    EXPECT_EQ(count, 0u) << "an empty QVGENTL_VIRTUAL means no virtual interfaces";
}

TEST_F(ProducerModule, RejectsNullStaleForeignAndWrongKindHandles)
{
    OpenSystem();
    OpenCamera("GEV");
    int local = 0;
    void* foreign = &local;
    for (void* handle : {static_cast<void*>(nullptr), foreign})
    {
        uint32_t count = 0;
        EXPECT_EQ(m_gentl->TLGetNumInterfaces(handle, &count), GC_ERR_INVALID_HANDLE);
        EXPECT_EQ(m_gentl->IFGetNumDevices(handle, &count), GC_ERR_INVALID_HANDLE);
        EXPECT_EQ(m_gentl->DevGetNumDataStreams(handle, &count), GC_ERR_INVALID_HANDLE);
        EXPECT_EQ(m_gentl->DSQueueBuffer(m_stream, handle), GC_ERR_INVALID_HANDLE);
        uint8_t byte;
        size_t size = 1;
        EXPECT_EQ(m_gentl->GCReadPort(handle, 0, &byte, &size), GC_ERR_INVALID_HANDLE);
        EXPECT_EQ(m_gentl->EventKill(handle), GC_ERR_INVALID_HANDLE);
    }
    // Handles of the wrong module.
    uint32_t count = 0;
    EXPECT_EQ(m_gentl->IFGetNumDevices(m_system, &count), GC_ERR_INVALID_HANDLE);
    EXPECT_EQ(m_gentl->DSStartAcquisition(m_device, ACQ_START_FLAGS_DEFAULT, 1), GC_ERR_INVALID_HANDLE);
    EVENT_HANDLE event = nullptr;
    EXPECT_EQ(m_gentl->GCRegisterEvent(m_remote, EVENT_ERROR, &event), GC_ERR_INVALID_HANDLE)
        << "the remote port is no event source";

    // Stale handles: everything below a closed device.
    BUFFER_HANDLE buffer = AnnounceAndQueue(1)[0];
    ASSERT_GC_OK(m_gentl->DevClose(m_device));
    EXPECT_EQ(m_gentl->DSGetBufferID(m_stream, 0, &buffer), GC_ERR_INVALID_HANDLE);
    uint8_t byte;
    size_t size = 1;
    EXPECT_EQ(m_gentl->GCReadPort(buffer, 0, &byte, &size), GC_ERR_INVALID_HANDLE);
    EXPECT_EQ(m_gentl->GCReadPort(m_remote, 0, &byte, &size), GC_ERR_INVALID_HANDLE);
    EXPECT_EQ(m_gentl->DevClose(m_device), GC_ERR_INVALID_HANDLE);
    // The device can be opened again.
    EXPECT_NE(OpenDevice(m_interface), nullptr);
}

/// Expected data type of each information command of one query function.
struct InfoRow_t
{
    int32_t command;
    INFO_DATATYPE type;
};

void CheckInfoTable(const std::vector<InfoRow_t>& rows,
                    const std::function<GC_ERROR(int32_t, INFO_DATATYPE*, void*, size_t*)>& query, const char* what)
{
    for (const InfoRow_t& row : rows)
    {
        SCOPED_TRACE(std::string(what) + " command " + std::to_string(row.command));
        InfoAnswer_t answer = QueryInfo([&](INFO_DATATYPE* t, void* d, size_t* s) { return query(row.command, t, d, s); });
        ASSERT_EQ(answer.result, GC_ERR_SUCCESS);
        EXPECT_EQ(answer.type, row.type);
        if (const size_t fixed = FixedSizeOf(row.type))
        {
            EXPECT_EQ(answer.bytes.size(), fixed);
        }
        if (row.type == INFO_DATATYPE_STRING)
        {
            ASSERT_FALSE(answer.bytes.empty());
            EXPECT_EQ(answer.bytes.back(), 0) << "strings include their NUL";
            EXPECT_EQ(std::strlen(reinterpret_cast<const char*>(answer.bytes.data())) + 1, answer.bytes.size());
            // A buffer one byte short is refused, and the size needed is reported.
            std::vector<uint8_t> shortBuffer(answer.bytes.size() - 1 + 1);
            size_t size = answer.bytes.size() - 1;
            INFO_DATATYPE type;
            EXPECT_EQ(query(row.command, &type, shortBuffer.data(), &size), GC_ERR_BUFFER_TOO_SMALL);
            EXPECT_EQ(size, answer.bytes.size());
        }
    }
    INFO_DATATYPE type;
    uint8_t buffer[8];
    EXPECT_EQ(query(rows.front().command, &type, buffer, nullptr), GC_ERR_INVALID_PARAMETER) << what;
    size_t size = sizeof(buffer);
    EXPECT_NE(query(999, &type, buffer, &size), GC_ERR_SUCCESS) << what << ": unknown command";
}

TEST_F(ProducerModule, EveryInformationCommandAnswersWithItsTypeInTwoPhases)
{
    OpenSystem();
    OpenCamera("U3V");
    const std::vector<BUFFER_HANDLE> buffers = AnnounceAndQueue(1);
    const INFO_DATATYPE S = INFO_DATATYPE_STRING, I32 = INFO_DATATYPE_INT32, U32 = INFO_DATATYPE_UINT32,
                        U64 = INFO_DATATYPE_UINT64, ST = INFO_DATATYPE_SIZET, B = INFO_DATATYPE_BOOL8,
                        P = INFO_DATATYPE_PTR;

    const std::vector<InfoRow_t> tl = {{TL_INFO_ID, S},          {TL_INFO_VENDOR, S},          {TL_INFO_MODEL, S},
                                       {TL_INFO_VERSION, S},     {TL_INFO_TLTYPE, S},          {TL_INFO_NAME, S},
                                       {TL_INFO_PATHNAME, S},    {TL_INFO_DISPLAYNAME, S},     {TL_INFO_CHAR_ENCODING, I32},
                                       {TL_INFO_GENTL_VER_MAJOR, U32}, {TL_INFO_GENTL_VER_MINOR, U32}};
    CheckInfoTable(tl, [&](int32_t c, INFO_DATATYPE* t, void* d, size_t* s) { return m_gentl->TLGetInfo(m_system, c, t, d, s); }, "TLGetInfo");
    CheckInfoTable(tl, [&](int32_t c, INFO_DATATYPE* t, void* d, size_t* s) { return m_gentl->GCGetInfo(c, t, d, s); }, "GCGetInfo");

    const std::vector<InfoRow_t> iface = {{INTERFACE_INFO_ID, S}, {INTERFACE_INFO_DISPLAYNAME, S}, {INTERFACE_INFO_TLTYPE, S}};
    CheckInfoTable(iface, [&](int32_t c, INFO_DATATYPE* t, void* d, size_t* s) { return m_gentl->IFGetInfo(m_interface, c, t, d, s); }, "IFGetInfo");

    const std::vector<InfoRow_t> device = {{DEVICE_INFO_ID, S},           {DEVICE_INFO_VENDOR, S},
                                           {DEVICE_INFO_MODEL, S},        {DEVICE_INFO_TLTYPE, S},
                                           {DEVICE_INFO_DISPLAYNAME, S},  {DEVICE_INFO_ACCESS_STATUS, I32},
                                           {DEVICE_INFO_USER_DEFINED_NAME, S}, {DEVICE_INFO_SERIAL_NUMBER, S},
                                           {DEVICE_INFO_VERSION, S},      {DEVICE_INFO_TIMESTAMP_FREQUENCY, U64}};
    CheckInfoTable(device, [&](int32_t c, INFO_DATATYPE* t, void* d, size_t* s) { return m_gentl->DevGetInfo(m_device, c, t, d, s); }, "DevGetInfo");
    const std::string deviceId = QueryText([&](char* t, size_t* s) { return m_gentl->IFGetDeviceID(m_interface, 0, t, s); });
    CheckInfoTable(device, [&](int32_t c, INFO_DATATYPE* t, void* d, size_t* s) {
        return m_gentl->IFGetDeviceInfo(m_interface, deviceId.c_str(), c, t, d, s);
    }, "IFGetDeviceInfo");

    const std::vector<InfoRow_t> stream = {{STREAM_INFO_ID, S},           {STREAM_INFO_NUM_DELIVERED, U64},
                                           {STREAM_INFO_NUM_UNDERRUN, U64}, {STREAM_INFO_NUM_ANNOUNCED, ST},
                                           {STREAM_INFO_NUM_QUEUED, ST},   {STREAM_INFO_NUM_AWAIT_DELIVERY, ST},
                                           {STREAM_INFO_NUM_STARTED, U64}, {STREAM_INFO_PAYLOAD_SIZE, ST},
                                           {STREAM_INFO_IS_GRABBING, B},   {STREAM_INFO_DEFINES_PAYLOADSIZE, B},
                                           {STREAM_INFO_TLTYPE, S},        {STREAM_INFO_NUM_CHUNKS_MAX, ST},
                                           {STREAM_INFO_BUF_ANNOUNCE_MIN, ST}, {STREAM_INFO_BUF_ALIGNMENT, ST}};
    CheckInfoTable(stream, [&](int32_t c, INFO_DATATYPE* t, void* d, size_t* s) { return m_gentl->DSGetInfo(m_stream, c, t, d, s); }, "DSGetInfo");

    const std::vector<InfoRow_t> buffer = {
        {BUFFER_INFO_BASE, P},         {BUFFER_INFO_SIZE, ST},          {BUFFER_INFO_USER_PTR, P},
        {BUFFER_INFO_TIMESTAMP, U64},  {BUFFER_INFO_NEW_DATA, B},       {BUFFER_INFO_IS_QUEUED, B},
        {BUFFER_INFO_IS_ACQUIRING, B}, {BUFFER_INFO_IS_INCOMPLETE, B},  {BUFFER_INFO_TLTYPE, S},
        {BUFFER_INFO_SIZE_FILLED, ST}, {BUFFER_INFO_WIDTH, ST},         {BUFFER_INFO_HEIGHT, ST},
        {BUFFER_INFO_XOFFSET, ST},     {BUFFER_INFO_YOFFSET, ST},       {BUFFER_INFO_XPADDING, ST},
        {BUFFER_INFO_YPADDING, ST},    {BUFFER_INFO_FRAMEID, U64},      {BUFFER_INFO_IMAGEPRESENT, B},
        {BUFFER_INFO_IMAGEOFFSET, ST}, {BUFFER_INFO_PAYLOADTYPE, ST},   {BUFFER_INFO_PIXELFORMAT, U64},
        {BUFFER_INFO_PIXELFORMAT_NAMESPACE, U64}, {BUFFER_INFO_DELIVERED_IMAGEHEIGHT, ST},
        {BUFFER_INFO_DELIVERED_CHUNKPAYLOADSIZE, ST}, {BUFFER_INFO_CHUNKLAYOUTID, U64},
        {BUFFER_INFO_PIXEL_ENDIANNESS, I32}, {BUFFER_INFO_DATA_SIZE, ST}, {BUFFER_INFO_TIMESTAMP_NS, U64},
        {BUFFER_INFO_DATA_LARGER_THAN_BUFFER, B}, {BUFFER_INFO_CONTAINS_CHUNKDATA, B}};
    CheckInfoTable(buffer, [&](int32_t c, INFO_DATATYPE* t, void* d, size_t* s) {
        return m_gentl->DSGetBufferInfo(m_stream, buffers[0], c, t, d, s);
    }, "DSGetBufferInfo");

    const std::vector<InfoRow_t> port = {{PORT_INFO_ID, S},           {PORT_INFO_VENDOR, S},       {PORT_INFO_MODEL, S},
                                         {PORT_INFO_TLTYPE, S},       {PORT_INFO_MODULE, S},       {PORT_INFO_LITTLE_ENDIAN, B},
                                         {PORT_INFO_BIG_ENDIAN, B},   {PORT_INFO_ACCESS_READ, B},  {PORT_INFO_ACCESS_WRITE, B},
                                         {PORT_INFO_ACCESS_NA, B},    {PORT_INFO_ACCESS_NI, B},    {PORT_INFO_VERSION, S},
                                         {PORT_INFO_PORTNAME, S}};
    const std::vector<InfoRow_t> url = {{URL_INFO_URL, S},                 {URL_INFO_SCHEMA_VER_MAJOR, I32},
                                        {URL_INFO_SCHEMA_VER_MINOR, I32},  {URL_INFO_FILE_VER_MAJOR, I32},
                                        {URL_INFO_FILE_VER_MINOR, I32},    {URL_INFO_FILE_VER_SUBMINOR, I32},
                                        {URL_INFO_FILE_SHA1_HASH, INFO_DATATYPE_BUFFER},
                                        {URL_INFO_FILE_REGISTER_ADDRESS, U64}, {URL_INFO_FILE_SIZE, U64},
                                        {URL_INFO_SCHEME, I32}};
    for (PORT_HANDLE handle : {m_system, m_interface, m_device, m_remote, m_stream, buffers[0]})
    {
        CheckInfoTable(port, [&](int32_t c, INFO_DATATYPE* t, void* d, size_t* s) { return m_gentl->GCGetPortInfo(handle, c, t, d, s); }, "GCGetPortInfo");
        CheckInfoTable(url, [&](int32_t c, INFO_DATATYPE* t, void* d, size_t* s) { return m_gentl->GCGetPortURLInfo(handle, 0, c, t, d, s); }, "GCGetPortURLInfo");
    }
}

TEST_F(ProducerModule, ModuleAndPortIdentitiesAgree)
{
    OpenSystem();
    OpenCamera("GEV");
    auto portText = [&](PORT_HANDLE port, PORT_INFO_CMD command) {
        return QueryInfo([&](INFO_DATATYPE* t, void* d, size_t* s) { return m_gentl->GCGetPortInfo(port, command, t, d, s); }).Text();
    };
    auto portBool = [&](PORT_HANDLE port, PORT_INFO_CMD command) {
        return QueryInfo([&](INFO_DATATYPE* t, void* d, size_t* s) { return m_gentl->GCGetPortInfo(port, command, t, d, s); }).As<uint8_t>() != 0;
    };
    const std::vector<BUFFER_HANDLE> buffers = AnnounceAndQueue(1);
    const std::vector<std::pair<PORT_HANDLE, std::pair<const char*, const char*>>> expected = {
        {m_system, {"TLSystem", "TLPort"}},     {m_interface, {"TLInterface", "InterfacePort"}},
        {m_device, {"TLDevice", "DevicePort"}}, {m_remote, {"Device", "Device"}},
        {m_stream, {"TLDataStream", "DataStreamPort"}}, {buffers[0], {"TLBuffer", "BufferPort"}}};
    for (const auto& [port, names] : expected)
    {
        EXPECT_EQ(portText(port, PORT_INFO_MODULE), names.first);
        EXPECT_EQ(portText(port, PORT_INFO_PORTNAME), names.second);
    }
    EXPECT_EQ(portText(m_system, PORT_INFO_TLTYPE), "Mixed");
    EXPECT_EQ(portText(m_remote, PORT_INFO_TLTYPE), "GEV");
    // GigE Vision cameras are big-endian, local modules little-endian.
    EXPECT_TRUE(portBool(m_remote, PORT_INFO_BIG_ENDIAN));
    EXPECT_FALSE(portBool(m_remote, PORT_INFO_LITTLE_ENDIAN));
    EXPECT_TRUE(portBool(m_device, PORT_INFO_LITTLE_ENDIAN));
    EXPECT_EQ(portText(m_device, PORT_INFO_ID), portText(m_remote, PORT_INFO_ID));

    DEV_HANDLE parentDevice = nullptr;
    ASSERT_GC_OK(m_gentl->DSGetParentDev(m_stream, &parentDevice));
    EXPECT_EQ(parentDevice, m_device);
    IF_HANDLE parentInterface = nullptr;
    ASSERT_GC_OK(m_gentl->DevGetParentIF(m_device, &parentInterface));
    EXPECT_EQ(parentInterface, m_interface);
}

/// Every module's description: its URL, bytes, XML, port name and references.
TEST_F(ProducerModule, EveryModuleServesAWellFormedDescriptionThroughItsPort)
{
    OpenSystem();
    for (const char* type : {"U3V", "GEV", "CXP"})
    {
        SCOPED_TRACE(type);
        OpenCamera(type);
        const std::vector<BUFFER_HANDLE> buffers = AnnounceAndQueue(1);
        for (PORT_HANDLE port : {m_system, m_interface, m_device, m_remote, m_stream, buffers[0]})
        {
            uint32_t urls = 0;
            ASSERT_GC_OK(m_gentl->GCGetNumPortURLs(port, &urls));
            ASSERT_GE(urls, 1u);
            const std::string url = QueryText([&](char* t, size_t* s) { return m_gentl->GCGetPortURL(port, t, s); });
            const std::string portName = QueryInfo([&](INFO_DATATYPE* t, void* d, size_t* s) {
                                             return m_gentl->GCGetPortInfo(port, PORT_INFO_PORTNAME, t, d, s);
                                         }).Text();
            SCOPED_TRACE(url);
            auto features = Features(port);
            ASSERT_TRUE(features->Ok()) << features->ParseError();
            EXPECT_EQ(features->Kind(portName), "Port");
            EXPECT_EQ(features->Kind("Root"), "Category");
            EXPECT_EQ(features->DanglingReferences(), std::vector<std::string>{});

            // The URL information matches what the URL says.
            const uint64_t address = QueryInfo([&](INFO_DATATYPE* t, void* d, size_t* s) {
                                         return m_gentl->GCGetPortURLInfo(port, 0, URL_INFO_FILE_REGISTER_ADDRESS, t, d, s);
                                     }).As<uint64_t>();
            const uint64_t size = QueryInfo([&](INFO_DATATYPE* t, void* d, size_t* s) {
                                      return m_gentl->GCGetPortURLInfo(port, 0, URL_INFO_FILE_SIZE, t, d, s);
                                  }).As<uint64_t>();
            char hex[64];
            std::snprintf(hex, sizeof(hex), ";%llX;%llX", static_cast<unsigned long long>(address),
                          static_cast<unsigned long long>(size));
            EXPECT_NE(url.find(hex), std::string::npos);
            EXPECT_EQ(QueryInfo([&](INFO_DATATYPE* t, void* d, size_t* s) {
                          return m_gentl->GCGetPortURLInfo(port, 0, URL_INFO_SCHEMA_VER_MAJOR, t, d, s);
                      }).As<int32_t>(), 1);
        }
        // The camera's description comes zipped first and plain second, with the same XML.
        EXPECT_NE(QueryText([&](char* t, size_t* s) { return m_gentl->GCGetPortURL(m_remote, t, s); }).find(".zip;"),
                  std::string::npos);
        EXPECT_EQ(ReadDescription(m_remote, 0), ReadDescription(m_remote, 1));
        ASSERT_GC_OK(m_gentl->DevClose(m_device));
        ASSERT_GC_OK(m_gentl->IFClose(m_interface));
    }
}

TEST_F(ProducerModule, ModuleFeaturesAgreeWithTheInformationCommands)
{
    OpenSystem();
    OpenCamera("CXP");
    auto system = Features(m_system);
    EXPECT_EQ(system->GetString("TLID"), "QvGenTL");
    EXPECT_EQ(system->GetString("TLVendorName"), "QvApi");
    EXPECT_EQ(system->GetString("TLFileName"), "libqvgentl.cti");
    EXPECT_EQ(system->GetEnum("TLType"), "Mixed");
    EXPECT_EQ(system->GetInt("GenTLVersionMajor"), 1);
    EXPECT_EQ(system->GetInt("InterfaceSelectorMax"), 2);
    ASSERT_GC_OK(system->SetInt("InterfaceSelector", 2));
    EXPECT_EQ(system->GetString("InterfaceID"), "QvVirtual-CXP0");
    EXPECT_EQ(system->SetInt("InterfaceSelector", 3), GC_ERR_INVALID_VALUE);

    auto iface = Features(m_interface);
    EXPECT_EQ(iface->GetString("InterfaceID"), "QvVirtual-CXP0");
    EXPECT_EQ(iface->GetEnum("InterfaceType"), "CoaXPress");
    EXPECT_EQ(iface->GetString("DeviceID"), "QVCXP0000");
    EXPECT_EQ(iface->GetEnum("DeviceAccessStatus"), "OpenReadWrite");

    auto device = Features(m_device);
    EXPECT_EQ(device->GetString("DeviceID"), "QVCXP0000");
    EXPECT_EQ(device->GetString("DeviceModelName"), "QvVirtualCamera-CXP");
    EXPECT_EQ(device->GetEnum("DeviceType"), "CoaXPress");
    EXPECT_EQ(device->GetInt("DeviceTimestampFrequency"), 1000000000);
    EXPECT_EQ(device->GetString("DataStreamID"), "Stream0");
    EXPECT_EQ(device->GetInt("PayloadSize"), m_camera->GetInt("PayloadSize"));
    EXPECT_EQ(uint64_t(device->GetInt("PayloadSize")), StreamPayloadSize());
    // The local TLParamsLocked is the camera's.
    ASSERT_GC_OK(device->SetInt("TLParamsLocked", 1));
    EXPECT_EQ(m_camera->GetInt("TLParamsLocked"), 1);
    EXPECT_EQ(m_camera->SetInt("Width", 640), GC_ERR_ACCESS_DENIED);
    ASSERT_GC_OK(device->SetInt("TLParamsLocked", 0));
    ASSERT_GC_OK(m_camera->SetInt("Width", 640));

    // The user ID set on the camera shows in every listing.
    ASSERT_GC_OK(m_camera->SetString("DeviceUserID", "left camera"));
    EXPECT_EQ(device->GetString("DeviceUserID"), "left camera");
    EXPECT_EQ(QueryInfo([&](INFO_DATATYPE* t, void* d, size_t* s) {
                  return m_gentl->DevGetInfo(m_device, DEVICE_INFO_USER_DEFINED_NAME, t, d, s);
              }).Text(), "left camera");

    auto stream = Features(m_stream);
    EXPECT_EQ(stream->GetString("StreamID"), "Stream0");
    AnnounceAndQueue(3);
    EXPECT_EQ(stream->GetInt("StreamAnnouncedBufferCount"), 3);
    EXPECT_EQ(stream->GetInt("StreamInputBufferCount"), 3);
    EXPECT_EQ(stream->GetInt("StreamIsGrabbingReg"), 0);
}

TEST_F(ProducerModule, DeviceAccessIsExclusiveAndReadOnlyOpensCannotWrite)
{
    OpenSystem("U3V:1");
    m_interface = OpenInterface("U3V");
    const std::string id = QueryText([&](char* t, size_t* s) { return m_gentl->IFGetDeviceID(m_interface, 0, t, s); });
    auto status = [&] {
        return QueryInfo([&](INFO_DATATYPE* t, void* d, size_t* s) {
                   return m_gentl->IFGetDeviceInfo(m_interface, id.c_str(), DEVICE_INFO_ACCESS_STATUS, t, d, s);
               }).As<int32_t>();
    };
    EXPECT_EQ(status(), DEVICE_ACCESS_STATUS_READWRITE);
    DEV_HANDLE device = nullptr;
    EXPECT_EQ(m_gentl->IFOpenDevice(m_interface, "no-such-camera", DEVICE_ACCESS_CONTROL, &device), GC_ERR_INVALID_ID);
    EXPECT_EQ(m_gentl->IFOpenDevice(m_interface, id.c_str(), DEVICE_ACCESS_NONE, &device), GC_ERR_INVALID_PARAMETER);
    ASSERT_GC_OK(m_gentl->IFOpenDevice(m_interface, id.c_str(), DEVICE_ACCESS_READONLY, &device));
    EXPECT_EQ(status(), DEVICE_ACCESS_STATUS_OPEN_READONLY);
    DEV_HANDLE second = nullptr;
    EXPECT_EQ(m_gentl->IFOpenDevice(m_interface, id.c_str(), DEVICE_ACCESS_CONTROL, &second), GC_ERR_RESOURCE_IN_USE);

    PORT_HANDLE remote = nullptr;
    ASSERT_GC_OK(m_gentl->DevGetPort(device, &remote));
    auto camera = Features(remote);
    EXPECT_EQ(camera->GetString("DeviceSerialNumber"), id);
    EXPECT_EQ(camera->SetInt("Width", 640), GC_ERR_ACCESS_DENIED);
    EXPECT_EQ(QueryInfo([&](INFO_DATATYPE* t, void* d, size_t* s) {
                  return m_gentl->GCGetPortInfo(remote, PORT_INFO_ACCESS_WRITE, t, d, s);
              }).As<uint8_t>(), 0);
    DS_HANDLE stream = nullptr;
    EXPECT_EQ(m_gentl->DevOpenDataStream(device, "Stream0", &stream), GC_ERR_ACCESS_DENIED);

    ASSERT_GC_OK(m_gentl->DevClose(device));
    EXPECT_EQ(status(), DEVICE_ACCESS_STATUS_READWRITE);
    ASSERT_GC_OK(m_gentl->IFOpenDevice(m_interface, id.c_str(), DEVICE_ACCESS_EXCLUSIVE, &device));
    EXPECT_EQ(status(), DEVICE_ACCESS_STATUS_OPEN_READWRITE);
}

TEST_F(ProducerModule, RegisterAccessChecksAddressesAndLengths)
{
    OpenSystem("GEV:1");
    OpenCamera("GEV");
    uint8_t bytes[8] = {};
    size_t size = 4;
    // Address 0 of the camera answers (consumers probe it to see whether a device is alive).
    ASSERT_GC_OK(m_gentl->GCReadPort(m_remote, 0, bytes, &size));
    EXPECT_EQ(size, 4u);
    EXPECT_EQ(bytes[3], 2) << "SFNC major version 2, big-endian";
    size = 2;
    EXPECT_EQ(m_gentl->GCReadPort(m_remote, 0, bytes, &size), GC_ERR_INVALID_ADDRESS) << "half a register";
    size = 4;
    EXPECT_EQ(m_gentl->GCReadPort(m_remote, 0x7FF0, bytes, &size), GC_ERR_INVALID_ADDRESS) << "unmapped";
    size = 4;
    EXPECT_EQ(m_gentl->GCWritePort(m_remote, 0x0100, bytes, &size), GC_ERR_ACCESS_DENIED) << "SensorWidth is RO";
    EXPECT_EQ(m_gentl->GCReadPort(m_remote, 0, nullptr, &size), GC_ERR_INVALID_PARAMETER);

    // Stacked access processes entries in order and stops at the first failure.
    uint8_t width[4] = {}, height[4] = {}, bad[4] = {};
    PORT_REGISTER_STACK_ENTRY entries[3] = {{0x0110, width, 4}, {0x0114, height, 4}, {0x7FF0, bad, 4}};
    size_t count = 2;
    ASSERT_GC_OK(m_gentl->GCReadPortStacked(m_remote, entries, &count));
    EXPECT_EQ(count, 2u);
    EXPECT_EQ(uint32_t(width[0]) << 24 | uint32_t(width[1]) << 16 | uint32_t(width[2]) << 8 | width[3],
              QvVirtualCamera::kDefaultSensorWidth);
    count = 3;
    EXPECT_EQ(m_gentl->GCReadPortStacked(m_remote, entries, &count), GC_ERR_INVALID_ADDRESS);
    EXPECT_EQ(count, 2u);
}

TEST_F(ProducerModule, EveryModuleRaisesErrorEventsOnRequest)
{
    OpenSystem();
    OpenCamera("U3V");
    const BUFFER_HANDLE buffer = AnnounceAndQueue(1)[0];
    int32_t code = -1010;
    for (EVENTSRC_HANDLE module : {m_system, m_interface, m_device, m_stream, buffer})
    {
        EVENT_HANDLE event = nullptr;
        ASSERT_GC_OK(m_gentl->GCRegisterEvent(module, EVENT_ERROR, &event));
        EXPECT_EQ(m_gentl->GCRegisterEvent(module, EVENT_ERROR, &event), GC_ERR_RESOURCE_IN_USE);
        auto features = Features(module);
        ASSERT_GC_OK(features->SetInt("TestErrorEventCode", code));
        ASSERT_GC_OK(features->Execute("TestErrorEventGenerate"));

        const size_t maxSize = QueryInfo([&](INFO_DATATYPE* t, void* d, size_t* s) {
                                   return m_gentl->EventGetInfo(event, EVENT_SIZE_MAX, t, d, s);
                               }).As<size_t>();
        std::vector<uint8_t> data(maxSize);
        size_t size = data.size();
        ASSERT_GC_OK(m_gentl->EventGetData(event, data.data(), &size, 1000));
        InfoAnswer_t id = QueryInfo([&](INFO_DATATYPE* t, void* d, size_t* s) {
            return m_gentl->EventGetDataInfo(event, data.data(), size, EVENT_DATA_ID, t, d, s);
        });
        InfoAnswer_t text = QueryInfo([&](INFO_DATATYPE* t, void* d, size_t* s) {
            return m_gentl->EventGetDataInfo(event, data.data(), size, EVENT_DATA_VALUE, t, d, s);
        });
        EXPECT_EQ(id.type, INFO_DATATYPE_INT32);
        EXPECT_EQ(id.As<int32_t>(), code);
        EXPECT_EQ(text.type, INFO_DATATYPE_STRING);
        EXPECT_NE(text.Text().find("TestErrorEventGenerate"), std::string::npos) << text.Text();
        EXPECT_EQ(QueryInfo([&](INFO_DATATYPE* t, void* d, size_t* s) {
                      return m_gentl->EventGetInfo(event, EVENT_NUM_FIRED, t, d, s);
                  }).As<uint64_t>(), 1u);
        size = data.size();
        EXPECT_EQ(m_gentl->EventGetData(event, data.data(), &size, 0), GC_ERR_TIMEOUT);
        ASSERT_GC_OK(m_gentl->GCUnregisterEvent(module, EVENT_ERROR));
        EXPECT_EQ(m_gentl->EventGetData(event, data.data(), &size, 0), GC_ERR_INVALID_HANDLE);
        --code;
    }
    EVENT_HANDLE event = nullptr;
    EXPECT_EQ(m_gentl->GCRegisterEvent(m_system, EVENT_NEW_BUFFER, &event), GC_ERR_NOT_IMPLEMENTED);
    EXPECT_EQ(m_gentl->GCRegisterEvent(m_stream, EVENT_REMOTE_DEVICE, &event), GC_ERR_NOT_IMPLEMENTED);
    EXPECT_EQ(m_gentl->GCUnregisterEvent(m_system, EVENT_ERROR), GC_ERR_NOT_AVAILABLE);
}

/// The camera's test controls make the local device send feature events: the name as
/// EVENT_DATA_ID, for a change the value text as EVENT_DATA_VALUE.
TEST_F(ProducerModule, CameraTestControlsSendFeatureInvalidateAndChangeEvents)
{
    OpenSystem("GEV:1");
    OpenCamera("GEV");
    EVENT_HANDLE invalidate = nullptr, change = nullptr;
    ASSERT_GC_OK(m_gentl->GCRegisterEvent(m_device, EVENT_FEATURE_INVALIDATE, &invalidate));
    ASSERT_GC_OK(m_gentl->GCRegisterEvent(m_device, EVENT_FEATURE_CHANGE, &change));
    EXPECT_EQ(m_camera->Execute("TestFeatureInvalidateGenerate"), GC_ERR_INVALID_VALUE) << "no feature named yet";
    ASSERT_GC_OK(m_camera->SetString("TestFeatureInvalidateName", "Width"));
    ASSERT_GC_OK(m_camera->SetString("TestFeatureChangeName", "ExposureTime"));
    ASSERT_GC_OK(m_camera->SetString("TestFeatureChangeValue", "1234.5"));
    EXPECT_EQ(m_camera->GetString("TestFeatureChangeValue"), "1234.5");
    const double exposureTime = m_camera->GetFloat("ExposureTime");
    ASSERT_GC_OK(m_camera->Execute("TestFeatureInvalidateGenerate"));
    ASSERT_GC_OK(m_camera->Execute("TestFeatureChangeGenerate"));
    ASSERT_GC_OK(m_camera->Execute("TestFeatureChangeGenerate"));

    auto dataInfo = [&](EVENT_HANDLE event, const std::vector<uint8_t>& data, EVENT_DATA_INFO_CMD command) {
        return QueryInfo([&](INFO_DATATYPE* t, void* d, size_t* s) {
            return m_gentl->EventGetDataInfo(event, data.data(), data.size(), command, t, d, s);
        });
    };
    auto next = [&](EVENT_HANDLE event) {
        std::vector<uint8_t> data(1024);
        size_t size = data.size();
        EXPECT_GC_OK(m_gentl->EventGetData(event, data.data(), &size, 1000));
        data.resize(size);
        return data;
    };
    std::vector<uint8_t> data = next(invalidate);
    InfoAnswer_t name = dataInfo(invalidate, data, EVENT_DATA_ID);
    EXPECT_EQ(name.type, INFO_DATATYPE_STRING);
    EXPECT_EQ(name.Text(), "Width");
    EXPECT_EQ(dataInfo(invalidate, data, EVENT_DATA_VALUE).result, GC_ERR_NOT_AVAILABLE) << "an invalidation has no value";
    for (int i = 0; i < 2; ++i)
    {
        data = next(change);
        EXPECT_EQ(dataInfo(change, data, EVENT_DATA_ID).Text(), "ExposureTime");
        InfoAnswer_t value = dataInfo(change, data, EVENT_DATA_VALUE);
        EXPECT_EQ(value.type, INFO_DATATYPE_STRING);
        EXPECT_EQ(value.Text(), "1234.5");
    }
    size_t size = data.size();
    EXPECT_EQ(m_gentl->EventGetData(change, data.data(), &size, 0), GC_ERR_TIMEOUT) << "one event per command";
    EXPECT_EQ(m_camera->GetFloat("ExposureTime"), exposureTime) << "the camera only reports; it changes nothing itself";

    // Nobody registered: the event is dropped, the command still succeeds.
    ASSERT_GC_OK(m_gentl->GCUnregisterEvent(m_device, EVENT_FEATURE_INVALIDATE));
    EXPECT_GC_OK(m_camera->Execute("TestFeatureInvalidateGenerate"));
}

TEST_F(ProducerModule, EventKillAbortsWaitsAndUnregisteringEndsThem)
{
    OpenSystem("GEV:1");
    OpenCamera("GEV");
    EVENT_HANDLE event = nullptr;
    ASSERT_GC_OK(m_gentl->GCRegisterEvent(m_device, EVENT_REMOTE_DEVICE, &event));
    uint8_t data[512];

    // A time-out is honoured.
    size_t size = sizeof(data);
    auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(m_gentl->EventGetData(event, data, &size, 50), GC_ERR_TIMEOUT);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(45));

    // A kill releases a thread that waits for ever.
    std::atomic<GC_ERROR> result{GC_ERR_SUCCESS};
    std::thread waiter([&] {
        size_t n = sizeof(data);
        uint8_t buffer[512];
        result = m_gentl->EventGetData(event, buffer, &n, GENTL_INFINITE);
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    ASSERT_GC_OK(m_gentl->EventKill(event));
    waiter.join();
    EXPECT_EQ(result.load(), GC_ERR_ABORT);

    // A kill while nobody waits aborts the next wait, once.
    ASSERT_GC_OK(m_gentl->EventKill(event));
    size = sizeof(data);
    EXPECT_EQ(m_gentl->EventGetData(event, data, &size, 1000), GC_ERR_ABORT);
    size = sizeof(data);
    EXPECT_EQ(m_gentl->EventGetData(event, data, &size, 0), GC_ERR_TIMEOUT);

    // Unregistering aborts a wait in progress.
    std::thread second([&] {
        size_t n = sizeof(data);
        uint8_t buffer[512];
        result = m_gentl->EventGetData(event, buffer, &n, GENTL_INFINITE);
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    ASSERT_GC_OK(m_gentl->GCUnregisterEvent(m_device, EVENT_REMOTE_DEVICE));
    second.join();
    EXPECT_EQ(result.load(), GC_ERR_ABORT);
}

TEST_F(ProducerModule, LastErrorIsKeptPerThread)
{
    OpenSystem();
    uint32_t count;
    EXPECT_EQ(m_gentl->TLGetNumInterfaces(nullptr, &count), GC_ERR_INVALID_HANDLE);
    std::thread other([&] {
        char id[8];
        size_t size = sizeof(id);
        EXPECT_EQ(m_gentl->TLGetInterfaceID(m_system, 77, id, &size), GC_ERR_INVALID_INDEX);
        GC_ERROR code = 0;
        size_t textSize = 0;
        ASSERT_EQ(m_gentl->GCGetLastError(&code, nullptr, &textSize), GC_ERR_SUCCESS);
        EXPECT_EQ(code, GC_ERR_INVALID_INDEX);
    });
    other.join();
    GC_ERROR code = 0;
    size_t size = 0;
    ASSERT_GC_OK(m_gentl->GCGetLastError(&code, nullptr, &size));
    EXPECT_EQ(code, GC_ERR_INVALID_HANDLE);
    std::string text(size, '\0');
    ASSERT_GC_OK(m_gentl->GCGetLastError(&code, text.data(), &size));
    EXPECT_NE(text.find("TLGetNumInterfaces"), std::string::npos) << text;
}

} // namespace
