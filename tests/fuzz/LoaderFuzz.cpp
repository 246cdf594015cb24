// Fuzz target for the description loader and everything a loaded node map evaluates.
//
// Input: one flag byte, then the description. Flags: bit 0 the description is zip data (else XML
// text); bits 1-2 pick what the device registers hold (zeros, ones, counting bytes, a mix of
// extremes); bit 3 also extracts the sub-tree of one node (bits 4-7 pick which) into a second
// node map, loaded and touched the same way. The node map is loaded, a port is connected to every
// Port node, a callback is put on every node, and then every node is touched through the public
// interfaces: identity and help texts, access mode, links, values (cached, verified, uncached),
// limits, entries, writes of the value read back and of edge values, imposed limits and access,
// commands, polling and invalidation.
//
// Only GenICam exceptions may come out of the engine: anything else escapes this function and
// libFuzzer reports it, like any crash, leak or hang.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include <Base/GCException.h>
#include <GenApi/GenApi.h>
#include <GenApi/NodeMapFactory.h>
#include <GenApi/PortImpl.h>

using namespace GenApi;

namespace
{
/**
 * A device register space: 64 KiB of bytes repeated over the whole address range, so that any
 * address a description computes reads something, at memcpy speed even for large registers.
 */
class CFuzzPort : public CPortImpl
{
public:
    explicit CFuzzPort(unsigned pattern) : m_bytes(kSpaceBytes)
    {
        for (size_t i = 0; i < m_bytes.size(); ++i)
        {
            switch (pattern)
            {
            case 0:
                m_bytes[i] = 0;
                break;
            case 1:
                m_bytes[i] = 0xFF;
                break;
            case 2:
                m_bytes[i] = static_cast<uint8_t>(i * 7 + 1);
                break;
            default:
                static const uint8_t kMix[] = {0x80, 0x00, 0x00, 0x00, 0x7F, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x80, 0x7F};
                m_bytes[i] = kMix[i % sizeof(kMix)];
                break;
            }
        }
    }

    EAccessMode GetAccessMode() const override { return RW; }
    void Read(void* pBuffer, int64_t address, int64_t lengthBytes) override
    {
        CheckSpan(address, lengthBytes);
        uint8_t* pOut = static_cast<uint8_t*>(pBuffer);
        Copy(address, lengthBytes, [&](size_t offset, size_t count, size_t done) {
            std::memcpy(pOut + done, m_bytes.data() + offset, count);
        });
    }
    void Write(const void* pBuffer, int64_t address, int64_t lengthBytes) override
    {
        CheckSpan(address, lengthBytes);
        const uint8_t* pIn = static_cast<const uint8_t*>(pBuffer);
        Copy(address, lengthBytes, [&](size_t offset, size_t count, size_t done) {
            std::memcpy(m_bytes.data() + offset, pIn + done, count);
        });
    }

private:
    static constexpr size_t kSpaceBytes = 64 * 1024;

    static void CheckSpan(int64_t address, int64_t lengthBytes)
    {
        // What a transport layer refuses: the engine must turn it into its own exception.
        if (lengthBytes < 0 || address < 0 || lengthBytes > (256 << 20))
            throw RUNTIME_EXCEPTION("FuzzPort: access out of range (address %lld, length %lld)",
                                    static_cast<long long>(address), static_cast<long long>(lengthBytes));
    }
    template <class F>
    static void Copy(int64_t address, int64_t lengthBytes, F copy)
    {
        size_t done = 0;
        const size_t total = static_cast<size_t>(lengthBytes);
        size_t offset = static_cast<size_t>(address) % kSpaceBytes;
        while (done < total)
        {
            const size_t count = std::min(total - done, kSpaceBytes - offset);
            copy(offset, count, done);
            done += count;
            offset = 0;
        }
    }

