#include <algorithm>
#include <atomic>
#include <memory>
#include <stdexcept>
#include <thread>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <GenApi/GenApi.h>

#include "GenApiSnippet.h"

using namespace GenApi;
using QvTest::IntReg;
using QvTest::LoadSnippet;

namespace
{
class CRecorder
{
public:
    void OnInside(INode* pNode) { m_events.push_back("in:" + pNode->GetName().str()); }
    void OnOutside(INode* pNode) { m_events.push_back("out:" + pNode->GetName().str()); }
    void OnAny(INode* pNode) { m_fired.push_back(pNode->GetName().str()); }

    std::vector<std::string> TakeFired()
    {
        std::vector<std::string> fired;
        fired.swap(m_fired);
        std::sort(fired.begin(), fired.end());
        return fired;
    }
    std::vector<std::string> m_events;
    std::vector<std::string> m_fired;
};

const std::string kGraph = "<Category Name=\"Root\"><pFeature>Feat</pFeature><pFeature>Twice</pFeature><pFeature>Sel</pFeature></Category>" +
                           IntReg("Reg", 0) + IntReg("MaxReg", 4) + IntReg("Other", 0) +
                           "<Integer Name=\"Feat\"><pValue>Reg</pValue><pMax>MaxReg</pMax></Integer>"
                           "<IntSwissKnife Name=\"Twice\"><pVariable Name=\"F\">Feat</pVariable><Formula>F*2</Formula></IntSwissKnife>"
                           "<Integer Name=\"Listener\"><Value>0</Value><pInvalidator>Feat</pInvalidator></Integer>"
                           "<Integer Name=\"Avail\"><Value>1</Value></Integer>"
                           "<Integer Name=\"Gated\"><Value>0</Value><pIsAvailable>Avail</pIsAvailable></Integer>"
                           "<Enumeration Name=\"Sel\"><EnumEntry Name=\"A\"><Value>0</Value></EnumEntry>"
                           "<EnumEntry Name=\"B\"><Value>1</Value></EnumEntry><Value>0</Value><pSelected>Feat</pSelected></Enumeration>";
} // namespace

TEST(Callbacks, FireForTheWrittenNodeAndEveryDependentOnce)
{
    CMemoryPort port;
    port.Poke(4, {100}); // MaxReg
    CNodeMapRef nodeMap = LoadSnippet(kGraph, &port);
    CRecorder recorder;
    NodeList_t nodes;
    nodeMap._GetNodes(nodes);
    for (INode* pNode : nodes)
        Register(pNode, recorder, &CRecorder::OnAny);
    using Names = std::vector<std::string>;

    CIntegerPtr(nodeMap._GetNode("MaxReg"))->SetValue(50);
    EXPECT_EQ(recorder.TakeFired(), (Names{"Feat", "Listener", "MaxReg", "Root", "Twice"}));
    CIntegerPtr(nodeMap._GetNode("Feat"))->SetValue(5);
    EXPECT_EQ(recorder.TakeFired(), (Names{"Feat", "Listener", "Reg", "Root", "Twice"}));
    CIntegerPtr(nodeMap._GetNode("Feat"))->SetValue(5); // unchanged values fire too
    EXPECT_EQ(recorder.TakeFired(), (Names{"Feat", "Listener", "Reg", "Root", "Twice"}));
    CIntegerPtr(nodeMap._GetNode("Other"))->SetValue(7); // same address, no link
    EXPECT_EQ(recorder.TakeFired(), (Names{"Other"}));
    CIntegerPtr(nodeMap._GetNode("Avail"))->SetValue(0);
    EXPECT_EQ(recorder.TakeFired(), (Names{"Avail", "Gated"}));
    CEnumerationPtr(nodeMap._GetNode("Sel"))->FromString("B");
    EXPECT_EQ(recorder.TakeFired(), (Names{"Feat", "Listener", "Root", "Sel", "Twice"}));
    nodeMap._GetNode("Reg")->InvalidateNode();
    EXPECT_EQ(recorder.TakeFired(), (Names{"Feat", "Listener", "Reg", "Root", "Twice"}));
    CIntegerPtr(nodeMap._GetNode("Twice"))->GetValue(); // reads never fire
    EXPECT_TRUE(recorder.TakeFired().empty());
    nodeMap._InvalidateNodes();
    EXPECT_EQ(recorder.TakeFired().size(), nodes.size());
}

