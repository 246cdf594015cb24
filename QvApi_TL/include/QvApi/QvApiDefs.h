#pragma once

#include <stddef.h>
#include <stdint.h>

// Marks the symbols that libQvApi_TL.so exports; everything else stays hidden.
#if defined(__GNUC__)
#define QVAPI_API __attribute__((visibility("default")))
#else
#define QVAPI_API
#endif

/// The version this header belongs to, to pass to QvApi::QvApiInitialize():
/// major in bits 24-31, minor in bits 16-23, patch in bits 0-7.
#define QVAPI_VERSION 0x01000005u
#define QVAPI_VERSION_MAJOR 1
#define QVAPI_VERSION_MINOR 0
#define QVAPI_VERSION_PATCH 5
#define QVAPI_VERSION_TEXT "1.0.5"
