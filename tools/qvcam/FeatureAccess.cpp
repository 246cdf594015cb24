#include "FeatureAccess.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <vector>

#include <Base/GCException.h>

#include "TextTable.h"
#include "ToolError.h"

using namespace GenApi;

namespace QvCam
{
namespace
{
std::string Lower(std::string text)
{
    for (char& c : text)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return text;
}

size_t EditDistance(const std::string& a, const std::string& b)
{
    std::vector<size_t> row(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j)
        row[j] = j;
    for (size_t i = 1; i <= a.size(); ++i)
    {
        size_t diagonal = row[0];
        row[0] = i;
        for (size_t j = 1; j <= b.size(); ++j)
        {
            const size_t above = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
            diagonal = above;
        }
    }
    return row[b.size()];
}

std::string FormatFloat(double value)
{
    char text[64];
    std::snprintf(text, sizeof(text), "%.10g", value);
    return text;
}

bool ParseInteger(const std::string& text, int64_t& value)
{
    if (text.empty())
        return false;
    errno = 0;
    char* end = nullptr;
    const long long parsed = std::strtoll(text.c_str(), &end, 0); // 0x.. and plain decimal
    if (errno != 0 || end == text.c_str() || *end != '\0')
        return false;
    value = parsed;
    return true;
}

bool ParseFloat(const std::string& text, double& value)
{
    if (text.empty())
        return false;
    errno = 0;
    char* end = nullptr;
    value = std::strtod(text.c_str(), &end);
    return errno == 0 && end != text.c_str() && *end == '\0' && std::isfinite(value);
}

std::string ValueText(INode* pNode)
{
    if (CCommandPtr pCommand = pNode)
        return "(command)";
    if (CValuePtr pValue = pNode)
        return pValue->ToString().c_str();
    return "";
}

std::string UnitOf(INode* pNode)
{
    try
    {
        if (CIntegerPtr pInteger = pNode)
            return pInteger->GetUnit().c_str();
        if (CFloatPtr pFloat = pNode)
            return pFloat->GetUnit().c_str();
    }
    catch (const GenICam::GenericException&)
    {
    }
    return "";
}
} // namespace

const char* AccessModeText(EAccessMode mode)
{
    switch (mode)
    {
    case RW:
        return "RW";
    case RO:
        return "RO";
    case WO:
        return "WO";
    case NA:
        return "NA";
    default:
        return "NI";
    }
}

CFeatureAccess::CFeatureAccess(INodeMap* pNodeMap, std::string moduleName)
    : m_pNodeMap(pNodeMap), m_moduleName(std::move(moduleName))
{
}

std::string CFeatureAccess::Suggest(const std::string& name) const
{
    NodeList_t nodes;
    m_pNodeMap->GetNodes(nodes);
    std::string best;
    size_t bestDistance = 3; // further than two edits is no longer a typo
    const std::string lowered = Lower(name);
    for (INode* pNode : nodes)
    {
        if (!pNode->IsFeature())
            continue;
        const std::string candidate = pNode->GetName().c_str();
        const size_t distance = EditDistance(lowered, Lower(candidate));
        if (distance < bestDistance)
        {
            bestDistance = distance;
            best = candidate;
        }
    }
    return best;
}

INode* CFeatureAccess::Find(const std::string& name) const
{
    INode* pNode = name.empty() ? nullptr : m_pNodeMap->GetNode(name.c_str());
    if (pNode != nullptr)
        return pNode;
    std::string message = "no feature '" + name + "' in the " + m_moduleName + " node map";
    const std::string suggestion = Suggest(name);
    if (!suggestion.empty())
        message += " (did you mean '" + suggestion + "'?)";
    throw CToolError(ExitCode_UnknownFeature, message);
}

std::string CFeatureAccess::Get(const std::string& name) const
{
    INode* pNode = Find(name);
    if (CCategoryPtr pCategory = pNode)
    {
        // A category has no value of its own: list what it holds.
        FeatureList_t features;
        pCategory->GetFeatures(features);
        std::string list;
        for (IValue* pFeature : features)
            list += (list.empty() ? "" : " ") + std::string(pFeature->GetNode()->GetName().c_str());
        return list;
    }
    const EAccessMode mode = pNode->GetAccessMode();
    if (!IsReadable(mode))
        throw CToolError(ExitCode_AccessDenied, name + " cannot be read (access mode " + AccessModeText(mode) +
                                                    (mode == NA ? ": not available in the current configuration)" : ")"));
    return ValueText(pNode);
}

void CFeatureAccess::Set(const std::string& name, const std::string& value) const
{
    INode* pNode = Find(name);
    if (CCategoryPtr(pNode) || CCommandPtr(pNode))
        throw CToolError(ExitCode_BadValue, name + (CCategoryPtr(pNode) ? " is a category and has no value"
                                                                        : " is a command: use 'qvcam exec' to execute it"));
    const EAccessMode mode = pNode->GetAccessMode();
    if (!IsWritable(mode))
    {
        std::string reason = mode == RO   ? "is read-only"
                             : mode == NA ? "is not writable now (not available: locked while acquiring, or selected off)"
                                          : "is not implemented by this device";
        throw CToolError(ExitCode_AccessDenied, name + " " + reason);
    }

    try
    {
        if (CIntegerPtr pInteger = pNode)
        {
            int64_t number = 0;
            if (!ParseInteger(value, number))
                throw CToolError(ExitCode_BadValue, "'" + value + "' is not an integer (" + name + " is an integer feature)");
            const int64_t minimum = pInteger->GetMin(), maximum = pInteger->GetMax();
            if (number < minimum || number > maximum)
                throw CToolError(ExitCode_BadValue, name + " = " + value + " is out of range [" + std::to_string(minimum) +
                                                        ", " + std::to_string(maximum) + "]");
            const int64_t increment = pInteger->GetIncMode() == fixedIncrement ? pInteger->GetInc() : 1;
            if (increment > 1 && (number - minimum) % increment != 0)
                throw CToolError(ExitCode_BadValue, name + " = " + value + " is not " + std::to_string(minimum) +
                                                        " plus a multiple of " + std::to_string(increment));
            pInteger->SetValue(number);
        }
        else if (CFloatPtr pFloat = pNode)
        {
            double number = 0;
            if (!ParseFloat(value, number))
                throw CToolError(ExitCode_BadValue, "'" + value + "' is not a number (" + name + " is a float feature)");
            const double minimum = pFloat->GetMin(), maximum = pFloat->GetMax();
            if (number < minimum || number > maximum)
                throw CToolError(ExitCode_BadValue, name + " = " + value + " is out of range [" + FormatFloat(minimum) + ", " +
                                                        FormatFloat(maximum) + "]");
            pFloat->SetValue(number);
        }
        else if (CEnumerationPtr pEnumeration = pNode)
        {
            IEnumEntry* pEntry = pEnumeration->GetEntryByName(value.c_str());
            if (pEntry == nullptr || !IsAvailable(pEntry->GetNode()->GetAccessMode()))
            {
                StringList_t symbolics;
                pEnumeration->GetSymbolics(symbolics);
                std::string list;
                for (const GenICam::gcstring& symbolic : symbolics)
                    list += (list.empty() ? "" : ", ") + std::string(symbolic.c_str());
                throw CToolError(ExitCode_BadValue, "'" + value + "' is not " +
                                                        (pEntry == nullptr ? "an entry" : "an available entry") + " of " +
                                                        name + " (available: " + list + ")");
            }
            pEnumeration->SetIntValue(pEntry->GetValue());
        }
        else if (CBooleanPtr pBoolean = pNode)
        {
            const std::string lowered = Lower(value);
            bool flag = false;
            if (lowered == "1" || lowered == "true" || lowered == "on" || lowered == "yes")
                flag = true;
            else if (!(lowered == "0" || lowered == "false" || lowered == "off" || lowered == "no"))
                throw CToolError(ExitCode_BadValue, "'" + value + "' is not a boolean (use true/false, 1/0 or on/off)");
            pBoolean->SetValue(flag);
        }
        else if (CValuePtr pValue = pNode)
            pValue->FromString(value.c_str());
        else
            throw CToolError(ExitCode_BadValue, name + " has no value that can be written");
    }
    catch (const GenICam::OutOfRangeException& error)
    {
        throw CToolError(ExitCode_BadValue, name + " = " + value + " refused: " + error.GetDescription());
    }
    catch (const GenICam::InvalidArgumentException& error)
    {
        throw CToolError(ExitCode_BadValue, name + " = " + value + " refused: " + error.GetDescription());
    }
    catch (const GenICam::AccessException& error)
    {
        throw CToolError(ExitCode_AccessDenied, name + " cannot be written now: " + error.GetDescription());
    }
}

void CFeatureAccess::Execute(const std::string& name) const
{
    INode* pNode = Find(name);
    CCommandPtr pCommand = pNode;
    if (!pCommand)
        throw CToolError(ExitCode_BadValue, name + " is not a command: use 'qvcam set' to change its value");
    if (!IsWritable(pNode->GetAccessMode()))
        throw CToolError(ExitCode_AccessDenied, name + " cannot be executed now (access mode " +
                                                    AccessModeText(pNode->GetAccessMode()) + ")");
    pCommand->Execute();
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(1);
    while (!pCommand->IsDone() && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
}

void CFeatureAccess::PrintTree(FILE* out, bool withInvisible) const
{
    CTextTable table({"Feature", "Value", "Access", "Unit"});
    // Depth-first from Root; a category reached twice is printed once.
    std::vector<INode*> visited;
    auto visit = [&](auto& self, INode* pNode, size_t depth) -> void {
        if (pNode->GetVisibility() == Invisible && !withInvisible)
            return;
        const std::string indent(2 * depth, ' ');
        if (CCategoryPtr pCategory = pNode)
        {
            if (std::find(visited.begin(), visited.end(), pNode) != visited.end())
                return;
            visited.push_back(pNode);
            // Root itself is not shown: its categories start the tree.
            const bool isRoot = depth == 0 && pNode->GetName() == "Root";
            if (!isRoot)
                table.AddRow({indent + pNode->GetName().c_str()});
            FeatureList_t features;
            pCategory->GetFeatures(features);
            for (IValue* pFeature : features)
                self(self, pFeature->GetNode(), isRoot ? 0 : depth + 1);
            return;
        }
        const EAccessMode mode = pNode->GetAccessMode();
        std::string value;
        if (CCommandPtr(pNode))
            value = "(command)";
        else if (IsReadable(mode))
        {
            try
            {
                value = ValueText(pNode);
            }
            catch (const GenICam::GenericException& error)
            {
                value = std::string("<error: ") + error.GetDescription() + ">";
            }
        }
        else
            value = "-";
        table.AddRow({indent + pNode->GetName().c_str(), value, AccessModeText(mode), UnitOf(pNode)});
    };

    if (INode* pRoot = m_pNodeMap->GetNode("Root"))
        visit(visit, pRoot, 0);
    else
    {
        NodeList_t nodes;
        m_pNodeMap->GetNodes(nodes);
        for (INode* pNode : nodes)
            if (pNode->IsFeature() && !CCategoryPtr(pNode))
                visit(visit, pNode, 0);
    }
    table.Print(out);
}
} // namespace QvCam