TEST(Callbacks, InsideLockCallbacksRunBeforeOutsideLockOnes)
{
    CMemoryPort port;
    port.Poke(4, {100}); // MaxReg
    CNodeMapRef nodeMap = LoadSnippet(kGraph, &port);
    CRecorder recorder;
    for (const char* name : {"Feat", "Twice"})
    {
        Register(nodeMap._GetNode(name), recorder, &CRecorder::OnInside, cbPostInsideLock);
        Register(nodeMap._GetNode(name), recorder, &CRecorder::OnOutside, cbPostOutsideLock);
    }
    CIntegerPtr(nodeMap._GetNode("Feat"))->SetValue(8);
    ASSERT_EQ(recorder.m_events.size(), 4u);
    EXPECT_EQ(recorder.m_events[0].substr(0, 3), "in:");
    EXPECT_EQ(recorder.m_events[1].substr(0, 3), "in:");
    EXPECT_EQ(recorder.m_events[2].substr(0, 4), "out:");
    EXPECT_EQ(recorder.m_events[3].substr(0, 4), "out:");
}

TEST(Callbacks, OutsideLockCallbacksRunWithTheLockFree)
{
    CMemoryPort port;
    port.Poke(4, {100}); // MaxReg
    CNodeMapRef nodeMap = LoadSnippet(kGraph, &port);
    bool lockWasFree = false;
    INode* pFeat = nodeMap._GetNode("Feat");
    Register(
        pFeat,
        [&](INode* pNode) {
            // Another thread could take the lock now.
            CLock& lock = pNode->GetNodeMap()->GetLock();
            std::thread probe([&] {
                lockWasFree = lock.TryLock();
                if (lockWasFree)
                    lock.Unlock();
            });
            probe.join();
        },
        cbPostOutsideLock);
    CIntegerPtr(pFeat)->SetValue(3);
    EXPECT_TRUE(lockWasFree);
}

TEST(Callbacks, DeregisteredCallbacksStopAndThrowingOnesAreContained)
{
    CMemoryPort port;
    port.Poke(4, {100}); // MaxReg
    CNodeMapRef nodeMap = LoadSnippet(kGraph, &port);
    int calls = 0;
    INode* pFeat = nodeMap._GetNode("Feat");
    const CallbackHandleType handle = Register(pFeat, [&](INode*) { ++calls; });
    Register(pFeat, [&](INode*) { throw std::runtime_error("listener failed"); });
    CIntegerPtr(pFeat)->SetValue(1);
    EXPECT_EQ(calls, 1);
    Deregister(handle);
    CIntegerPtr(pFeat)->SetValue(2);
    EXPECT_EQ(calls, 1);
    EXPECT_FALSE(pFeat->DeregisterCallback(handle));
    EXPECT_EQ(CIntegerPtr(pFeat)->GetValue(), 2);
}

TEST(Callbacks, ACallbackMayDeregisterItselfAndTheOthersOfItsNode)
{
    CMemoryPort port;
    port.Poke(4, {100}); // MaxReg
    CNodeMapRef nodeMap = LoadSnippet(kGraph, &port);
    INode* pFeat = nodeMap._GetNode("Feat");
    for (ECallbackType type : {cbPostInsideLock, cbPostOutsideLock})
    {
        std::vector<std::string> calls;
        CallbackHandleType first = 0, second = 0;
        first = Register(
            pFeat,
            [&](INode*) {
                calls.push_back("first");
                Deregister(second); // not yet run in this firing: it must not run now
                Deregister(first);  // runs on to the end with its captures intact
                calls.push_back("first ends");
            },
            type);
        second = Register(pFeat, [&](INode*) { calls.push_back("second"); }, type);
        CIntegerPtr(pFeat)->SetValue(1);
        EXPECT_EQ(calls, (std::vector<std::string>{"first", "first ends"})) << type;
        CIntegerPtr(pFeat)->SetValue(2);
        EXPECT_EQ(calls.size(), 2u) << type;
    }
}

