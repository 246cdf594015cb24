// The owning pointer arrays, the RAII owner of releasable objects and the initialiser.
#include <QvApi/QvPtrArray.h>

#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <QvApi_TL.h>

#include "ModuleTestSupport.h"

using namespace QvApi;
using QvModuleTest::Catch;

namespace
{
// What the fakes saw, in order.
std::vector<std::string> g_log;

class CFakeDevice final : public IQvDeviceReleasable
{
public:
    explicit CFakeDevice(std::string name, bool failStart = false) : m_name(std::move(name)), m_failStart(failStart) {}
    void* RegisterCallback(IQvCallback*) override { return nullptr; }
    void DeregisterCallback(void*) override {}
    void StartEventAcquisitionThread() override {}
    void StopEventAcquisitionThread() override {}
    IQvInterface* GetIQvInterface() override { return nullptr; }
    IQvPort* GetLocalIQvPort() override { return nullptr; }
    IQvDeviceInfo* GetIQvDeviceInfo() const override { return nullptr; }
    IQvPort* GetRemoteIQvPort() override { return nullptr; }
    size_t GetDataStreamCount() const override { return 0; }
    IQvDataStreamReleasable* CreateIQvDataStream(size_t, IQvAllocator*) override { return nullptr; }
    void AcquisitionStart() override
    {
        if (m_failStart)
            throw GenICam::RuntimeException("start failed", "test", 1);
        g_log.push_back("start " + m_name);
    }
    void AcquisitionStop() override { g_log.push_back("stop " + m_name); }
    bool IsDeviceLost() override { return false; }
    void Release() override
    {
        g_log.push_back("release " + m_name);
        delete this;
    }

private:
    ~CFakeDevice() = default;
    std::string m_name;
    bool m_failStart;
};

class CFakeSystem final : public IQvSystemReleasable
{
public:
    CFakeSystem(std::string name, IQvDeviceReleasable* pDevice) : m_name(std::move(name)), m_pDevice(pDevice) {}
    void* RegisterCallback(IQvCallback*) override { return nullptr; }
    void DeregisterCallback(void*) override {}
    void StartEventAcquisitionThread() override {}
    void StopEventAcquisitionThread() override {}
    _EQvSystemVendor_t GetQvSystemVendor() override { return QvSystemVendor_Default; }
    IQvPort* GetIQvPort() override { return nullptr; }
    IQvSystemInfo* GetIQvSystemInfo() const override { return nullptr; }
    bool UpdateInterfaceList() override { return false; }
    size_t GetInterfaceCount() const override { return 0; }
    IQvInterface* GetIQvInterface(size_t) override { return nullptr; }
    IQvDeviceReleasable* CreateFirstIQvDevice(GenTL::DEVICE_ACCESS_FLAGS) override
    {
        g_log.push_back("first " + m_name);
        if (m_pDevice == nullptr)
            throw GenICam::RuntimeException("There is no available device.", "test", 1);
        IQvDeviceReleasable* pDevice = m_pDevice;
        m_pDevice = nullptr;
        return pDevice;
    }
    int64_t AddRef() override { return 2; }
    void Release() override
    {
        g_log.push_back("release " + m_name);
        if (m_pDevice != nullptr)
            m_pDevice->Release();
        delete this;
    }

private:
    ~CFakeSystem() = default;
    std::string m_name;
    IQvDeviceReleasable* m_pDevice;
};

class PtrArray : public ::testing::Test
{
protected:
    void SetUp() override { g_log.clear(); }
};
} // namespace

TEST_F(PtrArray, RegistersAtTheEndAndDeregistersWithoutReleasing)
{
    CIQvDevicePtrArray devices;
    EXPECT_EQ(devices.Register(new CFakeDevice("a")), 0u);
    EXPECT_EQ(devices.Register(new CFakeDevice("b")), 1u);
    EXPECT_EQ(devices.Register(new CFakeDevice("c")), 2u);
    EXPECT_EQ(devices.GetSize(), 3u);
    IQvDeviceReleasable* pB = devices.Deregister(1);
    EXPECT_EQ(devices.GetSize(), 2u);
    EXPECT_TRUE(g_log.empty());
    pB->AcquisitionStart();
    EXPECT_EQ(g_log.back(), "start b");
    pB->Release();
    devices[1]->AcquisitionStart();
    EXPECT_EQ(g_log.back(), "start c"); // the later elements moved down
}

