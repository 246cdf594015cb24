#pragma once

// A producer loaded with dlopen and driven through raw GenTL calls only (no SDK code), plus
// the small helpers the producer tests share: two-phase queries and a reader of simple
// features from a module's own description.

#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <GenTL/GenTL.h>

namespace QvGenTLTest {

/// Every entry point of a GenTL 1.6 producer, resolved by name (null when missing).
struct CGenTLProducer
{
#define QV_GENTL_ENTRY(name) GenTL::P##name name = nullptr;
#include "tests/producers/GenTLEntryPoints.inc"
#undef QV_GENTL_ENTRY

    /// Loads the producer file; fails the calling test (ADD_FAILURE) and returns null on error.
    static std::unique_ptr<CGenTLProducer> Load(const std::string& path);
    ~CGenTLProducer();

    void* library = nullptr;
};

/// Path of libqvgentl.cti: the first GENICAM_GENTL64_PATH folder holding it.
std::string FindQvGenTL();

/// Text of a two-phase string query; the call gets (buffer, &size).
template <class Call>
std::string QueryText(Call call)
{
    size_t size = 0;
    if (call(nullptr, &size) != GenTL::GC_ERR_SUCCESS || size == 0)
        return "<query failed>";
    std::vector<char> text(size);
    if (call(text.data(), &size) != GenTL::GC_ERR_SUCCESS)
        return "<query failed>";
    return std::string(text.data());
}

/// Result of one typed information query.
struct InfoAnswer_t
{
    GenTL::GC_ERROR result = GenTL::GC_ERR_ERROR;
    GenTL::INFO_DATATYPE type = GenTL::INFO_DATATYPE_UNKNOWN;
    std::vector<uint8_t> bytes;

    template <class T>
    T As() const
    {
        T value{};
        if (bytes.size() >= sizeof(T))
            std::memcpy(&value, bytes.data(), sizeof(T));
        return value;
    }
    std::string Text() const { return bytes.empty() ? std::string() : std::string(reinterpret_cast<const char*>(bytes.data())); }
};

/// Runs an information query in two phases; the call gets (&type, buffer, &size). Also checks
/// that both phases agree on type and size.
template <class Call>
InfoAnswer_t QueryInfo(Call call)
{
    InfoAnswer_t answer;
    size_t size = 0;
    GenTL::INFO_DATATYPE sizeType = GenTL::INFO_DATATYPE_UNKNOWN;
    answer.result = call(&sizeType, nullptr, &size);
    if (answer.result != GenTL::GC_ERR_SUCCESS)
        return answer;
    answer.bytes.resize(size);
    answer.result = call(&answer.type, answer.bytes.data(), &size);
    if (answer.result == GenTL::GC_ERR_SUCCESS && (size != answer.bytes.size() || sizeType != answer.type))
        answer.result = GenTL::GC_ERR_ERROR; // the phases disagree
    return answer;
}

/// Size in bytes of a fixed-size INFO_DATATYPE, 0 for the variable ones.
size_t FixedSizeOf(GenTL::INFO_DATATYPE type);

} // namespace QvGenTLTest
