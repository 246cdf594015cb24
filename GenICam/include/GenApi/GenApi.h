#pragma once

// What GenApi applications include: base types, interfaces, smart pointers, node maps, callbacks.
#include <Base/GCBase.h>
#include <GenApi/Container.h>
#include <GenApi/EnumClasses.h>
#include <GenApi/IBase.h>
#include <GenApi/IBoolean.h>
#include <GenApi/ICategory.h>
#include <GenApi/IChunkPort.h>
#include <GenApi/ICommand.h>
#include <GenApi/IDestroy.h>
#include <GenApi/IDeviceInfo.h>
#include <GenApi/IEnumEntry.h>
#include <GenApi/IEnumeration.h>
#include <GenApi/IFloat.h>
#include <GenApi/IInteger.h>
#include <GenApi/ILoadWarnings.h>
#include <GenApi/INode.h>
#include <GenApi/INodeMap.h>
#include <GenApi/IPort.h>
#include <GenApi/IPortConstruct.h>
#include <GenApi/IRegister.h>
#include <GenApi/ISelector.h>
#include <GenApi/IString.h>
#include <GenApi/IValue.h>
#include <GenApi/NodeCallback.h>
#include <GenApi/NodeMapFactory.h>
#include <GenApi/NodeMapRef.h>
#include <GenApi/Pointer.h>
#include <GenApi/Synch.h>
#include <GenApi/Types.h>
#if __has_include(<GenApi/Persistence.h>)
#include <GenApi/Persistence.h>
#endif
