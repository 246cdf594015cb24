// GenTL event listeners: registration failures, the listener loop's handling of EventGetData
// results, error records turned into callbacks, and new-buffer records handed to the stream.
#include "QvApi_TL/QvEvent.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "QvApi_TL/QvEventError.h"
#include "QvApi_TL/QvEventNewBuffer.h"
#include "QvSDKCommon/QvCallbackManager.h"

#include "FaultPortFixture.h"
#include "ModuleRecorders.h"

using QvModuleTest::Catch;
using QvModuleTest::Format;
using namespace std::chrono_literals;
using QvModuleTest::CErrorRecorder;
using QvModuleTest::Eventually;

namespace
{
using CSystemErrorEvent = QvApi::CQvEventError<QvApi::IQvSystem, QvApi::IQvCallbackParamGenTLEventErrorTL>;

class EventListener : public QvModuleTest::CFaultPortTest
{
protected:
    std::unique_ptr<CSystemErrorEvent> MakeErrorEvent()
    {
        return std::make_unique<CSystemErrorEvent>(m_pLib.get(), m_hTL, m_pFakeSystem, &m_callbacks,
                                                   QvApi::QvCallbackTypeGenTLEventErrorTL, "QvApi_TL_EventError_TL",
                                                   "QvApi_TL/QvSystem.cpp");
    }

    // Stands for the module: only its address is handed to the callbacks.
    QvApi::IQvSystem* const m_pFakeSystem = reinterpret_cast<QvApi::IQvSystem*>(0x5151);
    CErrorRecorder m_recorder;
    QvApi::CQvCallbackManager m_callbacks;
};
} // namespace

TEST_F(EventListener, FailsWithoutGCRegisterEventWithCodeZero)
{
    TearDown();
    Open("libqvfault_noregisterevent.cti");
    const auto caught = Catch<QvApi::CQvGenTLErrorException>([&] { MakeErrorEvent(); });
    ASSERT_TRUE(caught.thrown);
    EXPECT_EQ(caught.code, 0);
    EXPECT_EQ(caught.function, "GCRegisterEvent");
    // The producer's last error of this thread has code 0 too, so its (empty) text is appended.
    EXPECT_EQ(caught.description.rfind("\"GCRegisterEvent\" is not implemented.", 0), 0u) << caught.description;
    EXPECT_EQ(caught.sourceFile, "QvApi_TL/QvEvent.cpp");
}

TEST_F(EventListener, FailsWhenTheProducerDoesNotImplementTheEventButIgnoresOtherRefusals)
{
    Rule(QV_FAULT_GCRegisterEvent, GenTL::GC_ERR_NOT_IMPLEMENTED);
    const auto caught = Catch<QvApi::CQvGenTLErrorException>([&] { MakeErrorEvent(); });
    EXPECT_EQ(caught.code, GenTL::GC_ERR_NOT_IMPLEMENTED);
    EXPECT_EQ(caught.description.rfind(Format("%d = GCRegisterEvent(0x%p, %d, 0x", GenTL::GC_ERR_NOT_IMPLEMENTED, m_hTL,
                                              GenTL::EVENT_ERROR),
                                       0),
              0u)
        << caught.description;

    // Any other refusal leaves a listener without an event: it never starts a thread.
    Rule(QV_FAULT_GCRegisterEvent, GenTL::GC_ERR_RESOURCE_IN_USE);
    std::unique_ptr<CSystemErrorEvent> pEvent = MakeErrorEvent();
    EXPECT_EQ(pEvent->GetEventHandle(), nullptr);
    pEvent->Start();
    EXPECT_FALSE(pEvent->IsWorking());
    EXPECT_EQ(Calls(QV_FAULT_EventGetData), 0u);
}

