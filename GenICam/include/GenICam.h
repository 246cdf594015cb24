#pragma once

// Everything GenApi application code includes: the base types and the node-map API.
#include <Base/GCBase.h>
#if __has_include(<GenApi/GenApi.h>)
#include <GenApi/GenApi.h>
#endif
