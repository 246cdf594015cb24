#include "FrameWriter.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <vector>

#include <stb_image_write.h>

#include <QvApi_TL.h>

#include "ToolError.h"
#include "ViewImage.h"

namespace QvCam
{
namespace
{
std::string ErrnoText()
{
    return std::strerror(errno);
}

void WriteFile(const std::string& path, const std::string& header, const uint8_t* data, size_t size)
{
    FILE* pFile = std::fopen(path.c_str(), "wb");
    if (pFile == nullptr)
        throw CToolError(ExitCode_File, "cannot write " + path + ": " + ErrnoText());
    bool ok = std::fwrite(header.data(), 1, header.size(), pFile) == header.size() &&
              (size == 0 || std::fwrite(data, 1, size, pFile) == size);
    ok = (std::fclose(pFile) == 0) && ok;
    if (!ok)
        throw CToolError(ExitCode_File, "cannot write " + path + ": " + ErrnoText());
}

// Mono and Bayer samples at full depth, for PGM (big-endian when wider than 8 bits).
void WritePgm(QvApi::IQvImage* pImage, const QvApi::IQvPixelFormatInfo* pInfo, const std::string& path)
{
    const size_t width = pImage->GetImageWidth(), height = pImage->GetImageHeight();
    const uint64_t bits = pInfo->GetEachComponentValidBitCount();
    const size_t bytesPerSample = bits > 8 ? 2 : 1;
    std::vector<uint8_t> body(width * height * bytesPerSample);
    const size_t pitch = pImage->GetImageLinePitch();
    const uint8_t* base = static_cast<const uint8_t*>(pImage->GetImageBuffer());
    const uint64_t totalBits = pInfo->GetEachPixelTotalBitCount();
    QvApi::IQvPixelComponentValue* pValue = nullptr;
    for (size_t y = 0; y < height; ++y)
        for (size_t x = 0; x < width; ++x)
        {
            uint64_t sample;
            if (totalBits == 8)
                sample = base[y * pitch + x];
            else if (totalBits == 16)
                sample = uint64_t(base[y * pitch + 2 * x]) | uint64_t(base[y * pitch + 2 * x + 1]) << 8;
            else
            {
                if (pValue == nullptr)
                    pValue = pImage->GetIQvPixelComponentValue(0, 0);
                pValue->SetPixelComponent(pImage, x, y);
                sample = pValue->GetValue(0);
            }
            const size_t at = (y * width + x) * bytesPerSample;
            if (bytesPerSample == 2)
            {
                body[at] = static_cast<uint8_t>(sample >> 8);
                body[at + 1] = static_cast<uint8_t>(sample);
            }
            else
                body[at] = static_cast<uint8_t>(sample);
        }
    const std::string header = "P5\n" + std::to_string(width) + " " + std::to_string(height) + "\n" +
                               std::to_string((uint64_t(1) << bits) - 1) + "\n";
    WriteFile(path, header, body.data(), body.size());
}
} // namespace

EFrameFormat_t ParseFrameFormat(const std::string& name)
{
    if (name == "png")
        return FrameFormat_Png;
    if (name == "pgm")
        return FrameFormat_Pnm;
    if (name == "raw")
        return FrameFormat_Raw;
    throw CToolError(ExitCode_Usage, "unknown frame format '" + name + "' (use png, pgm or raw)");
}

CFrameWriter::CFrameWriter(const std::string& folder, EFrameFormat_t format, const std::string& prefix, size_t frameCount)
    : m_folder(folder.empty() ? "." : folder), m_format(format), m_prefix(prefix)
{
    while (frameCount >= 10000 && m_digits < 12)
    {
        frameCount /= 10;
        ++m_digits;
    }
    struct stat info;
    if (stat(m_folder.c_str(), &info) == 0)
    {
        if (!S_ISDIR(info.st_mode))
            throw CToolError(ExitCode_File, "output folder " + m_folder + " exists but is not a folder");
        return;
    }
    if (mkdir(m_folder.c_str(), 0777) != 0)
        throw CToolError(ExitCode_File, "cannot create output folder " + m_folder + ": " + ErrnoText() +
                                            (errno == ENOENT ? " (its parent folder does not exist)" : ""));
}

const char* CFrameWriter::GetFormatName() const
{
    return m_format == FrameFormat_Png ? "PNG" : m_format == FrameFormat_Pnm ? "PGM/PPM" : "raw";
}

std::string CFrameWriter::PathFor(size_t index, const char* extension) const
{
    char number[32];
    std::snprintf(number, sizeof(number), "%0*zu", m_digits, index);
    return m_folder + "/" + m_prefix + "-" + number + "." + extension;
}

std::string CFrameWriter::Write(QvApi::IQvImage* pImage, size_t index) const
{
    const QvApi::IQvPixelFormatInfo* pInfo = QvApi::GetIQvPixelFormatInfo(pImage->GetImagePixelFormat());
    if (m_format == FrameFormat_Raw)
    {
        const std::string path = PathFor(index, "raw");
        const size_t size = pImage->GetImageLinePitch() * pImage->GetImageHeight() * pInfo->GetPlaneCount();
        WriteFile(path, "", static_cast<const uint8_t*>(pImage->GetImageBuffer()), size);
        return path;
    }
    if (m_format == FrameFormat_Pnm && !pInfo->IsColor())
    {
        const std::string path = PathFor(index, "pgm");
        WritePgm(pImage, pInfo, path);
        return path;
    }
    if (m_format == FrameFormat_Pnm && pInfo->IsBayer())
    {
        // The mosaic at full depth is what a Bayer PGM is for.
        const std::string path = PathFor(index, "pgm");
        WritePgm(pImage, pInfo, path);
        return path;
    }
    const ViewImage_t view = ViewImage_t::FromImage(pImage);
    if (m_format == FrameFormat_Pnm)
    {
        const std::string path = PathFor(index, "ppm");
        WriteFile(path, "P6\n" + std::to_string(view.width) + " " + std::to_string(view.height) + "\n255\n",
                  view.pixels.data(), view.pixels.size());
        return path;
    }
    const std::string path = PathFor(index, "png");
    errno = 0;
    if (stbi_write_png(path.c_str(), static_cast<int>(view.width), static_cast<int>(view.height), view.channels,
                       view.pixels.data(), static_cast<int>(view.width) * view.channels) == 0)
        throw CToolError(ExitCode_File, "cannot write " + path + (errno ? ": " + ErrnoText() : std::string()));
    return path;
}
} // namespace QvCam
