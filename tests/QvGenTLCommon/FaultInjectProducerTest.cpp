// The fault-injection producer itself: its module tree behaves like a GenTL producer, and its
// controls do what tests of the SDK rely on. Driven through the SDK's loader.
#include <chrono>
#include <cstring>
#include <future>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "FaultInjectSupport.h"
#include "QvGenTLCommon/QvGenTLLib.h"

using namespace GenTL;
using QvApi::CQvGenTLLib;
using namespace std::chrono_literals;

namespace
{
class FaultProducer : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_fault = QvTest::FaultControl();
        ASSERT_NE(m_fault, nullptr);
        m_lib = std::make_unique<CQvGenTLLib>("libqvfault.cti");
    }

    // Opens system, interface, device and stream.
    void OpenTree()
    {
        ASSERT_EQ(m_lib->TLOpen(&m_hTL), GC_ERR_SUCCESS);
        bool8_t changed = false;
        ASSERT_EQ(m_lib->TLUpdateInterfaceList(m_hTL, &changed, 100), GC_ERR_SUCCESS);
        EXPECT_TRUE(changed);
        ASSERT_EQ(m_lib->TLOpenInterface(m_hTL, "QvFaultIF0", &m_hIF), GC_ERR_SUCCESS);
        ASSERT_EQ(m_lib->IFUpdateDeviceList(m_hIF, &changed, 100), GC_ERR_SUCCESS);
        ASSERT_EQ(m_lib->IFOpenDevice(m_hIF, "QvFaultDevice0", DEVICE_ACCESS_CONTROL, &m_hDevice), GC_ERR_SUCCESS);
        ASSERT_EQ(m_lib->DevOpenDataStream(m_hDevice, "QvFaultStream0", &m_hStream), GC_ERR_SUCCESS);
    }

    std::string ReadString(GC_ERROR (*query)(void*, char*, size_t*), void* handle)
    {
        size_t size = 0;
        EXPECT_EQ(query(handle, nullptr, &size), GC_ERR_SUCCESS);
        std::vector<char> text(size);
        EXPECT_EQ(query(handle, text.data(), &size), GC_ERR_SUCCESS);
        return std::string(text.data());
    }

    std::string LastErrorText(GC_ERROR* code)
    {
        size_t size = 0;
        EXPECT_EQ(m_lib->GCGetLastError(code, nullptr, &size), GC_ERR_SUCCESS);
        std::vector<char> text(size);
        EXPECT_EQ(m_lib->GCGetLastError(code, text.data(), &size), GC_ERR_SUCCESS);
        return text.data();
    }

    const QvFaultControl* m_fault = nullptr;
    std::unique_ptr<CQvGenTLLib> m_lib;
    TL_HANDLE m_hTL = nullptr;
    IF_HANDLE m_hIF = nullptr;
    DEV_HANDLE m_hDevice = nullptr;
    DS_HANDLE m_hStream = nullptr;
};
} // namespace

TEST_F(FaultProducer, OpensItsModuleTreeAndRefusesStaleHandles)
{
    OpenTree();
    uint32_t count = 0;
    EXPECT_EQ(m_lib->TLGetNumInterfaces(m_hTL, &count), GC_ERR_SUCCESS);
    EXPECT_EQ(count, 1u);
    EXPECT_EQ(m_fault->GetModuleHandle(QV_FAULT_MODULE_DEVICE), m_hDevice);
    TL_HANDLE parent = nullptr;
    EXPECT_EQ(m_lib->IFGetParentTL(m_hIF, &parent), GC_ERR_SUCCESS);
    EXPECT_EQ(parent, m_hTL);
    // Closing the interface closes what lies below it.
    EXPECT_EQ(m_lib->IFClose(m_hIF), GC_ERR_SUCCESS);
    EXPECT_EQ(m_lib->DevClose(m_hDevice), GC_ERR_INVALID_HANDLE);
    EXPECT_EQ(m_lib->DSClose(m_hStream), GC_ERR_INVALID_HANDLE);
    EXPECT_EQ(m_lib->IFClose(nullptr), GC_ERR_INVALID_HANDLE);
    EXPECT_EQ(m_lib->TLClose(m_hTL), GC_ERR_SUCCESS);
}

