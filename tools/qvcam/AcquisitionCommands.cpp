// qvcam grab and qvcam stream.

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <thread>

#include <QvApi_TL.h>

#include "CameraSession.h"
#include "CommandHelpers.h"
#include "FeatureAccess.h"
#include "Commands.h"
#include "FrameWriter.h"
#include "ProgressBar.h"
#include "ToolError.h"

namespace QvCam
{
namespace
{
/// Starts stream and camera, and stops both on every way out of the command.
class CAcquisition
{
public:
    CAcquisition(QvApi::IQvDevice* pDevice, QvApi::IQvDataStream* pStream) : m_pDevice(pDevice), m_pStream(pStream)
    {
        m_pStream->StartAcquisition();
        try
        {
            m_pDevice->AcquisitionStart();
        }
        catch (...)
        {
            StopStream();
            throw;
        }
    }
    ~CAcquisition()
    {
        try
        {
            m_pDevice->AcquisitionStop();
        }
        catch (const GenICam::GenericException&)
        {
            // A lost device cannot be stopped; the stream still must be.
        }
        StopStream();
    }
    CAcquisition(const CAcquisition&) = delete;
    CAcquisition& operator=(const CAcquisition&) = delete;

private:
    void StopStream()
    {
        try
        {
            m_pStream->StopAcquisition();
        }
        catch (const GenICam::GenericException&)
        {
        }
    }
    QvApi::IQvDevice* const m_pDevice;     // borrowed from the session
    QvApi::IQvDataStream* const m_pStream; // borrowed from the session
};

/// Waits for one buffer; turns device loss and silence into the tool's errors.
QvApi::IQvStreamBufferReleasable* NextBuffer(CCameraSession& session, unsigned timeoutMs, size_t received)
{
    QvApi::IQvStreamBufferReleasable* pBuffer = nullptr;
    try
    {
        // Short waits so that Ctrl-C is noticed promptly.
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
        while (pBuffer == nullptr && !IsInterrupted() && std::chrono::steady_clock::now() < deadline)
            pBuffer = session.GetDataStream()->RetrieveBuffer(100);
    }
    catch (const GenICam::GenericException&)
    {
        // The stream's listener may fail before the device's listener reports the loss: allow
        // the device a moment to confirm before calling it something else.
        for (int i = 0; i < 100 && !session.GetDevice()->IsDeviceLost(); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        if (!session.GetDevice()->IsDeviceLost())
            throw;
        throw CToolError(ExitCode_DeviceLost, "device " + session.GetDeviceName() + " was lost after " +
                                                  std::to_string(received) + " frame(s)");
    }
    if (pBuffer == nullptr && IsInterrupted())
        return nullptr;
    if (pBuffer == nullptr)
    {
        if (session.GetDevice()->IsDeviceLost())
            throw CToolError(ExitCode_DeviceLost, "device " + session.GetDeviceName() + " was lost after " +
                                                      std::to_string(received) + " frame(s)");
        throw CToolError(ExitCode_Acquisition, "no frame from " + session.GetDeviceName() + " within " +
                                                   std::to_string(timeoutMs) + " ms (after " + std::to_string(received) +
                                                   " frame(s)); is it waiting for a trigger?");
    }
    return pBuffer;
}

/// Applies "--set NAME=VALUE" items, then "--exec COMMAND" items, to the camera, in order,
/// before acquisition starts.
void ApplyPresets(CCameraSession& session, const CommandOptions_t& options)
{
    const std::vector<std::string>& presets = options.presets;
    if (presets.empty() && options.commands.empty())
        return;
    CFeatureAccess features(session.GetDevice()->GetRemoteIQvPort()->GetINodeMap(), "remote device");
    for (const std::string& preset : presets)
    {
        const size_t equals = preset.find('=');
        if (equals == std::string::npos || equals == 0)
            throw CToolError(ExitCode_Usage, "--set wants NAME=VALUE, not '" + preset + "'");
        features.Set(preset.substr(0, equals), preset.substr(equals + 1));
    }
    for (const std::string& command : options.commands)
        features.Execute(command);
}

std::string SafeFileName(std::string text)
{
    for (char& c : text)
        if (!((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '_'))
            c = '_';
    return text.empty() ? "frame" : text;
}
} // namespace

int RunGrab(const CommandOptions_t& options)
{
    const DeviceArguments_t arguments =
        SplitDeviceArguments(options.positionals, 0, "grab [DEVICE] --count N --out DIR [--format png|pgm|raw]");
    if (options.count == 0)
        throw CToolError(ExitCode_Usage, "--count must be at least 1");
    const EFrameFormat_t format = ParseFrameFormat(options.format);
    CCameraSession session;
    QvApi::IQvDevice* pDevice = session.OpenDevice(arguments.device, GenTL::DEVICE_ACCESS_CONTROL);
    // The device's listeners report a lost connection while frames are awaited.
    pDevice->StartEventAcquisitionThread();
    ApplyPresets(session, options);
    const CFrameWriter writer(options.outFolder, format, SafeFileName(session.GetDeviceName()), options.count);
    QvApi::IQvDataStream* pStream = session.GetDataStream();

    QvApi::CIQvImageBufferPtr copy(QvApi::CreateIQvImageBuffer());
    size_t written = 0, incomplete = 0;
    std::string firstPath, lastPath, geometry;
    const auto start = std::chrono::steady_clock::now();
    {
        CAcquisition acquisition(pDevice, pStream);
        CProgressBar progress(options.count);
        while (written < options.count)
        {
            QvApi::CIQvStreamBufferPtr buffer(NextBuffer(session, options.timeoutMs, written));
            if (!buffer)
                break; // interrupted
            if (buffer->GetIQvStreamBufferInfo()->IsIncomplete())
                ++incomplete;
            // A copy lets the producer refill the buffer while the file is written, and reads
            // from plain memory: a stream buffer's image asks the producer for its geometry.
            copy->CopyImage(buffer->GetIQvImage());
            buffer.Reset();
            QvApi::IQvImage* pImage = copy->GetIQvImage();
            if (geometry.empty())
                geometry = std::to_string(pImage->GetImageWidth()) + "x" + std::to_string(pImage->GetImageHeight()) + " " +
                           QvApi::GetIQvPixelFormatInfo(pImage->GetImagePixelFormat())->GetName().c_str();
            lastPath = writer.Write(pImage, written + 1);
            if (firstPath.empty())
                firstPath = lastPath;
            ++written;
            progress.Update(written);
        }
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (IsInterrupted())
    {
        std::fprintf(stderr, "qvcam: interrupted after %zu frame(s)\n", written);
        return ExitCode_Interrupted;
    }
    std::printf("Grabbed %zu frame(s) (%s) from %s in %.2f s: %.1f frames/s\n", written, geometry.c_str(),
                session.GetDeviceName().c_str(), seconds, seconds > 0 ? written / seconds : 0.0);
    std::printf("Wrote %s%s%s (%s)\n", firstPath.c_str(), written > 1 ? " ... " : "", written > 1 ? lastPath.c_str() : "",
                writer.GetFormatName());
    if (incomplete > 0)
        std::printf("%zu frame(s) were incomplete\n", incomplete);
    return ExitCode_Ok;
}

int RunStream(const CommandOptions_t& options)
{
    const DeviceArguments_t arguments = SplitDeviceArguments(options.positionals, 0, "stream [DEVICE] --seconds S");
    if (!(options.seconds > 0))
        throw CToolError(ExitCode_Usage, "--seconds must be greater than 0");
    CCameraSession session;
    QvApi::IQvDevice* pDevice = session.OpenDevice(arguments.device, GenTL::DEVICE_ACCESS_CONTROL);
    pDevice->StartEventAcquisitionThread();
    ApplyPresets(session, options);
    QvApi::IQvDataStream* pStream = session.GetDataStream();

    const bool live = isatty(STDOUT_FILENO) == 1;
    uint64_t frames = 0, bytes = 0, dropped = 0, incomplete = 0, lastFrameId = 0;
    uint64_t intervalFrames = 0, intervalBytes = 0;
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    const auto end = start + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(options.seconds));
    auto intervalStart = start;
    std::printf("Streaming from %s for %.1f s\n", session.GetDeviceName().c_str(), options.seconds);
    {
        CAcquisition acquisition(pDevice, pStream);
        while (Clock::now() < end && !IsInterrupted())
        {
            QvApi::CIQvStreamBufferPtr buffer(NextBuffer(session, options.timeoutMs, frames));
            if (!buffer)
                break;
            QvApi::IQvStreamBufferInfo* pInfo = buffer->GetIQvStreamBufferInfo();
            ++frames;
            ++intervalFrames;
            const uint64_t filled = pInfo->GetSizeFilled();
            bytes += filled;
            intervalBytes += filled;
            if (pInfo->IsIncomplete())
                ++incomplete;
            // Frame IDs count every frame the camera made, so gaps are frames lost on the way.
            const uint64_t frameId = pInfo->GetFrameID();
            if (frameId > lastFrameId + 1)
                dropped += frameId - lastFrameId - 1;
            if (frameId > lastFrameId)
                lastFrameId = frameId;
            buffer.Reset();

            const auto now = Clock::now();
            const double interval = std::chrono::duration<double>(now - intervalStart).count();
            if (interval >= 1.0)
            {
                std::printf("%s%6.1f s  %8.1f frames/s  %8.1f MB/s  dropped %llu  incomplete %llu%s",
                            live ? "\r" : "", std::chrono::duration<double>(now - start).count(),
                            intervalFrames / interval, intervalBytes / interval / 1e6,
                            static_cast<unsigned long long>(dropped), static_cast<unsigned long long>(incomplete),
                            live ? "\033[K" : "\n");
                std::fflush(stdout);
                intervalStart = now;
                intervalFrames = intervalBytes = 0;
            }
        }
    }
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    if (live)
        std::printf("\n");
    std::printf("%llu frames in %.2f s: %.1f frames/s, %.1f MB/s, %llu dropped, %llu incomplete\n",
                static_cast<unsigned long long>(frames), seconds, frames / seconds, bytes / seconds / 1e6,
                static_cast<unsigned long long>(dropped), static_cast<unsigned long long>(incomplete));
    if (IsInterrupted())
        return ExitCode_Interrupted;
    return ExitCode_Ok;
}
} // namespace QvCam
