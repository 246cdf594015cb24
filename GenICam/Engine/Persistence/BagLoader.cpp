#include "Engine/Persistence/BagLoader.h"

#include <exception>

#include <Base/GCException.h>
#include <GenApi/ICommand.h>
#include <GenApi/INode.h>
#include <GenApi/INodeMap.h>
#include <GenApi/ISelector.h>
#include <GenApi/IValue.h>

namespace GenApi
{
namespace
{
// Write rounds after the first: each retries what failed and replays the bag when that helped.
constexpr int kMaxRetryRounds = 4;

GenICam::gcstring Format(const char* prefix, const GenICam::gcstring& name, const char* middle, const char* what)
{
    GenICam::gcstring text(prefix);
    text += name;
    text += middle;
    text += what;
    return text;
}

bool IsSelectorNode(INode* pNode)
{
    ISelector* pSelector = dynamic_cast<ISelector*>(pNode);
    return pSelector && pSelector->IsSelector();
}
} // namespace

CBagLoader::CBagLoader(INodeMap* pNodeMap, const GenICam::gcstring_vector& names, const GenICam::gcstring_vector& values)
    : m_pNodeMap(pNodeMap)
{
    const size_t count = names.size() < values.size() ? names.size() : values.size();
    m_entries.reserve(count);
    for (size_t i = 0; i < count; ++i)
        m_entries.push_back(Parse(names[i], values[i]));
}

CBagLoader::Entry_t CBagLoader::Parse(const GenICam::gcstring& name, const GenICam::gcstring& value)
{
    Entry_t entry{name, value, {}};
    if (value.empty() || value[size_t(0)] != '{')
        return entry;
    const size_t close = value.find('}');
    if (close == GenICam::gcstring::npos)
        return entry;
    // "{Sel1=v1\tSel2=v2}\tvalue"
    const GenICam::gcstring inner = value.substr(1, close - 1);
    size_t start = 0;
    while (start <= inner.size())
    {
        size_t end = inner.find('\t', start);
        if (end == GenICam::gcstring::npos)
            end = inner.size();
        const GenICam::gcstring pair = inner.substr(start, end - start);
        const size_t equals = pair.find('=');
        if (equals != GenICam::gcstring::npos)
            entry.selectors.emplace_back(pair.substr(0, equals), pair.substr(equals + 1));
        start = end + 1;
    }
    size_t valueStart = close + 1;
    if (valueStart < value.size() && value[valueStart] == '\t')
        ++valueStart;
    entry.value = value.substr(valueStart);
    return entry;
}

void CBagLoader::WriteSelectors(const Entry_t& entry)
{
    for (const auto& selector : entry.selectors)
    {
        INode* pNode = m_pNodeMap->GetNode(selector.first);
        IValue* pValue = dynamic_cast<IValue*>(pNode);
        if (pValue)
            pValue->FromString(selector.second, false);
    }
}

bool CBagLoader::WriteEntry(const Entry_t& entry, GenICam::gcstring& error)
{
    INode* pNode = m_pNodeMap->GetNode(entry.name);
    if (!pNode)
    {
        error = Format("Error while writing node: '", entry.name, "' not found ", "");
        return false;
    }
    try
    {
        WriteSelectors(entry);
        if (ICommand* pCommand = dynamic_cast<ICommand*>(pNode))
            pCommand->Execute(false);
        else if (IValue* pValue = dynamic_cast<IValue*>(pNode))
            pValue->FromString(entry.value, false);
        else
            throw RUNTIME_EXCEPTION("Node '%s' has no value", entry.name.c_str());
        return true;
    }
    catch (const std::exception& e)
    {
        error = Format("Error while writing node '", entry.name, "': ", e.what());
        return false;
    }
}

bool CBagLoader::VerifyEntry(const Entry_t& entry, GenICam::gcstring& error)
{
    INode* pNode = m_pNodeMap->GetNode(entry.name);
    IValue* pValue = dynamic_cast<IValue*>(pNode);
    if (!pValue || dynamic_cast<ICommand*>(pNode))
        return true; // written (or executed) already; nothing to read back
    try
    {
        WriteSelectors(entry);
        // Selectors are set again so that the entries after them are read in the same state.
        if (IsSelectorNode(pNode))
        {
            pValue->FromString(entry.value, false);
            return true;
        }
        const GenICam::gcstring found = pValue->ToString(true);
        if (found == entry.value)
            return true;
        error = "Error while verifying node '";
        error += entry.name;
        error += "'. Expected '";
        error += entry.value;
        error += "', but found '";
        error += found;
        error += "'";
        return false;
    }
    catch (const std::exception& e)
    {
        error = Format("Error while verifying the value of node '", entry.name, "': ", e.what());
        return false;
    }
}

std::vector<CBagLoader::Failure_t> CBagLoader::WritePass(const std::vector<size_t>& indices)
{
    std::vector<Failure_t> failures;
    for (size_t index : indices)
    {
        GenICam::gcstring error;
        if (!WriteEntry(m_entries[index], error))
            failures.push_back({index, error});
    }
    return failures;
}

bool CBagLoader::Load(bool verify, GenICam::gcstring_vector* pErrorList)
{
    std::vector<size_t> all(m_entries.size());
    for (size_t i = 0; i < all.size(); ++i)
        all[i] = i;
    std::vector<Failure_t> failures = WritePass(all);

    // A device may refuse a value until another one is set (a width beyond the current
    // offset's limit): retry what failed once the rest is in.
    for (int round = 0; round < kMaxRetryRounds && !failures.empty() && failures.size() < all.size(); ++round)
    {
        std::vector<size_t> failed;
        bool hadSelectors = false;
        for (const Failure_t& failure : failures)
        {
            failed.push_back(failure.index);
            hadSelectors = hadSelectors || !m_entries[failure.index].selectors.empty();
        }
        std::vector<Failure_t> retried = WritePass(failed);
        if (retried.size() == failures.size())
        {
            // No progress. A retried "{...}" entry moved its selectors: replay the bag so that
            // the later entries are in force again.
            failures = hadSelectors ? WritePass(all) : retried;
            break;
        }
        // Progress: replay the bag in its order, now that the values it needed are in place.
        std::vector<Failure_t> replayed = WritePass(all);
        const bool improved = replayed.size() < failures.size();
        failures.swap(replayed);
        if (!improved)
            break;
    }

    bool ok = failures.empty();
    if (pErrorList)
        for (const Failure_t& failure : failures)
            pErrorList->push_back(failure.text);

    if (verify && ok)
    {
        for (const Entry_t& entry : m_entries)
        {
            GenICam::gcstring error;
            if (!VerifyEntry(entry, error))
            {
                ok = false;
                if (pErrorList)
                    pErrorList->push_back(error);
            }
        }
    }
    return ok;
}
} // namespace GenApi
