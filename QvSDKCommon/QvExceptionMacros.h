#pragma once

// The SDK's one reporting path. Every failure leaves through one of these macros, with its
// message template written in full at the throw site (so grep finds it); the macros add the
// unit's source path (__FILE__ reads "QvApi_TL/QvDevice.cpp"), __LINE__ and the type name.
// The formatting and throwing live out of line in cold, never-inlined functions, so a check on
// a hot path costs one compare and one predicted-not-taken branch.
//
//   GenTL call, then check (a null entry counts as GC_ERR_NOT_IMPLEMENTED):
//     GC_ERROR err = QV_GENTL_CALL(m_pCQvGenTL, DSQueueBuffer, m_hDataStream, hBuffer);
//     QV_CHECK_GENTL(m_pCQvGenTL, err, "DSQueueBuffer", "%d = DSQueueBuffer(0x%p, 0x%p)",
//                    err, m_hDataStream, hBuffer);
//   GenICam types:        QV_THROW(RuntimeException, "Node %s not found.", name);
//                         QV_THROW_EMPTY(BadAllocException);
//   Operating system:     QV_THROW_LINUX(result, "pthread_cond_init", "0 != ... [Error=0x%x %s]", ...);
//   Range checks:         QV_CHECK_MIN("nIndex", nIndex, 0); QV_CHECK_BELOW("nIndex", nIndex, count);
//   bad_alloc:            try { ... } QV_CATCH_BAD_ALLOC()
//   Our own invariants:   QV_ASSERT(m_pCQvGenTL != nullptr, "m_pCQvGenTL != NULL");
//
// The "%I64u"/"%I64d" formats of some GenTL calls print with glibc as the 'I' flag and a field
// width of 64 applied to an int-sized conversion: pass such arguments cast to int/unsigned, which
// prints what an unadorned 64-bit argument would, and keeps -Wformat quiet.

#include <cstdint>
#include <new>
#include <type_traits>

#include <Base/GCLinkage.h>
#include <GenTL/GenTL.h>
#include <QvApi/QvApiDefs.h>

