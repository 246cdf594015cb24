#pragma once

#include <string>
#include <vector>

#include <GenApi/NodeMapFactory.h>

namespace GenApi
{
/**
 * \brief What a CNodeMapFactory and its copies share: the description bytes as given, the
 *        unpacked text, injection data and state flags.
 *
 * One thread at a time.
 */
class CNodeMapFactoryData
{
public:
    EContentType_t contentType = ContentType_Xml;
    std::string rawData;  // as given (XML text or zip bytes); dropped once unpacked
    std::string xmlText;  // unpacked plain XML, injection merged
    std::vector<CNodeMapFactory> injections;
    bool empty = true;
    bool loaded = false;
    bool released = false;

    /// Unpacks the data and merges injections (once).
    void Load();
};
} // namespace GenApi