TEST_F(PtrArray, ChecksIndexesAgainstZeroAndTheSize)
{
    CIQvDevicePtrArray devices;
    devices.Register(new CFakeDevice("a"));
    devices.Register(new CFakeDevice("b"));
    EXPECT_EQ(Catch<GenICam::OutOfRangeException>([&] { devices[2]; }).description,
              "nIndex = 2 must be smaller than Max = 2");
    EXPECT_EQ(Catch<GenICam::OutOfRangeException>([&] { devices.Deregister(2); }).description,
              "nIndex = 2 must be smaller than Max = 2");
    EXPECT_EQ(Catch<GenICam::OutOfRangeException>([&] { devices.Deregister(static_cast<size_t>(-3)); }).description,
              "nIndex = -3 must be equal or greater than Min = 0");
    EXPECT_EQ(devices.GetSize(), 2u);
}

TEST_F(PtrArray, ReleasesFirstToLastOnReleaseAndOnDestruction)
{
    {
        CIQvDevicePtrArray devices;
        devices.Register(new CFakeDevice("a"));
        devices.Register(new CFakeDevice("b"));
        devices.Release();
        EXPECT_EQ(devices.GetSize(), 0u);
        devices.Register(new CFakeDevice("c"));
        devices.Register(new CFakeDevice("d"));
    }
    const std::vector<std::string> expected = {"release a", "release b", "release c", "release d"};
    EXPECT_EQ(g_log, expected);
}

TEST_F(PtrArray, StartsAndStopsDevicesInOrderUntilOneFails)
{
    CIQvDevicePtrArray devices;
    devices.Register(new CFakeDevice("a"));
    devices.Register(new CFakeDevice("b", true));
    devices.Register(new CFakeDevice("c"));
    EXPECT_THROW(devices.AcquisitionStart(), GenICam::RuntimeException);
    devices.AcquisitionStop();
    const std::vector<std::string> expected = {"start a", "stop a", "stop b", "stop c"};
    EXPECT_EQ(g_log, expected);
}

TEST_F(PtrArray, TakesTheFirstDeviceAnySystemYieldsAndPassesOverFailingSystems)
{
    CIQvSystemPtrArray systems;
    EXPECT_EQ(Catch<GenICam::RuntimeException>([&] { systems.CreateFirstIQvDevice(GenTL::DEVICE_ACCESS_CONTROL); }).description,
              "There is no available device.");
    systems.Register(new CFakeSystem("s1", nullptr));
    systems.Register(new CFakeSystem("s2", new CFakeDevice("d2")));
    systems.Register(new CFakeSystem("s3", new CFakeDevice("d3")));
    CIQvDevicePtr device(systems.CreateFirstIQvDevice(GenTL::DEVICE_ACCESS_CONTROL));
    ASSERT_TRUE(device);
    device->AcquisitionStart();
    EXPECT_EQ(g_log.back(), "start d2");
    device.Reset();
    systems.Release();
    const std::vector<std::string> expected = {"first s1", "first s2", "start d2", "release d2",
                                               "release s1", "release s2", "release s3", "release d3"};
    EXPECT_EQ(g_log, expected);
}

TEST_F(PtrArray, OwnersReleaseOnceWhateverWayTheyEnd)
{
    {
        CIQvDevicePtr first(new CFakeDevice("a"));
        CIQvDevicePtr second(std::move(first));
        EXPECT_FALSE(first);
        CIQvDevicePtr third;
        third = std::move(second);
        third.Reset(new CFakeDevice("b"));
        IQvDeviceReleasable* pKept = CIQvDevicePtr(new CFakeDevice("c")).Detach();
        pKept->Release();
    }
    const std::vector<std::string> expected = {"release a", "release c", "release b"};
    EXPECT_EQ(g_log, expected);
}

TEST(ApiInitializer, PairsInitialiseAndTerminate)
{
    {
        CQvApiInitializer outer;
        {
            CQvApiInitializer inner;
        }
        EXPECT_EQ(GetQvApiVersion(), QVAPI_VERSION);
    }
    EXPECT_EQ(Catch<GenICam::RuntimeException>([] { CheckQvApiInitialized(); }).description,
              "QvApi is not initialized.");
    EXPECT_THROW(CQvApiInitializer wrong(0x01010000), GenICam::RuntimeException);
}
