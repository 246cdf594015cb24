#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include <pugixml.hpp>

#include <GenApi/INode.h>
#include <GenApi/ISelector.h>
#include <GenApi/NodeCallback.h>
#include <GenApi/Synch.h>

#include "Engine/Nodes/NodeKind.h"

namespace GenApi
{
class CNodeMapImpl;
class CNodeBuilder;

/**
 * \brief Base of every node: identity, help texts, access-mode inputs, caching state, links and
 *        callbacks.
 *
 * Owned by its CNodeMapImpl. Built in two steps while loading (Configure reads the node's XML
 * element, Link runs once every node exists), then only used through the GenApi interfaces.
 * Thread: any; public methods lock the node map's lock, methods ending in Locked expect it held.
 *
 * Invalidation: m_dependents lists the nodes whose value or access mode may change when this
 * node's does (pValue users, formula users, pIsAvailable users, pInvalidator listeners, selected
 * features, categories, registers of a port). CNodeMapImpl::NotifyChangedLocked walks them.
 */
class CNode : public virtual INode, public virtual ISelector
{
public:
    CNode(CNodeMapImpl* pMap, ENodeKind_t kind, std::string_view name);
    CNode(const CNode&) = delete;
    CNode& operator=(const CNode&) = delete;
    ~CNode() override;

    // ---- loading ----
    /// Reads the node's element: every child is passed to ConfigureElement.
    void Configure(const pugi::xml_node& element, CNodeBuilder& builder);
    /// Reads one child element; returns false when the kind does not know it (it is ignored).
    virtual bool ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder);
    /// Runs once every node is configured: checks, formula compilation, caching mode.
    virtual void Link(CNodeBuilder& builder);
    /// Caching mode derived from the node's children (computed after Link, in dependency order).
    virtual ECachingMode ComputeCachingModeLocked();
    /// Records a node this one reads its value from (caching mode, children, availability).
    void AddValueChild(CNode* pChild);
    /// Records any other node this one reads (pMin, pAddress, ...): availability and invalidation.
    void AddReference(CNode* pReference);
    /// Records that \a pDependent must be invalidated when this node changes.
    void AddDependent(CNode* pDependent);
    /// Drops duplicate links once loading is complete.
    void FinishLinks();
    /// Records that this node is selected by \a pSelector.
    void AddSelectingNode(CNode* pSelector) { m_selecting.push_back(pSelector); }
    /// Nodes this node reads its value or access mode from (used for cycle checks and children lists).
    const std::vector<CNode*>& ValueChildren() const { return m_valueChildren; }

    // ---- identity ----
    ENodeKind_t Kind() const { return m_kind; }
    /// Whether the node's natural value is a float (Float, FloatReg, Converter, SwissKnife).
    bool IsFloatNode() const
    {
        return m_kind == ENodeKind_t::Float || m_kind == ENodeKind_t::FloatReg || m_kind == ENodeKind_t::Converter ||
               m_kind == ENodeKind_t::SwissKnife;
    }
    std::string_view Name() const { return m_name; }
    CNodeMapImpl* Map() const { return m_pMap; }
    uint32_t SourceOffset() const { return m_sourceOffset; }
    void SetSourceOffset(uint32_t offset) { m_sourceOffset = offset; }
    void SetNameSpace(ENameSpace nameSpace) { m_nameSpace = static_cast<uint8_t>(nameSpace); }
    void SetIsFeature() { m_isFeature = true; }
    void SetCachingMode(ECachingMode mode) { m_cachingMode = static_cast<uint8_t>(mode); }
    const std::vector<CNode*>& Dependents() const { return m_dependents; }
    const std::vector<CNodeCallback*>& Callbacks() const { return m_callbacks; }

    // ---- access mode ----
    /// Full access mode (cached when allowed).
    EAccessMode AccessLocked() { return m_accessValid ? static_cast<EAccessMode>(m_cachedAccess) : ComputeAccessLocked(true); }
    /// Whether the node may be read. pIsLocked cannot change that, so its inputs are not evaluated
    /// and need not be cacheable: the usual fast path of a read.
    bool ReadableLocked()
    {
        if (m_readState != kReadUnknown)
            return m_readState == kReadYes;
        return ComputeReadableLocked();
    }
    /**
     * \brief Access mode for a write without verification: ignores pIsAvailable, pIsLocked and
     *        unavailable referenced nodes, but not NI, the natural mode and ImposedAccessMode.
     */
    EAccessMode StructuralAccessLocked();
    /// The kind's own access mode, before pIsImplemented/pIsAvailable/pIsLocked/imposed.
    virtual EAccessMode NaturalAccessLocked(bool structural);
    /// Whether the access mode may be cached (false when it depends on uncached values); with
    /// \a ignoreLock, whether it may be cached apart from pIsLocked.
    bool AccessModeCacheableLocked(bool ignoreLock = false);
    /**
     * \brief Whether every value this node reads, directly or not, may be cached (no NoCache node
     *        among them): results derived from them (a converter's range) may then be kept until
     *        the next invalidation reaches this node.
     */
    bool ValuesCacheableLocked();