    std::vector<uint8_t> m_bytes;
};

template <class F>
void Try(F action)
{
    try
    {
        action();
    }
    catch (const GenICam::GenericException&)
    {
    }
}

// Largest register the target reads into its own buffer (larger ones are still read by ToString).
constexpr int64_t kMaxBufferBytes = 1 << 20;
// Entries set one by one per enumeration; the rest are only listed.
constexpr size_t kMaxEntriesSet = 32;

void TouchIdentity(INode* pNode)
{
    Try([&] { (void)pNode->GetAccessMode(); });
    Try([&] { (void)pNode->GetName(true); });
    Try([&] { (void)pNode->GetNameSpace(); });
    Try([&] { (void)pNode->GetVisibility(); });
    Try([&] { (void)pNode->IsCachable(); });
    Try([&] { (void)pNode->IsAccessModeCacheable(); });
    Try([&] { (void)pNode->GetCachingMode(); });
    Try([&] { (void)pNode->GetPollingTime(); });
    Try([&] { (void)pNode->GetToolTip(); });
    Try([&] { (void)pNode->GetDescription(); });
    Try([&] { (void)pNode->GetDisplayName(); });
    Try([&] { (void)pNode->GetDeviceName(); });
    Try([&] { (void)pNode->GetEventID(); });
    Try([&] { (void)pNode->IsStreamable(); });
    Try([&] { (void)pNode->GetDocuURL(); });
    Try([&] { (void)pNode->IsDeprecated(); });
    Try([&] { (void)pNode->IsFeature(); });
    Try([&] { (void)pNode->GetAlias(); });
    Try([&] { (void)pNode->GetCastAlias(); });
    Try([&] {
        NodeList_t links;
        pNode->GetChildren(links, ctReadingChildren);
        pNode->GetChildren(links, ctWritingChildren);
        pNode->GetChildren(links, ctInvalidatingChildren);
        pNode->GetParents(links);
    });
    Try([&] {
        GenICam::gcstring_vector names;
        pNode->GetPropertyNames(names);
        for (const GenICam::gcstring& name : names)
        {
            GenICam::gcstring value, attribute;
            pNode->GetProperty(name, value, attribute);
        }
    });
    Try([&] {
        CSelectorPtr pSelector = pNode;
        if (!pSelector)
            return;
        FeatureList_t features;
        if (pSelector->IsSelector())
            pSelector->GetSelectedFeatures(features);
        pSelector->GetSelectingFeatures(features);
    });
}

void TouchLimits(INode* pNode)
{
    if (CIntegerPtr pInteger = pNode)
    {
        Try([&] { (void)pInteger->GetValue(); });
        Try([&] { (void)pInteger->GetMin(); });
        Try([&] { (void)pInteger->GetMax(); });
        Try([&] { (void)pInteger->GetInc(); });
        Try([&] { (void)pInteger->GetIncMode(); });
        Try([&] { (void)pInteger->GetListOfValidValues(true); });
        Try([&] { (void)pInteger->GetListOfValidValues(false); });
        Try([&] { (void)pInteger->GetRepresentation(); });
        Try([&] { (void)pInteger->GetUnit(); });
    }
    if (CFloatPtr pFloat = pNode)
    {
        Try([&] { (void)pFloat->GetValue(); });
        Try([&] { (void)pFloat->GetMin(); });
        Try([&] { (void)pFloat->GetMax(); });
        Try([&] {
            if (pFloat->HasInc())
                (void)pFloat->GetInc();
        });
        Try([&] { (void)pFloat->GetIncMode(); });
        Try([&] { (void)pFloat->GetListOfValidValues(true); });
        Try([&] { (void)pFloat->GetRepresentation(); });
        Try([&] { (void)pFloat->GetUnit(); });
        Try([&] { (void)pFloat->GetDisplayNotation(); });
        Try([&] { (void)pFloat->GetDisplayPrecision(); });
    }
    if (CBooleanPtr pBoolean = pNode)
        Try([&] { (void)pBoolean->GetValue(); });
    if (CEnumerationPtr pEnumeration = pNode)
    {
        Try([&] {
            StringList_t symbolics;
            pEnumeration->GetSymbolics(symbolics);
            for (const GenICam::gcstring& symbolic : symbolics)
                (void)pEnumeration->GetEntryByName(symbolic);
        });
        Try([&] {
            NodeList_t entries;
            pEnumeration->GetEntries(entries);
        });
        Try([&] { (void)pEnumeration->GetIntValue(); });
        Try([&] {
            if (IEnumEntry* pEntry = pEnumeration->GetCurrentEntry())
                (void)pEntry->GetSymbolic();
        });
        Try([&] { (void)pEnumeration->GetEntry(pEnumeration->GetIntValue()); });
    }
    if (CEnumEntryPtr pEntry = pNode)
    {
        Try([&] { (void)pEntry->GetValue(); });
        Try([&] { (void)pEntry->GetSymbolic(); });
        Try([&] { (void)pEntry->GetNumericValue(); });
        Try([&] { (void)pEntry->IsSelfClearing(); });
    }
    if (CStringPtr pString = pNode)
    {
        Try([&] { (void)pString->GetValue(); });
        Try([&] { (void)pString->GetMaxLength(); });
    }
    if (CRegisterPtr pRegister = pNode)
    {
        Try([&] { (void)pRegister->GetAddress(); });
        Try([&] {
            const int64_t length = pRegister->GetLength();
            if (length < 0 || length > kMaxBufferBytes)
                return;
            std::vector<uint8_t> buffer(static_cast<size_t>(length) + 1);
            pRegister->Get(buffer.data(), length);
            pRegister->Get(buffer.data(), length, true, true);
            pRegister->Get(buffer.data(), length + 1); // wrong length: an exception
        });
    }
    if (CCategoryPtr pCategory = pNode)
        Try([&] {
            FeatureList_t features;
            pCategory->GetFeatures(features);
            for (IValue* pFeature : features)
                (void)pFeature->GetNode()->GetName();
        });
    if (CCommandPtr pCommand = pNode)
        Try([&] { (void)pCommand->IsDone(false); });
}

void TouchValue(INode* pNode)
{
    CValuePtr pValue = pNode;
    if (!pValue)
        return;
    Try([&] { (void)pValue->ToString(); });
    Try([&] { (void)pValue->ToString(true, false); });
    Try([&] { (void)pValue->ToString(false, true); });
    Try([&] { (void)pValue->IsValueCacheValid(); });
}

// Writes: the value read back, edge values and junk. Every outcome is allowed but a crash.
void Write(INode* pNode)
{
    if (CValuePtr pValue = pNode)
    {
        Try([&] { pValue->FromString(pValue->ToString()); });
        Try([&] { pValue->FromString(pValue->ToString(), false); });
        Try([&] { pValue->FromString("0x7fffffffffffffffff junk"); });
    }
    if (CIntegerPtr pInteger = pNode)
    {
        Try([&] { pInteger->SetValue(pInteger->GetMin()); });
        Try([&] { pInteger->SetValue(pInteger->GetMax()); });
        Try([&] {
            const int64_t value = pInteger->GetValue();
            const int64_t inc = pInteger->GetInc();
            if (inc > 0 && value <= std::numeric_limits<int64_t>::max() - inc)
                pInteger->SetValue(value + inc);
        });
        Try([&] { pInteger->SetValue(std::numeric_limits<int64_t>::min()); });
        Try([&] { pInteger->SetValue(std::numeric_limits<int64_t>::max(), false); });
    }
    if (CFloatPtr pFloat = pNode)
    {
        Try([&] { pFloat->SetValue(pFloat->GetMin()); });
        Try([&] { pFloat->SetValue(pFloat->GetMax()); });
        Try([&] { pFloat->SetValue(std::nan("")); });
        Try([&] { pFloat->SetValue(-std::numeric_limits<double>::infinity(), false); });
        Try([&] { pFloat->SetValue(1e300); });
    }
    if (CBooleanPtr pBoolean = pNode)
    {
        Try([&] { pBoolean->SetValue(!pBoolean->GetValue()); });
        Try([&] { pBoolean->SetValue(!pBoolean->GetValue(true, true)); });
    }
    if (CEnumerationPtr pEnumeration = pNode)
    {
        Try([&] {
            NodeList_t entries;
            pEnumeration->GetEntries(entries);
            for (size_t i = 0; i < entries.size() && i < kMaxEntriesSet; ++i)
                Try([&] {
                    CEnumEntryPtr pEntry = entries[i];
                    pEnumeration->SetIntValue(pEntry->GetValue());
                    pEnumeration->FromString(pEntry->GetSymbolic(), false);
                });
        });
        Try([&] { pEnumeration->SetIntValue(std::numeric_limits<int64_t>::min()); });
        Try([&] { pEnumeration->FromString("NoSuchEntry"); });
    }
    if (CStringPtr pString = pNode)
    {
        Try([&] { pString->SetValue(pString->GetValue()); });
        Try([&] {
            const int64_t maxLength = pString->GetMaxLength();
            if (maxLength >= 0 && maxLength < kMaxBufferBytes)
                pString->SetValue(GenICam::gcstring(std::string(static_cast<size_t>(maxLength) + 1, 'x')));
        });
    }
    if (CRegisterPtr pRegister = pNode)
        Try([&] {
            const int64_t length = pRegister->GetLength();
            if (length < 0 || length > kMaxBufferBytes)
                return;
            std::vector<uint8_t> buffer(static_cast<size_t>(length));
            pRegister->Get(buffer.data(), length);
            pRegister->Set(buffer.data(), length);
            pRegister->Set(buffer.data(), length, false);
        });
    if (CCommandPtr pCommand = pNode)
    {
        Try([&] { pCommand->Execute(); });
        Try([&] { (void)pCommand->IsDone(); });
        Try([&] { pCommand->Execute(false); });
    }
    if (CPortPtr pPort = pNode)
        Try([&] {
            uint8_t bytes[8] = {};
            pPort->Read(bytes, 0, sizeof(bytes));
            pPort->Write(bytes, 0, sizeof(bytes));
        });
}

// Restrictions an application may impose, applied once everything else was touched.
void Impose(INode* pNode)
{
    if (CIntegerPtr pInteger = pNode)
    {
        Try([&] {
            const int64_t minimum = pInteger->GetMin();
            if (minimum < std::numeric_limits<int64_t>::max())
                pInteger->ImposeMin(minimum + 1);
        });
        Try([&] {
            const int64_t maximum = pInteger->GetMax();
            if (maximum > std::numeric_limits<int64_t>::min())
                pInteger->ImposeMax(maximum - 1);
        });
    }
    if (CFloatPtr pFloat = pNode)
    {
        Try([&] { pFloat->ImposeMin(pFloat->GetMin() / 2); });
        Try([&] { pFloat->ImposeMax(std::nan("")); });
    }
    Try([&] { pNode->ImposeVisibility(Guru); });
    Try([&] { pNode->ImposeAccessMode(RO); });
}

void TouchAll(const NodeList_t& nodes)
{
    for (INode* pNode : nodes)
    {
        TouchIdentity(pNode);
        TouchValue(pNode);
        TouchLimits(pNode);
    }
}

// The loaded map: fails on nothing but a GenICam exception, which is an accepted outcome.
void Exercise(CNodeMapRef& nodeMap, unsigned pattern)
{
    CFuzzPort port(pattern);
    NodeList_t nodes;
    nodeMap._GetNodes(nodes);
    for (INode* pNode : nodes)
        if (pNode->GetPrincipalInterfaceType() == intfIPort)
            Try([&] { nodeMap._Connect(&port, pNode->GetName()); });
    Try([&] { nodeMap._Connect(&port); });

    // Callbacks read what they are called for, as applications do, inside and outside the lock.
    uint64_t fired = 0;
    for (size_t i = 0; i < nodes.size(); ++i)
    {
        const ECallbackType type = i % 2 ? cbPostOutsideLock : cbPostInsideLock;
        Register(
            nodes[i],
            [&fired](INode* pCalled) {
                ++fired;
                Try([&] {
                    if (CValuePtr pValue = pCalled)
                        (void)pValue->ToString();
                });
            },
            type);
    }

    TouchAll(nodes);
    for (INode* pNode : nodes)
        Write(pNode);
    Try([&] { nodeMap._Poll(1000000); });
    Try([&] { nodeMap._InvalidateNodes(); });
    for (INode* pNode : nodes)
        Try([&] { pNode->InvalidateNode(); });
    TouchAll(nodes);
    Try([&] {
        GenICam::gcstring_vector errors;
        nodeMap._ParseSwissKnifes(&errors);
    });
    Try([&] {
        if (CDeviceInfoPtr pInfo = nodeMap._Ptr)
        {
            Version_t version;
            uint16_t build = 0;
            (void)pInfo->GetModelName();
            (void)pInfo->GetVendorName();
            (void)pInfo->GetToolTip();
            (void)pInfo->GetStandardNameSpace();
            pInfo->GetGenApiVersion(version, build);
            pInfo->GetSchemaVersion(version);
            pInfo->GetDeviceVersion(version);
            (void)pInfo->GetProductGuid();
            (void)pInfo->GetVersionGuid();
        }
    });
    for (INode* pNode : nodes)
        Try([&] { (void)nodeMap._GetNode(pNode->GetName()); });
    Try([&] { (void)nodeMap._GetNode("NoSuchNode"); });
    for (INode* pNode : nodes)
        Impose(pNode);
    TouchAll(nodes);
    (void)fired;
}

// The sub-tree of one node of the loaded map, as the SDK extracts the chunk data tree.
void ExerciseSubtree(const uint8_t* data, size_t size, bool zipped, const CNodeMapRef& nodeMap, unsigned pick,
                     unsigned pattern)
{
    NodeList_t nodes;
    nodeMap._GetNodes(nodes);
    if (nodes.empty())
        return;
    const GenICam::gcstring rootName = nodes[pick % nodes.size()]->GetName();
    CNodeMapRef subtree;
    try
    {
        CNodeMapFactory factory = zipped ? CNodeMapFactory(ContentType_ZippedXml, data, size)
                                         : CNodeMapFactory(GenICam::gcstring(reinterpret_cast<const char*>(data), size));
        CNodeMapFactory extracted = factory.ExtractSubtree(rootName, pick % 2 == 0);
        subtree = extracted.CreateNodeMap();
    }
    catch (const GenICam::GenericException&)
    {
        return;
    }
    Exercise(subtree, pattern);
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 2)
        return 0;
    const unsigned flags = data[0];
    CNodeMapRef nodeMap;
    try
    {
        if (flags & 1)
            nodeMap._LoadXMLFromZIPData(data + 1, size - 1);
        else
            nodeMap._LoadXMLFromString(GenICam::gcstring(std::string(reinterpret_cast<const char*>(data + 1), size - 1)));
    }
    catch (const GenICam::GenericException&)
    {
        return 0; // a refused description
    }
    Exercise(nodeMap, (flags >> 1) & 3);
    if (flags & 8)
        ExerciseSubtree(data + 1, size - 1, flags & 1, nodeMap, flags >> 4, (flags >> 1) & 3);
    return 0;
}
