// Port access: checked register reads and writes, URL count and selection, port information
// and the chunk adapter chosen by the transport-layer type.
#include "QvApi_TL/QvPort.h"

#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include <GenApi/ChunkAdapterGEV.h>
#include <GenApi/ChunkAdapterGeneric.h>
#include <GenApi/ChunkAdapterU3V.h>

#include "FaultPortFixture.h"

using QvModuleTest::Catch;
using QvModuleTest::Format;

namespace
{
using FaultPort = QvModuleTest::CFaultPortTest;

bool EndsWith(const std::string& text, const std::string& tail)
{
    return text.size() >= tail.size() && text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}
} // namespace

TEST_F(FaultPort, ReadsAndWritesRegistersThroughTheProducer)
{
    QvApi::CQvPort& port = Port();
    const uint32_t written = 0xA5C3E1F0;
    port.Write(&written, 4, 4);
    uint32_t stored = 0;
    ASSERT_EQ(m_pControl->ReadPortMemory(QV_FAULT_MODULE_SYSTEM, 4, &stored, 4), 0);
    EXPECT_EQ(stored, written);
    uint32_t read = 0;
    port.Read(&read, 4, 4);
    EXPECT_EQ(read, written);
    EXPECT_EQ(port.GetAccessMode(), GenApi::RW);
    EXPECT_EQ(port.GetPortHandle(), m_hTL);
}

TEST_F(FaultPort, FailsAShortReadWithCodeZeroAlthoughTheProducerSucceeded)
{
    QvApi::CQvPort& port = Port();
    Rule(QV_FAULT_GCReadPort, 0, -1);
    uint32_t value = 0;
    const auto caught = Catch<QvApi::CQvGenTLErrorException>([&] { port.Read(&value, 8, 4); });
    ASSERT_TRUE(caught.thrown);
    EXPECT_EQ(caught.code, 0);
    EXPECT_EQ(caught.function, "GCReadPort");
    EXPECT_EQ(caught.description.rfind(Format("0 = GCReadPort(0x%p, %I64d, 0x ", m_hTL, 8), 0), 0u) << caught.description;
    EXPECT_TRUE(EndsWith(caught.description, Format(" Length:%I64d != %I64d", 4, 3))) << caught.description;
}

TEST_F(FaultPort, ReportsAFailedReadWithTheProducersCode)
{
    QvApi::CQvPort& port = Port();
    Rule(QV_FAULT_GCReadPort, GenTL::GC_ERR_INVALID_ADDRESS);
    uint32_t value = 0;
    const auto caught = Catch<QvApi::CQvGenTLErrorException>([&] { port.Read(&value, 16, 4); });
    EXPECT_EQ(caught.code, GenTL::GC_ERR_INVALID_ADDRESS);
    EXPECT_EQ(caught.description.rfind(Format("%d = GCReadPort(0x%p, %I64d, 0x", GenTL::GC_ERR_INVALID_ADDRESS, m_hTL, 16), 0),
              0u)
        << caught.description;
}

TEST_F(FaultPort, RefusesWritesOfAReadOnlyPortBeforeCallingTheProducer)
{
    for (GenApi::EAccessMode mode : {GenApi::RO, GenApi::NA, GenApi::NI})
    {
        QvApi::CQvPort& port = Port(mode);
        const uint32_t value = 1;
        EXPECT_EQ(Catch<GenICam::RuntimeException>([&] { port.Write(&value, 0, 4); }).description,
                  "Port is not writable.");
    }
    EXPECT_EQ(Calls(QV_FAULT_GCWritePort), 0u);
    const uint32_t value = 7;
    Port(GenApi::WO).Write(&value, 0, 4);
    EXPECT_EQ(Calls(QV_FAULT_GCWritePort), 1u);
}

