#pragma once

// The SDK's public interface: include this one header.
#include <GenICam.h>
#include <QvApi/QvApiDefs.h>
#include <QvApi/QvGenTLErrorException.h>
#include <QvApi/QvLinuxErrorException.h>
#include <QvApi/CLockBySemaphore.h>
#include <QvApi/EventObject.h>
#include <QvApi/Worker.h>
#include <QvApi/QvCallback.h>
#include <QvApi/FPS.h>
#include <QvApi/BPS.h>
#include <QvApi/QvString.h>
#include <QvApi/QvUtilities.h>
#include <QvApi/QvReleasable.h>
#include <QvApi/QvAllocator.h>
#include <QvApi/QvPixelFormat.h>
#include <QvApi/QvPixelComponent.h>
#include <QvApi/QvImage.h>
#include <QvApi/QvImageBuffer.h>
#include <QvApi/QvFeatureBag.h>
#include <QvApi/QvApiFunctions.h>
