#include <GenApi/EventAdapterU3V.h>

#include <Base/GCException.h>

namespace GenApi
{
namespace
{
uint16_t Le16(const uint8_t* p)
{
    return static_cast<uint16_t>(p[0] | (p[1] << 8));
}

uint32_t Le32(const uint8_t* p)
{
    return uint32_t(p[0]) | (uint32_t(p[1]) << 8) | (uint32_t(p[2]) << 16) | (uint32_t(p[3]) << 24);
}
} // namespace

CEventAdapterU3V::CEventAdapterU3V(INodeMap* pNodeMap) : CEventAdapter(pNodeMap)
{
}

CEventAdapterU3V::~CEventAdapterU3V() = default;

void CEventAdapterU3V::DeliverMessage(const uint8_t pMessage[], uint32_t numBytes)
{
    if (pMessage == nullptr || numBytes < GENCP_COMMAND_HEADER_SIZE + GENCP_EVENT_BASIC_SIZE)
        throw RUNTIME_EXCEPTION("Malformed message - too small");
    const uint32_t prefix = Le32(pMessage);
    if (prefix != U3V_EVENT_PREFIX)
        throw RUNTIME_EXCEPTION("Malformed message - wrong prefix %x (%x expected)", prefix, U3V_EVENT_PREFIX);
    const uint16_t commandId = Le16(pMessage + 6);
    if (commandId != GENCP_EVENT_CMD_ID)
        throw RUNTIME_EXCEPTION("Malformed message - wrong command ID %x (%x expected)", commandId, GENCP_EVENT_CMD_ID);
    const uint32_t scdLength = Le16(pMessage + 8);
    if (scdLength < GENCP_EVENT_BASIC_SIZE || scdLength > numBytes - GENCP_COMMAND_HEADER_SIZE)
        throw RUNTIME_EXCEPTION("Malformed message - too small");
    const uint8_t* pScd = pMessage + GENCP_COMMAND_HEADER_SIZE;
    // Events packed by GenCP multi-event go whole to the first event's ID, as devices' own
    // descriptions expect a single event at offset 0.
    DeliverToPorts(Le16(pScd + 2), pScd, scdLength);
}
} // namespace GenApi
