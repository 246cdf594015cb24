#pragma once

// Marks the symbols that libQvGenICam.so exports; everything else stays hidden.
#if defined(__GNUC__)
#define GENICAM_API __attribute__((visibility("default")))
#else
#define GENICAM_API
#endif

// GenApi code written for other engines spells these names; they all mean "exported".
#define GCBASE_API GENICAM_API
#define GENAPI_DECL GENICAM_API
#define GENAPI_DECL_ABSTRACT
#define GCBASE_RTTI_CLASS_API GENICAM_API

#if defined(__GNUC__)
#define QV_LIKELY(x) __builtin_expect(!!(x), 1)
#define QV_UNLIKELY(x) __builtin_expect(!!(x), 0)
#else
#define QV_LIKELY(x) (x)
#define QV_UNLIKELY(x) (x)
#endif