TEST_F(EventListener, TurnsErrorRecordsIntoCallbacksOnTheListenerThread)
{
    m_callbacks.RegisterCallback(&m_recorder);
    std::unique_ptr<CSystemErrorEvent> pEvent = MakeErrorEvent();
    ASSERT_NE(pEvent->GetEventHandle(), nullptr);
    pEvent->Start();
    ASSERT_EQ(m_pControl->PushErrorEvent(m_hTL, GenTL::GC_ERR_IO, "The cable was pulled."), 0);
    ASSERT_TRUE(m_recorder.Wait());
    EXPECT_EQ(m_recorder.m_type, QvApi::QvCallbackTypeGenTLEventErrorTL);
    EXPECT_EQ(m_recorder.m_code, GenTL::GC_ERR_IO);
    EXPECT_EQ(m_recorder.m_description, "The cable was pulled.");
    EXPECT_EQ(m_recorder.m_pModule, static_cast<void*>(m_pFakeSystem));
    pEvent.reset();
    // The listener unregistered itself from the producer.
    EXPECT_EQ(m_pControl->PushErrorEvent(m_hTL, GenTL::GC_ERR_IO, "late"), GenTL::GC_ERR_NOT_AVAILABLE);
}

TEST_F(EventListener, GivesNoCallbackWhenTheValueOfARecordCannotBeRead)
{
    m_callbacks.RegisterCallback(&m_recorder);
    // The ID's size query and read pass, the value's size query fails.
    QvFaultRule rule = QvTest::FailWith(GenTL::GC_ERR_INVALID_PARAMETER);
    rule.skipCalls = 2;
    rule.fireCalls = 1;
    m_pControl->SetRule(QV_FAULT_EventGetDataInfo, &rule);
    std::unique_ptr<CSystemErrorEvent> pEvent = MakeErrorEvent();
    pEvent->Start();
    ASSERT_EQ(m_pControl->PushErrorEvent(m_hTL, GenTL::GC_ERR_IO, "lost"), 0);
    ASSERT_EQ(m_pControl->PushErrorEvent(m_hTL, GenTL::GC_ERR_TIMEOUT, "second"), 0);
    ASSERT_TRUE(m_recorder.Wait());
    EXPECT_EQ(m_recorder.m_count.load(), 1);
    EXPECT_EQ(m_recorder.m_description, "second");
}

TEST_F(EventListener, SetsItsErrorEventForFailuresButNotForTimeOutsAndEndsOnAccessDenied)
{
    std::unique_ptr<CSystemErrorEvent> pEvent = MakeErrorEvent();
    Rule(QV_FAULT_EventGetData, GenTL::GC_ERR_TIMEOUT);
    pEvent->Start();
    ASSERT_TRUE(Eventually([&] { return Calls(QV_FAULT_EventGetData) > 20; }));
    EXPECT_NE(QvApi::WaitForSingleObject(pEvent->GetErrorEvent(), 0), 0u);

    Rule(QV_FAULT_EventGetData, GenTL::GC_ERR_IO);
    ASSERT_EQ(QvApi::WaitForSingleObject(pEvent->GetErrorEvent(), 2000), 0u);
    {
        GenICam::AutoLock lock(pEvent->GetLock());
        EXPECT_EQ(pEvent->GetLastGenTLError(), GenTL::GC_ERR_IO);
    }
    EXPECT_TRUE(pEvent->IsWorking());

    Rule(QV_FAULT_EventGetData, GenTL::GC_ERR_ACCESS_DENIED);
    EXPECT_TRUE(Eventually([&] { return !pEvent->IsWorking(); }));
}

TEST_F(EventListener, ReportsAFailedAbortAfterJoiningAndAFailedUnregistration)
{
    std::unique_ptr<CSystemErrorEvent> pEvent = MakeErrorEvent();
    const GenTL::EVENT_HANDLE hEvent = pEvent->GetEventHandle();
    pEvent->Start();
    ASSERT_TRUE(Eventually([&] { return pEvent->IsWorking(); }));
    Rule(QV_FAULT_EventKill, GenTL::GC_ERR_INVALID_HANDLE);
    const auto kill = Catch<QvApi::CQvGenTLErrorException>([&] { pEvent->Stop(); });
    EXPECT_EQ(kill.function, "EventKill");
    EXPECT_EQ(kill.description.rfind(Format("%d = EventKill(0x%p)", GenTL::GC_ERR_INVALID_HANDLE, hEvent), 0), 0u)
        << kill.description;
    EXPECT_FALSE(pEvent->IsWorking());

    Rule(QV_FAULT_GCUnregisterEvent, GenTL::GC_ERR_INVALID_HANDLE);
    const auto unregister = Catch<QvApi::CQvGenTLErrorException>([&] { pEvent->UnregisterEvent(); });
    EXPECT_EQ(unregister.description.rfind(
                  Format("%d = GCUnregisterEvent(0x%p, %d)", GenTL::GC_ERR_INVALID_HANDLE, m_hTL, GenTL::EVENT_ERROR), 0),
              0u)
        << unregister.description;
    EXPECT_EQ(pEvent->GetEventHandle(), nullptr);
    EXPECT_NO_THROW(pEvent->UnregisterEvent());
    m_pControl->ClearRule(QV_FAULT_EventKill);
    m_pControl->ClearRule(QV_FAULT_GCUnregisterEvent);
}

