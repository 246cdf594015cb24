// The arrays of systems and devices; the data stream's array is instantiated with its stream.
#include "QvApi_TL/QvAutoPtrArray.h"

namespace QvApi
{
template class CQvAutoPtrArray<IQvSystemReleasable, IQvSystem>;
template class CQvAutoPtrArray<IQvDeviceReleasable, IQvDevice>;
} // namespace QvApi
