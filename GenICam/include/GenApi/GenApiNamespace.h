#pragma once

// Applications use the plain namespace names; the versioned aliases live in GCNamespace.h.
#include <Base/GCNamespace.h>

/// The GenApi namespace as applications spell it ("using namespace GENAPI_NAMESPACE;").
#define GENAPI_NAMESPACE GenApi
