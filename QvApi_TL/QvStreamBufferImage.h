#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include <QvApi/QvImage.h>
#include <QvApi/QvSystem.h>

#include "QvApi_TL/QvPixelComponent.h"
#include "QvSDKCommon/QvImageInside.h"

namespace GenApi
{
struct IInteger;
struct IEnumeration;
struct INodeMap;
} // namespace GenApi

namespace QvApi
{
class CQvROIImage;
class CQvStreamBuffer;

/**
 * \brief The image of a stream buffer: geometry and pixel format from the buffer's GenTL
 *        information, with the buffer's chunk features as fall-back, the memory at the image
 *        offset, ROI views and per-pixel access.
 *
 * Owned by its CQvStreamBuffer. Every getter asks the producer for the buffer's last fill, so an
 * image is meaningful between RetrieveBuffer() and Release(); pixel access and the ROI view
 * remember the answers until the next fill. One thread at a time, together with its ROI view.
 */
class QVAPI_API CQvStreamBufferImage final : public IQvImageInside
{
public:
    /// \param[in] pBuffer The owning buffer; outlives the image.
    explicit CQvStreamBufferImage(CQvStreamBuffer* pBuffer);
    ~CQvStreamBufferImage();
    CQvStreamBufferImage(const CQvStreamBufferImage&) = delete;
    CQvStreamBufferImage& operator=(const CQvStreamBufferImage&) = delete;

    /// Width: BUFFER_INFO_WIDTH, else the chunk feature "ChunkWidth", else 0.
    size_t GetImageWidth() override;
    /// Height: the delivered height when not 0, else BUFFER_INFO_HEIGHT, else "ChunkHeight", else 0.
    size_t GetImageHeight() override;
    /// The format's packed line length plus the buffer's X padding.
    size_t GetImageLinePitch() override;
    /// Line pitch times height (the Y padding is not part of the plane).
    size_t GetImagePlanePitch() override;
    /**
     * \return The PFNC code: the buffer's format in the PFNC namespace as it is; a CoaXPress
     *         device's own code mapped to PFNC (0xFFFFFFFF when it has no PFNC counterpart);
     *         "ChunkPixelFormat" when the producer cannot tell.
     */
    EQvPixelFormatNamingConvention_t GetImagePixelFormat() override;
    /// Base address plus the image offset (the base alone when the offset is unknown).
    void* GetImageBuffer() override;
    /// The allocator context of the buffer's memory, or null.
    void* GetUserContext() override;
    IQvImage* GetROIImage(size_t x, size_t y, size_t width, size_t height) override;
    IQvPixelComponentValue* GetIQvPixelComponentValue(size_t x, size_t y) override;

    /// Ends the ROI view (the buffer is being revoked).
    void ReleaseROIImage();
    /// The producer filled the buffer again (any thread; the next use happens after it).
    void OnNewFill() { m_fill.fetch_add(1, std::memory_order_release); }

    /**
     * \brief The PFNC code of a CoaXPress pixel format code (class bits 8-11, variant 4-7,
     *        size 0-3); 0xFFFFFFFF when there is none.
     */
    static EQvPixelFormatNamingConvention_t MapCoaXPressPixelFormat(uint64_t cxpPixelFormat);

private:
    class CFillGeometry;
    CFillGeometry& FillGeometry();
    /// The value of an integer chunk feature, or 0 without chunk node map, node or value.
    size_t ChunkInteger(const char* name, std::atomic<GenApi::IInteger*>& cache);

    CQvStreamBuffer* const m_pBuffer; // borrowed: the owner
    // Caches filled on first use; atomic because the stream's listener may ask for the geometry
    // (byte counting without BUFFER_INFO_DATA_SIZE) while the application does.
    std::atomic<uint32_t> m_interfaceType{0}; // an _EQvInterfaceType_t; 0 until fetched
    // Chunk features; they live as long as the buffer's chunk node map.
    std::atomic<GenApi::IInteger*> m_pChunkWidth{nullptr};
    std::atomic<GenApi::IInteger*> m_pChunkHeight{nullptr};
    // Pixel access and the ROI view read the geometry through m_pFillGeometry, which asks the
    // getters above once per fill: each answer is several producer calls, and pixel access
    // needs five of them per pixel.
    std::atomic<uint64_t> m_fill{0};
    std::unique_ptr<CFillGeometry> m_pFillGeometry;
    CQvPixelComponent m_pixelComponent;       // handed out by GetIQvPixelComponentValue()
    std::unique_ptr<CQvROIImage> m_pROIImage; // made by the first GetROIImage()
};
} // namespace QvApi
