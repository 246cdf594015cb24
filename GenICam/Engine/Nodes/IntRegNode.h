#pragma once

#include <GenApi/IRegister.h>

#include "Engine/Nodes/IntegerBase.h"
#include "Engine/Nodes/RegisterAccess.h"

namespace GenApi
{
/**
 * \brief IntReg, MaskedIntReg and StructEntry: an integer stored in (a bit field of) a register.
 *
 * Bits are numbered from the least significant bit for LittleEndian registers and from the most
 * significant bit for BigEndian ones. A bit-field write reads the register first.
 */
class CIntRegNode : public CIntegerBase, public virtual IRegister
{
public:
    CIntRegNode(CNodeMapImpl* pMap, ENodeKind_t kind, std::string_view name) : CIntegerBase(pMap, kind, name) {}

    bool ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder) override;
    void Link(CNodeBuilder& builder) override;
    EAccessMode NaturalAccessLocked(bool structural) override;
    ECachingMode ComputeCachingModeLocked() override { return m_register.Cachable(); }
    void DropCacheLocked() override;
    /// StructEntry: takes the StructReg's register settings before its own elements.
    CRegisterAccess& Register() { return m_register; }

    // ---- IRegister ----
    void Set(const uint8_t* pBuffer, int64_t lengthBytes, bool verify = true) override;
    void Get(uint8_t* pBuffer, int64_t lengthBytes, bool verify = false, bool ignoreCache = false) override;
    int64_t GetLength() override;
    int64_t GetAddress() override;

protected:
    int64_t ReadLocked(bool verify, bool ignoreCache) override;
    void WriteLocked(int64_t value, bool verify) override;
    int64_t RawMinLocked() override;
    int64_t RawMaxLocked() override;

private:
    /// Length checked to 1..8 bytes.
    int64_t CheckedLengthLocked();
    /// Bit position of the field's least significant bit and its width, for a register of \a lengthBytes.
    void FieldLocked(int64_t lengthBytes, unsigned& low, unsigned& width);
    uint64_t ReadRawLocked(int64_t address, int64_t lengthBytes, bool useCache);

    CRegisterAccess m_register;
    int64_t m_lsb = -1;
    int64_t m_msb = -1;
    bool m_signed = false;
    bool m_bigEndian = false;
};
} // namespace GenApi
