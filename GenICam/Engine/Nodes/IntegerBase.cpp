#include "Engine/Nodes/IntegerBase.h"

#include <algorithm>
#include <cstring>

#include <Base/GCException.h>

#include "Engine/Load/NodeBuilder.h"
#include "Engine/NodeMap/NodeMapImpl.h"
#include "Engine/Nodes/EvaluationGuard.h"
#include "Engine/Nodes/ValueText.h"

namespace GenApi
{
bool CIntegerBase::ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder)
{
    const EElement_t element = builder.ElementOf(child);
    if (element == EElement_t::Unit)
        m_unit = builder.Text(child);
    else if (element == EElement_t::Representation)
        m_representation = static_cast<uint8_t>(builder.Enum<ERepresentationClass, ERepresentation>(child, this));
    else
        return CNode::ConfigureElement(child, builder);
    return true;
}

ERepresentation CIntegerBase::RawRepresentationLocked()
{
    if (m_representation != _UndefinedRepresentation)
        return static_cast<ERepresentation>(m_representation);
    if (CNode* pSource = ForwardsTo())
        return pSource->RepresentationLocked();
    return PureNumber;
}

std::string_view CIntegerBase::RawUnitLocked()
{
    if (!m_unit.empty())
        return m_unit;
    if (CNode* pSource = ForwardsTo())
        return pSource->UnitLocked();
    return std::string_view();
}

GenICam::gcstring CIntegerBase::ToString(bool verify, bool ignoreCache)
{
    AutoLock lock(NodeMapLock());
    const int64_t value = IntValueLocked(verify, ignoreCache);
    return GenICam::gcstring(ValueText::FormatInt(value, RepresentationLocked()));
}

void CIntegerBase::FromString(const GenICam::gcstring& valueText, bool verify)
{
    CNodeMapImpl::CCallbackScope scope(m_pMap);
    int64_t value = 0;
    if (!ValueText::ParseInt(valueText.c_str(), RepresentationLocked(), value))
        throw INVALID_ARGUMENT_EXCEPTION_NODE(NameText(), "FromString")(
            "Node '%s' : cannot convert string '%s' to int.", NameText(), valueText.c_str());
    SetIntValueLocked(value, verify);
}

void CIntegerBase::SetValue(int64_t value, bool verify)
{
    CNodeMapImpl::CCallbackScope scope(m_pMap);
    SetIntValueLocked(value, verify);
}

IInteger& CIntegerBase::operator=(int64_t value)
{
    SetValue(value, true);
    return *this;
}

int64_t CIntegerBase::GetValue(bool verify, bool ignoreCache)
{
    AutoLock lock(NodeMapLock());
    // Fast path: a valid cached value of a node whose cached access mode allows reading.
    if (QV_LIKELY(!verify && !ignoreCache && m_valueValid && m_readState == kReadYes))
        return m_cachedValue;
    return IntValueLocked(verify, ignoreCache);
}

int64_t CIntegerBase::operator()()
{
    return GetValue();
}

int64_t CIntegerBase::operator*()
{
    return GetValue();
}

int64_t CIntegerBase::GetMin()
{
    AutoLock lock(NodeMapLock());
    return IntMinLocked();
}

int64_t CIntegerBase::GetMax()
{
    AutoLock lock(NodeMapLock());
    return IntMaxLocked();
}

EIncMode CIntegerBase::GetIncMode()
{
    AutoLock lock(NodeMapLock());
    return IncModeLocked();
}

int64_t CIntegerBase::GetInc()
{
    AutoLock lock(NodeMapLock());
    return IntIncLocked();
}

int64_autovector_t CIntegerBase::GetListOfValidValues(bool bounded)
{
    AutoLock lock(NodeMapLock());
    int64_autovector_t values;
    if (RawIncModeLocked() != listIncrement)
        return values;
    const std::vector<int64_t> listed = RawValidValuesLocked();
    if (!bounded)
    {
        values.assign(listed.begin(), listed.end());
        return values;
    }
    const int64_t minimum = IntMinLocked();
    const int64_t maximum = IntMaxLocked();
    for (int64_t value : listed)
        if (value >= minimum && value <= maximum)
            values.push_back(value);
    return values;
}

ERepresentation CIntegerBase::GetRepresentation()
{
    AutoLock lock(NodeMapLock());
    return RepresentationLocked();
}

