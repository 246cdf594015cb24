#include "Engine/Nodes/StringBase.h"

#include <cstring>

#include <Base/GCException.h>

#include "Engine/Load/NodeBuilder.h"
#include "Engine/NodeMap/NodeMapImpl.h"
#include "Engine/Nodes/EvaluationGuard.h"

namespace GenApi
{
std::string CStringBase::StringValueLocked(bool verify, bool ignoreCache)
{
    if (!verify && !ignoreCache && m_valueValid && ReadableLocked())
        return m_cachedValue;
    CheckReadableLocked("GetValue");
    CEvaluationGuard guard(this);
    std::string value = ReadLocked(verify, ignoreCache || verify);
    if (verify)
        CheckErrorsLocked();
    if (CachingMode() != NoCache)
    {
        m_cachedValue = value;
        m_valueValid = true;
    }
    return value;
}

void CStringBase::SetStringValueLocked(const std::string& value, bool verify)
{
    CheckWritableLocked(verify, "SetValue");
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

GenICam::gcstring CStringBase::ToString(bool verify, bool ignoreCache)
{
    return GetValue(verify, ignoreCache);
}

void CStringBase::FromString(const GenICam::gcstring& valueText, bool verify)
{
    SetValue(valueText, verify);
}

void CStringBase::SetValue(const GenICam::gcstring& value, bool verify)
{
    CNodeMapImpl::CCallbackScope scope(m_pMap);
    SetStringValueLocked(value.str(), verify);
}

IString& CStringBase::operator=(const GenICam::gcstring& value)
{
    SetValue(value, true);
    return *this;
}

GenICam::gcstring CStringBase::GetValue(bool verify, bool ignoreCache)
{
    AutoLock lock(NodeMapLock());
    return GenICam::gcstring(StringValueLocked(verify, ignoreCache));
}

GenICam::gcstring CStringBase::operator()()
{
    return GetValue();
}

GenICam::gcstring CStringBase::operator*()
{
    return GetValue();
}

int64_t CStringBase::GetMaxLength()
{
    AutoLock lock(NodeMapLock());
    return MaxLengthLocked();
}

} // namespace GenApi
