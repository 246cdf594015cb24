#include "Engine/Nodes/Node.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include <Base/GCException.h>
#include <GenApi/IValue.h>

#include "Engine/Load/NodeBuilder.h"
#include "Engine/NodeMap/NodeMapImpl.h"
#include "Engine/Nodes/EvaluationGuard.h"

namespace GenApi
{
namespace
{
// Real descriptions nest at most 19 levels (deepest of the shared corpus). A failing evaluation
// unwinds every level, so the bound also sets what a hostile chain of references costs per read.
constexpr int kMaxEvaluationDepth = 64;

// Links are added one by one while loading; starting each list with room for a few saves the
// 1-2-4 reallocations that most lists would otherwise go through.
void AppendLink(std::vector<CNode*>& links, CNode* pNode)
{
    if (links.capacity() == 0)
        links.reserve(4);
    links.push_back(pNode);
}

constexpr const char* kConditionIgnored = "the condition is ignored";
constexpr const char* kAliasIgnored = "the node has no alias";

} // namespace

CNode::CNode(CNodeMapImpl* pMap, ENodeKind_t kind, std::string_view name)
    : m_pMap(pMap), m_name(name), m_kind(kind)
{
}

CNode::~CNode()
{
    for (CNodeCallback* pCallback : m_callbacks)
        pCallback->Destroy();
}

// ---------------------------------------------------------------- loading

void CNode::Configure(const pugi::xml_node& element, CNodeBuilder& builder)
{
    for (pugi::xml_node child = element.first_child(); child; child = child.next_sibling())
    {
        if (child.type() != pugi::node_element)
            continue;
        ConfigureElement(child, builder);
    }
}

bool CNode::ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder)
{
    const EElement_t element = builder.ElementOf(child);
    switch (child.name()[0])
    {
    case 'p':
        // Flags and aliases naming no node are ignored (a load warning): the node is then what
        // it would be without the element.
        if (element == EElement_t::pIsImplemented)
            SetFlag(m_pIsImplemented, builder.OptionalRef(child, this, kConditionIgnored));
        else if (element == EElement_t::pIsAvailable)
            SetFlag(m_pIsAvailable, builder.OptionalRef(child, this, kConditionIgnored));
        else if (element == EElement_t::pIsLocked)
            SetFlag(m_pIsLocked, builder.OptionalRef(child, this, kConditionIgnored));
        else if (element == EElement_t::pBlockPolling)
            SetFlag(m_pBlockPolling, builder.OptionalRef(child, this, kConditionIgnored));
        else if (element == EElement_t::pError)
            m_errors.push_back(builder.Ref(child, this)), m_errors.back()->AddDependent(this);
        else if (element == EElement_t::pAlias)
            m_pAlias = builder.OptionalRef(child, this, kAliasIgnored);
        else if (element == EElement_t::pCastAlias)
            m_pCastAlias = builder.OptionalRef(child, this, kAliasIgnored);
        else if (element == EElement_t::pInvalidator)
        {
            CNode* pInvalidator = builder.Ref(child, this);
            AppendLink(m_invalidators, pInvalidator);
            pInvalidator->AddDependent(this);
        }
        else if (element == EElement_t::pSelected)
        {
            CNode* pSelected = builder.Ref(child, this);
            m_selected.push_back(pSelected);
            pSelected->AddSelectingNode(this);
            // A selected feature's value depends on its selector.
            AddDependent(pSelected);
        }
        else
            return false;
        return true;
    case 'T':
        if (element == EElement_t::ToolTip)
        {
            m_toolTip = builder.Text(child);
            return true;
        }
        return false;
    case 'D':
        if (element == EElement_t::Description)
            m_description = builder.Text(child);
        else if (element == EElement_t::DisplayName)
            m_displayName = builder.Text(child);
        else if (element == EElement_t::DocuURL)
            m_docuUrl = builder.Text(child);
        else
            return false;
        return true;
    case 'V':
        if (element == EElement_t::Visibility)
        {
            m_visibility = static_cast<uint8_t>(builder.Enum<EVisibilityClass, EVisibility>(child, this));
            m_hasVisibility = true;
            return true;
        }
        return false;
    case 'I':
        if (element == EElement_t::IsDeprecated)
        {
            m_deprecated = builder.YesNo(child, this);
            return true;
        }
        if (element == EElement_t::ImposedAccessMode)
        {
            m_imposedAccess = static_cast<uint8_t>(builder.AccessMode(child, this));
            return true;
        }
        return false;
    case 'E':
        if (element == EElement_t::EventID)
        {
            m_eventId = CNodeBuilder::TrimmedView(child.text().get());
            return true;
        }
        return element == EElement_t::Extension || element == EElement_t::ExposeStatic;
    case 'S':
        if (element == EElement_t::Streamable)
        {
            m_streamable = builder.YesNo(child, this);
            return true;
        }
        return false;
    case 'P':
        if (element == EElement_t::PollingTime)
        {
            m_pollingTimeMs = builder.Int(child, this);
            return true;
        }
        return false;
    case 'M':
        return element == EElement_t::MergePriority;
    default:
        return false;
    }
}

