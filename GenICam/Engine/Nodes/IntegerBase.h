#pragma once

#include <GenApi/IInteger.h>

#include "Engine/Nodes/Node.h"

namespace GenApi
{
/**
 * \brief IInteger on top of a node kind's raw read/write: locking, caching, access checks,
 *        range verification and text conversion.
 *
 * Kinds implement ReadLocked/WriteLocked and the raw range. Thread: any (public methods lock).
 */
class CIntegerBase : public CNode, public virtual IInteger
{
public:
    CIntegerBase(CNodeMapImpl* pMap, ENodeKind_t kind, std::string_view name) : CNode(pMap, kind, name) {}

    /// Reads Unit and Representation; the rest goes to CNode.
    bool ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder) override;
    /// Listed valid values (lock held), for nodes inheriting them through pValue.
    std::vector<int64_t> ValidValuesLocked() { return RawValidValuesLocked(); }

    // ---- IValue ----
    INode* GetNode() override { return this; }
    GenICam::gcstring ToString(bool verify = false, bool ignoreCache = false) override;
    void FromString(const GenICam::gcstring& valueText, bool verify = true) override;
    bool IsValueCacheValid() const override { return m_valueValid; }

    // ---- IInteger ----
    void SetValue(int64_t value, bool verify = true) override;
    IInteger& operator=(int64_t value) override;
    int64_t GetValue(bool verify = false, bool ignoreCache = false) override;
    int64_t operator()() override;
    int64_t operator*() override;
    int64_t GetMin() override;
    int64_t GetMax() override;
    EIncMode GetIncMode() override;
    int64_t GetInc() override;
    int64_autovector_t GetListOfValidValues(bool bounded = true) override;
    ERepresentation GetRepresentation() override;
    GenICam::gcstring GetUnit() override;
    void ImposeMin(int64_t value) override;
    void ImposeMax(int64_t value) override;
    EInterfaceType GetPrincipalInterfaceType() const override { return intfIInteger; }

    // ---- value protocol ----
    int64_t IntValueLocked(bool verify, bool ignoreCache) override;
    void SetIntValueLocked(int64_t value, bool verify) override;
    int64_t IntMinLocked() override;
    int64_t IntMaxLocked() override;
    int64_t IntIncLocked() override;
    EIncMode IncModeLocked() override;
    ERepresentation RepresentationLocked() override;
    std::string_view UnitLocked() override { return RawUnitLocked(); }

protected:
    /// Fetches the value (cache already checked); \a ignoreCache asks children to bypass theirs.
    virtual int64_t ReadLocked(bool verify, bool ignoreCache) = 0;
    /// Stores the value (checks already done).
    virtual void WriteLocked(int64_t value, bool verify) = 0;
    virtual int64_t RawMinLocked() { return INT64_MIN; }
    virtual int64_t RawMaxLocked() { return INT64_MAX; }
    virtual int64_t RawIncLocked() { return 1; }
    virtual EIncMode RawIncModeLocked() { return fixedIncrement; }
    /// Listed values (only for listIncrement).
    virtual std::vector<int64_t> RawValidValuesLocked() { return {}; }
    /// Own Representation, else the pValue target's, else PureNumber.
    virtual ERepresentation RawRepresentationLocked();
    /// Own Unit, else the pValue target's.
    virtual std::string_view RawUnitLocked();
    /// Throws OutOfRangeException/LogicalErrorException when the value breaks Min/Max/Inc.
    void VerifyRangeLocked(int64_t value, const char* method);
    /// A value read through the slow path (access check, read, verify, cache).
    int64_t ReadValueSlowLocked(bool verify, bool ignoreCache);

    int64_t m_cachedValue = 0;
    int64_t m_imposedMin = INT64_MIN;
    int64_t m_imposedMax = INT64_MAX;
    std::string_view m_unit;
    uint8_t m_representation = _UndefinedRepresentation;
};
} // namespace GenApi
