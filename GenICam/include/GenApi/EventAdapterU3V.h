#pragma once

#include <cstdint>

#include <GenApi/EventAdapter.h>

namespace GenApi
{
/// "U3VE": the prefix of every USB3 Vision event message (little-endian on the wire).
#define U3V_EVENT_PREFIX 0x45563355
/// The GenCP command ID of an event.
#define GENCP_EVENT_CMD_ID 0x0C00
/// Bytes of the GenCP command header.
#define GENCP_COMMAND_HEADER_SIZE 12
/// Bytes of the basic event data (size, ID, timestamp) at the start of the command data.
#define GENCP_EVENT_BASIC_SIZE 12

// Wire layouts; every multi-byte field is little-endian on the wire.
#pragma pack(push, 1)
/// The GenCP command header of an event message.
struct U3V_COMMAND_HEADER
{
    uint32_t Prefix;    ///< U3V_EVENT_PREFIX
    uint16_t Flags;     ///< 0x4000: acknowledge requested
    uint16_t CommandId; ///< GENCP_EVENT_CMD_ID
    uint16_t Length;    ///< bytes of command data (SCD) after the header
    uint16_t ReqId;
};

/// The start of the command data of an event.
struct U3V_EVENT_DATA
{
    uint16_t Reserved; ///< event size with GenCP multi-event, else 0
    uint16_t EventId;
    uint64_t Timestamp;
};

/// A whole event message without device data.
struct U3V_EVENT_MESSAGE
{
    U3V_COMMAND_HEADER CommandHeader;
    U3V_EVENT_DATA EventData;
};
#pragma pack(pop)

/**
 * \brief Event adapter for USB3 Vision event messages (GenCP on the event endpoint).
 *
 * Each port with the message's event ID receives the command data (SCD) unchanged: size field
 * at 0, event ID at 2, timestamp (8 bytes, little-endian) at 4, device data from 12. A message
 * packing several events goes whole to the ports of the first event's ID. Threads and lifetime
 * as CEventAdapter.
 */
class GENICAM_API CEventAdapterU3V : public CEventAdapter
{
public:
    explicit CEventAdapterU3V(INodeMap* pNodeMap = nullptr);
    ~CEventAdapterU3V() override;

    /**
     * \brief Delivers one event message, command header included.
     * \throws RuntimeException "Malformed message - wrong prefix %x (45563355 expected)",
     *         "- wrong command ID %x (c00 expected)" or "- too small" (shorter than a basic event,
     *         or than the command data the header announces).
     */
    void DeliverMessage(const uint8_t pMessage[], uint32_t numBytes) override;
};
} // namespace GenApi
