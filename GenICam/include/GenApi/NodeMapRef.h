#pragma once

#include <atomic>

#include <Base/GCBase.h>
#include <GenApi/IDestroy.h>
#include <GenApi/INode.h>
#include <GenApi/INodeMap.h>
#include <GenApi/NodeMapFactory.h>

namespace GenApi
{
/**
 * \brief Base of CNodeMapRefT for plain node maps: nothing to initialise after loading.
 *
 * Generated parameter classes derive their own loader parameters and bind their feature
 * references in _Initialize.
 */
class CGeneric_XMLLoaderParams
{
public:
    virtual ~CGeneric_XMLLoaderParams() = default;

protected:
    /// Called after a node map was loaded or attached.
    virtual void _Initialize(INodeMap* /*pNodeMap*/) {}
};

/**
 * \brief A copyable handle to a node map; copies share one map, destroyed with the last handle.
 *
 * Thread: one thread at a time per handle; the node map itself may be used from any thread.
 */
template <class TCameraParams>
class CNodeMapRefT : public TCameraParams
{
public:
    /// An empty handle; \a deviceName is used for maps loaded through it.
    explicit CNodeMapRefT(const GenICam::gcstring& deviceName = "Device")
        : _Ptr(nullptr), _DeviceName(deviceName), _pRefCount(nullptr)
    {
    }
    /// A handle taking ownership of \a pNodeMap.
    CNodeMapRefT(INodeMap* pNodeMap, const GenICam::gcstring& deviceName = "Device")
        : _Ptr(nullptr), _DeviceName(deviceName), _pRefCount(nullptr)
    {
        Attach(pNodeMap, deviceName, pNodeMap ? new std::atomic<int>(0) : nullptr);
    }
    CNodeMapRefT(const CNodeMapRefT& other)
        : TCameraParams(), _Ptr(nullptr), _DeviceName(other._DeviceName), _pRefCount(nullptr)
    {
        Attach(other._Ptr, other._DeviceName, other._pRefCount);
    }
    CNodeMapRefT& operator=(const CNodeMapRefT& other)
    {
        if (this != &other)
        {
            Release();
            Attach(other._Ptr, other._DeviceName, other._pRefCount);
        }
        return *this;
    }
    /// Takes ownership of \a pNodeMap, releasing the map held so far.
    CNodeMapRefT& operator=(INodeMap* pNodeMap)
    {
        Release();
        if (pNodeMap)
            Attach(pNodeMap, _DeviceName, new std::atomic<int>(0));
        return *this;
    }
    virtual ~CNodeMapRefT() { Release(); }

    /// Releases this handle's share of the node map.
    void _Destroy() { Release(); }

    /// Builds the node map from an XML file. \throws RuntimeException when a map is already held.
    void _LoadXMLFromFile(const GenICam::gcstring& fileName)
    {
        CheckNotLoaded();
        CNodeMapFactory factory(ContentType_Xml, fileName);
        TakeFrom(factory);
    }
    /// Builds the node map from a zip file holding one XML description.
    void _LoadXMLFromZIPFile(const GenICam::gcstring& zipFileName)
    {
        CheckNotLoaded();
        CNodeMapFactory factory(ContentType_ZippedXml, zipFileName);
        TakeFrom(factory);
    }
    /// Builds the node map from zip data in memory.
    void _LoadXMLFromZIPData(const void* pData, size_t dataSize)
    {
        CheckNotLoaded();
        CNodeMapFactory factory(ContentType_ZippedXml, pData, dataSize);
        TakeFrom(factory);
    }
    /// Builds the node map from XML text.
    void _LoadXMLFromString(const GenICam::gcstring& xmlData)
    {
        CheckNotLoaded();
        CNodeMapFactory factory(xmlData);
        TakeFrom(factory);
    }
    /// Builds the node map from an XML file merged with an injection file.
    void _LoadXMLFromFileInject(const GenICam::gcstring& targetFileName, const GenICam::gcstring& injectFileName)
    {
        CheckNotLoaded();
        CNodeMapFactory factory(ContentType_Xml, targetFileName);
        CNodeMapFactory inject(ContentType_Xml, injectFileName);
        factory.AddInjectionData(inject);
        TakeFrom(factory);
    }
    /// Builds the node map from XML text merged with injection text.
    void _LoadXMLFromStringInject(const GenICam::gcstring& targetXml, const GenICam::gcstring& injectXml)
    {
        CheckNotLoaded();
        CNodeMapFactory factory(targetXml);
        CNodeMapFactory inject(injectXml);
        factory.AddInjectionData(inject);
        TakeFrom(factory);
    }
    /// Schema versions the engine loads.
    virtual void _GetSupportedSchemaVersions(GenICam::gcstring_vector& schemaVersions) const
    {
        schemaVersions = CNodeMapFactory::GetSupportedSchemaVersions();
    }
    /// The node map's device name. \throws AccessException without a map.
    virtual GenICam::gcstring _GetDeviceName() const { return Map()->GetDeviceName(); }
    /// Advances polling. \throws AccessException without a map.
    virtual void _Poll(int64_t elapsedTimeMs) { Map()->Poll(elapsedTimeMs); }
    /// Clears the preprocessed-description cache.
    static void _ClearXMLCache() { CNodeMapFactory::ClearCache(); }
    virtual void _GetNodes(NodeList_t& nodes) const { Map()->GetNodes(nodes); }
    /// The node of this name or null. \throws AccessException without a map.
    virtual INode* _GetNode(const GenICam::gcstring& name) const { return Map()->GetNode(name); }
    virtual bool _Connect(IPort* pPort, const GenICam::gcstring& portName) const
    {
        return Map()->Connect(pPort, portName);
    }
    virtual bool _Connect(IPort* pPort) const { return Map()->Connect(pPort); }
    virtual void _InvalidateNodes() const { Map()->InvalidateNodes(); }
    virtual bool _ParseSwissKnifes(GenICam::gcstring_vector* pErrorList = nullptr) const
    {
        return Map()->ParseSwissKnifes(pErrorList);
    }

    /// The wrapped node map (null when none).
    INodeMap* _Ptr;

private:
    INodeMap* Map() const
    {
        if (!_Ptr)
            throw ACCESS_EXCEPTION("Feature not present (reference not valid)");
        return _Ptr;
    }
    void CheckNotLoaded() const
    {
        if (_Ptr)
            throw RUNTIME_EXCEPTION("Node map already created");
    }
    void TakeFrom(CNodeMapFactory& factory)
    {
        INodeMap* pNodeMap = factory.CreateNodeMap(_DeviceName);
        Attach(pNodeMap, _DeviceName, new std::atomic<int>(0));
    }
    void Attach(INodeMap* pNodeMap, const GenICam::gcstring& deviceName, std::atomic<int>* pRefCount)
    {
        _Ptr = pNodeMap;
        _DeviceName = deviceName;
        _pRefCount = pRefCount;
        if (_pRefCount)
            ++*_pRefCount;
        if (_Ptr)
            TCameraParams::_Initialize(_Ptr);
    }
    void Release()
    {
        if (_pRefCount && --*_pRefCount == 0)
        {
            if (IDestroy* pDestroy = dynamic_cast<IDestroy*>(_Ptr))
                pDestroy->Destroy();
            delete _pRefCount;
        }
        _Ptr = nullptr;
        _pRefCount = nullptr;
    }

    GenICam::gcstring _DeviceName;
    std::atomic<int>* _pRefCount; // shared by the copies; the last one deletes it and the map
};

/// Handle to a plain node map.
typedef CNodeMapRefT<CGeneric_XMLLoaderParams> CNodeMapRef;
} // namespace GenApi