TEST_F(EventListener, ReceivesNewBufferRecordsAtRealTimePriorityAndSkipsThoseWithoutABuffer)
{
    // The stream's side of new buffers (OnNewBuffer) is exercised with the data stream itself;
    // here the records carry no buffer object and must be consumed without harm.
    GenTL::bool8_t changed = 0;
    GenTL::IF_HANDLE hIF = nullptr;
    GenTL::DEV_HANDLE hDevice = nullptr;
    GenTL::DS_HANDLE hStream = nullptr;
    ASSERT_EQ(m_pLib->TLUpdateInterfaceList(m_hTL, &changed, 0), 0);
    ASSERT_EQ(m_pLib->TLOpenInterface(m_hTL, "QvFaultIF0", &hIF), 0);
    ASSERT_EQ(m_pLib->IFUpdateDeviceList(hIF, &changed, 0), 0);
    ASSERT_EQ(m_pLib->IFOpenDevice(hIF, "QvFaultDevice0", GenTL::DEVICE_ACCESS_CONTROL, &hDevice), 0);
    ASSERT_EQ(m_pLib->DevOpenDataStream(hDevice, "QvFaultStream0", &hStream), 0);
    std::vector<GenTL::BUFFER_HANDLE> buffers(2);
    for (GenTL::BUFFER_HANDLE& hBuffer : buffers)
    {
        ASSERT_EQ(m_pLib->DSAllocAndAnnounceBuffer(hStream, 4096, nullptr, &hBuffer), 0);
        ASSERT_EQ(m_pLib->DSQueueBuffer(hStream, hBuffer), 0);
    }
    auto queuedForDelivery = [&] {
        GenTL::INFO_DATATYPE type = 0;
        size_t count = 0;
        size_t size = sizeof(count);
        EXPECT_EQ(m_pLib->DSGetInfo(hStream, GenTL::STREAM_INFO_NUM_AWAIT_DELIVERY, &type, &count, &size), 0);
        return count;
    };
    {
        QvApi::CQvEventNewBuffer listener(m_pLib.get(), hStream, "QvApi_TL_EventNewBuffer");
        EXPECT_EQ(listener.GetBufferSize(), sizeof(GenTL::EVENT_NEW_BUFFER_DATA));
        listener.Start();
        EXPECT_EQ(listener.GetPriority(), 90); // real-time round robin, as far as the process may
        ASSERT_EQ(m_pLib->DSStartAcquisition(hStream, GenTL::ACQ_START_FLAGS_DEFAULT, GENTL_INFINITE), 0);
        ASSERT_EQ(m_pControl->DeliverBuffers(2), 2);
        EXPECT_TRUE(Eventually([&] { return queuedForDelivery() == 0; }));
        EXPECT_TRUE(listener.IsWorking());
        m_pLib->DSStopAcquisition(hStream, GenTL::ACQ_STOP_FLAGS_DEFAULT);
    }
    m_pLib->DSFlushQueue(hStream, GenTL::ACQ_QUEUE_ALL_DISCARD);
    for (GenTL::BUFFER_HANDLE hBuffer : buffers)
        m_pLib->DSRevokeBuffer(hStream, hBuffer, nullptr, nullptr);
    m_pLib->DSClose(hStream);
    m_pLib->DevClose(hDevice);
    m_pLib->IFClose(hIF);
}
