#pragma once

#include <GenApi/IRegister.h>

#include "Engine/Nodes/FloatBase.h"
#include "Engine/Nodes/RegisterAccess.h"

namespace GenApi
{
/**
 * \brief The FloatReg element: an IEEE 754 float (4 bytes) or double (8 bytes) in a register.
 */
class CFloatRegNode : public CFloatBase, public virtual IRegister
{
public:
    CFloatRegNode(CNodeMapImpl* pMap, std::string_view name) : CFloatBase(pMap, ENodeKind_t::FloatReg, name) {}

    bool ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder) override;
    void Link(CNodeBuilder& builder) override;
    EAccessMode NaturalAccessLocked(bool structural) override { return m_register.NaturalAccessLocked(structural); }
    ECachingMode ComputeCachingModeLocked() override;
    void DropCacheLocked() override;

    // ---- IRegister ----
    void Set(const uint8_t* pBuffer, int64_t lengthBytes, bool verify = true) override;
    void Get(uint8_t* pBuffer, int64_t lengthBytes, bool verify = false, bool ignoreCache = false) override;
    int64_t GetLength() override;
    int64_t GetAddress() override;

protected:
    double ReadLocked(bool verify, bool ignoreCache) override;
    void WriteLocked(double value, bool verify) override;

private:
    int64_t CheckedLengthLocked(const char* method);
    double RawMinLocked() override;
    double RawMaxLocked() override;

    CRegisterAccess m_register;
    bool m_bigEndian = false;
};
} // namespace GenApi
