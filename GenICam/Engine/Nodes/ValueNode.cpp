#include "Engine/Nodes/ValueNode.h"

#include <Base/GCException.h>

namespace GenApi
{
GenICam::gcstring CValueNode::ToString(bool /*verify*/, bool /*ignoreCache*/)
{
    AutoLock lock(NodeMapLock());
    CheckReadableLocked("ToString");
    return GenICam::gcstring();
}

void CValueNode::FromString(const GenICam::gcstring& /*valueText*/, bool /*verify*/)
{
    throw ACCESS_EXCEPTION_NODE(NameText(), "FromString")("Node is not writable.");
}
} // namespace GenApi
