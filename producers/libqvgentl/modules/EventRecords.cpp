#include "modules/EventRecords.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstring>

#include <QvGenTL/VirtualCamera.h>

namespace QvGenTL {

std::vector<uint8_t> EncodeErrorRecord(GenTL::GC_ERROR code, std::string_view text)
{
    const size_t length = std::min(text.size(), kMaxErrorTextSize - 1);
    std::vector<uint8_t> record(4 + length + 1, 0);
    StoreLE(record.data(), static_cast<uint32_t>(code), 4);
    std::memcpy(record.data() + 4, text.data(), length);
    return record;
}

std::vector<uint8_t> EncodeGenericRecord(uint64_t eventId, const uint8_t* payload, size_t size)
{
    std::vector<uint8_t> record(QvVirtualCamera::kGenericRecordHeaderSize + size);
    StoreLE(record.data(), eventId, 8);
    if (size != 0)
        std::memcpy(record.data() + QvVirtualCamera::kGenericRecordHeaderSize, payload, size);
    return record;
}

std::vector<uint8_t> EncodeFeatureChangeRecord(std::string_view name, std::string_view value)
{
    std::vector<uint8_t> record = EncodeFeatureInvalidateRecord(name);
    record.insert(record.end(), value.begin(), value.end());
    record.push_back(0);
    return record;
}

std::vector<uint8_t> EncodeFeatureInvalidateRecord(std::string_view name)
{
    std::vector<uint8_t> record(name.begin(), name.end());
    record.push_back(0);
    return record;
}

std::string EventIdText(uint64_t eventId)
{
    char text[24];
    if (eventId <= 0xFFFF)
        std::snprintf(text, sizeof(text), "%04" PRIX64, eventId);
    else if (eventId <= 0xFFFFFFFF)
        std::snprintf(text, sizeof(text), "%08" PRIX64, eventId);
    else
        std::snprintf(text, sizeof(text), "%016" PRIX64, eventId);
    return text;
}

} // namespace QvGenTL
