#pragma once

#include "Engine/Nodes/Node.h"

namespace GenApi
{
/// Counts one level of nested evaluation for the lifetime of the object (reference-cycle guard).
class CEvaluationGuard
{
public:
    explicit CEvaluationGuard(const CNode* pNode) : m_pNode(pNode) { m_pNode->EnterEvaluation(); }
    CEvaluationGuard(const CEvaluationGuard&) = delete;
    CEvaluationGuard& operator=(const CEvaluationGuard&) = delete;
    ~CEvaluationGuard() { m_pNode->LeaveEvaluation(); }

private:
    const CNode* const m_pNode;
};
} // namespace GenApi
