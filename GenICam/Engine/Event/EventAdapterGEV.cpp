#include <GenApi/EventAdapterGEV.h>

#include <cstring>
#include <vector>

#include <Base/GCException.h>

namespace GenApi
{
namespace
{
constexpr uint32_t kHeaderBytes = 8;
constexpr uint32_t kItemBytes = 16;
constexpr uint32_t kExtendedItemBytes = 24;
constexpr uint8_t kExtendedIdFlag = 0x10;

uint16_t Be16(const uint8_t* p)
{
    return static_cast<uint16_t>((p[0] << 8) | p[1]);
}
} // namespace

CEventAdapterGEV::CEventAdapterGEV(INodeMap* pNodeMap) : CEventAdapter(pNodeMap)
{
}

CEventAdapterGEV::~CEventAdapterGEV() = default;

void CEventAdapterGEV::DeliverMessage(const uint8_t pMessage[], uint32_t numBytes)
{
    if (pMessage == nullptr || numBytes < kHeaderBytes)
        throw RUNTIME_EXCEPTION("Malformed message - too small");
    if (pMessage[0] != COMMAND_MAGIC)
        throw RUNTIME_EXCEPTION("Malformed message - wrong magic %x (%x expected)", pMessage[0], COMMAND_MAGIC);
    const uint16_t command = Be16(pMessage + 2);
    if (command != TAG_EVENT_CMD && command != TAG_EVENTDATA_CMD)
    {
        // Printed as the two bytes read in host order, as the message channel tools show it.
        const unsigned printed = static_cast<unsigned>(pMessage[2] | (pMessage[3] << 8));
        throw RUNTIME_EXCEPTION("Malformed message - unknown tag %x", printed);
    }
    const uint32_t length = Be16(pMessage + 4);
    if (length > numBytes - kHeaderBytes)
        throw RUNTIME_EXCEPTION("Malformed message - too large");
    const uint32_t itemBytes = (pMessage[1] & kExtendedIdFlag) ? kExtendedItemBytes : kItemBytes;
    const uint8_t* pPayload = pMessage + kHeaderBytes;

    // EVENTDATA: one item and its data; EVENT: as many whole items as the length holds.
    uint32_t itemCount = length / itemBytes;
    uint32_t deliveredBytes = itemBytes;
    if (command == TAG_EVENTDATA_CMD)
    {
        if (length < itemBytes)
            throw RUNTIME_EXCEPTION("Malformed message - too small");
        itemCount = 1;
        deliveredBytes = length;
    }
    // Items are rewritten in a local copy (a message channel packet rarely exceeds the stack
    // buffer), so that concurrent deliveries share nothing. Each item fires its own callbacks.
    uint8_t localItem[1024];
    std::vector<uint8_t> largeItem;
    uint8_t* pCopy = localItem;
    if (deliveredBytes > sizeof(localItem))
    {
        largeItem.resize(deliveredBytes);
        pCopy = largeItem.data();
    }
    for (uint32_t i = 0; i < itemCount; ++i)
    {
        const uint8_t* pItem = pPayload + i * itemBytes;
        std::memcpy(pCopy, pItem, deliveredBytes);
        // The ports get the item with its first field (reserved, or the event size) set to what
        // they hold, so that descriptions can read the length of the device data.
        pCopy[0] = static_cast<uint8_t>(deliveredBytes >> 8);
        pCopy[1] = static_cast<uint8_t>(deliveredBytes);
        DeliverToPorts(Be16(pItem + 2), pCopy, deliveredBytes);
    }
}
} // namespace GenApi