void CNode::SetFlag(CNode*& pFlag, CNode* pTarget)
{
    pFlag = pTarget;
    if (pTarget)
        pTarget->AddDependent(this);
}

void CNode::Link(CNodeBuilder& /*builder*/)
{
}

ECachingMode CNode::ComputeCachingModeLocked()
{
    ECachingMode mode = WriteThrough;
    for (CNode* pChild : m_valueChildren)
        mode = Combine(mode, pChild->CachingMode());
    return mode;
}

void CNode::AddDependent(CNode* pDependent)
{
    if (pDependent == this || (!m_dependents.empty() && m_dependents.back() == pDependent))
        return;
    // Other duplicates (pValue and pInvalidator naming the same node) go in FinishLinks().
    AppendLink(m_dependents, pDependent);
}

void CNode::FinishLinks()
{
    if (m_dependents.size() < 2)
        return;
    std::sort(m_dependents.begin(), m_dependents.end());
    m_dependents.erase(std::unique(m_dependents.begin(), m_dependents.end()), m_dependents.end());
    m_dependents.shrink_to_fit();
}

void CNode::AddValueChild(CNode* pChild)
{
    AppendLink(m_valueChildren, pChild);
    AddReference(pChild);
}

void CNode::AddReference(CNode* pReference)
{
    for (CNode* pExisting : m_references)
        if (pExisting == pReference)
            return;
    AppendLink(m_references, pReference);
    pReference->AddDependent(this);
}

// ---------------------------------------------------------------- evaluation guard

void CNode::EnterEvaluation() const
{
    int& depth = m_pMap->EvaluationDepth();
    if (QV_UNLIKELY(++depth > kMaxEvaluationDepth))
    {
        depth = 0;
        throw RUNTIME_EXCEPTION_NODE(NameText(), "GetValue")(
            "Node '%s' : evaluation nested more than %d levels deep; the description has a reference cycle or "
            "too deep a chain of references", NameText(), kMaxEvaluationDepth);
    }
}

void CNode::LeaveEvaluation() const
{
    int& depth = m_pMap->EvaluationDepth();
    if (depth > 0)
        --depth;
}

CLock& CNode::NodeMapLock() const
{
    return m_pMap->Lock();
}

// ---------------------------------------------------------------- access mode

void CNode::PropagateAvailability(EAccessMode& mode, CNode* pReference, bool structural)
{
    if (!pReference || structural || mode == NI)
        return;
    const EAccessMode referenceMode = pReference->AccessLocked();
    if (referenceMode == NI)
        mode = NI;
    else if (referenceMode == NA)
        mode = NA;
}

namespace
{
// Value of a pIsImplemented/pIsAvailable/pIsLocked node; an unreadable flag counts as set, and so
// does a Port (the only kind without a value). Runs on every access-mode computation, so the kind
// is tested rather than the interface cast for.
bool FlagIsSet(CNode* pFlag)
{
    if (!IsReadable(pFlag->AccessLocked()) || pFlag->Kind() == ENodeKind_t::Port)
        return true;
    return pFlag->IntValueLocked(false, false) != 0;
}
} // namespace

EAccessMode CNode::NaturalAccessLocked(bool /*structural*/)
{
    return RO;
}

bool CNode::ComputeReadableLocked()
{
    const bool readable = IsReadable(m_accessValid ? static_cast<EAccessMode>(m_cachedAccess) : ComputeAccessLocked(false));
    if (AccessModeCacheableLocked(true))
        m_readState = readable ? kReadYes : kReadNo;
    return readable;
}

