#pragma once

#include <cstdint>
#include <vector>

#include <pugixml.hpp>

#include <GenApi/Types.h>

namespace GenApi
{
class CNode;
class CNodeBuilder;
class CPortNode;

/**
 * \brief The register part of a register node: address terms, length, port, access mode and
 *        caching, and the byte transfer through the port (with the port's register cache).
 *
 * Owned by its node (IntReg, MaskedIntReg, StructEntry, FloatReg, StringReg, Register). Lock held
 * for every call.
 */
class CRegisterAccess
{
public:
    /// Reads one register element of the node; false when it is not one.
    bool ConfigureElement(CNode* pOwner, const pugi::xml_node& child, CNodeBuilder& builder);
    /// Checks the configuration (a port and an address are required).
    void Link(CNode* pOwner, CNodeBuilder& builder);

    /// Address: constants + pAddress values + embedded formulas + pIndex x stride.
    int64_t AddressLocked();
    /// Length in bytes.
    int64_t LengthLocked();
    /// Access of the register itself combined with the port's.
    EAccessMode NaturalAccessLocked(bool structural);
    ECachingMode Cachable() const { return m_cachable; }
    bool HasCachableElement() const { return m_hasCachable; }
    EAccessMode AccessModeElement() const { return m_accessMode; }
    CPortNode* Port() const { return m_pPort; }
    bool HasLengthElement() const { return m_hasLength || m_pLength; }
    int64_t ConstantLength() const { return m_length; }
    void SetConstantLength(int64_t lengthBytes) { m_length = lengthBytes, m_hasLength = true; }

    /// Reads the register's bytes; \a useCache allows the port's register cache.
    void ReadBytesLocked(CNode* pOwner, uint8_t* pBuffer, int64_t address, int64_t lengthBytes, bool useCache);
    /**
     * \brief Writes the register's bytes, invalidates the owner and its dependents, then keeps
     *        the bytes in the port's register cache when the register is WriteThrough.
     */
    void WriteBytesLocked(CNode* pOwner, const uint8_t* pBuffer, int64_t address, int64_t lengthBytes);
    /// Drops the port-cache entry of the register (its address is evaluated if possible).
    void DropPortCacheLocked();

    /// Copies register-level settings into a StructEntry.
    void CopyFrom(const CRegisterAccess& other);

private:
    struct IndexTerm_t
    {
        CNode* pIndex;
        CNode* pOffset; // stride node, or null
        int64_t offset; // stride constant (when hasOffset)
        bool hasOffset;
    };

    int64_t m_constantAddress = 0;
    std::vector<CNode*> m_addressNodes; // pAddress and embedded IntSwissKnife
    std::vector<IndexTerm_t> m_indexTerms;
    int64_t m_length = 4;
    CNode* m_pLength = nullptr;
    CPortNode* m_pPort = nullptr;
    EAccessMode m_accessMode = RO;
    ECachingMode m_cachable = WriteThrough;
    bool m_hasAddress = false;
    bool m_hasLength = false;
    bool m_hasCachable = false;
    bool m_lastAddressValid = false;
    int64_t m_lastAddress = 0;
    int64_t m_lastLength = 0;
};
} // namespace GenApi
