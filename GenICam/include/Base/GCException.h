#pragma once

#include <cstdarg>
#include <exception>
#include <new>
#include <string>

#include <Base/GCString.h>

namespace GenICam
{
/**
 * \brief Base of every exception thrown by the GenICam engine and the SDK.
 *
 * Holds a description, the source path and line of the throw, the exception type's name and,
 * for node errors, the node and the method being called. `what()` combines them:
 * "<description> : <Type> thrown (file '<file>', line <n>)", or for node errors
 * "<description> : <Type> thrown in node '<node>' while calling '<node>.<Method>()'
 * (file '<file>', line <n>)".
 */
class GENICAM_API GenericException : public std::exception
{
public:
    GenericException(const char* description, const char* sourceFileName, unsigned int sourceLine);
    GenericException(const char* description, const char* sourceFileName, unsigned int sourceLine,
                     const char* exceptionType);
    GenericException(const char* description, const char* sourceFileName, unsigned int sourceLine,
                     const char* entryPoint, const char* errorNodeName, const char* exceptionType);
    GenericException(const GenericException&) = default;
    GenericException(GenericException&&) = default;
    GenericException& operator=(const GenericException&) = default;
    GenericException& operator=(GenericException&&) = default;
    ~GenericException() noexcept override;

    /// The description alone, without type, file and line.
    virtual const char* GetDescription() const noexcept;
    /// The throwing unit's relative source path.
    virtual const char* GetSourceFileName() const noexcept;
    /// The line of the throw.
    virtual unsigned int GetSourceLine() const noexcept;
    /// Description, type, node, file and line combined.
    const char* what() const noexcept override;

    /// The type name given by the reporter, e.g. "RuntimeException".
    virtual const char* GetExceptionType() const noexcept;
    /// The node the error belongs to, or the empty string.
    virtual const char* GetNodeName() const noexcept;
    /// The method that was being called on the node, or the empty string.
    virtual const char* GetEntryPoint() const noexcept;

private:
    void Compose();

    gcstring m_description;
    gcstring m_sourceFileName;
    unsigned int m_sourceLine;
    gcstring m_exceptionType;
    gcstring m_entryPoint;
    gcstring m_errorNodeName;
    gcstring m_what;
};

#define GENICAM_DECLARE_EXCEPTION(name)                                                               \
    class GENICAM_API name : public GenICam::GenericException                                         \
    {                                                                                                 \
    public:                                                                                           \
        name(const char* description, const char* sourceFileName, unsigned int sourceLine)            \
            : GenericException(description, sourceFileName, sourceLine, #name)                        \
        {                                                                                             \
        }                                                                                             \
        name(const char* description, const char* sourceFileName, unsigned int sourceLine,            \
             const char* exceptionType)                                                               \
            : GenericException(description, sourceFileName, sourceLine, exceptionType)                \
        {                                                                                             \
        }                                                                                             \
        name(const char* description, const char* sourceFileName, unsigned int sourceLine,            \
             const char* entryPoint, const char* errorNodeName, const char* exceptionType)            \
            : GenericException(description, sourceFileName, sourceLine, entryPoint, errorNodeName,    \
                               exceptionType)                                                         \
        {                                                                                             \
        }                                                                                             \
    }

/// Unexpected failure at run time.
GENICAM_DECLARE_EXCEPTION(RuntimeException);
/// An argument is invalid.
GENICAM_DECLARE_EXCEPTION(InvalidArgumentException);
/// A value or index lies outside its range.
GENICAM_DECLARE_EXCEPTION(OutOfRangeException);
/// A programming error: a null pointer, a call in the wrong state.
GENICAM_DECLARE_EXCEPTION(LogicalErrorException);
/// The node or port does not allow the access (not readable, not writable, not available).
GENICAM_DECLARE_EXCEPTION(AccessException);
/// A wait ran out of time.
GENICAM_DECLARE_EXCEPTION(TimeoutException);
/// Memory could not be allocated.
GENICAM_DECLARE_EXCEPTION(BadAllocException);
/// A description property is missing or invalid.
GENICAM_DECLARE_EXCEPTION(PropertyException);
/// A write to a read-only object.
GENICAM_DECLARE_EXCEPTION(ReadOnlyException);
/// A node is not of the interface asked for.
GENICAM_DECLARE_EXCEPTION(DynamicCastException);

/// Largest description an exception reporter formats (longer texts are cut).
constexpr size_t kMaxExceptionDescription = 256;

/// Formats a printf-style text into a gcstring, cut to maxLength characters.
GENICAM_API gcstring FormatExceptionText(size_t maxLength, const char* format, va_list args);

/**
 * \brief Builds an exception of type E carrying where it is thrown.
 *
 * Short-lived: constructed at the throw site with the source path, line and type name, then
 * asked to Report() the description. Usage: `throw RUNTIME_EXCEPTION("Node %s not found.", name);`
 */
template <typename E>
class ExceptionReporter
{
public:
    ExceptionReporter(const char* sourceFileName, int sourceLine, const char* exceptionType)
        : m_sourceFileName(sourceFileName), m_sourceLine(sourceLine), m_exceptionType(exceptionType)
    {
    }
    ExceptionReporter(const char* sourceFileName, int sourceLine, const char* entryPoint,
                      const char* errorNodeName, const char* exceptionType)
        : m_sourceFileName(sourceFileName), m_sourceLine(sourceLine), m_exceptionType(exceptionType),
          m_entryPoint(entryPoint), m_errorNodeName(errorNodeName)
    {
    }

