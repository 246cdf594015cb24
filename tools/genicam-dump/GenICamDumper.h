#pragma once

#include <cstdio>
#include <string>

/**
 * \brief Loads a GenICam description (.xml or .zip), connects a memory port to every Port node
 *        (all registers zero, or filled from \a registerFile lines "ADDRESS HEXBYTES") and
 *        writes one JSON object per node, sorted by name, to \a out.
 *
 * Each object holds name, type, access, visibility, caching, is_feature and, for readable
 * nodes, the value and the fields of the node's interface. A field that cannot be read is left
 * out and the node's first such error is written as "error". Shared by genicam-dump and
 * "qvcam genicam-dump".
 * \param[in] warningsOut Receives what the loader tolerated in the description, one
 *                        "warning: ..." line each; null leaves them out.
 * \throws GenICam::GenericException when the description or the register file cannot be loaded.
 */
void DumpDescription(const std::string& fileName, const std::string& registerFile, FILE* out, FILE* warningsOut);
