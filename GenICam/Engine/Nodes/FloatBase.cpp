#include "Engine/Nodes/FloatBase.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include <Base/GCException.h>

#include "Engine/Load/NodeBuilder.h"
#include "Engine/NodeMap/NodeMapImpl.h"
#include "Engine/Nodes/EvaluationGuard.h"
#include "Engine/Nodes/ValueText.h"

namespace GenApi
{
bool CFloatBase::ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder)
{
    const EElement_t element = builder.ElementOf(child);
    if (element == EElement_t::Unit)
        m_unit = builder.Text(child);
    else if (element == EElement_t::Representation)
        m_representation = static_cast<uint8_t>(builder.Enum<ERepresentationClass, ERepresentation>(child, this));
    else if (element == EElement_t::DisplayNotation)
        m_displayNotation = static_cast<uint8_t>(builder.Enum<EDisplayNotationClass, EDisplayNotation>(child, this));
    else if (element == EElement_t::DisplayPrecision)
        m_displayPrecision = builder.Int(child, this);
    else
        return CNode::ConfigureElement(child, builder);
    return true;
}

GenICam::gcstring CFloatBase::ToString(bool verify, bool ignoreCache)
{
    AutoLock lock(NodeMapLock());
    const double value = FloatValueLocked(verify, ignoreCache);
    double minimum = -DBL_MAX, maximum = DBL_MAX;
    try
    {
        minimum = FloatMinLocked();
        maximum = FloatMaxLocked();
    }
    catch (const GenICam::GenericException&)
    {
        // No usable range: print the value as it is.
    }
    return GenICam::gcstring(
        ValueText::FormatFloatInRange(value, GetDisplayNotation(), GetDisplayPrecision(), minimum, maximum));
}

void CFloatBase::FromString(const GenICam::gcstring& valueText, bool verify)
{
    CNodeMapImpl::CCallbackScope scope(m_pMap);
    double value = 0.0;
    if (!ValueText::ParseFloat(valueText.c_str(), value))
        throw INVALID_ARGUMENT_EXCEPTION_NODE(NameText(), "FromString")(
            "Node '%s' : cannot convert string '%s' to double.", NameText(), valueText.c_str());
    SetFloatValueLocked(value, verify);
}

void CFloatBase::SetValue(double value, bool verify)
{
    CNodeMapImpl::CCallbackScope scope(m_pMap);
    SetFloatValueLocked(value, verify);
}

IFloat& CFloatBase::operator=(double value)
{
    SetValue(value, true);
    return *this;
}

double CFloatBase::GetValue(bool verify, bool ignoreCache)
{
    AutoLock lock(NodeMapLock());
    if (QV_LIKELY(!verify && !ignoreCache && m_valueValid && m_readState == kReadYes))
        return m_cachedValue;
    return FloatValueLocked(verify, ignoreCache);
}

double CFloatBase::operator()()
{
    return GetValue();
}

double CFloatBase::operator*()
{
    return GetValue();
}

double CFloatBase::GetMin()
{
    AutoLock lock(NodeMapLock());
    return FloatMinLocked();
}

double CFloatBase::GetMax()
{
    AutoLock lock(NodeMapLock());
    return FloatMaxLocked();
}

bool CFloatBase::HasInc()
{
    AutoLock lock(NodeMapLock());
    return HasFloatIncLocked();
}

EIncMode CFloatBase::GetIncMode()
{
    AutoLock lock(NodeMapLock());
    return IncModeLocked();
}

double CFloatBase::GetInc()
{
    AutoLock lock(NodeMapLock());
    return FloatIncLocked();
}

double_autovector_t CFloatBase::GetListOfValidValues(bool bounded)
{
    AutoLock lock(NodeMapLock());
    double_autovector_t values;
    if (RawIncModeLocked() != listIncrement)
        return values;
    const std::vector<double> listed = RawValidValuesLocked();
    const double minimum = bounded ? FloatMinLocked() : -DBL_MAX;
    const double maximum = bounded ? FloatMaxLocked() : DBL_MAX;
    for (double value : listed)
        if (value >= minimum && value <= maximum)
            values.push_back(value);
    return values;
}

ERepresentation CFloatBase::GetRepresentation()
{
    AutoLock lock(NodeMapLock());
    return RepresentationLocked();
}

GenICam::gcstring CFloatBase::GetUnit() const
{
    AutoLock lock(NodeMapLock());
    const std::string_view unit = const_cast<CFloatBase*>(this)->RawUnitLocked();
    return GenICam::gcstring(unit.data(), unit.size());
}