TEST_F(FaultProducer, AnswersInformationInTwoPhases)
{
    OpenTree();
    INFO_DATATYPE type = 0;
    size_t size = 0;
    ASSERT_EQ(m_lib->DevGetInfo(m_hDevice, DEVICE_INFO_ID, &type, nullptr, &size), GC_ERR_SUCCESS);
    EXPECT_EQ(type, INFO_DATATYPE_STRING);
    EXPECT_EQ(size, strlen("QvFaultDevice0") + 1);
    std::vector<char> text(size);
    size_t small = size - 1;
    EXPECT_EQ(m_lib->DevGetInfo(m_hDevice, DEVICE_INFO_ID, &type, text.data(), &small), GC_ERR_BUFFER_TOO_SMALL);
    ASSERT_EQ(m_lib->DevGetInfo(m_hDevice, DEVICE_INFO_ID, &type, text.data(), &size), GC_ERR_SUCCESS);
    EXPECT_STREQ(text.data(), "QvFaultDevice0");

    const char* vendor = "Override";
    ASSERT_EQ(m_fault->SetModuleInfo(QV_FAULT_MODULE_SYSTEM, TL_INFO_VENDOR, INFO_DATATYPE_STRING, vendor, 9), 0);
    char answer[16] = {};
    size = sizeof(answer);
    EXPECT_EQ(m_lib->TLGetInfo(m_hTL, TL_INFO_VENDOR, &type, answer, &size), GC_ERR_SUCCESS);
    EXPECT_STREQ(answer, "Override");
}

TEST_F(FaultProducer, RulesFailChosenCallsAndRecordTheLastError)
{
    EXPECT_EQ(m_fault->GetInitCount(), 1);
    QvFaultRule rule = QvTest::FailWith(GC_ERR_IO, "Cable pulled.");
    rule.skipCalls = 1;
    rule.fireCalls = 1;
    m_fault->SetRule(QV_FAULT_TLOpen, &rule);
    EXPECT_EQ(m_lib->TLOpen(&m_hTL), GC_ERR_SUCCESS); // skipped
    EXPECT_EQ(m_lib->TLClose(m_hTL), GC_ERR_SUCCESS);
    EXPECT_EQ(m_lib->TLOpen(&m_hTL), GC_ERR_IO); // fires once
    GC_ERROR code = 0;
    EXPECT_EQ(LastErrorText(&code), "Cable pulled.");
    EXPECT_EQ(code, GC_ERR_IO);
    EXPECT_EQ(m_lib->TLOpen(&m_hTL), GC_ERR_SUCCESS); // spent
    EXPECT_EQ(m_fault->GetCallCount(QV_FAULT_TLOpen), 3u);
}

TEST_F(FaultProducer, RulesCanBeLimitedToOneModule)
{
    OpenTree();
    PORT_HANDLE hRemote = nullptr;
    ASSERT_EQ(m_lib->DevGetPort(m_hDevice, &hRemote), GC_ERR_SUCCESS);
    QvFaultRule rule = QvTest::FailWith(GC_ERR_TIMEOUT);
    rule.module = QV_FAULT_MODULE_REMOTE_DEVICE;
    m_fault->SetRule(QV_FAULT_GCReadPort, &rule);
    uint32_t value = 0;
    size_t size = sizeof(value);
    EXPECT_EQ(m_lib->GCReadPort(m_hDevice, 0, &value, &size), GC_ERR_SUCCESS);
    EXPECT_EQ(m_lib->GCReadPort(hRemote, 0, &value, &size), GC_ERR_TIMEOUT);
    GC_ERROR code = 0;
    EXPECT_EQ(LastErrorText(&code), "GCReadPort failed (injected).");
}

