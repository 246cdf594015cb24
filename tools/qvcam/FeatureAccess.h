#pragma once

#include <cstdio>
#include <string>

#include <GenApi/GenApi.h>

namespace QvCam
{
/**
 * \brief Reads, writes and lists the features of one node map with the checks and messages a
 *        command-line user needs: unknown names get a suggestion, values are checked against
 *        the feature's type, range, increment and entries before anything is written, and
 *        every refusal becomes a CToolError with its exit code.
 *
 * Borrows the node map, which must outlive it. One thread.
 */
class CFeatureAccess
{
public:
    /// \param[in] moduleName Named in messages, e.g. "remote device".
    CFeatureAccess(GenApi::INodeMap* pNodeMap, std::string moduleName);

    /// \return The node \a name. \throws CToolError UnknownFeature (with a suggestion).
    GenApi::INode* Find(const std::string& name) const;
    /// \return The value as text (enumerations by symbolic name).
    /// \throws CToolError AccessDenied when the feature cannot be read now.
    std::string Get(const std::string& name) const;
    /// \brief Checks \a value against the feature, then writes it.
    /// \throws CToolError UnknownFeature, AccessDenied or BadValue.
    void Set(const std::string& name, const std::string& value) const;
    /// \brief Executes command \a name and waits up to one second for it to finish.
    void Execute(const std::string& name) const;
    /**
     * \brief Prints the feature tree under category "Root" (or every feature when there is no
     *        Root): name indented by depth, value, access mode, unit.
     * \param[in] withInvisible Include features of visibility Invisible.
     */
    void PrintTree(FILE* out, bool withInvisible) const;

private:
    std::string Suggest(const std::string& name) const;

    GenApi::INodeMap* const m_pNodeMap; // borrowed from the module's port
    const std::string m_moduleName;
};

/// \return "RW", "RO", "WO", "NA" or "NI".
const char* AccessModeText(GenApi::EAccessMode mode);
} // namespace QvCam
