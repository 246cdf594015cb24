#pragma once

#include <GenApi/IValue.h>

#include "Engine/Nodes/Node.h"

namespace GenApi
{
/**
 * \brief The Node element (a value-less hub other nodes invalidate through) and the IIDC legacy
 *        elements ConfRom, TextDesc, IntKey, AdvFeatureLock and SmartFeature, which this engine
 *        loads but reports not implemented (NI): they only make sense on 1394 cameras.
 */
class CValueNode : public CNode, public virtual IValue
{
public:
    CValueNode(CNodeMapImpl* pMap, ENodeKind_t kind, std::string_view name) : CNode(pMap, kind, name) {}

    EAccessMode NaturalAccessLocked(bool /*structural*/) override { return Kind() == ENodeKind_t::Node ? RO : NI; }

    // ---- IValue ----
    INode* GetNode() override { return this; }
    GenICam::gcstring ToString(bool verify = false, bool ignoreCache = false) override;
    void FromString(const GenICam::gcstring& valueText, bool verify = true) override;
    bool IsValueCacheValid() const override { return true; }
};
} // namespace GenApi