TEST_F(FaultPort, AcceptsAPositiveWriteResultButNotAShortWrite)
{
    QvApi::CQvPort& port = Port();
    const uint32_t value = 7;
    Rule(QV_FAULT_GCWritePort, 1); // a warning: nothing is done, the size stays full
    EXPECT_NO_THROW(port.Write(&value, 0, 4));

    Rule(QV_FAULT_GCWritePort, 0, -1);
    const auto shortWrite = Catch<QvApi::CQvGenTLErrorException>([&] { port.Write(&value, 0, 4); });
    ASSERT_TRUE(shortWrite.thrown);
    EXPECT_EQ(shortWrite.code, 0);
    EXPECT_EQ(shortWrite.function, "GCWritePort");
    EXPECT_TRUE(EndsWith(shortWrite.description, Format(" Length:%I64d != %d", 4, 3))) << shortWrite.description;

    Rule(QV_FAULT_GCWritePort, GenTL::GC_ERR_ACCESS_DENIED);
    const auto denied = Catch<QvApi::CQvGenTLErrorException>([&] { port.Write(&value, 0, 4); });
    EXPECT_EQ(denied.code, GenTL::GC_ERR_ACCESS_DENIED);
    EXPECT_EQ(denied.description.rfind(Format("%d = GCWritePort(0x%p, %I64d, 0x", GenTL::GC_ERR_ACCESS_DENIED, m_hTL, 0),
                                       0),
              0u)
        << denied.description;
}

TEST_F(FaultPort, SelectsAmongItsURLsAndRefusesAnIndexPastThem)
{
    const char* urls[] = {"local:A.xml;10000;10", "local:B.xml;20000;20"};
    ASSERT_EQ(m_pControl->SetPortURLs(QV_FAULT_MODULE_SYSTEM, urls, 2), 0);
    QvApi::CQvPort& port = Port();
    EXPECT_EQ(port.GetPortURLCount(), 2u);
    port.SetPortURLIndex(1);
    EXPECT_EQ(port.GetPortURLIndex(), 1u);
    EXPECT_STREQ(port.GetIQvPortURLInfo()->GetURL().c_str(), "local:B.xml;20000;20");
    EXPECT_EQ(Catch<GenICam::OutOfRangeException>([&] { port.SetPortURLIndex(2); }).description,
              "nURLIndex = 2 must be smaller than Max = 2");
    EXPECT_EQ(port.GetPortURLIndex(), 1u);
}

TEST_F(FaultPort, AnswersTheURLInformationOfTheSelectedURL)
{
    QvApi::CQvPort& port = Port();
    QvApi::IQvPortURLInfo* pInfo = port.GetIQvPortURLInfo();
    EXPECT_EQ(std::string(pInfo->GetURL().c_str()).rfind("local:QvFaultSystem.xml;10000;", 0), 0u);
    EXPECT_EQ(pInfo->GetSchemaVerMajor(), 1);
    EXPECT_EQ(pInfo->GetSchemaVerMinor(), 1);
    EXPECT_EQ(pInfo->GetFileVerMajor(), 1);
    EXPECT_EQ(pInfo->GetFileVerMinor(), 0);
    EXPECT_EQ(pInfo->GetFileVerSubMinor(), 0);
    EXPECT_EQ(pInfo->GetScheme(), GenTL::URL_SCHEME_LOCAL);
    // Not answered by this producer: reported with the producer's code.
    const auto caught = Catch<QvApi::CQvGenTLErrorException>([&] { pInfo->GetFileSize(); });
    EXPECT_EQ(caught.code, GenTL::GC_ERR_NOT_IMPLEMENTED);
    EXPECT_EQ(caught.function, "GCGetPortURLInfo");
    EXPECT_EQ(caught.description.rfind(Format("%d = GCGetPortURLInfo(0x%p, %u, %d, 0x", GenTL::GC_ERR_NOT_IMPLEMENTED,
                                              m_hTL, 0u, GenTL::URL_INFO_FILE_SIZE),
                                       0),
              0u)
        << caught.description;
}

