#pragma once

// Export macros GenApi code may spell (GENAPI_DECL, GENAPI_DECL_ABSTRACT).
#include <Base/GCLinkage.h>
