#pragma once

// Fixture of the producer tests: loads libqvgentl.cti once, initialises it per test and
// opens modules on request. Raw GenTL only.

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/producers/DescriptionFeatures.h"
#include "tests/producers/GenTLProducer.h"

namespace QvGenTLTest {

/// GC_ERROR as text for assertion messages.
std::string ErrorText(const CGenTLProducer& gentl);

#define ASSERT_GC_OK(call) ASSERT_EQ((call), GenTL::GC_ERR_SUCCESS) << #call << ": " << ErrorText(*m_gentl)
#define EXPECT_GC_OK(call) EXPECT_EQ((call), GenTL::GC_ERR_SUCCESS) << #call << ": " << ErrorText(*m_gentl)

class ProducerTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite();
    static void TearDownTestSuite();
    void SetUp() override;
    void TearDown() override;

    /// Opens the system (with QVGENTL_VIRTUAL set to config, or unset when config is null).
    void OpenSystem(const char* config = nullptr);
    /// Opens the first interface of a transport type ("U3V", "GEV", "CXP") and updates its devices.
    GenTL::IF_HANDLE OpenInterface(const std::string& tlType);
    /// Opens the first device of an interface.
    GenTL::DEV_HANDLE OpenDevice(GenTL::IF_HANDLE iface, GenTL::DEVICE_ACCESS_FLAGS flags = GenTL::DEVICE_ACCESS_CONTROL);
    /// Opens interface, device, remote port and stream of a transport type.
    void OpenCamera(const std::string& tlType);

    /// The description a port serves at URL index, unzipped.
    std::string ReadDescription(GenTL::PORT_HANDLE port, uint32_t urlIndex = 0);
    /// Features of a port's description, read and written through the port.
    std::unique_ptr<CDescriptionFeatures> Features(GenTL::PORT_HANDLE port);

    /// Announces and queues count producer-allocated buffers of the current payload size.
    std::vector<GenTL::BUFFER_HANDLE> AnnounceAndQueue(size_t count, size_t size = 0);
    size_t StreamPayloadSize();
    template <class T>
    T BufferInfo(GenTL::BUFFER_HANDLE buffer, GenTL::BUFFER_INFO_CMD command)
    {
        InfoAnswer_t answer = QueryInfo([&](GenTL::INFO_DATATYPE* type, void* data, size_t* size) {
            return m_gentl->DSGetBufferInfo(m_stream, buffer, command, type, data, size);
        });
        EXPECT_EQ(answer.result, GenTL::GC_ERR_SUCCESS) << "BUFFER_INFO " << command;
        return answer.As<T>();
    }
    template <class T>
    T StreamInfo(GenTL::STREAM_INFO_CMD command)
    {
        InfoAnswer_t answer = QueryInfo([&](GenTL::INFO_DATATYPE* type, void* data, size_t* size) {
            return m_gentl->DSGetInfo(m_stream, command, type, data, size);
        });
        EXPECT_EQ(answer.result, GenTL::GC_ERR_SUCCESS) << "STREAM_INFO " << command;
        return answer.As<T>();
    }

    static std::unique_ptr<CGenTLProducer> s_gentl;
    CGenTLProducer* m_gentl = nullptr;

    GenTL::TL_HANDLE m_system = nullptr;
    GenTL::IF_HANDLE m_interface = nullptr;
    GenTL::DEV_HANDLE m_device = nullptr;
    GenTL::PORT_HANDLE m_remote = nullptr;
    GenTL::DS_HANDLE m_stream = nullptr;
    std::unique_ptr<CDescriptionFeatures> m_camera; // features of the remote device
};

} // namespace QvGenTLTest