EAccessMode CNode::ComputeAccessLocked(bool includeLock)
{
    // A node reached again while its own access mode is being worked out (pMax of a width
    // depending on an offset whose pMax depends on the width) adds no restriction.
    if (m_accessInProgress)
        return RW;
    CEvaluationGuard guard(this);
    struct InProgress_t
    {
        bool& flag;
        explicit InProgress_t(bool& f) : flag(f) { flag = true; }
        ~InProgress_t() { flag = false; }
    } inProgress(m_accessInProgress);
    // Every input is combined, so NI wins over NA wherever it comes from.
    EAccessMode mode = NaturalAccessLocked(false);
    for (CNode* pReference : m_references)
        PropagateAvailability(mode, pReference, false);
    if (m_pIsImplemented && mode != NI)
    {
        const EAccessMode flagMode = m_pIsImplemented->AccessLocked();
        if (!IsAvailable(flagMode))
            mode = Combine(mode, flagMode);
        else if (!FlagIsSet(m_pIsImplemented))
            mode = NI;
    }
    if (m_pIsAvailable && mode != NI)
    {
        const EAccessMode flagMode = m_pIsAvailable->AccessLocked();
        if (!IsAvailable(flagMode))
            mode = Combine(mode, flagMode);
        else if (!FlagIsSet(m_pIsAvailable))
            mode = Combine(mode, NA);
    }
    if (includeLock && m_pIsLocked && IsAvailable(mode))
    {
        const EAccessMode flagMode = m_pIsLocked->AccessLocked();
        if (!IsAvailable(flagMode))
            mode = Combine(mode, flagMode);
        else if (FlagIsSet(m_pIsLocked))
        {
            if (mode == RW)
                mode = RO;
            else if (mode == WO)
                mode = NA;
        }
    }
    mode = Combine(mode, static_cast<EAccessMode>(m_imposedAccess));
    // A category only structures the tree: it is either there (RO) or not implemented.
    if (m_kind == ENodeKind_t::Category && mode == NA)
        mode = RO;
    if (includeLock && AccessModeCacheableLocked())
    {
        m_cachedAccess = static_cast<uint8_t>(mode);
        m_accessValid = true;
    }
    return mode;
}

EAccessMode CNode::StructuralAccessLocked()
{
    CEvaluationGuard guard(this);
    if (m_pIsImplemented)
    {
        if (m_pIsImplemented->AccessLocked() == NI)
            return NI;
        if (IsReadable(m_pIsImplemented->AccessLocked()) && !FlagIsSet(m_pIsImplemented))
            return NI;
    }
    return Combine(NaturalAccessLocked(true), static_cast<EAccessMode>(m_imposedAccess));
}

bool CNode::AccessModeCacheableLocked(bool ignoreLock)
{
    int8_t& memo = ignoreLock ? m_readCacheable : m_accessCacheable;
    if (memo >= 0)
        return memo != 0;
    memo = 1; // provisional: a cycle back here counts as cacheable
    bool cacheable = true;
    for (CNode* pFlag : {m_pIsImplemented, m_pIsAvailable, ignoreLock ? nullptr : m_pIsLocked})
        if (pFlag && (pFlag->CachingMode() == NoCache || !pFlag->AccessModeCacheableLocked()))
            cacheable = false;
    for (CNode* pChild : m_references)
        if (!pChild->AccessModeCacheableLocked())
            cacheable = false;
    for (CNode* pInput : m_accessInputs)
        if (!pInput->AccessModeCacheableLocked())
            cacheable = false;
    memo = cacheable ? 1 : 0;
    return cacheable;
}

bool CNode::ValuesCacheableLocked()
{
    if (m_valuesCacheable >= 0)
        return m_valuesCacheable != 0;
    m_valuesCacheable = 1; // provisional: a cycle back here counts as cacheable
    bool cacheable = CachingMode() != NoCache;
    for (CNode* pReference : m_references)
        if (!pReference->ValuesCacheableLocked())
            cacheable = false;
    m_valuesCacheable = cacheable ? 1 : 0;
    return cacheable;
}

void CNode::CheckReadableLocked(const char* method)
{
    if (!ReadableLocked())
        throw ACCESS_EXCEPTION_NODE(NameText(), method)("Node is not readable.");
}

void CNode::CheckWritableLocked(bool verify, const char* method)
{
    if (verify)
    {
        if (!IsWritable(AccessLocked()))
            throw ACCESS_EXCEPTION_NODE(NameText(), method)("Node is not writable.");
        return;
    }
    const EAccessMode mode = StructuralAccessLocked();
    if (!IsWritable(mode) && mode != NA)
        throw ACCESS_EXCEPTION_NODE(NameText(), method)("Node is not writable.");
}

