#pragma once

#include <Base/GCException.h>
#include <GenApi/IBoolean.h>
#include <GenApi/ICategory.h>
#include <GenApi/IChunkPort.h>
#include <GenApi/ICommand.h>
#include <GenApi/IDeviceInfo.h>
#include <GenApi/IEnumEntry.h>
#include <GenApi/IEnumeration.h>
#include <GenApi/IFloat.h>
#include <GenApi/IInteger.h>
#include <GenApi/ILoadWarnings.h>
#include <GenApi/INode.h>
#include <GenApi/INodeMap.h>
#include <GenApi/IPort.h>
#include <GenApi/IRegister.h>
#include <GenApi/ISelector.h>
#include <GenApi/IString.h>
#include <GenApi/IValue.h>

namespace GenApi
{
/**
 * \brief A smart pointer to the interface T of a node, set from any interface B of it.
 *
 * Construction and assignment dynamic_cast; a node of another interface gives an invalid pointer.
 * Dereferencing an invalid pointer throws LogicalErrorException "NULL pointer dereferenced".
 * Does not own the node: the node map does.
 */
template <class T, class B = IBase>
class CPointer
{
public:
    CPointer() noexcept : m_pT(nullptr) {}
    CPointer(B* pB) : m_pT(dynamic_cast<T*>(pB)) {}
    /// Points at the T interface of the node another pointer points at (invalid stays invalid).
    template <class T2, class B2>
    CPointer(const CPointer<T2, B2>& other) : m_pT(other.IsValid() ? dynamic_cast<T*>(other.operator->()) : nullptr)
    {
    }
    virtual ~CPointer() = default;

    /// Points at the T interface of \a pB (invalid when it has none).
    void operator=(B* pB) { m_pT = dynamic_cast<T*>(pB); }

    /// The interface. \throws LogicalErrorException when invalid.
    operator T*() const
    {
        if (!m_pT)
            throw LOGICAL_ERROR_EXCEPTION("NULL pointer dereferenced");
        return m_pT;
    }
    T& operator*() const
    {
        if (!m_pT)
            throw LOGICAL_ERROR_EXCEPTION("NULL pointer dereferenced");
        return *m_pT;
    }
    T& operator()() const
    {
        if (!m_pT)
            throw LOGICAL_ERROR_EXCEPTION("NULL pointer dereferenced");
        return *m_pT;
    }
    T* operator->() const
    {
        if (!m_pT)
            throw LOGICAL_ERROR_EXCEPTION("NULL pointer dereferenced");
        return m_pT;
    }

    /// Whether the pointer points at a node of interface T.
    bool IsValid() const noexcept { return m_pT != nullptr; }
    operator bool() const noexcept { return m_pT != nullptr; }

    bool operator==(T* pT) const { return m_pT == pT; }
    bool operator==(const CPointer<T, B>& other) const { return m_pT == other.m_pT; }
    /// Comparison with a literal 0 only.
    bool operator==(int mustBeNull) const
    {
        if (mustBeNull != 0)
            throw LOGICAL_ERROR_EXCEPTION("argument must be NULL");
        return m_pT == nullptr;
    }
    bool operator!=(T* pT) const { return m_pT != pT; }
    bool operator!=(const CPointer<T, B>& other) const { return m_pT != other.m_pT; }
    bool operator!=(int mustBeNull) const { return !(*this == mustBeNull); }

protected:
    T* m_pT; // borrowed from the node map
};

typedef CPointer<IBase> CBasePtr;
typedef CPointer<INode> CNodePtr;
typedef CPointer<IValue> CValuePtr;
typedef CPointer<ICategory> CCategoryPtr;
typedef CPointer<IBoolean> CBooleanPtr;
typedef CPointer<IInteger> CIntegerPtr;
typedef CPointer<IString> CStringPtr;
typedef CPointer<IRegister> CRegisterPtr;
typedef CPointer<IEnumeration> CEnumerationPtr;
typedef CPointer<IEnumEntry> CEnumEntryPtr;
typedef CPointer<IPort> CPortPtr;
typedef CPointer<IChunkPort> CChunkPortPtr;
typedef CPointer<ISelector> CSelectorPtr;
typedef CPointer<ICommand> CCommandPtr;
typedef CPointer<INodeMap, INodeMap> CNodeMapPtr;
typedef CPointer<IDeviceInfo, INodeMap> CDeviceInfoPtr;
typedef CPointer<ILoadWarnings, INodeMap> CLoadWarningsPtr;

/**
 * \brief Smart pointer to an IFloat, with access to its integer and enumeration cast aliases.
 */
class CFloatPtr : public CPointer<IFloat, IBase>
{
public:
    CFloatPtr() noexcept : CPointer<IFloat, IBase>() {}
    CFloatPtr(IBase* pB) : CPointer<IFloat, IBase>(pB) {}
    void operator=(IBase* pB) { CPointer<IFloat, IBase>::operator=(pB); }

    /// The integer view of the feature (through pCastAlias), or an invalid pointer.
    CIntegerPtr GetIntAlias()
    {
        INode* pNode = dynamic_cast<INode*>(m_pT);
        return CIntegerPtr(pNode ? pNode->GetCastAlias() : nullptr);
    }
    /// The enumeration view of the feature (through pCastAlias), or an invalid pointer.
    CEnumerationPtr GetEnumAlias()
    {
        INode* pNode = dynamic_cast<INode*>(m_pT);
        return CEnumerationPtr(pNode ? pNode->GetCastAlias() : nullptr);
    }
};

template <class T, class B>
inline bool IsReadable(const CPointer<T, B>& ptr)
{
    return ptr.IsValid() && IsReadable(ptr->GetAccessMode());
}
template <class T, class B>
inline bool IsWritable(const CPointer<T, B>& ptr)
{
    return ptr.IsValid() && IsWritable(ptr->GetAccessMode());
}
template <class T, class B>
inline bool IsImplemented(const CPointer<T, B>& ptr)
{
    return ptr.IsValid() && IsImplemented(ptr->GetAccessMode());
}
template <class T, class B>
inline bool IsAvailable(const CPointer<T, B>& ptr)
{
    return ptr.IsValid() && IsAvailable(ptr->GetAccessMode());
}
} // namespace GenApi