    /// An exception with a printf-style description of at most 256 characters.
    [[gnu::format(printf, 2, 3)]] E Report(const char* format, ...)
    {
        va_list args;
        va_start(args, format);
        gcstring text = FormatExceptionText(kMaxExceptionDescription, format, args);
        va_end(args);
        return Make(text.c_str());
    }
    /// An exception with an empty description.
    E Report() { return Make(""); }
    /// An exception with a fixed description (not interpreted as a format).
    E Report(const gcstring& description) { return Make(description.c_str()); }
    /// An exception carrying another exception's description.
    E Report(const GenericException& cause) { return Make(cause.GetDescription()); }

private:
    E Make(const char* description)
    {
        if (!m_errorNodeName.empty())
            return E(description, m_sourceFileName.c_str(), static_cast<unsigned int>(m_sourceLine),
                     m_entryPoint.c_str(), m_errorNodeName.c_str(), m_exceptionType.c_str());
        return E(description, m_sourceFileName.c_str(), static_cast<unsigned int>(m_sourceLine),
                 m_exceptionType.c_str());
    }

    gcstring m_sourceFileName;
    int m_sourceLine;
    gcstring m_exceptionType;
    gcstring m_entryPoint;
    gcstring m_errorNodeName;
};
} // namespace GenICam

// The throwing macros GenApi users know: `throw RUNTIME_EXCEPTION("text %d", value);`
#define GENERIC_EXCEPTION \
    GenICam::ExceptionReporter<GenICam::GenericException>(__FILE__, __LINE__, "GenericException").Report
#define BAD_ALLOC_EXCEPTION \
    GenICam::ExceptionReporter<GenICam::BadAllocException>(__FILE__, __LINE__, "BadAllocException").Report
#define INVALID_ARGUMENT_EXCEPTION                                                                     \
    GenICam::ExceptionReporter<GenICam::InvalidArgumentException>(__FILE__, __LINE__,                 \
                                                                  "InvalidArgumentException")         \
        .Report
#define OUT_OF_RANGE_EXCEPTION \
    GenICam::ExceptionReporter<GenICam::OutOfRangeException>(__FILE__, __LINE__, "OutOfRangeException").Report
#define PROPERTY_EXCEPTION \
    GenICam::ExceptionReporter<GenICam::PropertyException>(__FILE__, __LINE__, "PropertyException").Report
#define RUNTIME_EXCEPTION \
    GenICam::ExceptionReporter<GenICam::RuntimeException>(__FILE__, __LINE__, "RuntimeException").Report
#define LOGICAL_ERROR_EXCEPTION                                                                        \
    GenICam::ExceptionReporter<GenICam::LogicalErrorException>(__FILE__, __LINE__,                    \
                                                               "LogicalErrorException")               \
        .Report
#define ACCESS_EXCEPTION \
    GenICam::ExceptionReporter<GenICam::AccessException>(__FILE__, __LINE__, "AccessException").Report
#define TIMEOUT_EXCEPTION \
    GenICam::ExceptionReporter<GenICam::TimeoutException>(__FILE__, __LINE__, "TimeoutException").Report
#define READ_ONLY_EXCEPTION \
    GenICam::ExceptionReporter<GenICam::ReadOnlyException>(__FILE__, __LINE__, "ReadOnlyException").Report
#define DYNAMICCAST_EXCEPTION                                                                          \
    GenICam::ExceptionReporter<GenICam::DynamicCastException>(__FILE__, __LINE__,                     \
                                                              "DynamicCastException")                 \
        .Report

// Node-error forms: the exception names the node and the method being called.
#define GENICAM_NODE_EXCEPTION(Type, node, method)                                                     \
    GenICam::ExceptionReporter<GenICam::Type>(__FILE__, __LINE__, method, node, #Type).Report
#define RUNTIME_EXCEPTION_NODE(node, method) GENICAM_NODE_EXCEPTION(RuntimeException, node, method)
#define ACCESS_EXCEPTION_NODE(node, method) GENICAM_NODE_EXCEPTION(AccessException, node, method)
#define OUT_OF_RANGE_EXCEPTION_NODE(node, method) GENICAM_NODE_EXCEPTION(OutOfRangeException, node, method)
#define LOGICAL_ERROR_EXCEPTION_NODE(node, method) GENICAM_NODE_EXCEPTION(LogicalErrorException, node, method)
#define INVALID_ARGUMENT_EXCEPTION_NODE(node, method)                                                  \
    GENICAM_NODE_EXCEPTION(InvalidArgumentException, node, method)
#define PROPERTY_EXCEPTION_NODE(node, method) GENICAM_NODE_EXCEPTION(PropertyException, node, method)
#define DYNAMICCAST_EXCEPTION_NODE(node, method) GENICAM_NODE_EXCEPTION(DynamicCastException, node, method)
#define TIMEOUT_EXCEPTION_NODE(node, method) GENICAM_NODE_EXCEPTION(TimeoutException, node, method)

// Catches std::bad_alloc (and nothing else) and rethrows it as BadAllocException with its text.
#define GENICAM_CATCH_BAD_ALLOC()                                                                      \
    catch (const std::bad_alloc& badAlloc)                                                             \
    {                                                                                                  \
        throw BAD_ALLOC_EXCEPTION("%s", badAlloc.what());                                            \
    }
