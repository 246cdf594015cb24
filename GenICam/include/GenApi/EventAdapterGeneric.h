#pragma once

#include <Base/GCString.h>
#include <GenApi/EventAdapter.h>

namespace GenApi
{
/**
 * \brief Event adapter for events whose data a GenTL producer already extracted: the payload
 *        (EVENT_DATA_VALUE) and the event ID (EVENT_DATA_ID or EVENT_DATA_NUMID) come apart.
 *
 * The payload is handed to the ports exactly as given, offset 0 = first byte. Threads and
 * lifetime as CEventAdapter.
 */
class GENICAM_API CEventAdapterGeneric : public CEventAdapter
{
public:
    explicit CEventAdapterGeneric(INodeMap* pNodeMap = nullptr);
    ~CEventAdapterGeneric() override;

    /// Without an ID nothing can be delivered: does nothing.
    void DeliverMessage(const uint8_t pMessage[], uint32_t numBytes) override;
    /**
     * \brief Delivers \a numBytes bytes (0 allowed, \a pMessage may then be null) to the ports
     *        whose EventID equals \a eventId, given as hex digits without "0x" (two per byte;
     *        compared by value, so "04", "0004" and "00000004" are the same ID).
     * \throws RuntimeException "Invalid event ID delivered: %s" for an odd number of characters.
     *         An ID that is not hex ("0x9001") matches no port and is not an error.
     */
    virtual void DeliverMessage(const uint8_t pMessage[], uint32_t numBytes, const GenICam::gcstring& eventId);
    /// As above, the ID given as a number.
    virtual void DeliverMessage(const uint8_t pMessage[], uint32_t numBytes, uint64_t eventId);
};
} // namespace GenApi