TEST_F(FaultProducer, ServesTheCameraDescriptionAndRegistersThroughThePort)
{
    OpenTree();
    PORT_HANDLE hRemote = nullptr;
    ASSERT_EQ(m_lib->DevGetPort(m_hDevice, &hRemote), GC_ERR_SUCCESS);
    uint32_t urls = 0;
    ASSERT_EQ(m_lib->GCGetNumPortURLs(hRemote, &urls), GC_ERR_SUCCESS);
    ASSERT_EQ(urls, 1u);
    char url[128] = {};
    size_t size = sizeof(url);
    INFO_DATATYPE type = 0;
    ASSERT_EQ(m_lib->GCGetPortURLInfo(hRemote, 0, URL_INFO_URL, &type, url, &size), GC_ERR_SUCCESS);
    unsigned long long address = 0, length = 0;
    ASSERT_EQ(sscanf(url, "local:QvFaultCamera.xml;%llx;%llx", &address, &length), 2) << url;
    std::string xml(length, '\0');
    size = length;
    ASSERT_EQ(m_lib->GCReadPort(hRemote, address, xml.data(), &size), GC_ERR_SUCCESS);
    EXPECT_EQ(xml.rfind("<?xml", 0), 0u);
    EXPECT_NE(xml.find("<Command Name=\"AcquisitionStart\""), std::string::npos);

    char portName[16] = {};
    size = sizeof(portName);
    ASSERT_EQ(m_lib->GCGetPortInfo(hRemote, PORT_INFO_PORTNAME, &type, portName, &size), GC_ERR_SUCCESS);
    EXPECT_STREQ(portName, "Device");

    uint32_t width = 100;
    size = sizeof(width);
    ASSERT_EQ(m_lib->GCWritePort(hRemote, 0x0, &width, &size), GC_ERR_SUCCESS);
    uint32_t payload = 0;
    size = sizeof(payload);
    ASSERT_EQ(m_lib->GCReadPort(hRemote, 0xC, &payload, &size), GC_ERR_SUCCESS);
    EXPECT_EQ(payload, 100u * 48u);
    QvFaultRule shortRead = QvTest::FailWith(GC_ERR_SUCCESS);
    shortRead.sizeAdjust = -2;
    m_fault->SetRule(QV_FAULT_GCReadPort, &shortRead);
    size = sizeof(payload);
    ASSERT_EQ(m_lib->GCReadPort(hRemote, 0xC, &payload, &size), GC_ERR_SUCCESS);
    EXPECT_EQ(size, 2u);
}

TEST_F(FaultProducer, DeliversBuffersThroughTheNewBufferEvent)
{
    OpenTree();
    std::vector<uint8_t> memory(64 * 48);
    BUFFER_HANDLE hBuffer = nullptr;
    int context = 0;
    ASSERT_EQ(m_lib->DSAnnounceBuffer(m_hStream, memory.data(), memory.size(), &context, &hBuffer), GC_ERR_SUCCESS);
    ASSERT_EQ(m_lib->DSQueueBuffer(m_hStream, hBuffer), GC_ERR_SUCCESS);
    EVENT_HANDLE hEvent = nullptr;
    ASSERT_EQ(m_lib->GCRegisterEvent(m_hStream, EVENT_NEW_BUFFER, &hEvent), GC_ERR_SUCCESS);
    EXPECT_EQ(m_lib->GCRegisterEvent(m_hStream, EVENT_NEW_BUFFER, &hEvent), GC_ERR_RESOURCE_IN_USE);
    EXPECT_EQ(m_fault->DeliverBuffers(1), 0); // not acquiring yet
    ASSERT_EQ(m_lib->DSStartAcquisition(m_hStream, ACQ_START_FLAGS_DEFAULT, GENTL_INFINITE), GC_ERR_SUCCESS);
    EXPECT_EQ(m_fault->DeliverBuffers(2), 1); // one queued buffer, one underrun
    EVENT_NEW_BUFFER_DATA data{};
    size_t size = sizeof(data);
    ASSERT_EQ(m_lib->EventGetData(hEvent, &data, &size, 100), GC_ERR_SUCCESS);
    EXPECT_EQ(data.BufferHandle, hBuffer);
    EXPECT_EQ(data.pUserPointer, &context);
    EXPECT_EQ(memory[5], 5); // frame 0: byte i = i
    size_t filled = 0;
    size = sizeof(filled);
    INFO_DATATYPE type = 0;
    ASSERT_EQ(m_lib->DSGetBufferInfo(m_hStream, hBuffer, BUFFER_INFO_SIZE_FILLED, &type, &filled, &size), GC_ERR_SUCCESS);
    EXPECT_EQ(filled, memory.size());
    uint64_t underruns = 0;
    size = sizeof(underruns);
    ASSERT_EQ(m_lib->DSGetInfo(m_hStream, STREAM_INFO_NUM_UNDERRUN, &type, &underruns, &size), GC_ERR_SUCCESS);
    EXPECT_EQ(underruns, 1u);
    size = sizeof(data);
    EXPECT_EQ(m_lib->EventGetData(hEvent, &data, &size, 0), GC_ERR_TIMEOUT);
    EXPECT_EQ(m_lib->DSStopAcquisition(m_hStream, ACQ_STOP_FLAGS_DEFAULT), GC_ERR_SUCCESS);
    EXPECT_EQ(m_lib->DSRevokeBuffer(m_hStream, hBuffer, nullptr, nullptr), GC_ERR_SUCCESS);
    EXPECT_EQ(m_lib->GCUnregisterEvent(m_hStream, EVENT_NEW_BUFFER), GC_ERR_SUCCESS);
}

