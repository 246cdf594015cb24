#pragma once

#include <cstdint>

#include <GenApi/EventAdapter.h>

namespace GenApi
{
/// The key of every GVCP command packet.
#define COMMAND_MAGIC 0x42

/// The GVCP commands that carry events.
enum GVCP_MESSAGE_TAGS
{
    TAG_EVENT_CMD = 0xc0,     ///< one or more event items
    TAG_EVENTDATA_CMD = 0xc2  ///< one event item followed by device-specific data
};

// Wire layouts; every multi-byte field is big-endian on the wire.
#pragma pack(push, 1)
/// The 8-byte header of a GVCP command.
struct GVCP_REQUEST_HEADER
{
    uint8_t Magic;    ///< COMMAND_MAGIC
    uint8_t Flags;    ///< 0x01 acknowledge required, 0x10 extended IDs (64-bit block ID)
    uint16_t Command; ///< TAG_EVENT_CMD or TAG_EVENTDATA_CMD
    uint16_t Length;  ///< bytes after this header
    uint16_t ReqId;   ///< request ID, echoed by the acknowledge
};

/// A standard event item (16 bytes).
struct GVCP_EVENT_ITEM_BASIC
{
    uint16_t Reserved;
    uint16_t EventID;
    uint16_t StreamChannelIndex;
    uint16_t BlockID;
    uint32_t TimestampHigh;
    uint32_t TimestampLow;
};
typedef GVCP_EVENT_ITEM_BASIC GVCP_EVENT_ITEM;

/// An event item of a device using extended IDs (24 bytes).
struct GVCP_EVENT_ITEM_EXTENDED_ID
{
    uint16_t EventSize;
    uint16_t EventID;
    uint16_t StreamChannelIndex;
    uint16_t Reserved;
    uint64_t BlockID64;
    uint64_t Timestamp;
};
#pragma pack(pop)

/**
 * \brief Event adapter for GigE Vision message-channel packets (GVCP EVENT and EVENTDATA).
 *
 * Each port with an item's event ID receives the item from its first byte (16 bytes, 24 with
 * extended IDs), followed for EVENTDATA by the device's data bytes, with the item's first 16-bit
 * field set to the number of bytes delivered (big-endian). Descriptions therefore address the
 * item itself: event ID at 2, block ID at 6, timestamp at 8, data from 16 (extended: block ID at
 * 8, timestamp at 16, data from 24). An EVENT packet delivers every whole item it holds, each
 * with its own callbacks. Threads and lifetime as CEventAdapter.
 */
class GENICAM_API CEventAdapterGEV : public CEventAdapter
{
public:
    explicit CEventAdapterGEV(INodeMap* pNodeMap = nullptr);
    ~CEventAdapterGEV() override;

    /**
     * \brief Delivers one GVCP packet, header included.
     * \throws RuntimeException "Malformed message - wrong magic %x (42 expected)", "- unknown tag
     *         %x", "- too large" (the header announces more bytes than given) or "- too small".
     */
    void DeliverMessage(const uint8_t pMessage[], uint32_t numBytes) override;
};
} // namespace GenApi
