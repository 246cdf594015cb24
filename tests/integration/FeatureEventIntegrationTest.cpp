// Feature events of the SDK's own producer (libqvgentl.cti, loaded with dlopen) through the
// SDK: the virtual camera's test controls make the local device send EVENT_FEATURE_CHANGE and
// EVENT_FEATURE_INVALIDATE, and the device's listeners apply them to the remote node map: a
// change sets the named feature from its text (on the camera too), an invalidation makes the
// node map read the camera again instead of its cache. Events the node map cannot apply are
// dropped without stopping the listener.
#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <GenApi/GenApi.h>
#include <QvApi_TL.h>

#include "tests/QvApi_TL/Modules/ModuleRecorders.h"
#include "tests/QvApi_TL/Modules/ModuleTestSupport.h"

using namespace QvApi;
using QvModuleTest::Eventually;

namespace
{
/// Counts the GenApi callbacks of one node and keeps the thread of the last one.
class CNodeCallbacks
{
public:
    explicit CNodeCallbacks(GenApi::INode* pNode)
        : m_pNode(pNode), m_hCallback(GenApi::Register(pNode, [this](GenApi::INode*) {
              m_thread = std::this_thread::get_id();
              ++m_count; // after the thread, so that a reader that sees the count sees the thread
          }))
    {
    }
    ~CNodeCallbacks() { GenApi::Deregister(m_hCallback); }
    CNodeCallbacks(const CNodeCallbacks&) = delete;
    CNodeCallbacks& operator=(const CNodeCallbacks&) = delete;

    int Count() const { return m_count.load(); }
    std::thread::id Thread() const { return m_thread.load(); }

private:
    GenApi::INode* m_pNode;
    std::atomic<int> m_count{0};
    std::atomic<std::thread::id> m_thread{};
    GenApi::CallbackHandleType m_hCallback;
};

class FeatureEvents : public QvModuleTest::CModuleTest
{
protected:
    void SetUp() override
    {
        QvModuleTest::CModuleTest::SetUp();
        m_system.Reset(CreateIQvSystem());
        m_device.Reset(m_system->CreateFirstIQvDevice());
        ASSERT_EQ(std::string(m_device->GetIQvDeviceInfo()->GetTLType().c_str()), "U3V");
        m_device->StartEventAcquisitionThread();
    }
    void TearDown() override
    {
        // The listeners stop before a test's node callbacks go (they may be running one).
        if (m_device.Get() != nullptr)
            m_device->StopEventAcquisitionThread();
        m_callbacks.clear();
        m_device.Reset();
        m_system.Reset();
        QvModuleTest::CModuleTest::TearDown();
    }

    GenApi::INodeMap& Remote() { return *m_device->GetRemoteIQvPort()->GetINodeMap(); }
    GenApi::INode* Node(const char* name)
    {
        GenApi::INode* pNode = Remote().GetNode(name);
        EXPECT_NE(pNode, nullptr) << name;
        return pNode;
    }
    CNodeCallbacks& Watch(const char* name)
    {
        m_callbacks.push_back(std::make_unique<CNodeCallbacks>(Node(name)));
        return *m_callbacks.back();
    }
    void SendChange(const char* name, const char* value)
    {
        GenApi::CStringPtr(Node("TestFeatureChangeName"))->SetValue(name);
        GenApi::CStringPtr(Node("TestFeatureChangeValue"))->SetValue(value);
        GenApi::CCommandPtr(Node("TestFeatureChangeGenerate"))->Execute();
    }
    void SendInvalidate(const char* name)
    {
        GenApi::CStringPtr(Node("TestFeatureInvalidateName"))->SetValue(name);
        GenApi::CCommandPtr(Node("TestFeatureInvalidateGenerate"))->Execute();
    }
    /// The bytes of a register as the camera holds them now, past every cache of the node map.
    template <class T>
    T ReadCamera(const char* registerName)
    {
        GenApi::CRegisterPtr reg(Node(registerName));
        T value{};
        EXPECT_EQ(reg->GetLength(), int64_t(sizeof(T)));
        GenApi::CPortPtr(Node("Device"))->Read(&value, reg->GetAddress(), sizeof(T)); // U3V: little-endian
        return value;
    }