TEST_F(FaultProducer, QueuesErrorEventsThatEventGetDataInfoDecodes)
{
    OpenTree();
    EVENT_HANDLE hEvent = nullptr;
    ASSERT_EQ(m_lib->GCRegisterEvent(m_hDevice, EVENT_ERROR, &hEvent), GC_ERR_SUCCESS);
    ASSERT_EQ(m_fault->PushErrorEvent(m_hDevice, GC_ERR_IO, "Link lost."), 0);
    char record[4096];
    size_t size = sizeof(record);
    ASSERT_EQ(m_lib->EventGetData(hEvent, record, &size, 100), GC_ERR_SUCCESS);
    INFO_DATATYPE type = 0;
    int32_t code = 0;
    size_t codeSize = sizeof(code);
    ASSERT_EQ(m_lib->EventGetDataInfo(hEvent, record, size, EVENT_DATA_ID, &type, &code, &codeSize), GC_ERR_SUCCESS);
    EXPECT_EQ(type, INFO_DATATYPE_INT32);
    EXPECT_EQ(code, GC_ERR_IO);
    size_t textSize = 0;
    ASSERT_EQ(m_lib->EventGetDataInfo(hEvent, record, size, EVENT_DATA_VALUE, &type, nullptr, &textSize), GC_ERR_SUCCESS);
    std::vector<char> text(textSize);
    ASSERT_EQ(m_lib->EventGetDataInfo(hEvent, record, size, EVENT_DATA_VALUE, &type, text.data(), &textSize),
              GC_ERR_SUCCESS);
    EXPECT_STREQ(text.data(), "Link lost.");
    size_t maxSize = 0;
    size = sizeof(maxSize);
    ASSERT_EQ(m_lib->EventGetInfo(hEvent, EVENT_SIZE_MAX, &type, &maxSize, &size), GC_ERR_SUCCESS);
    EXPECT_EQ(maxSize, 4096u);
    EXPECT_EQ(m_fault->PushErrorEvent(m_hStream, GC_ERR_IO, "x"), GC_ERR_NOT_AVAILABLE); // not registered there
}

TEST_F(FaultProducer, EventKillReleasesABlockedWaitWithAbort)
{
    OpenTree();
    EVENT_HANDLE hEvent = nullptr;
    ASSERT_EQ(m_lib->GCRegisterEvent(m_hIF, EVENT_ERROR, &hEvent), GC_ERR_SUCCESS);
    auto wait = std::async(std::launch::async, [&] {
        char record[64];
        size_t size = sizeof(record);
        return m_lib->EventGetData(hEvent, record, &size, GENTL_INFINITE);
    });
    EXPECT_EQ(wait.wait_for(50ms), std::future_status::timeout);
    EXPECT_EQ(m_lib->EventKill(hEvent), GC_ERR_SUCCESS);
    ASSERT_EQ(wait.wait_for(5s), std::future_status::ready);
    EXPECT_EQ(wait.get(), GC_ERR_ABORT);
}

TEST_F(FaultProducer, RefusesCallsBeforeInitialisation)
{
    ASSERT_EQ(m_lib->GCCloseLib(), GC_ERR_SUCCESS); // back to no initialisation
    EXPECT_EQ(m_fault->GetInitCount(), 0);
    EXPECT_EQ(m_lib->TLOpen(&m_hTL), GC_ERR_NOT_INITIALIZED);
    GC_ERROR code = 0;
    EXPECT_EQ(LastErrorText(&code), "GCInitLib has not been called.");
    EXPECT_EQ(code, GC_ERR_NOT_INITIALIZED);
    ASSERT_EQ(m_lib->GCInitLib(), GC_ERR_SUCCESS); // for the binding's own GCCloseLib
}

TEST_F(FaultProducer, DelaysAnswersOnRequest)
{
    QvFaultRule slow = QvTest::FailWith(GC_ERR_SUCCESS);
    slow.delayMs = 60;
    m_fault->SetRule(QV_FAULT_TLOpen, &slow);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(m_lib->TLOpen(&m_hTL), GC_ERR_SUCCESS);
    EXPECT_GE(std::chrono::steady_clock::now() - start, 55ms);
}