namespace QvApi
{
class CQvGenTLLib;

/// The GenICam exception types the SDK throws, by name.
enum class EQvExceptionKind_t
{
    RuntimeException,
    InvalidArgumentException,
    OutOfRangeException,
    LogicalErrorException,
    AccessException,
    TimeoutException,
    BadAllocException,
};

/// The four range-message templates.
enum class EQvRangeCheck_t
{
    EqualOrGreaterThanMin, ///< "%s = %ld must be equal or greater than Min = %ld"
    EqualOrSmallerThanMax, ///< "%s = %ld must be equal or smaller than Max = %ld"
    SmallerThanMax,        ///< "%s = %ld must be smaller than Max = %ld"
    GreaterThanMin,        ///< "%s = %ld must be greater than Min = %ld"
};

/// Throws a GenICam exception of \a kind; the description is cut at 256 characters.
[[noreturn, gnu::cold, gnu::noinline, gnu::format(printf, 4, 5)]] QVAPI_API void
ThrowGenICamException(EQvExceptionKind_t kind, const char* sourceFileName, int sourceLine, const char* format, ...);
/// Throws a GenICam exception of \a kind with an empty description.
[[noreturn, gnu::cold, gnu::noinline]] QVAPI_API void ThrowGenICamExceptionEmpty(EQvExceptionKind_t kind,
                                                                                 const char* sourceFileName,
                                                                                 int sourceLine);
/// Throws CQvGenTLErrorException through CQvGenTLErrorExceptionReporter (lib may be null).
[[noreturn, gnu::cold, gnu::noinline, gnu::format(printf, 6, 7)]] QVAPI_API void
ThrowGenTLError(const char* sourceFileName, int sourceLine, CQvGenTLLib* lib, GenTL::GC_ERROR error,
                const char* functionName, const char* format, ...);
/// Throws CQvLinuxErrorException through CQvLinuxErrorExceptionReporter.
[[noreturn, gnu::cold, gnu::noinline, gnu::format(printf, 5, 6)]] QVAPI_API void
ThrowLinuxError(const char* sourceFileName, int sourceLine, int error, const char* functionName,
                const char* format, ...);
/// Throws OutOfRangeException with the template of \a check.
[[noreturn, gnu::cold, gnu::noinline]] QVAPI_API void ThrowOutOfRange(const char* sourceFileName, int sourceLine,
                                                                      EQvRangeCheck_t check, const char* name,
                                                                      long value, long bound);
/// Throws OutOfRangeException "The difference between %s = %ld and Min = %ld must be dividable
/// without rest by Inc = %ld".
[[noreturn, gnu::cold, gnu::noinline]] QVAPI_API void ThrowNotDividable(const char* sourceFileName, int sourceLine,
                                                                        const char* name, long value, long min,
                                                                        long inc);
/// Prints "QvApi assertion failed: <text> (file '<file>', line <n>)" to stderr and aborts.
[[noreturn, gnu::cold, gnu::noinline]] QVAPI_API void AssertionFailed(const char* sourceFileName, int sourceLine,
                                                                      const char* text) noexcept;

namespace Detail
{
// Enumerations compare and print as their underlying integer.
template <typename T>
constexpr auto AsInteger(T value) noexcept
{
    if constexpr (std::is_enum_v<T>)
        return static_cast<std::underlying_type_t<T>>(value);
    else
        return value;
}

// a < b by value, whatever the signedness of the two types (a negative index is below 0 even
// when the bound is a size_t).
template <typename A, typename B>
constexpr bool Less(A a, B b) noexcept
{
    static_assert(std::is_integral_v<A> && std::is_integral_v<B>, "range checks take integers or enums");
    if constexpr (std::is_signed_v<A> == std::is_signed_v<B>)
        return a < b;
    else if constexpr (std::is_signed_v<A>)
        return a < 0 || static_cast<std::make_unsigned_t<A>>(a) < b;
    else
        return b >= 0 && a < static_cast<std::make_unsigned_t<B>>(b);
}

template <typename V, typename B>
inline void CheckRange(const char* file, int line, EQvRangeCheck_t check, const char* name, V value, B bound)
{
    const auto v = AsInteger(value);
    const auto b = AsInteger(bound);
    bool failed = false;
    switch (check)
    {
    case EQvRangeCheck_t::EqualOrGreaterThanMin: failed = Less(v, b); break;
    case EQvRangeCheck_t::EqualOrSmallerThanMax: failed = Less(b, v); break;
    case EQvRangeCheck_t::SmallerThanMax: failed = !Less(v, b); break;
    case EQvRangeCheck_t::GreaterThanMin: failed = !Less(b, v); break;
    }
    if (QV_UNLIKELY(failed))
        ThrowOutOfRange(file, line, check, name, static_cast<long>(v), static_cast<long>(b));
}
} // namespace Detail
} // namespace QvApi

// ---- GenICam exception types ------------------------------------------------------------------

