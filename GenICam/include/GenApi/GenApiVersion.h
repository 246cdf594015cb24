#pragma once

// The GenApi level this engine is compatible with (GENAPI_VERSION_MAJOR, ...).
#include <GenICamVersion.h>