    // ---- value protocol (lock held; used between nodes, e.g. pValue, pMin, formula variables) ----
    virtual int64_t IntValueLocked(bool verify, bool ignoreCache);
    virtual void SetIntValueLocked(int64_t value, bool verify);
    virtual double FloatValueLocked(bool verify, bool ignoreCache);
    virtual void SetFloatValueLocked(double value, bool verify);
    virtual int64_t IntMinLocked();
    virtual int64_t IntMaxLocked();
    virtual int64_t IntIncLocked();
    virtual double FloatMinLocked();
    virtual double FloatMaxLocked();
    virtual double FloatIncLocked();
    virtual bool HasFloatIncLocked();
    virtual EIncMode IncModeLocked();
    virtual ERepresentation RepresentationLocked();
    virtual std::string_view UnitLocked();
    /// The node a pValue forwards to, or null.
    virtual CNode* ForwardsTo() const { return nullptr; }
    /// Rounds half away from zero; throws RuntimeException outside the int64 range.
    int64_t RoundToInt64(double value, const char* method) const;

    // ---- caching ----
    /// Drops this node's own cached value and access mode (not its dependents).
    virtual void DropCacheLocked();
    /// Called by InvalidateNode/polling/InvalidateNodes: drops caches below the node too
    /// (registers drop their port-cache entry).
    virtual void DropDeviceCacheLocked() {}
    bool ValueCacheValid() const { return m_valueValid; }
    ECachingMode CachingMode() const { return static_cast<ECachingMode>(m_cachingMode); }

    // ---- polling ----
    int64_t PollingTimeMs() const { return m_pollingTimeMs; }
    /// Adds elapsed time; true when the polling time expired (the clock restarts at 0).
    bool AdvancePollLocked(int64_t elapsedMs);
    /// Whether pBlockPolling currently suspends polling.
    bool PollingBlockedLocked();
    /// What polling expiry does: by default invalidate the node (Command overrides).
    virtual void OnPollExpiredLocked();

    // ---- evaluation guard ----
    /// Throws when value evaluation nests too deeply (a reference cycle).
    void EnterEvaluation() const;
    void LeaveEvaluation() const;

    // ---- INode ----
    EAccessMode GetAccessMode() const override;
    GenICam::gcstring GetName(bool fullQualified = false) const override;
    ENameSpace GetNameSpace() const override;
    EVisibility GetVisibility() const override;
    void InvalidateNode() override;
    bool IsCachable() const override;
    EYesNo IsAccessModeCacheable() const override;
    ECachingMode GetCachingMode() const override;
    int64_t GetPollingTime() const override;
    GenICam::gcstring GetToolTip() const override;
    GenICam::gcstring GetDescription() const override;
    GenICam::gcstring GetDisplayName() const override;
    GenICam::gcstring GetDeviceName() const override;
    void GetChildren(NodeList_t& children, ELinkType linkType = ctReadingChildren) const override;
    void GetParents(NodeList_t& parents) const override;
    CallbackHandleType RegisterCallback(CNodeCallback* pCallback) override;
    bool DeregisterCallback(CallbackHandleType hCallback) override;
    INodeMap* GetNodeMap() const override;
    GenICam::gcstring GetEventID() const override;
    bool IsStreamable() const override;
    void GetPropertyNames(GenICam::gcstring_vector& propertyNames) const override;
    bool GetProperty(const GenICam::gcstring& propertyName, GenICam::gcstring& valueText,
                     GenICam::gcstring& attributeText) override;
    void ImposeAccessMode(EAccessMode imposedAccessMode) override;
    void ImposeVisibility(EVisibility imposedVisibility) override;
    INode* GetAlias() const override;
    INode* GetCastAlias() const override;
    GenICam::gcstring GetDocuURL() const override;
    bool IsDeprecated() const override;
    EInterfaceType GetPrincipalInterfaceType() const override;
    bool IsFeature() const override;