// One thread writes, so that callbacks fire outside the lock, while another registers and
// deregisters callbacks whose state it deletes as soon as Deregister returns. A callback run
// after its Deregister returned, or destroyed while running, touches freed memory (the
// sanitizer builds report it) or counts into a closed state.
TEST(Callbacks, DeregisterWaitsForOtherThreadsFiringTheCallback)
{
    CMemoryPort port;
    port.Poke(4, {100}); // MaxReg
    CNodeMapRef nodeMap = LoadSnippet(kGraph, &port);
    INode* pFeat = nodeMap._GetNode("Feat");
    struct SState_
    {
        std::atomic<bool> open{true};
        std::atomic<int> callsAfterClose{0};
        std::atomic<int> calls{0};
    };
    std::atomic<bool> done{false};
    std::atomic<int> firedTotal{0};
    std::thread writer([&] {
        for (int64_t i = 0; !done.load(); ++i)
            CIntegerPtr(pFeat)->SetValue(i % 100);
    });
    int callsAfterClose = 0;
    for (int round = 0; round < 2000; ++round)
    {
        auto pState = std::make_unique<SState_>();
        SState_* pRaw = pState.get();
        const CallbackHandleType handle = Register(
            pFeat,
            [pRaw, &firedTotal](INode*) {
                if (!pRaw->open.load())
                    pRaw->callsAfterClose.fetch_add(1);
                pRaw->calls.fetch_add(1);
                firedTotal.fetch_add(1);
                std::this_thread::yield(); // widen the window in which Deregister may come
            },
            round % 2 == 0 ? cbPostOutsideLock : cbPostInsideLock);
        while (pRaw->calls.load() == 0 && round % 50 == 0)
            std::this_thread::yield();
        ASSERT_TRUE(pFeat->DeregisterCallback(handle));
        pRaw->open.store(false);
        std::this_thread::yield();
        callsAfterClose += pRaw->callsAfterClose.load();
        pState.reset(); // a later call would touch freed memory
    }
    done.store(true);
    writer.join();
    EXPECT_EQ(callsAfterClose, 0);
    EXPECT_GT(firedTotal.load(), 0);
}

TEST(Callbacks, CallbacksMayUseTheNodeMap)
{
    CMemoryPort port;
    port.Poke(4, {100}); // MaxReg
    CNodeMapRef nodeMap = LoadSnippet(kGraph, &port);
    int64_t seen = -1;
    Register(nodeMap._GetNode("Feat"), [&](INode*) { seen = CIntegerPtr(nodeMap._GetNode("Twice"))->GetValue(); });
    CIntegerPtr(nodeMap._GetNode("Feat"))->SetValue(4);
    EXPECT_EQ(seen, 8);
}

TEST(Selectors, ReportSelectedAndSelectingFeatures)
{
    CMemoryPort port;
    port.Poke(4, {100}); // MaxReg
    CNodeMapRef nodeMap = LoadSnippet(kGraph + "<Integer Name=\"W\"><pValue>Feat</pValue></Integer>", &port);
    CSelectorPtr selector = nodeMap._GetNode("Sel");
    EXPECT_TRUE(selector->IsSelector());
    FeatureList_t features;
    selector->GetSelectedFeatures(features);
    std::vector<std::string> names;
    for (IValue* pValue : features)
        names.push_back(pValue->GetNode()->GetName().str());
    EXPECT_EQ(names, (std::vector<std::string>{"Feat", "W"}));
    CSelectorPtr(nodeMap._GetNode("W"))->GetSelectingFeatures(features);
    ASSERT_EQ(features.size(), 1u);
    EXPECT_EQ(features[0]->GetNode()->GetName(), "Sel");
    EXPECT_FALSE(CSelectorPtr(nodeMap._GetNode("W"))->IsSelector());
}
