#pragma once

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <GenApi/MemoryPort.h>

// A memory-backed register space that records every write the way the reference traces print
// them: "[port W addr=0x200 len=4: 00 00 00 00]".
class CTracingPort : public GenApi::CMemoryPort
{
public:
    void Write(const void* pBuffer, int64_t address, int64_t lengthBytes) override
    {
        std::string line = "[port W addr=0x" + Hex(static_cast<unsigned long long>(address), "%llx") +
                           " len=" + std::to_string(lengthBytes) + ":";
        const uint8_t* pBytes = static_cast<const uint8_t*>(pBuffer);
        for (int64_t i = 0; i < lengthBytes; ++i)
            line += " " + Hex(pBytes[i], "%02x");
        m_writes.push_back(line + "]");
        CMemoryPort::Write(pBuffer, address, lengthBytes);
    }

    /// Loads a reference memory image: "ADDRESS HEXBYTES  # comment" lines.
    void LoadImage(const std::string& fileName)
    {
        std::ifstream in(fileName);
        std::string line;
        while (std::getline(in, line))
        {
            line = line.substr(0, line.find('#'));
            std::istringstream fields(line);
            std::string address, part, hex;
            if (!(fields >> address))
                continue;
            while (fields >> part)
                hex += part;
            std::vector<uint8_t> bytes;
            for (size_t i = 0; i + 1 < hex.size(); i += 2)
                bytes.push_back(static_cast<uint8_t>(std::stoul(hex.substr(i, 2), nullptr, 16)));
            Poke(std::stoll(address, nullptr, 0), bytes);
        }
    }

    std::vector<std::string> m_writes;

private:
    static std::string Hex(unsigned long long value, const char* format)
    {
        char text[32];
        std::snprintf(text, sizeof(text), format, value);
        return text;
    }
};

// The write trace lines of a reference transcript section (lines starting with "[port W").
inline std::vector<std::string> TraceLines(const std::string& section)
{
    std::vector<std::string> lines;
    size_t start = 0;
    while (start < section.size())
    {
        size_t end = section.find('\n', start);
        if (end == std::string::npos)
            end = section.size();
        std::string line = section.substr(start, end - start);
        const size_t first = line.find('[');
        if (first != std::string::npos && line.compare(first, 7, "[port W") == 0)
            lines.push_back(line.substr(first));
        start = end + 1;
    }
    return lines;
}
