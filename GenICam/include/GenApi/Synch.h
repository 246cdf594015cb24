#pragma once

#include <Base/GCSynch.h>

namespace GenApi
{
using GenICam::AutoLock;
using GenICam::CLock;
using GenICam::CLockEx;
} // namespace GenApi
