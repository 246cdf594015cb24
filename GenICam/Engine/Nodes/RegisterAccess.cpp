#include "Engine/Nodes/RegisterAccess.h"

#include <cstring>
#include <string>

#include <Base/GCException.h>

#include "Engine/Load/NodeBuilder.h"
#include "Engine/NodeMap/NodeMapImpl.h"
#include "Engine/Nodes/Node.h"
#include "Engine/Nodes/PortNode.h"

namespace GenApi
{
namespace
{
// Address terms of a hostile description may overflow: wrap as the 64-bit sum does on the device
// rather than leave it undefined (the port refuses what is out of its range).
int64_t WrappingAdd(int64_t a, int64_t b)
{
    return static_cast<int64_t>(static_cast<uint64_t>(a) + static_cast<uint64_t>(b));
}
int64_t WrappingMultiply(int64_t a, int64_t b)
{
    return static_cast<int64_t>(static_cast<uint64_t>(a) * static_cast<uint64_t>(b));
}

// Access checks stop reads and writes of a register without a port (it is NI) before they get here.
[[gnu::cold, gnu::noinline, noreturn]] void ThrowNoPort(CNode* pOwner, const char* method)
{
    const std::string name(pOwner->Name());
    throw ACCESS_EXCEPTION_NODE(name.c_str(), method)("Node '%s' has no pPort", name.c_str());
}
} // namespace

bool CRegisterAccess::ConfigureElement(CNode* pOwner, const pugi::xml_node& child, CNodeBuilder& builder)
{
    const EElement_t element = builder.ElementOf(child);
    if (element == EElement_t::Address)
    {
        m_constantAddress = WrappingAdd(m_constantAddress, builder.Int(child, pOwner));
        m_hasAddress = true;
    }
    else if (element == EElement_t::pAddress)
    {
        CNode* pAddress = builder.Ref(child, pOwner);
        m_addressNodes.push_back(pAddress);
        pOwner->AddReference(pAddress);
        m_hasAddress = true;
    }
    else if (element == EElement_t::IntSwissKnife)
    {
        // Embedded formula: created as a node of its own by the loader, found by its Name.
        CNode* pFormula = builder.RefName(child.attribute("Name").value(), child, pOwner);
        m_addressNodes.push_back(pFormula);
        pOwner->AddReference(pFormula);
        m_hasAddress = true;
    }
    else if (element == EElement_t::pIndex)
    {
        IndexTerm_t term{builder.Ref(child, pOwner), nullptr, 0, false};
        pOwner->AddReference(term.pIndex);
        if (pugi::xml_attribute offset = child.attribute("Offset"))
        {
            term.offset = builder.IntText(offset.value(), child, pOwner);
            term.hasOffset = true;
        }
        else if (pugi::xml_attribute pOffset = child.attribute("pOffset"))
        {
            term.pOffset = builder.RefName(pOffset.value(), child, pOwner);
            pOwner->AddReference(term.pOffset);
        }
        m_indexTerms.push_back(term);
        m_hasAddress = true;
    }
    else if (element == EElement_t::Length)
    {
        m_length = builder.Int(child, pOwner);
        m_hasLength = true;
    }
    else if (element == EElement_t::pLength)
    {
        m_pLength = builder.Ref(child, pOwner);
        pOwner->AddReference(m_pLength);
    }
    else if (element == EElement_t::AccessMode)
        m_accessMode = builder.AccessMode(child, pOwner);
    else if (element == EElement_t::pPort)
    {
        CNode* pPort = builder.Ref(child, pOwner);
        m_pPort = dynamic_cast<CPortNode*>(pPort);
        if (!m_pPort)
            builder.Fail(pOwner, child, "pPort does not name a Port node");
        pOwner->AddReference(pPort);
    }
    else if (element == EElement_t::Cachable)
        m_cachable = builder.Enum<ECachingModeClass, ECachingMode>(child, pOwner), m_hasCachable = true;
    else
        return false;
    return true;
}

void CRegisterAccess::Link(CNode* pOwner, CNodeBuilder& builder)
{
    // Like a register behind a Port nobody connected, one without a port cannot be reached: NI.
    if (!m_pPort)
        builder.Warn(pOwner, pugi::xml_node(), "register has no pPort; it is not implemented");
}

void CRegisterAccess::CopyFrom(const CRegisterAccess& other)
{
    *this = other;
    m_lastAddressValid = false;
}

int64_t CRegisterAccess::AddressLocked()
{
    int64_t address = m_constantAddress;
    for (CNode* pNode : m_addressNodes)
        address = WrappingAdd(address, pNode->IntValueLocked(false, false));
    for (const IndexTerm_t& term : m_indexTerms)
    {
        int64_t stride = term.hasOffset ? term.offset : LengthLocked();
        if (term.pOffset)
            stride = term.pOffset->IntValueLocked(false, false);
        address = WrappingAdd(address, WrappingMultiply(term.pIndex->IntValueLocked(false, false), stride));
    }
    return address;
}

int64_t CRegisterAccess::LengthLocked()
{
    return m_pLength ? m_pLength->IntValueLocked(false, false) : m_length;
}

EAccessMode CRegisterAccess::NaturalAccessLocked(bool structural)
{
    if (!m_pPort)
        return NI;
    const EAccessMode portMode = structural ? m_pPort->StructuralAccessLocked() : m_pPort->AccessLocked();
    return Combine(m_accessMode, portMode);
}

void CRegisterAccess::ReadBytesLocked(CNode* pOwner, uint8_t* pBuffer, int64_t address, int64_t lengthBytes,
                                      bool useCache)
{
    if (QV_UNLIKELY(!m_pPort))
        ThrowNoPort(pOwner, "GetValue");
    m_lastAddress = address;
    m_lastLength = lengthBytes;
    m_lastAddressValid = true;
    if (useCache && m_cachable != NoCache && m_pPort->LookupCacheLocked(pBuffer, address, lengthBytes))
        return;
    m_pPort->ReadLocked(pBuffer, address, lengthBytes);
    m_pPort->StoreCacheLocked(pBuffer, address, lengthBytes);
}

void CRegisterAccess::WriteBytesLocked(CNode* pOwner, const uint8_t* pBuffer, int64_t address, int64_t lengthBytes)
{
    if (QV_UNLIKELY(!m_pPort))
        ThrowNoPort(pOwner, "SetValue");
    m_pPort->WriteLocked(pBuffer, address, lengthBytes);
    m_lastAddress = address;
    m_lastLength = lengthBytes;
    m_lastAddressValid = true;
    // Invalidate first (this drops the port-cache entry), then keep what a WriteThrough wrote.
    pOwner->Map()->NotifyChangedLocked(pOwner);
    if (m_cachable == WriteThrough)
        m_pPort->StoreCacheLocked(pBuffer, address, lengthBytes);
}

void CRegisterAccess::DropPortCacheLocked()
{
    if (m_pPort && m_lastAddressValid)
        m_pPort->DropCacheEntryLocked(m_lastAddress, m_lastLength);
}
} // namespace GenApi
