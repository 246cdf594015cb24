#pragma once

#include <cfloat>

#include <GenApi/IFloat.h>

#include "Engine/Nodes/Node.h"

namespace GenApi
{
/**
 * \brief IFloat on top of a node kind's raw read/write: locking, caching, access checks, range
 *        verification (increments are not enforced) and text conversion.
 *
 * Thread: any (public methods lock).
 */
class CFloatBase : public CNode, public virtual IFloat
{
public:
    CFloatBase(CNodeMapImpl* pMap, ENodeKind_t kind, std::string_view name) : CNode(pMap, kind, name) {}

    bool ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder) override;

    // ---- IValue ----
    INode* GetNode() override { return this; }
    GenICam::gcstring ToString(bool verify = false, bool ignoreCache = false) override;
    void FromString(const GenICam::gcstring& valueText, bool verify = true) override;
    bool IsValueCacheValid() const override { return m_valueValid; }

    // ---- IFloat ----
    void SetValue(double value, bool verify = true) override;
    IFloat& operator=(double value) override;
    double GetValue(bool verify = false, bool ignoreCache = false) override;
    double operator()() override;
    double operator*() override;
    double GetMin() override;
    double GetMax() override;
    bool HasInc() override;
    EIncMode GetIncMode() override;
    double GetInc() override;
    double_autovector_t GetListOfValidValues(bool bounded = true) override;
    ERepresentation GetRepresentation() override;
    GenICam::gcstring GetUnit() const override;
    EDisplayNotation GetDisplayNotation() const override;
    int64_t GetDisplayPrecision() const override;
    void ImposeMin(double value) override;
    void ImposeMax(double value) override;
    EInterfaceType GetPrincipalInterfaceType() const override { return intfIFloat; }

    // ---- value protocol ----
    int64_t IntValueLocked(bool verify, bool ignoreCache) override;
    void SetIntValueLocked(int64_t value, bool verify) override;
    double FloatValueLocked(bool verify, bool ignoreCache) override;
    void SetFloatValueLocked(double value, bool verify) override;
    int64_t IntMinLocked() override;
    int64_t IntMaxLocked() override;
    int64_t IntIncLocked() override;
    double FloatMinLocked() override;
    double FloatMaxLocked() override;
    double FloatIncLocked() override;
    bool HasFloatIncLocked() override;
    EIncMode IncModeLocked() override;
    ERepresentation RepresentationLocked() override;
    std::string_view UnitLocked() override;

protected:
    virtual double ReadLocked(bool verify, bool ignoreCache) = 0;
    virtual void WriteLocked(double value, bool verify) = 0;
    virtual double RawMinLocked() { return -DBL_MAX; }
    virtual double RawMaxLocked() { return DBL_MAX; }
    virtual bool RawHasIncLocked() { return false; }
    virtual double RawIncLocked() { return 0.0; }
    virtual EIncMode RawIncModeLocked() { return RawHasIncLocked() ? fixedIncrement : noIncrement; }
    virtual std::vector<double> RawValidValuesLocked() { return {}; }
    virtual ERepresentation RawRepresentationLocked();
    virtual std::string_view RawUnitLocked();
    /// The node unit/representation/notation fall back to when not given (e.g. pValue).
    virtual CNode* PropertySourceLocked() const { return ForwardsTo(); }
    void VerifyRangeLocked(double value, const char* method);
    double ReadValueSlowLocked(bool verify, bool ignoreCache);

    double m_cachedValue = 0.0;
    double m_imposedMin = -DBL_MAX;
    double m_imposedMax = DBL_MAX;
    std::string_view m_unit;
    int64_t m_displayPrecision = -1; // -1: not given
    uint8_t m_representation = _UndefinedRepresentation;
    uint8_t m_displayNotation = _UndefinedEDisplayNotation;
};
} // namespace GenApi
