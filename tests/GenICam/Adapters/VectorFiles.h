#pragma once

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

// The shared description corpus (QV_GENICAM_XML_DIR); tests skip when it is absent.
inline std::string GenICamXmlDir()
{
    const char* pDir = std::getenv("QV_GENICAM_XML_DIR");
    return pDir ? std::string(pDir) : std::string();
}

inline bool VectorFileExists(const std::string& relativePath)
{
    const std::string dir = GenICamXmlDir();
    return !dir.empty() && std::ifstream(dir + "/" + relativePath).good();
}

inline std::string VectorPath(const std::string& relativePath)
{
    return GenICamXmlDir() + "/" + relativePath;
}

inline std::string ReadVectorFile(const std::string& relativePath)
{
    std::ifstream in(VectorPath(relativePath), std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

#define QV_REQUIRE_VECTOR(relativePath)                                                                \
    do                                                                                                 \
    {                                                                                                  \
        if (!VectorFileExists(relativePath))                                                           \
            GTEST_SKIP() << "shared description corpus not found (QV_GENICAM_XML_DIR): " << relativePath; \
    } while (false)
