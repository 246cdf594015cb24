#pragma once

#include <GenApi/IRegister.h>

#include "Engine/Nodes/RegisterAccess.h"
#include "Engine/Nodes/StringBase.h"

namespace GenApi
{
/**
 * \brief The StringReg element: text of at most Length bytes in a register, NUL-padded on write.
 */
class CStringRegNode : public CStringBase, public virtual IRegister
{
public:
    CStringRegNode(CNodeMapImpl* pMap, std::string_view name) : CStringBase(pMap, ENodeKind_t::StringReg, name) {}

    bool ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder) override;
    void Link(CNodeBuilder& builder) override { m_register.Link(this, builder); }
    EAccessMode NaturalAccessLocked(bool structural) override { return m_register.NaturalAccessLocked(structural); }
    ECachingMode ComputeCachingModeLocked() override { return m_register.Cachable(); }
    void DropCacheLocked() override;
    int64_t MaxLengthLocked() override;

    // ---- IRegister ----
    void Set(const uint8_t* pBuffer, int64_t lengthBytes, bool verify = true) override;
    void Get(uint8_t* pBuffer, int64_t lengthBytes, bool verify = false, bool ignoreCache = false) override;
    int64_t GetLength() override;
    int64_t GetAddress() override;

protected:
    std::string ReadLocked(bool verify, bool ignoreCache) override;
    void WriteLocked(const std::string& value, bool verify) override;

private:
    CRegisterAccess m_register;
};
} // namespace GenApi
