#pragma once

#include <vector>

#include <GenApi/IRegister.h>

#include "Engine/Nodes/Node.h"
#include "Engine/Nodes/RegisterAccess.h"

namespace GenApi
{
/**
 * \brief The Register element: raw bytes; text form "0x" + the bytes in address order.
 */
class CRegisterNode : public CNode, public virtual IRegister
{
public:
    CRegisterNode(CNodeMapImpl* pMap, std::string_view name) : CNode(pMap, ENodeKind_t::Register, name) {}

    bool ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder) override;
    void Link(CNodeBuilder& builder) override { m_register.Link(this, builder); }
    EAccessMode NaturalAccessLocked(bool structural) override { return m_register.NaturalAccessLocked(structural); }
    ECachingMode ComputeCachingModeLocked() override { return m_register.Cachable(); }
    void DropCacheLocked() override;
    EInterfaceType GetPrincipalInterfaceType() const override { return intfIRegister; }

    // ---- IValue ----
    INode* GetNode() override { return this; }
    GenICam::gcstring ToString(bool verify = false, bool ignoreCache = false) override;
    void FromString(const GenICam::gcstring& valueText, bool verify = true) override;
    bool IsValueCacheValid() const override { return m_valueValid; }

    // ---- IRegister ----
    void Set(const uint8_t* pBuffer, int64_t lengthBytes, bool verify = true) override;
    void Get(uint8_t* pBuffer, int64_t lengthBytes, bool verify = false, bool ignoreCache = false) override;
    int64_t GetLength() override;
    int64_t GetAddress() override;

private:
    std::vector<uint8_t> ReadAllLocked(bool verify, bool ignoreCache);
    void WriteAllLocked(const uint8_t* pBuffer, int64_t lengthBytes, bool verify);

    CRegisterAccess m_register;
    std::vector<uint8_t> m_cachedBytes;
};
} // namespace GenApi
