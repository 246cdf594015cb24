#pragma once

#include <string>

#include <GenApi/IString.h>

#include "Engine/Nodes/Node.h"

namespace GenApi
{
/**
 * \brief IString on top of a kind's raw read/write: locking, caching, access checks.
 */
class CStringBase : public CNode, public virtual IString
{
public:
    CStringBase(CNodeMapImpl* pMap, ENodeKind_t kind, std::string_view name) : CNode(pMap, kind, name) {}

    EInterfaceType GetPrincipalInterfaceType() const override { return intfIString; }
    std::string StringValueLocked(bool verify, bool ignoreCache);
    void SetStringValueLocked(const std::string& value, bool verify);
    virtual int64_t MaxLengthLocked() = 0;

    // ---- IValue ----
    INode* GetNode() override { return this; }
    GenICam::gcstring ToString(bool verify = false, bool ignoreCache = false) override;
    void FromString(const GenICam::gcstring& valueText, bool verify = true) override;
    bool IsValueCacheValid() const override { return m_valueValid; }

    // ---- IString ----
    void SetValue(const GenICam::gcstring& value, bool verify = true) override;
    IString& operator=(const GenICam::gcstring& value) override;
    GenICam::gcstring GetValue(bool verify = false, bool ignoreCache = false) override;
    GenICam::gcstring operator()() override;
    GenICam::gcstring operator*() override;
    int64_t GetMaxLength() override;

protected:
    virtual std::string ReadLocked(bool verify, bool ignoreCache) = 0;
    /// Checks the length first (also without verification), then writes.
    virtual void WriteLocked(const std::string& value, bool verify) = 0;

    std::string m_cachedValue;
};

} // namespace GenApi
