#pragma once

#include <cstdint>

#include <GenApi/Container.h>
#include <GenApi/IBase.h>

namespace GenApi
{
struct INodeMap;
class CNodeCallback;

/// Handle of a registered node callback (the callback object's address).
typedef intptr_t CallbackHandleType;

/**
 * \brief A node of a node map: name, help texts, access, caching, links and callbacks.
 *
 * Every node of a description implements INode plus its value interface (IInteger, IFloat, ...).
 * Thread: any; each call locks the node map's lock.
 */
GENICAM_INTERFACE GENAPI_DECL_ABSTRACT INode : virtual public IBase
{
    /// The node's name; with \a fullQualified "Std::" or "Cust::" in front.
    virtual GenICam::gcstring GetName(bool fullQualified = false) const = 0;
    /// Name space of the node's name.
    virtual ENameSpace GetNameSpace() const = 0;
    /// Recommended visibility (a category: the least restrictive of its features).
    virtual EVisibility GetVisibility() const = 0;
    /// Drops the node's cached value and access mode and those of every node depending on it,
    /// then fires their callbacks.
    virtual void InvalidateNode() = 0;
    /// Whether the value may be cached (caching mode is not NoCache).
    virtual bool IsCachable() const = 0;
    /// Whether the access mode may be cached.
    virtual EYesNo IsAccessModeCacheable() const = 0;
    /// Caching mode (NoCache, WriteThrough, WriteAround).
    virtual ECachingMode GetCachingMode() const = 0;
    /// Polling time in milliseconds, or -1 when the node is not polled.
    virtual int64_t GetPollingTime() const = 0;
    /// Short help text.
    virtual GenICam::gcstring GetToolTip() const = 0;
    /// Long help text.
    virtual GenICam::gcstring GetDescription() const = 0;
    /// Label for user interfaces (the name when the description gives none).
    virtual GenICam::gcstring GetDisplayName() const = 0;
    /// Name of the device the node map belongs to.
    virtual GenICam::gcstring GetDeviceName() const = 0;
    /// Nodes this one links to, of the given kind.
    virtual void GetChildren(NodeList_t& children, ELinkType linkType = ctReadingChildren) const = 0;
    /// Nodes that link to this one.
    virtual void GetParents(NodeList_t& parents) const = 0;
    /// Registers a callback; the node takes ownership (Destroy() is called on deregistration).
    virtual CallbackHandleType RegisterCallback(CNodeCallback* pCallback) = 0;
    /// Removes a callback; false when the handle is unknown to this node.
    virtual bool DeregisterCallback(CallbackHandleType hCallback) = 0;
    /// The node map holding the node.
    virtual INodeMap* GetNodeMap() const = 0;
    /// Event ID as written in the description (hex text), or empty.
    virtual GenICam::gcstring GetEventID() const = 0;
    /// Whether the node takes part in persistence.
    virtual bool IsStreamable() const = 0;
    /// Names of the description properties of the node.
    virtual void GetPropertyNames(GenICam::gcstring_vector& propertyNames) const = 0;
    /// Text of a description property; false when the node has no such property.
    virtual bool GetProperty(const GenICam::gcstring& propertyName, GenICam::gcstring& valueText,
                             GenICam::gcstring& attributeText) = 0;
    /// Caps the access mode (combined like ImposedAccessMode).
    virtual void ImposeAccessMode(EAccessMode imposedAccessMode) = 0;
    /// Raises the visibility level.
    virtual void ImposeVisibility(EVisibility imposedVisibility) = 0;
    /// Node describing the same feature differently (pAlias), or null.
    virtual INode* GetAlias() const = 0;
    /// Node of another interface for the same feature (pCastAlias), or null.
    virtual INode* GetCastAlias() const = 0;
    /// Documentation URL.
    virtual GenICam::gcstring GetDocuURL() const = 0;
    /// Whether the feature should no longer be used.
    virtual bool IsDeprecated() const = 0;
    /// The interface the node mainly implements.
    virtual EInterfaceType GetPrincipalInterfaceType() const = 0;
    /// Whether the node is reachable from the category Root.
    virtual bool IsFeature() const = 0;
};

/// Whether the access mode allows reading.
inline bool IsReadable(EAccessMode accessMode)
{
    return accessMode == RW || accessMode == RO;
}
/// Whether the node is readable (false for null).
inline bool IsReadable(const IBase* p)
{
    return p && IsReadable(p->GetAccessMode());
}
inline bool IsReadable(const IBase& r)
{
    return IsReadable(r.GetAccessMode());
}
/// Whether the access mode allows writing.
inline bool IsWritable(EAccessMode accessMode)
{
    return accessMode == RW || accessMode == WO;
}
inline bool IsWritable(const IBase* p)
{
    return p && IsWritable(p->GetAccessMode());
}
inline bool IsWritable(const IBase& r)
{
    return IsWritable(r.GetAccessMode());
}
/// Whether the access mode is anything but NI.
inline bool IsImplemented(EAccessMode accessMode)
{
    return accessMode != NI;
}
inline bool IsImplemented(const IBase* p)
{
    return p && IsImplemented(p->GetAccessMode());
}
inline bool IsImplemented(const IBase& r)
{
    return IsImplemented(r.GetAccessMode());
}
/// Whether the access mode is neither NA nor NI.
inline bool IsAvailable(EAccessMode accessMode)
{
    return !(accessMode == NA || accessMode == NI);
}
inline bool IsAvailable(const IBase* p)
{
    return p && IsAvailable(p->GetAccessMode());
}
inline bool IsAvailable(const IBase& r)
{
    return IsAvailable(r.GetAccessMode());
}
/// Whether a feature of visibility \a visibility is shown at level \a maxVisibility.
inline bool IsVisible(EVisibility visibility, EVisibility maxVisibility)
{
    return visibility <= maxVisibility;
}
/// Whether the access mode is one of the internal helper values.
inline bool IsAccessModeUndefined(EAccessMode accessMode)
{
    return accessMode == _UndefinedAccesMode;
}
/// Combination of two access modes (the weaker wins; RO with WO gives NA).
inline EAccessMode Combine(EAccessMode a, EAccessMode b)
{
    if (a == NI || b == NI)
        return NI;
    if (a == NA || b == NA)
        return NA;
    if ((a == RO && b == WO) || (a == WO && b == RO))
        return NA;
    if (a == WO || b == WO)
        return WO;
    if (a == RO || b == RO)
        return RO;
    return RW;
}
/// Combination of two visibilities (the more restrictive wins).
inline EVisibility Combine(EVisibility a, EVisibility b)
{
    if (a == Invisible || b == Invisible)
        return Invisible;
    if (a == Guru || b == Guru)
        return Guru;
    if (a == Expert || b == Expert)
        return Expert;
    return Beginner;
}
/// Combination of two caching modes (NoCache wins, then WriteAround).
inline ECachingMode Combine(ECachingMode a, ECachingMode b)
{
    if (a == NoCache || b == NoCache)
        return NoCache;
    if (a == WriteAround || b == WriteAround)
        return WriteAround;
    return WriteThrough;
}
/// Whether the visibility is the undefined marker.
inline bool IsVisibilityUndefined(EVisibility visibility)
{
    return visibility == _UndefinedVisibility;
}
} // namespace GenApi