TEST_F(FaultPort, AnswersThePortInformation)
{
    QvApi::CQvPort& port = Port();
    QvApi::IQvPortInfo* pInfo = port.GetIQvPortInfo();
    EXPECT_STREQ(pInfo->GetID().c_str(), "TLSystemPort");
    EXPECT_STREQ(pInfo->GetVendor().c_str(), "QvApi");
    EXPECT_STREQ(pInfo->GetModel().c_str(), "Fault-injection producer");
    EXPECT_STREQ(pInfo->GetTLType().c_str(), "Mixed");
    EXPECT_STREQ(pInfo->GetModule().c_str(), "TLSystem");
    EXPECT_TRUE(pInfo->IsLittleEndian());
    EXPECT_FALSE(pInfo->IsBigEndian());
    EXPECT_TRUE(pInfo->IsAccessRead());
    EXPECT_TRUE(pInfo->IsAccessWrite());
    EXPECT_FALSE(pInfo->IsAccessNA());
    EXPECT_FALSE(pInfo->IsAccessNI());
    EXPECT_STREQ(pInfo->GetVersion().c_str(), "1.0");
    EXPECT_STREQ(pInfo->GetPortName().c_str(), "TLPort");

    Rule(QV_FAULT_GCGetPortInfo, GenTL::GC_ERR_INVALID_HANDLE);
    const auto caught = Catch<QvApi::CQvGenTLErrorException>([&] { pInfo->GetPortName(); });
    EXPECT_EQ(caught.function, "GCGetPortInfo");
    EXPECT_EQ(caught.description.rfind(Format("%d = GCGetPortInfo(0x%p, %d, 0x", GenTL::GC_ERR_INVALID_HANDLE, m_hTL,
                                              GenTL::PORT_INFO_PORTNAME),
                                       0),
              0u)
        << caught.description;
}

TEST_F(FaultPort, ChoosesTheChunkAdapterByTheTransportLayerType)
{
    uint8_t chunkData[16] = {};
    struct SCase_
    {
        const char* tlType;
        bool (*isExpected)(GenApi::CChunkAdapter*);
    } cases[] = {
        {"U3V", [](GenApi::CChunkAdapter* p) { return dynamic_cast<GenApi::CChunkAdapterU3V*>(p) != nullptr; }},
        {"GEV", [](GenApi::CChunkAdapter* p) { return dynamic_cast<GenApi::CChunkAdapterGEV*>(p) != nullptr; }},
        {"CXP", [](GenApi::CChunkAdapter* p) { return dynamic_cast<GenApi::CChunkAdapterGeneric*>(p) != nullptr; }},
    };
    for (const SCase_& c : cases)
    {
        ASSERT_EQ(m_pControl->SetPortInfo(QV_FAULT_MODULE_SYSTEM, GenTL::PORT_INFO_TLTYPE, GenTL::INFO_DATATYPE_STRING,
                                          c.tlType, strlen(c.tlType) + 1),
                  0);
        QvApi::CQvPort& port = Port();
        try
        {
            port.AttachChunkBuffer(chunkData, sizeof(chunkData));
        }
        catch (const GenICam::GenericException&)
        {
            // Sixteen zero bytes are no valid chunk layout; the adapter exists anyway.
        }
        EXPECT_TRUE(c.isExpected(port.GetChunkAdapter())) << c.tlType;
        port.DetachChunkBuffer();
    }
}

TEST(PortURLs, FallBackToTheGenTL10URLAndCountNoneWithoutAnyURLCall)
{
    for (const char* producer : {"libqvfault_nourlinfo.cti", "libqvfault_nourl.cti"})
    {
        SCOPED_TRACE(producer);
        const QvFaultControl* pControl = QvTest::FaultControl(producer);
        ASSERT_NE(pControl, nullptr);
        QvApi::CQvGenTLLib lib(producer);
        GenTL::TL_HANDLE hTL = nullptr;
        ASSERT_EQ(lib.TLOpen(&hTL), 0);
        {
            QvApi::CQvPort port(&lib, hTL, GenApi::RW, "System_T");
            if (lib.GCGetPortURL != nullptr)
            {
                EXPECT_EQ(port.GetPortURLCount(), 1u);
                EXPECT_EQ(std::string(port.GetIQvPortURLInfo()->GetURL().c_str()).rfind("local:QvFaultSystem.xml", 0), 0u);
                EXPECT_NE(port.GetINodeMap()->GetNode("QvFaultModuleValue"), nullptr);
            }
            else
            {
                EXPECT_EQ(port.GetPortURLCount(), 0u);
                EXPECT_EQ(Catch<QvApi::CQvGenTLErrorException>([&] { port.GetIQvPortURLInfo()->GetURL(); }).code,
                          GenTL::GC_ERR_NOT_IMPLEMENTED);
            }
        }
        lib.TLClose(hTL);
    }
}
