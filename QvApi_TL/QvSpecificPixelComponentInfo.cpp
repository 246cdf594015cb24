#include "QvApi_TL/QvSpecificPixelComponentInfo.h"

namespace QvApi
{
GenICam::gcstring CQvSpecificPixelComponentInfo::GetName() const
{
    return GenICam::gcstring(m_name);
}
} // namespace QvApi
