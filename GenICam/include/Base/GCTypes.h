#pragma once

#include <stddef.h>
#include <stdint.h>

typedef float float32_t;
typedef double float64_t;

#ifndef GC_INT64_MAX
#define GC_INT64_MAX INT64_MAX
#define GC_INT64_MIN INT64_MIN
#define GC_UINT64_MAX UINT64_MAX
#define GC_INT32_MAX INT32_MAX
#define GC_INT32_MIN INT32_MIN
#define GC_UINT32_MAX UINT32_MAX
#define GC_INT8_MAX INT8_MAX
#define GC_INT8_MIN INT8_MIN
#define GC_UINT8_MAX UINT8_MAX
#endif