EDisplayNotation CFloatBase::GetDisplayNotation() const
{
    if (m_displayNotation != _UndefinedEDisplayNotation)
        return static_cast<EDisplayNotation>(m_displayNotation);
    if (IFloat* pSource = dynamic_cast<IFloat*>(PropertySourceLocked()))
        return pSource->GetDisplayNotation();
    return fnAutomatic;
}

int64_t CFloatBase::GetDisplayPrecision() const
{
    if (m_displayPrecision >= 0)
        return m_displayPrecision;
    if (IFloat* pSource = dynamic_cast<IFloat*>(PropertySourceLocked()))
        return pSource->GetDisplayPrecision();
    return 6;
}

void CFloatBase::ImposeMin(double value)
{
    CNodeMapImpl::CCallbackScope scope(m_pMap);
    m_imposedMin = value;
    m_pMap->NotifyChangedLocked(this);
}

void CFloatBase::ImposeMax(double value)
{
    CNodeMapImpl::CCallbackScope scope(m_pMap);
    m_imposedMax = value;
    m_pMap->NotifyChangedLocked(this);
}

// ---------------------------------------------------------------- value protocol

double CFloatBase::FloatValueLocked(bool verify, bool ignoreCache)
{
    if (!verify && !ignoreCache && m_valueValid && ReadableLocked())
        return m_cachedValue;
    return ReadValueSlowLocked(verify, ignoreCache);
}

double CFloatBase::ReadValueSlowLocked(bool verify, bool ignoreCache)
{
    CheckReadableLocked("GetValue");
    CEvaluationGuard guard(this);
    const double value = ReadLocked(verify, ignoreCache || verify);
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

void CFloatBase::SetFloatValueLocked(double value, bool verify)
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

int64_t CFloatBase::IntValueLocked(bool verify, bool ignoreCache)
{
    return RoundToInt64(FloatValueLocked(verify, ignoreCache), "GetValue");
}

void CFloatBase::SetIntValueLocked(int64_t value, bool verify)
{
    SetFloatValueLocked(static_cast<double>(value), verify);
}

int64_t CFloatBase::IntMinLocked()
{
    return RoundToInt64(FloatMinLocked(), "GetMin");
}

int64_t CFloatBase::IntMaxLocked()
{
    return RoundToInt64(FloatMaxLocked(), "GetMax");
}

int64_t CFloatBase::IntIncLocked()
{
    if (!HasFloatIncLocked())
        return 1;
    return RoundToInt64(FloatIncLocked(), "GetInc");
}

double CFloatBase::FloatMinLocked()
{
    if (!IsAvailable(AccessLocked()))
        throw ACCESS_EXCEPTION_NODE(NameText(), "GetMin")("Node is not available.");
    return std::max(RawMinLocked(), m_imposedMin);
}

double CFloatBase::FloatMaxLocked()
{
    if (!IsAvailable(AccessLocked()))
        throw ACCESS_EXCEPTION_NODE(NameText(), "GetMax")("Node is not available.");
    return std::min(RawMaxLocked(), m_imposedMax);
}

double CFloatBase::FloatIncLocked()
{
    if (!IsAvailable(AccessLocked()))
        throw ACCESS_EXCEPTION_NODE(NameText(), "GetInc")("Node is not available.");
    return RawIncLocked();
}

bool CFloatBase::HasFloatIncLocked()
{
    return RawHasIncLocked();
}

EIncMode CFloatBase::IncModeLocked()
{
    return RawIncModeLocked();
}

ERepresentation CFloatBase::RepresentationLocked()
{
    return RawRepresentationLocked();
}

std::string_view CFloatBase::UnitLocked()
{
    return RawUnitLocked();
}

ERepresentation CFloatBase::RawRepresentationLocked()
{
    if (m_representation != _UndefinedRepresentation)
        return static_cast<ERepresentation>(m_representation);
    if (CNode* pSource = PropertySourceLocked())
        return pSource->RepresentationLocked();
    return PureNumber;
}

std::string_view CFloatBase::RawUnitLocked()
{
    if (!m_unit.empty())
        return m_unit;
    if (CNode* pSource = PropertySourceLocked())
        return pSource->UnitLocked();
    return std::string_view();
}

void CFloatBase::VerifyRangeLocked(double value, const char* method)
{
    const double minimum = FloatMinLocked();
    const double maximum = FloatMaxLocked();
    if (value < minimum)
        throw OUT_OF_RANGE_EXCEPTION_NODE(NameText(), method)("Value %f must be greater than or equal %f.", value,
                                                                minimum);
    if (value > maximum)
        throw OUT_OF_RANGE_EXCEPTION_NODE(NameText(), method)("Value %f must be smaller than or equal %f.", value,
                                                                maximum);
}
} // namespace GenApi
