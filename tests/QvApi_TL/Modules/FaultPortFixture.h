#pragma once

// A port on the fault producer's transport layer, for the port and description-loader tests.

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <zlib.h>

#include <gtest/gtest.h>

#include "ModuleTestSupport.h"
#include "QvApi_TL/QvPort.h"
#include "QvGenTLCommon/QvGenTLLib.h"

namespace QvModuleTest
{
/// A GenApi description whose one feature is a 4-byte register at \a address of port \a port.
inline std::string OneRegisterDescription(const char* feature = "Value", const char* port = "TLPort",
                                          const char* extra = "")
{
    return std::string("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                       "<RegisterDescription ModelName=\"T\" VendorName=\"QvApi\" StandardNameSpace=\"None\""
                       " SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\" SchemaSubMinorVersion=\"0\""
                       " MajorVersion=\"1\" MinorVersion=\"0\" SubMinorVersion=\"0\""
                       " ProductGuid=\"2C0E1B7A-6F3D-4E52-9A1B-5D7C3E9F0A31\""
                       " VersionGuid=\"2C0E1B7A-6F3D-4E52-9A1B-5D7C3E9F0A32\""
                       " xmlns=\"http://www.genicam.org/GenApi/Version_1_1\">\n"
                       "  <Category Name=\"Root\" NameSpace=\"Standard\"><pFeature>") +
           feature + "</pFeature></Category>\n  <IntReg Name=\"" + feature +
           "\"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>" + port +
           "</pPort><Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>\n" + extra + "  <Port Name=\"" +
           port + "\"/>\n</RegisterDescription>\n";
}

/// A zip archive holding \a content as one stored (uncompressed) file \a name.
inline std::vector<uint8_t> StoredZip(const std::string& name, const std::string& content)
{
    std::vector<uint8_t> zip;
    auto put16 = [&](uint32_t v) { zip.push_back(v & 0xFF), zip.push_back((v >> 8) & 0xFF); };
    auto put32 = [&](uint32_t v) { put16(v & 0xFFFF), put16(v >> 16); };
    const uint32_t crc = crc32(0, reinterpret_cast<const Bytef*>(content.data()), static_cast<uInt>(content.size()));
    const uint32_t size = static_cast<uint32_t>(content.size());
    put32(0x04034b50), put16(20), put16(0), put16(0), put16(0), put16(0), put32(crc), put32(size), put32(size);
    put16(static_cast<uint32_t>(name.size())), put16(0);
    zip.insert(zip.end(), name.begin(), name.end());
    zip.insert(zip.end(), content.begin(), content.end());
    const uint32_t directoryOffset = static_cast<uint32_t>(zip.size());
    put32(0x02014b50), put16(20), put16(20), put16(0), put16(0), put16(0), put16(0), put32(crc), put32(size);
    put32(size), put16(static_cast<uint32_t>(name.size())), put16(0), put16(0), put16(0), put16(0), put32(0), put32(0);
    zip.insert(zip.end(), name.begin(), name.end());
    const uint32_t directorySize = static_cast<uint32_t>(zip.size()) - directoryOffset;
    put32(0x06054b50), put16(0), put16(0), put16(1), put16(1), put32(directorySize), put32(directoryOffset), put16(0);
    return zip;
}

/// The fault producer loaded through the SDK's binding with its transport layer open.
class CFaultPortTest : public ::testing::Test
{
protected:
    void SetUp() override { Open("libqvfault.cti"); }
    void TearDown() override
    {
        m_pPort.reset();
        if (m_pLib != nullptr && m_hTL != nullptr)
            m_pLib->TLClose(m_hTL);
        m_pLib.reset();
    }
    void Open(const char* producer)
    {
        m_pControl = QvTest::FaultControl(producer);
        ASSERT_NE(m_pControl, nullptr) << producer;
        m_pLib = std::make_unique<QvApi::CQvGenTLLib>(producer);
        ASSERT_EQ(m_pLib->TLOpen(&m_hTL), 0);
    }
    /// The transport layer's port with \a mode.
    QvApi::CQvPort& Port(GenApi::EAccessMode mode = GenApi::RW)
    {
        m_pPort = std::make_unique<QvApi::CQvPort>(m_pLib.get(), m_hTL, mode, "System_T");
        return *m_pPort;
    }
    /// Serves \a bytes as the system port's description under \a fileName.
    void Describe(const void* bytes, size_t size, const char* fileName = "T.xml")
    {
        ASSERT_EQ(m_pControl->SetPortDescription(QV_FAULT_MODULE_SYSTEM, static_cast<const char*>(bytes), size), 0);
        char url[128];
        snprintf(url, sizeof(url), "local:%s;10000;%zx", fileName, size);
        const char* urls[] = {url};
        ASSERT_EQ(m_pControl->SetPortURLs(QV_FAULT_MODULE_SYSTEM, urls, 1), 0);
    }
    void Describe(const std::string& text, const char* fileName = "T.xml")
    {
        Describe(text.data(), text.size(), fileName);
    }
    void SetURL(const char* url)
    {
        const char* urls[] = {url};
        ASSERT_EQ(m_pControl->SetPortURLs(QV_FAULT_MODULE_SYSTEM, urls, 1), 0);
    }
    void Rule(QvFaultFunction function, int32_t result, int64_t sizeAdjust = 0, uint32_t skipCalls = 0)
    {
        QvFaultRule rule = QvTest::FailWith(result);
        rule.sizeAdjust = sizeAdjust;
        rule.skipCalls = skipCalls;
        m_pControl->SetRule(function, &rule);
    }
    uint32_t Calls(QvFaultFunction function) { return m_pControl->GetCallCount(function); }

    const QvFaultControl* m_pControl = nullptr;
    std::unique_ptr<QvApi::CQvGenTLLib> m_pLib;
    GenTL::TL_HANDLE m_hTL = nullptr;
    std::unique_ptr<QvApi::CQvPort> m_pPort;
};
} // namespace QvModuleTest
