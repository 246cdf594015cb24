#include "transport/RemoteEventCodec.h"

#include <cstring>
#include <stdexcept>
#include <string>

#include <QvGenTL/VirtualCamera.h>

#include "modules/EventRecords.h"

namespace QvGenTL {

namespace {

constexpr uint8_t kGvcpKey = 0x42;
constexpr uint16_t kGvcpEventCmd = 0x00C0;
constexpr uint16_t kGvcpEventDataCmd = 0x00C2;
constexpr uint8_t kGvcpExtendedIdFlag = 0x10;
constexpr size_t kGvcpHeaderSize = 8;
constexpr size_t kGvcpItemSize = 16;
constexpr size_t kGvcpExtendedItemSize = 24;

constexpr uint32_t kU3vEventPrefix = 0x45563355; // "U3VE"
constexpr uint16_t kU3vEventCmd = 0x0C00;
constexpr size_t kU3vHeaderSize = 12;
constexpr size_t kU3vScdHeaderSize = 12;

/// GEV items, U3V SCDs and both packet headers give sizes in 16-bit fields.
constexpr size_t kMaxSizeField = 0xFFFF;

[[noreturn]] void ThrowSizeFieldOverflow(size_t dataSize, const char* what)
{
    throw std::length_error(std::string(what) + " of " + std::to_string(dataSize) +
                            " bytes does not fit its 16-bit size field");
}

/// Throws unless headerSize + dataSize fits a 16-bit size field (so the sum cannot wrap either).
/// Inline, so that the compiler also knows the bound where the record is built.
inline void CheckSizeField(size_t headerSize, size_t dataSize, const char* what)
{
    if (dataSize > kMaxSizeField - headerSize)
        ThrowSizeFieldOverflow(dataSize, what);
}

} // namespace

EEventLayout_t EventLayoutOf(const std::string& tlType)
{
    if (tlType == "GEV")
        return EEventLayout_t::Gev;
    if (tlType == "U3V")
        return EEventLayout_t::U3v;
    return EEventLayout_t::Generic;
}

std::vector<uint8_t> MakeGevEventItem(uint16_t eventId, uint16_t channel, uint16_t blockId, uint64_t timestamp,
                                      const uint8_t* data, size_t size)
{
    CheckSizeField(kGvcpItemSize, size, "GEV event data");
    std::vector<uint8_t> item(kGvcpItemSize + size, 0);
    StoreBE(&item[0], kGvcpItemSize + size, 2); // as an event port sees it; 0 on the wire
    StoreBE(&item[2], eventId, 2);
    StoreBE(&item[4], channel, 2);
    StoreBE(&item[6], blockId, 2);
    StoreBE(&item[8], timestamp, 8);
    if (size != 0)
        std::memcpy(&item[16], data, size);
    return item;
}

std::vector<uint8_t> MakeU3vEventScd(uint16_t eventId, uint64_t timestamp, const uint8_t* data, size_t size)
{
    CheckSizeField(kU3vScdHeaderSize, size, "U3V event data");
    std::vector<uint8_t> scd(kU3vScdHeaderSize + size, 0);
    StoreLE(&scd[0], kU3vScdHeaderSize + size, 2);
    StoreLE(&scd[2], eventId, 2);
    StoreLE(&scd[4], timestamp, 8);
    if (size != 0)
        std::memcpy(&scd[12], data, size);
    return scd;
}

std::vector<uint8_t> EncodeRemoteEvent(EEventLayout_t layout, uint64_t eventId, const std::vector<uint8_t>& payload,
                                       uint16_t requestId)
{
    switch (layout)
    {
    case EEventLayout_t::Gev:
    {
        CheckSizeField(0, payload.size(), "GEV event payload");
        if (payload.size() < kGvcpItemSize) // its first field is cleared below
            throw std::invalid_argument("GEV event payload of " + std::to_string(payload.size()) +
                                        " bytes is shorter than an event item");
        std::vector<uint8_t> packet(kGvcpHeaderSize + payload.size());
        packet[0] = kGvcpKey;
        packet[1] = 0; // no acknowledge wanted
        StoreBE(&packet[2], kGvcpEventDataCmd, 2);
        StoreBE(&packet[4], payload.size(), 2);
        StoreBE(&packet[6], requestId, 2);
        std::memcpy(&packet[kGvcpHeaderSize], payload.data(), payload.size());
        // The reserved first field of the item is 0 on the wire; the consumer's adapter writes
        // the length there when it hands the item to an event port.
        packet[kGvcpHeaderSize] = 0;
        packet[kGvcpHeaderSize + 1] = 0;
        return packet;
    }
    case EEventLayout_t::U3v:
    {
        CheckSizeField(0, payload.size(), "U3V event payload");
        std::vector<uint8_t> message(kU3vHeaderSize + payload.size());
        StoreLE(&message[0], kU3vEventPrefix, 4);
        StoreLE(&message[4], 0, 2); // flags: no acknowledge wanted
        StoreLE(&message[6], kU3vEventCmd, 2);
        StoreLE(&message[8], payload.size(), 2);
        StoreLE(&message[10], requestId, 2);
        std::memcpy(&message[kU3vHeaderSize], payload.data(), payload.size());
        return message;
    }
    case EEventLayout_t::Generic:
        break;
    }
    return EncodeGenericRecord(eventId, payload.data(), payload.size());
}

bool DecodeRemoteEvent(EEventLayout_t layout, const uint8_t* record, size_t size, DecodedEvent_t& event)
{
    switch (layout)
    {
    case EEventLayout_t::Gev:
    {
        if (size < kGvcpHeaderSize + kGvcpItemSize || record[0] != kGvcpKey)
            return false;
        const uint16_t command = static_cast<uint16_t>(LoadBE(&record[2], 2));
        const size_t length = LoadBE(&record[4], 2);
        if (length > size - kGvcpHeaderSize)
            return false;
        const size_t itemSize = (record[1] & kGvcpExtendedIdFlag) ? kGvcpExtendedItemSize : kGvcpItemSize;
        if (length < itemSize)
            return false;
        // EVENT_CMD may carry several items: the first is the event; EVENTDATA carries data too.
        size_t valueSize;
        if (command == kGvcpEventDataCmd)
            valueSize = length;
        else if (command == kGvcpEventCmd)
            valueSize = itemSize;
        else
            return false;
        const uint8_t* item = record + kGvcpHeaderSize;
        event.id = LoadBE(&item[2], 2);
        event.value.assign(item, item + valueSize);
        StoreBE(event.value.data(), valueSize, 2);
        return true;
    }
    case EEventLayout_t::U3v:
    {
        if (size < kU3vHeaderSize + kU3vScdHeaderSize || LoadLE(record, 4) != kU3vEventPrefix ||
            LoadLE(&record[6], 2) != kU3vEventCmd)
            return false;
        const size_t scdSize = LoadLE(&record[8], 2);
        if (scdSize < kU3vScdHeaderSize || scdSize > size - kU3vHeaderSize)
            return false;
        const uint8_t* scd = record + kU3vHeaderSize;
        event.id = LoadLE(&scd[2], 2);
        event.value.assign(scd, scd + scdSize);
        return true;
    }
    case EEventLayout_t::Generic:
        break;
    }
    if (size < QvVirtualCamera::kGenericRecordHeaderSize)
        return false;
    event.id = LoadLE(record, 8);
    event.value.assign(record + QvVirtualCamera::kGenericRecordHeaderSize, record + size);
    return true;
}

} // namespace QvGenTL
