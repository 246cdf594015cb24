#pragma once

// Everything GenApi application code includes: the base types and the node-map API.
#include <Base/GCBase.h>
#include <GenApi/GenApi.h>