    // One U3V camera, so that the first device is little-endian like this machine.
    QvTest::CScopedEnvironment m_cameras{"QVGENTL_VIRTUAL", "U3V:1@320x240"};
    QvModuleTest::CProducerFolder m_folder;
    CIQvSystemPtr m_system;
    CIQvDevicePtr m_device;
    std::vector<std::unique_ptr<CNodeCallbacks>> m_callbacks;
};

TEST_F(FeatureEvents, FeatureChangeSetsTheNamedFeatureFromItsTextOnTheListenerThread)
{
    GenApi::CFloatPtr gain(Node("Gain"));
    gain->SetValue(0.0);
    CNodeCallbacks& gainChanged = Watch("Gain");

    SendChange("Gain", "6.5");
    ASSERT_TRUE(Eventually([&] { return gainChanged.Count() >= 1; }));
    EXPECT_EQ(gain->GetValue(), 6.5);
    EXPECT_EQ(ReadCamera<double>("GainReg"), 6.5) << "the value is written to the camera, not only cached";
    EXPECT_NE(gainChanged.Thread(), std::this_thread::get_id()) << "applied by the device's listener";

    // A feature the camera's description lacks and a value out of range change nothing, and
    // the listener goes on with the next event.
    SendChange("NoSuchFeature", "1");
    SendChange("Gain", "99");
    SendChange("Gain", "3");
    ASSERT_TRUE(Eventually([&] { return gainChanged.Count() >= 2; }));
    EXPECT_EQ(gain->GetValue(), 3.0);
    EXPECT_EQ(ReadCamera<double>("GainReg"), 3.0);
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(gainChanged.Count(), 2) << "one callback per applied change";
}

TEST_F(FeatureEvents, FeatureInvalidateMakesTheNodeMapReadTheCameraAgain)
{
    GenApi::CStringPtr userId(Node("DeviceUserID"));
    userId->SetValue("cached");
    ASSERT_EQ(userId->GetValue(), "cached");

    // The camera's register changes behind the node map (another host, the camera itself).
    GenApi::CRegisterPtr reg(Node("DeviceUserID"));
    char text[16] = "changed";
    ASSERT_EQ(reg->GetLength(), int64_t(sizeof(text)));
    GenApi::CPortPtr(Node("Device"))->Write(text, reg->GetAddress(), sizeof(text));
    ASSERT_EQ(userId->GetValue(), "cached") << "the node map answers from its cache until told otherwise";

    CNodeCallbacks& userIdChanged = Watch("DeviceUserID");
    SendInvalidate("NoSuchFeature"); // dropped; the listener goes on
    SendInvalidate("DeviceUserID");
    ASSERT_TRUE(Eventually([&] { return userIdChanged.Count() >= 1; }));
    EXPECT_EQ(userId->GetValue(), "changed");
    EXPECT_NE(userIdChanged.Thread(), std::this_thread::get_id()) << "applied by the device's listener";
}

TEST_F(FeatureEvents, EventsStopWithTheListenersAndResumeWhenTheyStartAgain)
{
    GenApi::CFloatPtr gain(Node("Gain"));
    gain->SetValue(0.0);
    CNodeCallbacks& gainChanged = Watch("Gain");
    m_device->StopEventAcquisitionThread();

    // The producer keeps the event until a listener reads it.
    SendChange("Gain", "12");
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(gainChanged.Count(), 0);
    EXPECT_EQ(gain->GetValue(), 0.0);

    m_device->StartEventAcquisitionThread();
    ASSERT_TRUE(Eventually([&] { return gainChanged.Count() >= 1; }));
    EXPECT_EQ(gain->GetValue(), 12.0);
}
} // namespace