void CNode::CheckErrorsLocked()
{
    for (CNode* pError : m_errors)
    {
        if (!IsReadable(pError->AccessLocked()))
            continue;
        if (pError->IntValueLocked(false, true) == 0)
            continue;
        IValue* pErrorValue = dynamic_cast<IValue*>(pError);
        const GenICam::gcstring text = pErrorValue ? pErrorValue->ToString() : GenICam::gcstring();
        throw ACCESS_EXCEPTION_NODE(NameText(), "CheckError")(
            "Node '%s' reports error '%s' (%s)", NameText(), text.c_str(), pError->NameText());
    }
}

// ---------------------------------------------------------------- value protocol defaults

int64_t CNode::IntValueLocked(bool /*verify*/, bool /*ignoreCache*/)
{
    throw LOGICAL_ERROR_EXCEPTION_NODE(NameText(), "GetValue")("Node '%s' has no integer value", NameText());
}

void CNode::SetIntValueLocked(int64_t /*value*/, bool /*verify*/)
{
    throw LOGICAL_ERROR_EXCEPTION_NODE(NameText(), "SetValue")("Node '%s' has no integer value", NameText());
}

double CNode::FloatValueLocked(bool verify, bool ignoreCache)
{
    return static_cast<double>(IntValueLocked(verify, ignoreCache));
}

void CNode::SetFloatValueLocked(double value, bool verify)
{
    SetIntValueLocked(RoundToInt64(value, "SetValue"), verify);
}

int64_t CNode::IntMinLocked()
{
    return INT64_MIN;
}
int64_t CNode::IntMaxLocked()
{
    return INT64_MAX;
}
int64_t CNode::IntIncLocked()
{
    return 1;
}
double CNode::FloatMinLocked()
{
    return static_cast<double>(IntMinLocked());
}
double CNode::FloatMaxLocked()
{
    return static_cast<double>(IntMaxLocked());
}
double CNode::FloatIncLocked()
{
    return static_cast<double>(IntIncLocked());
}
bool CNode::HasFloatIncLocked()
{
    return true;
}
EIncMode CNode::IncModeLocked()
{
    return fixedIncrement;
}
ERepresentation CNode::RepresentationLocked()
{
    return PureNumber;
}
std::string_view CNode::UnitLocked()
{
    return std::string_view();
}

int64_t CNode::RoundToInt64(double value, const char* method) const
{
    // Half away from zero; the bounds are the doubles nearest to the int64 range.
    if (!(value > -9223372036854775808.0 - 0.5 && value < 9223372036854775807.0))
    {
        if (std::strcmp(method, "SetValue") == 0)
            throw RUNTIME_EXCEPTION_NODE(NameText(), method)(
                "CIntegerPolyRef::SetValue(): double value outside int64 range");
    {
        // %f of a huge value would not fit the description.
        if (value > -1e30 && value < 1e30)
            throw RUNTIME_EXCEPTION_NODE(NameText(), method)(
                "CIntegerPolyRef::GetValue(): Float value %f out of integer range", value);
        throw RUNTIME_EXCEPTION_NODE(NameText(), method)(
            "CIntegerPolyRef::GetValue(): Float value %g out of integer range", value);
    }
    }
    const double rounded = value < 0 ? -std::floor(-value + 0.5) : std::floor(value + 0.5);
    if (rounded >= 9223372036854775807.0)
        return INT64_MAX;
    return static_cast<int64_t>(rounded);
}

// ---------------------------------------------------------------- caching and polling

void CNode::DropCacheLocked()
{
    m_valueValid = false;
    m_accessValid = false;
    m_readState = kReadUnknown;
}

bool CNode::AdvancePollLocked(int64_t elapsedMs)
{
    if (m_pollingTimeMs <= 0)
        return false;
    m_pollElapsedMs += elapsedMs;
    if (m_pollElapsedMs < m_pollingTimeMs)
        return false;
    m_pollElapsedMs = 0;
    return true;
}

bool CNode::PollingBlockedLocked()
{
    if (!m_pBlockPolling || !IsReadable(m_pBlockPolling->AccessLocked()))
        return false;
    return m_pBlockPolling->IntValueLocked(false, false) != 0;
}

void CNode::OnPollExpiredLocked()
{
    m_pMap->NotifyChangedLocked(this);
}

// ---------------------------------------------------------------- INode

EAccessMode CNode::GetAccessMode() const
{
    AutoLock lock(NodeMapLock());
    return const_cast<CNode*>(this)->AccessLocked();
}

