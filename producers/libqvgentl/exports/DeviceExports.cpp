// Entry points of the device module (Dev...).
#include <GenTL/GenTL.h>

#include "exports/GuardedCall.h"
#include "modules/DataStreamModule.h"
#include "modules/DeviceModule.h"
#include "modules/InterfaceModule.h"
#include "modules/RemotePort.h"

using namespace QvGenTL;

namespace GenTL {

GC_API DevGetPort(DEV_HANDLE hDevice, PORT_HANDLE* phRemoteDevice)
{
    return GuardedCall(__func__, [&] {
        auto device = Lookup<CDeviceModule>(hDevice);
        Require(phRemoteDevice, "phRemoteDevice");
        *phRemoteDevice = device->RemotePort()->Handle();
    });
}

GC_API DevGetNumDataStreams(DEV_HANDLE hDevice, uint32_t* piNumDataStreams)
{
    return GuardedCall(__func__, [&] {
        auto device = Lookup<CDeviceModule>(hDevice);
        Require(piNumDataStreams, "piNumDataStreams");
        *piNumDataStreams = device->NumDataStreams();
    });
}

GC_API DevGetDataStreamID(DEV_HANDLE hDevice, uint32_t iIndex, char* sDataStreamID, size_t* piSize)
{
    return GuardedCall(__func__, [&] {
        AnswerText(Lookup<CDeviceModule>(hDevice)->DataStreamId(iIndex), sDataStreamID, piSize);
    });
}

GC_API DevOpenDataStream(DEV_HANDLE hDevice, const char* sDataStreamID, DS_HANDLE* phDataStream)
{
    return GuardedCall(__func__, [&] {
        auto device = Lookup<CDeviceModule>(hDevice);
        Require(sDataStreamID, "sDataStreamID");
        Require(phDataStream, "phDataStream");
        *phDataStream = device->OpenDataStream(sDataStreamID)->Handle();
    });
}

GC_API DevGetInfo(DEV_HANDLE hDevice, DEVICE_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer, size_t* piSize)
{
    return GuardedCall(__func__, [&] {
        Answer(Lookup<CDeviceModule>(hDevice)->Info(iInfoCmd), piType, pBuffer, piSize);
    });
}

GC_API DevClose(DEV_HANDLE hDevice)
{
    return GuardedCall(__func__, [&] { Lookup<CDeviceModule>(hDevice)->Close(); });
}

GC_API DevGetParentIF(DEV_HANDLE hDevice, IF_HANDLE* phIface)
{
    return GuardedCall(__func__, [&] {
        auto device = Lookup<CDeviceModule>(hDevice);
        Require(phIface, "phIface");
        *phIface = device->Interface()->Handle();
    });
}

} // namespace GenTL
