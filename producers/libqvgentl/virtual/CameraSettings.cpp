#include "virtual/CameraSettings.h"

#include "virtual/PixelFormats.h"

namespace QvGenTL {

const char* TransportName(ECameraTransport_t transport)
{
    switch (transport)
    {
    case ECameraTransport_t::U3V: return "U3V";
    case ECameraTransport_t::GEV: return "GEV";
    case ECameraTransport_t::CXP: return "CXP";
    }
    return "";
}

CameraSettings_t DefaultSettings(uint32_t sensorWidth, uint32_t sensorHeight)
{
    CameraSettings_t settings;
    settings.sensorWidth = sensorWidth;
    settings.sensorHeight = sensorHeight;
    settings.width = sensorWidth;
    settings.height = sensorHeight;
    settings.pixelFormat = kPfncMono8;
    return settings;
}

} // namespace QvGenTL
