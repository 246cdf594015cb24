#include <GenApi/EventAdapterGeneric.h>

#include <Base/GCException.h>

#include "Engine/Chunk/DeliveredId.h"

namespace GenApi
{
CEventAdapterGeneric::CEventAdapterGeneric(INodeMap* pNodeMap) : CEventAdapter(pNodeMap)
{
}

CEventAdapterGeneric::~CEventAdapterGeneric() = default;

void CEventAdapterGeneric::DeliverMessage(const uint8_t /*pMessage*/[], uint32_t /*numBytes*/)
{
    // The payload alone does not say which event it belongs to.
}

void CEventAdapterGeneric::DeliverMessage(const uint8_t pMessage[], uint32_t numBytes, const GenICam::gcstring& eventId)
{
    uint64_t value = 0;
    switch (ParseDeliveredId(eventId.c_str(), eventId.size(), value))
    {
    case EDeliveredId_t::OddDigits: throw RUNTIME_EXCEPTION("Invalid event ID delivered: %s", eventId.c_str());
    case EDeliveredId_t::NoMatch: return;
    case EDeliveredId_t::Valid: break;
    }
    DeliverMessage(pMessage, numBytes, value);
}

void CEventAdapterGeneric::DeliverMessage(const uint8_t pMessage[], uint32_t numBytes, uint64_t eventId)
{
    if (pMessage == nullptr && numBytes > 0)
        throw RUNTIME_EXCEPTION("Malformed message - NULL with %u bytes", numBytes);
    DeliverToPorts(eventId, pMessage, numBytes);
}
} // namespace GenApi