/// Throws GenICam::<Type> with a printf-style description: QV_THROW(RuntimeException, "File %s not found.", name)
#define QV_THROW(Type, format, ...)                                                                    \
    QvApi::ThrowGenICamException(QvApi::EQvExceptionKind_t::Type, __FILE__, __LINE__, format, ##__VA_ARGS__)
/// Throws GenICam::<Type> with an empty description.
#define QV_THROW_EMPTY(Type) QvApi::ThrowGenICamExceptionEmpty(QvApi::EQvExceptionKind_t::Type, __FILE__, __LINE__)
/// Ends a try block: std::bad_alloc becomes GenICam::BadAllocException carrying its what() text.
#define QV_CATCH_BAD_ALLOC()                                                                           \
    catch (const std::bad_alloc& qvBadAlloc_)                                                          \
    {                                                                                                  \
        QvApi::ThrowGenICamException(QvApi::EQvExceptionKind_t::BadAllocException, __FILE__, __LINE__, \
                                     "%s", qvBadAlloc_.what());                                        \
    }

// ---- GenTL calls --------------------------------------------------------------------------------

/// Calls entry \a function of binding \a lib; a missing entry gives GC_ERR_NOT_IMPLEMENTED.
#define QV_GENTL_CALL(lib, function, ...)                                                              \
    ((lib)->function != nullptr ? (lib)->function(__VA_ARGS__)                                         \
                                : static_cast<GenTL::GC_ERROR>(GenTL::GC_ERR_NOT_IMPLEMENTED))
/// Throws CQvGenTLErrorException; the format's first conversion is the code: "%d = TLOpen(0x%p)".
#define QV_THROW_GENTL(lib, error, functionName, format, ...)                                          \
    QvApi::ThrowGenTLError(__FILE__, __LINE__, lib, error, functionName, format, ##__VA_ARGS__)
/// Throws CQvGenTLErrorException when \a error is not GC_ERR_SUCCESS (evaluated once).
#define QV_CHECK_GENTL(lib, error, functionName, format, ...)                                          \
    do                                                                                                 \
    {                                                                                                  \
        const GenTL::GC_ERROR qvCheckedError_ = (error);                                               \
        if (QV_UNLIKELY(qvCheckedError_ != GenTL::GC_ERR_SUCCESS))                                     \
            QV_THROW_GENTL(lib, qvCheckedError_, functionName, format, ##__VA_ARGS__);                 \
    } while (false)

// ---- Operating system ---------------------------------------------------------------------------

/// Throws CQvLinuxErrorException; " ErrorCode=0x%08x \" \"<errno text>" is appended.
#define QV_THROW_LINUX(error, functionName, format, ...)                                               \
    QvApi::ThrowLinuxError(__FILE__, __LINE__, error, functionName, format, ##__VA_ARGS__)

// ---- Range checks (the parameter's declared name as text, e.g. "nIndex") -----------------------

/// value >= min, else "%s = %ld must be equal or greater than Min = %ld".
#define QV_CHECK_MIN(name, value, min)                                                                 \
    QvApi::Detail::CheckRange(__FILE__, __LINE__, QvApi::EQvRangeCheck_t::EqualOrGreaterThanMin, name, value, min)
/// value <= max, else "%s = %ld must be equal or smaller than Max = %ld".
#define QV_CHECK_MAX(name, value, max)                                                                 \
    QvApi::Detail::CheckRange(__FILE__, __LINE__, QvApi::EQvRangeCheck_t::EqualOrSmallerThanMax, name, value, max)
/// value < max (an index below a count), else "%s = %ld must be smaller than Max = %ld".
#define QV_CHECK_BELOW(name, value, max)                                                               \
    QvApi::Detail::CheckRange(__FILE__, __LINE__, QvApi::EQvRangeCheck_t::SmallerThanMax, name, value, max)
/// value > min, else "%s = %ld must be greater than Min = %ld".
#define QV_CHECK_ABOVE(name, value, min)                                                               \
    QvApi::Detail::CheckRange(__FILE__, __LINE__, QvApi::EQvRangeCheck_t::GreaterThanMin, name, value, min)
/// Throws the range template of \a check unconditionally (for conditions the checks above
/// cannot express): QV_THROW_RANGE(SmallerThanMax, "nIndex", nIndex, count).
#define QV_THROW_RANGE(check, name, value, bound)                                                      \
    QvApi::ThrowOutOfRange(__FILE__, __LINE__, QvApi::EQvRangeCheck_t::check, name, static_cast<long>(value), \
                           static_cast<long>(bound))
/// Throws "The difference between %s = %ld and Min = %ld must be dividable without rest by Inc = %ld".
#define QV_THROW_NOT_DIVIDABLE(name, value, min, inc)                                                  \
    QvApi::ThrowNotDividable(__FILE__, __LINE__, name, static_cast<long>(value), static_cast<long>(min), \
                             static_cast<long>(inc))

// ---- Assertions -----------------------------------------------------------------------------------

/// Aborts, naming \a text, when \a condition is false. For the library's own invariants only,
/// never for input an application or a producer controls. Active in every build type.
#define QV_ASSERT(condition, text)                                                                     \
    do                                                                                                 \
    {                                                                                                  \
        if (QV_UNLIKELY(!(condition)))                                                                 \
            QvApi::AssertionFailed(__FILE__, __LINE__, text);                                          \
    } while (false)
