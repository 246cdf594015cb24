#pragma once

#include <cstdint>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <Base/GCException.h>
#include <GenApi/PortImpl.h>

namespace GenApi
{
/**
 * \brief A port backed by host memory: a sparse register space reading zero where nothing was
 *        written.
 *
 * For tools and tests: dump a description without a device, check what a node map writes.
 * Counts reads and writes. Thread: one thread at a time (the node map's lock serialises use).
 */
class CMemoryPort : public CPortImpl
{
public:
    explicit CMemoryPort(EAccessMode accessMode = RW) : m_accessMode(accessMode) {}

    EAccessMode GetAccessMode() const override { return m_accessMode; }
    /// Changes the access mode reported from now on.
    void SetAccessMode(EAccessMode accessMode) { m_accessMode = accessMode; }

    void Read(void* pBuffer, int64_t address, int64_t lengthBytes) override
    {
        CheckSpan(address, lengthBytes);
        ++m_readCount;
        uint8_t* pOut = static_cast<uint8_t*>(pBuffer);
        for (int64_t i = 0; i < lengthBytes; ++i)
            pOut[i] = ByteAt(address + i);
    }
    void Write(const void* pBuffer, int64_t address, int64_t lengthBytes) override
    {
        CheckSpan(address, lengthBytes);
        ++m_writeCount;
        const uint8_t* pIn = static_cast<const uint8_t*>(pBuffer);
        for (int64_t i = 0; i < lengthBytes; ++i)
            SetByte(address + i, pIn[i]);
    }

    /// Stores bytes without counting a write (sets up the "device" state).
    void Poke(int64_t address, const std::vector<uint8_t>& bytes)
    {
        for (size_t i = 0; i < bytes.size(); ++i)
            SetByte(address + static_cast<int64_t>(i), bytes[i]);
    }
    /// Reads bytes without counting a read.
    std::vector<uint8_t> Peek(int64_t address, int64_t lengthBytes) const
    {
        std::vector<uint8_t> bytes(static_cast<size_t>(lengthBytes));
        for (int64_t i = 0; i < lengthBytes; ++i)
            bytes[static_cast<size_t>(i)] = ByteAt(address + i);
        return bytes;
    }
    /**
     * \brief Loads "ADDRESS HEXBYTES" lines (address decimal or 0x-hex, bytes as hex pairs, spaces
     *        allowed between pairs); blank lines and lines starting with '#' are skipped.
     * \throws RuntimeException when the file cannot be read or a line does not parse.
     */
    void LoadRegisterFile(const std::string& fileName)
    {
        std::ifstream in(fileName);
        if (!in)
            throw RUNTIME_EXCEPTION("File %s could not be opened.", fileName.c_str());
        std::string line;
        int lineNumber = 0;
        while (std::getline(in, line))
        {
            ++lineNumber;
            std::istringstream fields(line);
            std::string addressText;
            if (!(fields >> addressText) || addressText[0] == '#')
                continue;
            std::string hex, part;
            while (fields >> part)
                hex += part;
            char* pEnd = nullptr;
            const long long address = std::strtoll(addressText.c_str(), &pEnd, 0);
            if (*pEnd != '\0' || hex.size() % 2 != 0)
                throw RUNTIME_EXCEPTION("%s:%d: expected 'ADDRESS HEXBYTES'", fileName.c_str(), lineNumber);
            std::vector<uint8_t> bytes;
            for (size_t i = 0; i < hex.size(); i += 2)
            {
                const std::string pair = hex.substr(i, 2);
                char* pPairEnd = nullptr;
                const unsigned long value = std::strtoul(pair.c_str(), &pPairEnd, 16);
                if (*pPairEnd != '\0')
                    throw RUNTIME_EXCEPTION("%s:%d: bad hex byte '%s'", fileName.c_str(), lineNumber, pair.c_str());
                bytes.push_back(static_cast<uint8_t>(value));
            }
            Poke(address, bytes);
        }
    }

    /// Number of Read calls so far.
    int64_t GetReadCount() const { return m_readCount; }
    /// Number of Write calls so far.
    int64_t GetWriteCount() const { return m_writeCount; }
    void ResetCounts() { m_readCount = m_writeCount = 0; }

private:
    static constexpr int64_t kPageBytes = 4096;

    static void CheckSpan(int64_t address, int64_t lengthBytes)
    {
        if (lengthBytes < 0 || address < 0 || address > INT64_MAX - lengthBytes)
            throw RUNTIME_EXCEPTION("MemoryPort: access out of range (address %lld, length %lld)",
                                    static_cast<long long>(address), static_cast<long long>(lengthBytes));
    }
    uint8_t ByteAt(int64_t address) const
    {
        auto it = m_pages.find(address / kPageBytes);
        return it == m_pages.end() ? 0 : it->second[static_cast<size_t>(address % kPageBytes)];
    }
    void SetByte(int64_t address, uint8_t value)
    {
        std::vector<uint8_t>& page = m_pages[address / kPageBytes];
        if (page.empty())
            page.assign(kPageBytes, 0);
        page[static_cast<size_t>(address % kPageBytes)] = value;
    }

    EAccessMode m_accessMode;
    std::map<int64_t, std::vector<uint8_t>> m_pages; // page number -> 4 KiB of bytes
    int64_t m_readCount = 0;
    int64_t m_writeCount = 0;
};
} // namespace GenApi
