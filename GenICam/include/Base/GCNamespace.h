#pragma once

// Applications name the namespaces GenICam and GenApi; versioned aliases exist for code that
// spells the versioned names.
namespace GenICam {}
namespace GenApi {}
namespace GenICam_3_0 = GenICam;
namespace GenApi_3_0 = GenApi;

/// The GenICam namespace as applications spell it ("using namespace GENICAM_NAMESPACE;").
#define GENICAM_NAMESPACE GenICam