GenICam::gcstring CNode::GetName(bool fullQualified) const
{
    if (!fullQualified)
        return GenICam::gcstring(m_name.data(), m_name.size());
    GenICam::gcstring name(m_nameSpace == Standard ? "Std::" : "Cust::");
    name.append(m_name.data(), m_name.size());
    return name;
}

ENameSpace CNode::GetNameSpace() const
{
    return static_cast<ENameSpace>(m_nameSpace);
}

EVisibility CNode::GetVisibility() const
{
    return Combine(static_cast<EVisibility>(m_visibility), static_cast<EVisibility>(m_imposedVisibility));
}

void CNode::InvalidateNode()
{
    CNodeMapImpl::CCallbackScope scope(m_pMap);
    m_pMap->NotifyChangedLocked(this);
}

bool CNode::IsCachable() const
{
    return CachingMode() != NoCache;
}

EYesNo CNode::IsAccessModeCacheable() const
{
    AutoLock lock(NodeMapLock());
    return const_cast<CNode*>(this)->AccessModeCacheableLocked() ? Yes : No;
}

ECachingMode CNode::GetCachingMode() const
{
    return CachingMode();
}

int64_t CNode::GetPollingTime() const
{
    return m_pollingTimeMs;
}

GenICam::gcstring CNode::GetToolTip() const
{
    return GenICam::gcstring(m_toolTip.data(), m_toolTip.size());
}

GenICam::gcstring CNode::GetDescription() const
{
    return GenICam::gcstring(m_description.data(), m_description.size());
}

GenICam::gcstring CNode::GetDisplayName() const
{
    if (m_displayName.empty())
        return GetName();
    return GenICam::gcstring(m_displayName.data(), m_displayName.size());
}

GenICam::gcstring CNode::GetDeviceName() const
{
    return m_pMap->GetDeviceName();
}

void CNode::GetChildren(NodeList_t& children, ELinkType linkType) const
{
    AutoLock lock(NodeMapLock());
    children.clear();
    switch (linkType)
    {
    case ctInvalidatingChildren:
        children.assign(m_invalidators.begin(), m_invalidators.end());
        break;
    case ctDependingNodes:
        children.assign(m_dependents.begin(), m_dependents.end());
        break;
    case ctParentNodes:
        GetParents(children);
        break;
    default:
        children.assign(m_valueChildren.begin(), m_valueChildren.end());
        break;
    }
}

void CNode::GetParents(NodeList_t& parents) const
{
    AutoLock lock(NodeMapLock());
    parents.clear();
    for (CNode* pDependent : m_dependents)
    {
        const std::vector<CNode*>& children = pDependent->ValueChildren();
        for (CNode* pChild : children)
            if (pChild == this)
            {
                parents.push_back(pDependent);
                break;
            }
    }
}

CallbackHandleType CNode::RegisterCallback(CNodeCallback* pCallback)
{
    if (!pCallback)
        throw INVALID_ARGUMENT_EXCEPTION_NODE(NameText(), "RegisterCallback")("Callback must not be NULL");
    AutoLock lock(NodeMapLock());
    m_callbacks.push_back(pCallback);
    return reinterpret_cast<CallbackHandleType>(pCallback);
}

bool CNode::DeregisterCallback(CallbackHandleType hCallback)
{
    CNodeCallback* pCallback = nullptr;
    {
        AutoLock lock(NodeMapLock());
        for (auto it = m_callbacks.begin(); it != m_callbacks.end(); ++it)
            if (reinterpret_cast<CallbackHandleType>(*it) == hCallback)
            {
                pCallback = *it;
                m_callbacks.erase(it);
                break;
            }
    }
    if (pCallback == nullptr)
        return false;
    // Another thread may be running it right now (callbacks fire outside the lock).
    m_pMap->RetireCallback(pCallback);
    return true;
}

INodeMap* CNode::GetNodeMap() const
{
    return m_pMap;
}

GenICam::gcstring CNode::GetEventID() const
{
    return GenICam::gcstring(m_eventId.data(), m_eventId.size());
}

bool CNode::IsStreamable() const
{
    return m_streamable;
}

