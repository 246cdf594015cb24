#pragma once

// The SDK's public interface: include this one header.
#include <GenICam.h>
#include <QvApi/QvApiDefs.h>
