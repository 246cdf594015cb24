#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace QvGenTL {

/// Wire layout of remote-device events, chosen by the device's transport layer type.
enum class EEventLayout_t
{
    Gev,     ///< GVCP EVENTDATA / EVENT packets, big-endian
    U3v,     ///< USB3 Vision event messages, little-endian
    Generic, ///< the producer's generic record (numeric ID, then the payload)
};

EEventLayout_t EventLayoutOf(const std::string& tlType);

/// One remote-device event as a consumer's event port sees it.
struct DecodedEvent_t
{
    uint64_t id = 0;
    std::vector<uint8_t> value; ///< EVENT_DATA_VALUE: what the description's event registers address
};

/**
 * Builds the EventGetData record of one event. eventPayload is the value an event port must
 * see for the transport (GEV: the 16-byte item then data; U3V: the SCD; generic: anything);
 * for GEV and U3V the packet header is added around it. Throws std::length_error when the
 * payload does not fit the 16-bit length of the packet header, std::invalid_argument for a GEV
 * payload shorter than an item.
 */
std::vector<uint8_t> EncodeRemoteEvent(EEventLayout_t layout, uint64_t eventId, const std::vector<uint8_t>& eventPayload,
                                       uint16_t requestId);

/// GEV item (big-endian): size, ID, channel, block ID, timestamp, then data. Throws
/// std::length_error when the item would not fit its 16-bit size field.
std::vector<uint8_t> MakeGevEventItem(uint16_t eventId, uint16_t channel, uint16_t blockId, uint64_t timestamp,
                                      const uint8_t* data, size_t size);
/// U3V SCD (little-endian): size, ID, timestamp, then data. Throws std::length_error when the
/// SCD would not fit its 16-bit size field.
std::vector<uint8_t> MakeU3vEventScd(uint16_t eventId, uint64_t timestamp, const uint8_t* data, size_t size);

/// Decodes a record made by EncodeRemoteEvent (or sent by a real device); false if malformed.
bool DecodeRemoteEvent(EEventLayout_t layout, const uint8_t* record, size_t size, DecodedEvent_t& event);

} // namespace QvGenTL
