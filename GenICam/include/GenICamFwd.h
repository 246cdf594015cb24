#pragma once

// Forward declarations of the GenICam base types and the GenApi interfaces.
#include <Base/GCNamespace.h>

#ifndef GENICAM_INTERFACE
#define GENICAM_INTERFACE struct
#endif

namespace GenICam
{
class gcstring;
class gcstring_vector;
} // namespace GenICam

namespace GenApi
{
struct IBase;
struct INode;
struct IValue;
struct ICategory;
struct IInteger;
struct IFloat;
struct IBoolean;
struct ICommand;
struct IString;
struct IRegister;
struct IEnumeration;
struct IEnumEntry;
struct ISelector;
struct IPort;
struct IPortConstruct;
struct IChunkPort;
struct INodeMap;
struct IDeviceInfo;
struct IDestroy;
} // namespace GenApi
