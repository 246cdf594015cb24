#pragma once

#include <string>

namespace QvApi
{
class IQvImage;
}

namespace QvCam
{
/// File formats of "qvcam grab --format".
enum EFrameFormat_t
{
    FrameFormat_Png, ///< 8-bit grey or RGB for viewing (Bayer and YUV converted)
    FrameFormat_Pnm, ///< PGM with the full sample depth for mono and Bayer (mosaic kept), PPM for colour
    FrameFormat_Raw  ///< the image bytes exactly as delivered (lines with their pitch)
};

/**
 * \brief Writes numbered frames into one folder: "<prefix>-0001.png" and so on.
 *
 * The constructor creates the folder when its parent exists; it refuses to create a whole
 * chain, so that a mistyped path fails instead of growing a tree. One thread.
 */
class CFrameWriter
{
public:
    /// \throws CToolError File when the folder is missing and cannot be made, or is a file.
    CFrameWriter(const std::string& folder, EFrameFormat_t format, const std::string& prefix, size_t frameCount);
    /// \brief Writes \a pImage as frame \a index. \return The file's path.
    /// \throws CToolError File when the file cannot be written.
    std::string Write(QvApi::IQvImage* pImage, size_t index) const;
    /// \return Extension used for frames, e.g. "png" (PNM chooses pgm or ppm per frame).
    const char* GetFormatName() const;

private:
    std::string PathFor(size_t index, const char* extension) const;

    const std::string m_folder;
    const EFrameFormat_t m_format;
    const std::string m_prefix;
    int m_digits = 4;
};

/// \return The format named "png", "pgm" or "raw". \throws CToolError Usage otherwise.
EFrameFormat_t ParseFrameFormat(const std::string& name);
} // namespace QvCam
