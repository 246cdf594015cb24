#pragma once

// Applications use the plain namespace names; the versioned aliases live in GCNamespace.h.
#include <Base/GCNamespace.h>
