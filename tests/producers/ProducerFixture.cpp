#include "tests/producers/ProducerFixture.h"

#include <cstdlib>
#include <cstring>

#include <zip.h>

namespace QvGenTLTest {

std::unique_ptr<CGenTLProducer> ProducerTest::s_gentl;

std::string ErrorText(const CGenTLProducer& gentl)
{
    GenTL::GC_ERROR code = 0;
    char text[1024] = {};
    size_t size = sizeof(text);
    gentl.GCGetLastError(&code, text, &size);
    return std::to_string(code) + " " + text;
}

void ProducerTest::SetUpTestSuite()
{
    const std::string path = FindQvGenTL();
    ASSERT_FALSE(path.empty()) << "libqvgentl.cti not found on GENICAM_GENTL64_PATH";
    s_gentl = CGenTLProducer::Load(path);
}

void ProducerTest::TearDownTestSuite()
{
    s_gentl.reset();
}

void ProducerTest::SetUp()
{
    ASSERT_NE(s_gentl, nullptr);
    m_gentl = s_gentl.get();
    ASSERT_GC_OK(m_gentl->GCInitLib());
}

void ProducerTest::TearDown()
{
    m_camera.reset();
    if (m_gentl != nullptr)
    {
        EXPECT_GC_OK(m_gentl->GCCloseLib());
    }
    unsetenv("QVGENTL_VIRTUAL");
}

void ProducerTest::OpenSystem(const char* config)
{
    if (config != nullptr)
        setenv("QVGENTL_VIRTUAL", config, 1);
    else
        unsetenv("QVGENTL_VIRTUAL");
    ASSERT_GC_OK(m_gentl->TLOpen(&m_system));
    GenTL::bool8_t changed = false;
    ASSERT_GC_OK(m_gentl->TLUpdateInterfaceList(m_system, &changed, 100));
}

GenTL::IF_HANDLE ProducerTest::OpenInterface(const std::string& tlType)
{
    uint32_t count = 0;
    EXPECT_GC_OK(m_gentl->TLGetNumInterfaces(m_system, &count));
    for (uint32_t i = 0; i < count; ++i)
    {
        const std::string id = QueryText([&](char* text, size_t* size) {
            return m_gentl->TLGetInterfaceID(m_system, i, text, size);
        });
        const std::string type = QueryInfo([&](GenTL::INFO_DATATYPE* t, void* d, size_t* s) {
                                     return m_gentl->TLGetInterfaceInfo(m_system, id.c_str(), GenTL::INTERFACE_INFO_TLTYPE,
                                                                         t, d, s);
                                 }).Text();
        if (type != tlType)
            continue;
        GenTL::IF_HANDLE iface = nullptr;
        EXPECT_GC_OK(m_gentl->TLOpenInterface(m_system, id.c_str(), &iface));
        GenTL::bool8_t changed = false;
        EXPECT_GC_OK(m_gentl->IFUpdateDeviceList(iface, &changed, 100));
        return iface;
    }
    ADD_FAILURE() << "no interface of type " << tlType;
    return nullptr;
}

GenTL::DEV_HANDLE ProducerTest::OpenDevice(GenTL::IF_HANDLE iface, GenTL::DEVICE_ACCESS_FLAGS flags)
{
    const std::string id = QueryText([&](char* text, size_t* size) {
        return m_gentl->IFGetDeviceID(iface, 0, text, size);
    });
    GenTL::DEV_HANDLE device = nullptr;
    EXPECT_GC_OK(m_gentl->IFOpenDevice(iface, id.c_str(), flags, &device));
    return device;
}

void ProducerTest::OpenCamera(const std::string& tlType)
{
    m_interface = OpenInterface(tlType);
    ASSERT_NE(m_interface, nullptr);
    m_device = OpenDevice(m_interface);
    ASSERT_NE(m_device, nullptr);
    ASSERT_GC_OK(m_gentl->DevGetPort(m_device, &m_remote));
    const std::string streamId = QueryText([&](char* text, size_t* size) {
        return m_gentl->DevGetDataStreamID(m_device, 0, text, size);
    });
    ASSERT_GC_OK(m_gentl->DevOpenDataStream(m_device, streamId.c_str(), &m_stream));
    m_camera = Features(m_remote);
    ASSERT_TRUE(m_camera->Ok()) << m_camera->ParseError();
}

std::string ProducerTest::ReadDescription(GenTL::PORT_HANDLE port, uint32_t urlIndex)
{
    const std::string url = QueryInfo([&](GenTL::INFO_DATATYPE* t, void* d, size_t* s) {
                                return m_gentl->GCGetPortURLInfo(port, urlIndex, GenTL::URL_INFO_URL, t, d, s);
                            }).Text();
    // local:<name>;<hex address>;<hex length>[?SchemaVersion=...]
    EXPECT_EQ(url.rfind("local:", 0), 0u) << url;
    const size_t first = url.find(';');
    const size_t second = url.find(';', first + 1);
    if (first == std::string::npos || second == std::string::npos)
    {
        ADD_FAILURE() << "malformed URL " << url;
        return std::string();
    }
    const std::string name = url.substr(6, first - 6);
    const uint64_t address = std::stoull(url.substr(first + 1, second - first - 1), nullptr, 16);
    const size_t length = std::stoull(url.substr(second + 1), nullptr, 16);
    std::string bytes(length, '\0');
    size_t size = length;
    EXPECT_GC_OK(m_gentl->GCReadPort(port, address, bytes.data(), &size));
    EXPECT_EQ(size, length);
    if (name.size() < 4 || name.substr(name.size() - 4) != ".zip")
        return bytes;

    zip_error_t error;
    zip_error_init(&error);
    zip_source_t* source = zip_source_buffer_create(bytes.data(), bytes.size(), 0, &error);
    zip_t* archive = source ? zip_open_from_source(source, ZIP_RDONLY, &error) : nullptr;
    if (archive == nullptr)
    {
        ADD_FAILURE() << "not a zip: " << zip_error_strerror(&error);
        if (source)
            zip_source_free(source);
        zip_error_fini(&error);
        return std::string();
    }
    std::string xml;
    zip_stat_t stat;
    if (zip_stat_index(archive, 0, 0, &stat) == 0)
    {
        xml.resize(stat.size);
        zip_file_t* file = zip_fopen_index(archive, 0, 0);
        if (file == nullptr || zip_fread(file, xml.data(), stat.size) != zip_int64_t(stat.size))
            ADD_FAILURE() << "cannot read the zip entry";
        if (file)
            zip_fclose(file);
    }
    zip_close(archive);
    zip_error_fini(&error);
    return xml;
}

std::unique_ptr<CDescriptionFeatures> ProducerTest::Features(GenTL::PORT_HANDLE port)
{
    CGenTLProducer* gentl = m_gentl;
    return std::make_unique<CDescriptionFeatures>(
        ReadDescription(port),
        [gentl, port](uint64_t address, void* buffer, size_t size) {
            return gentl->GCReadPort(port, address, buffer, &size);
        },
        [gentl, port](uint64_t address, const void* buffer, size_t size) {
            return gentl->GCWritePort(port, address, buffer, &size);
        });
}

size_t ProducerTest::StreamPayloadSize()
{
    return StreamInfo<size_t>(GenTL::STREAM_INFO_PAYLOAD_SIZE);
}

std::vector<GenTL::BUFFER_HANDLE> ProducerTest::AnnounceAndQueue(size_t count, size_t size)
{
    if (size == 0)
        size = StreamPayloadSize();
    std::vector<GenTL::BUFFER_HANDLE> buffers(count);
    for (size_t i = 0; i < count; ++i)
    {
        EXPECT_EQ(m_gentl->DSAllocAndAnnounceBuffer(m_stream, size, reinterpret_cast<void*>(i + 1), &buffers[i]),
                  GenTL::GC_ERR_SUCCESS);
        EXPECT_EQ(m_gentl->DSQueueBuffer(m_stream, buffers[i]), GenTL::GC_ERR_SUCCESS);
    }
    return buffers;
}

} // namespace QvGenTLTest
