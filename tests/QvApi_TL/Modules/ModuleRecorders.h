#pragma once

// Test doubles that watch the module tree from the application's side.

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include <QvApi_TL.h>

namespace QvModuleTest
{
/// Records the error callbacks it receives (any module) and signals each one.
class CErrorRecorder : public QvApi::IQvCallback
{
public:
    void Invoke(QvApi::IQvCallbackParamBase* param) override
    {
        m_type = param->GetCallbackType();
        if (auto* pError = dynamic_cast<QvApi::IQvCallbackParamGenTLEventError*>(param))
        {
            m_code = pError->GetGCError();
            m_description = pError->GetDescription().c_str();
        }
        if (auto* p = dynamic_cast<QvApi::IQvCallbackParamGenTLEventErrorTL*>(param))
            m_pModule = p->GetIQvSystem();
        else if (auto* p = dynamic_cast<QvApi::IQvCallbackParamGenTLEventErrorIF*>(param))
            m_pModule = p->GetIQvInterface();
        else if (auto* p = dynamic_cast<QvApi::IQvCallbackParamGenTLEventErrorDEV*>(param))
            m_pModule = p->GetIQvDevice();
        ++m_count;
        m_received.SetEvent();
    }
    /// The test owns the recorder; its manager only says it is done with it.
    void Release() override { ++m_released; }
    /// Waits for the next callback.
    bool Wait(unsigned timeoutMs = 3000) { return QvApi::WaitForSingleObject(&m_received, timeoutMs) == 0; }

    std::atomic<int> m_count{0};
    int m_released = 0;
    QvApi::EQvCallbackType_t m_type = QvApi::QvCallbackTypeGenTLEventNewBuffer;
    int32_t m_code = 0;
    std::string m_description;
    void* m_pModule = nullptr;
    QvApi::CEventObject m_received{nullptr, false, false, nullptr};
};

/// Polls \a condition every 5 ms for up to \a timeoutMs.
template <class Condition>
bool Eventually(Condition condition, int timeoutMs = 3000)
{
    for (int waited = 0; waited < timeoutMs; waited += 5)
    {
        if (condition())
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return condition();
}
} // namespace QvModuleTest