    // ---- ISelector ----
    bool IsSelector() const override;
    void GetSelectedFeatures(FeatureList_t& features) const override;
    void GetSelectingFeatures(FeatureList_t& features) const override;

    /// Visibility without the category rule (categories override GetVisibility).
    EVisibility OwnVisibility() const { return static_cast<EVisibility>(m_visibility); }
    std::string_view EventIdText() const { return m_eventId; }
    const std::vector<CNode*>& SelectedNodes() const { return m_selected; }

protected:
    static constexpr uint8_t kReadUnknown = 0, kReadYes = 1, kReadNo = 2;
    EAccessMode ComputeAccessLocked(bool includeLock);
    bool ComputeReadableLocked();
    /// Name used in exception texts.
    const char* NameText() const { return m_name.data(); }
    /// Lowers \a mode to NI/NA when \a pReference is NI/NA (unless computing the structural mode).
    static void PropagateAvailability(EAccessMode& mode, CNode* pReference, bool structural);
    /// Sets a pIsImplemented/pIsAvailable/pIsLocked/pBlockPolling link (null: none) and its invalidation edge.
    void SetFlag(CNode*& pFlag, CNode* pTarget);
    /// Checks pError after a verified access: throws naming the current error entry.
    void CheckErrorsLocked();
    /// Throws AccessException "Node is not readable." unless readable.
    void CheckReadableLocked(const char* method);
    /// Throws AccessException "Node is not writable." unless writable (verify) or structurally writable.
    void CheckWritableLocked(bool verify, const char* method);
    CLock& NodeMapLock() const;

    CNodeMapImpl* const m_pMap; // the owner; outlives the node
    std::string_view m_name;    // in the node map's arena
    std::string_view m_toolTip;
    std::string_view m_description;
    std::string_view m_displayName;
    std::string_view m_docuUrl;
    std::string_view m_eventId;

    CNode* m_pIsImplemented = nullptr;
    CNode* m_pIsAvailable = nullptr;
    CNode* m_pIsLocked = nullptr;
    CNode* m_pBlockPolling = nullptr;
    CNode* m_pAlias = nullptr;
    CNode* m_pCastAlias = nullptr;
    std::vector<CNode*> m_errors;        // pError enumerations
    std::vector<CNode*> m_dependents;    // nodes to invalidate when this one changes
    std::vector<CNode*> m_valueChildren; // nodes the value is read from (caching mode)
    std::vector<CNode*> m_references;    // every node read for value or access mode
    std::vector<CNode*> m_accessInputs;  // nodes whose access mode shapes this one's (entries, features)
    std::vector<CNode*> m_selected;      // pSelected
    std::vector<CNode*> m_selecting;     // nodes that select this one
    std::vector<CNode*> m_invalidators;  // pInvalidator
    std::vector<CNodeCallback*> m_callbacks; // owned; Destroy()ed with the node

    int64_t m_pollingTimeMs = -1;
    int64_t m_pollElapsedMs = 0;
    uint32_t m_sourceOffset = 0; // byte offset of the element in the description (for errors)

    const ENodeKind_t m_kind;
    uint8_t m_visibility = Beginner;
    uint8_t m_imposedVisibility = Beginner;
    uint8_t m_nameSpace = Custom;
    uint8_t m_imposedAccess = RW;
    uint8_t m_cachingMode = WriteThrough;
    uint8_t m_cachedAccess = NI;
    bool m_accessValid = false;
    bool m_valueValid = false;
    bool m_streamable = false;
    bool m_deprecated = false;
    bool m_isFeature = false;
    bool m_hasVisibility = false;
    bool m_accessInProgress = false;
    int8_t m_accessCacheable = -1; // -1 unknown, 0 no, 1 yes
    int8_t m_readCacheable = -1;   // the same, pIsLocked left out
    int8_t m_valuesCacheable = -1; // ValuesCacheableLocked(): -1 unknown, 0 no, 1 yes
    uint8_t m_readState = kReadUnknown;

public:
    uint32_t m_walkEpoch = 0;   // last invalidation walk that visited this node
    uint32_t m_notifyEpoch = 0; // last callback scope that queued this node
    uint32_t m_loadMark = 0;    // the loader's scratch mark (cycle check, caching-mode order); 0 after loading
    /// Every node NotifyChangedLocked reaches from this one, in walk order; built by the first
    /// change (the links do not change after loading). Guarded by the node map's lock.
    std::unique_ptr<std::vector<CNode*>> m_pReached;
};
} // namespace GenApi
