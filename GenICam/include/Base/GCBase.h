#pragma once

#include <Base/GCNamespace.h>
#include <Base/GCLinkage.h>
#include <Base/GCTypes.h>
#include <Base/GCString.h>
#include <Base/GCStringVector.h>
#include <Base/GCException.h>
#include <Base/GCSynch.h>
#include <Base/GCUtilities.h>