void CNode::GetPropertyNames(GenICam::gcstring_vector& propertyNames) const
{
    propertyNames.clear();
    propertyNames.push_back("Name");
    propertyNames.push_back("NameSpace");
    if (!m_toolTip.empty())
        propertyNames.push_back("ToolTip");
    if (!m_description.empty())
        propertyNames.push_back("Description");
    if (!m_displayName.empty())
        propertyNames.push_back("DisplayName");
    propertyNames.push_back("Visibility");
    if (!m_docuUrl.empty())
        propertyNames.push_back("DocuURL");
    if (!m_eventId.empty())
        propertyNames.push_back("EventID");
    if (m_pollingTimeMs >= 0)
        propertyNames.push_back("PollingTime");
    propertyNames.push_back("Streamable");
}

bool CNode::GetProperty(const GenICam::gcstring& propertyName, GenICam::gcstring& valueText,
                        GenICam::gcstring& attributeText)
{
    attributeText = "";
    auto text = [](std::string_view view) { return GenICam::gcstring(view.data(), view.size()); };
    if (propertyName == "Name")
        valueText = GetName();
    else if (propertyName == "NameSpace")
        valueText = ENameSpaceClass::ToString(GetNameSpace());
    else if (propertyName == "ToolTip" && !m_toolTip.empty())
        valueText = text(m_toolTip);
    else if (propertyName == "Description" && !m_description.empty())
        valueText = text(m_description);
    else if (propertyName == "DisplayName" && !m_displayName.empty())
        valueText = text(m_displayName);
    else if (propertyName == "Visibility")
        valueText = EVisibilityClass::ToString(OwnVisibility());
    else if (propertyName == "DocuURL" && !m_docuUrl.empty())
        valueText = text(m_docuUrl);
    else if (propertyName == "EventID" && !m_eventId.empty())
        valueText = text(m_eventId);
    else if (propertyName == "PollingTime" && m_pollingTimeMs >= 0)
        valueText = GenICam::gcstring(std::to_string(m_pollingTimeMs));
    else if (propertyName == "Streamable")
        valueText = m_streamable ? "Yes" : "No";
    else
        return false;
    return true;
}

void CNode::ImposeAccessMode(EAccessMode imposedAccessMode)
{
    CNodeMapImpl::CCallbackScope scope(m_pMap);
    m_imposedAccess = static_cast<uint8_t>(Combine(static_cast<EAccessMode>(m_imposedAccess), imposedAccessMode));
    m_pMap->NotifyChangedLocked(this);
}

void CNode::ImposeVisibility(EVisibility imposedVisibility)
{
    AutoLock lock(NodeMapLock());
    m_imposedVisibility = static_cast<uint8_t>(imposedVisibility);
}

INode* CNode::GetAlias() const
{
    return m_pAlias;
}

INode* CNode::GetCastAlias() const
{
    return m_pCastAlias;
}

GenICam::gcstring CNode::GetDocuURL() const
{
    return GenICam::gcstring(m_docuUrl.data(), m_docuUrl.size());
}

bool CNode::IsDeprecated() const
{
    return m_deprecated;
}

EInterfaceType CNode::GetPrincipalInterfaceType() const
{
    return intfIValue;
}

bool CNode::IsFeature() const
{
    return m_isFeature;
}

// ---------------------------------------------------------------- ISelector

bool CNode::IsSelector() const
{
    return !m_selected.empty();
}

namespace
{
void AppendValue(FeatureList_t& features, CNode* pNode)
{
    IValue* pValue = dynamic_cast<IValue*>(pNode);
    if (!pValue)
        return;
    for (IValue* pExisting : features)
        if (pExisting == pValue)
            return;
    features.push_back(pValue);
}
} // namespace

void CNode::GetSelectedFeatures(FeatureList_t& features) const
{
    AutoLock lock(NodeMapLock());
    features.clear();
    // The pSelected targets and the nodes that forward to them through pValue.
    for (CNode* pSelected : m_selected)
    {
        AppendValue(features, pSelected);
        for (CNode* pDependent : pSelected->Dependents())
        {
            const std::vector<CNode*>& children = pDependent->ValueChildren();
            if (!children.empty() && children.front() == pSelected && pDependent->Kind() != ENodeKind_t::Category &&
                pDependent->ForwardsTo() == pSelected)
                AppendValue(features, pDependent);
        }
    }
}

void CNode::GetSelectingFeatures(FeatureList_t& features) const
{
    AutoLock lock(NodeMapLock());
    features.clear();
    for (CNode* pSelector : m_selecting)
        AppendValue(features, pSelector);
    // A node forwarding to a selected node is selected by the same selectors.
    if (CNode* pTarget = ForwardsTo())
        for (CNode* pSelector : pTarget->m_selecting)
            AppendValue(features, pSelector);
}
} // namespace GenApi
