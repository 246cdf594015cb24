// The whole module tree created and released many times: every listener thread ends with its
// module, and (in the AddressSanitizer build) nothing leaks.
#include <chrono>
#include <cstdlib>
#include <vector>

#include <gtest/gtest.h>

#include <QvApi_TL.h>

#include "tests/QvApi_TL/Modules/ModuleTestSupport.h"

using namespace QvApi;

namespace
{
int Rounds()
{
    const char* text = getenv("QV_MODULE_STRESS_ROUNDS");
    return text != nullptr ? atoi(text) : 200;
}

// One system with its three interfaces and six cameras, every listener running; the number of
// threads seen while everything is open.
int OpenAndReleaseEverything()
{
    CIQvSystemPtr system(CreateIQvSystem());
    EXPECT_EQ(system->GetInterfaceCount(), 3u);
    system->StartEventAcquisitionThread();
    std::vector<CIQvDevicePtr> devices;
    for (size_t i = 0; i < system->GetInterfaceCount(); ++i)
    {
        IQvInterface* pInterface = system->GetIQvInterface(i);
        pInterface->StartEventAcquisitionThread();
        for (size_t d = 0; d < pInterface->GetDeviceCount(); ++d)
        {
            devices.emplace_back(pInterface->CreateIQvDevice(d, GenTL::DEVICE_ACCESS_CONTROL));
            devices.back()->StartEventAcquisitionThread();
        }
    }
    EXPECT_EQ(devices.size(), 6u);
    const int open = QvModuleTest::ThreadCount();
    devices.clear(); // children first
    return open;
}
} // namespace

TEST(ModuleTreeStress, LeavesNoThreadBehindAfterEachRelease)
{
    QvTest::CScopedEnvironment cameras("QVGENTL_VIRTUAL", "U3V:2,GEV:2,CXP:2");
    CQvApiInitializer library;
    int before = QvModuleTest::ThreadCount();
    const auto start = std::chrono::steady_clock::now();
    const int rounds = Rounds();
    for (int round = 0; round < rounds; ++round)
    {
        const int open = OpenAndReleaseEverything();
        // One error listener per module (1 + 3 + 6), a module listener per interface and device
        // (3 + 6) and the three device-level listeners per camera (18).
        ASSERT_GE(open, before + 37) << "round " << round;
#if defined(__SANITIZE_THREAD__)
        // ThreadSanitizer starts its own background thread with the first thread it sees.
        if (round == 0 && QvModuleTest::ThreadCount() == before + 1)
            ++before;
#endif
        ASSERT_EQ(QvModuleTest::ThreadCount(), before) << "round " << round;
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    RecordProperty("rounds", rounds);
    RecordProperty("milliseconds_per_round", static_cast<int>(seconds * 1000 / (rounds > 0 ? rounds : 1)));
    std::printf("%d rounds of 1 system, 3 interfaces, 6 cameras and 37 listeners in %.2f s\n", rounds, seconds);
}