GenICam::gcstring CIntegerBase::GetUnit()
{
    AutoLock lock(NodeMapLock());
    const std::string_view unit = RawUnitLocked();
    return GenICam::gcstring(unit.data(), unit.size());
}

void CIntegerBase::ImposeMin(int64_t value)
{
    CNodeMapImpl::CCallbackScope scope(m_pMap);
    m_imposedMin = value;
    m_pMap->NotifyChangedLocked(this);
}

void CIntegerBase::ImposeMax(int64_t value)
{
    CNodeMapImpl::CCallbackScope scope(m_pMap);
    m_imposedMax = value;
    m_pMap->NotifyChangedLocked(this);
}

// ---------------------------------------------------------------- value protocol

int64_t CIntegerBase::IntValueLocked(bool verify, bool ignoreCache)
{
    if (!verify && !ignoreCache && m_valueValid && ReadableLocked())
        return m_cachedValue;
    return ReadValueSlowLocked(verify, ignoreCache);
}

int64_t CIntegerBase::ReadValueSlowLocked(bool verify, bool ignoreCache)
{
    CheckReadableLocked("GetValue");
    CEvaluationGuard guard(this);
    const int64_t value = ReadLocked(verify, ignoreCache || verify);
    if (verify)
    {
        VerifyRangeLocked(value, "GetValue");
        CheckErrorsLocked();
    }
    if (CachingMode() != NoCache)
    {
        m_cachedValue = value;
        m_valueValid = true;
    }
    return value;
}

void CIntegerBase::SetIntValueLocked(int64_t value, bool verify)
{
    CheckWritableLocked(verify, "SetValue");
    if (verify)
        VerifyRangeLocked(value, "SetValue");
    CEvaluationGuard guard(this);
    m_valueValid = false;
    WriteLocked(value, verify);
    if (verify)
        CheckErrorsLocked();
    if (CachingMode() == WriteThrough)
    {
        m_cachedValue = value;
        m_valueValid = true;
    }
}

int64_t CIntegerBase::IntMinLocked()
{
    if (!IsAvailable(AccessLocked()))
        throw ACCESS_EXCEPTION_NODE(NameText(), "GetMin")("Node is not available.");
    return std::max(RawMinLocked(), m_imposedMin);
}

int64_t CIntegerBase::IntMaxLocked()
{
    if (!IsAvailable(AccessLocked()))
        throw ACCESS_EXCEPTION_NODE(NameText(), "GetMax")("Node is not available.");
    return std::min(RawMaxLocked(), m_imposedMax);
}

int64_t CIntegerBase::IntIncLocked()
{
    if (!IsAvailable(AccessLocked()))
        throw ACCESS_EXCEPTION_NODE(NameText(), "GetInc")("Node is not available.");
    if (RawIncModeLocked() == listIncrement)
        return 1;
    return RawIncLocked();
}

EIncMode CIntegerBase::IncModeLocked()
{
    return RawIncModeLocked();
}

ERepresentation CIntegerBase::RepresentationLocked()
{
    return RawRepresentationLocked();
}

void CIntegerBase::VerifyRangeLocked(int64_t value, const char* method)
{
    const int64_t minimum = IntMinLocked();
    const int64_t maximum = IntMaxLocked();
    if (value < minimum)
        throw OUT_OF_RANGE_EXCEPTION_NODE(NameText(), method)("Value = %lld must be equal or greater than Min = %lld.",
                                                                static_cast<long long>(value),
                                                                static_cast<long long>(minimum));
    if (value > maximum)
        throw OUT_OF_RANGE_EXCEPTION_NODE(NameText(), method)("Value = %lld must be equal or smaller than Max = %lld.",
                                                                static_cast<long long>(value),
                                                                static_cast<long long>(maximum));
    if (RawIncModeLocked() != fixedIncrement)
        return;
    const int64_t increment = IntIncLocked();
    if (increment <= 0)
        throw LOGICAL_ERROR_EXCEPTION_NODE(NameText(), method)("Increment must be larger than 0.");
    if (increment != 1)
    {
        const uint64_t difference = static_cast<uint64_t>(value) - static_cast<uint64_t>(minimum);
        if (difference % static_cast<uint64_t>(increment) != 0)
            throw OUT_OF_RANGE_EXCEPTION_NODE(NameText(), method)(
                "The difference between Value = %lld and Min = %lld must be dividable without rest by Inc = %lld.",
                static_cast<long long>(value), static_cast<long long>(minimum), static_cast<long long>(increment));
    }
}
} // namespace GenApi
