#pragma once

#include <memory>

#include <QvApi/QvAllocator.h>
#include <QvApi/QvImage.h>
#include <QvApi/QvImageBuffer.h>
#include <QvApi/QvPixelFormat.h>

#include "QvApi_TL/QvPixelComponent.h"
#include "QvSDKCommon/QvImageBufferInside.h"
#include "QvSDKCommon/QvImageInside.h"
#include "QvSDKCommon/QvROIImage.h"

namespace QvApi
{
/**
 * \brief An application-owned image: memory from an allocator, geometry and pixel format.
 *
 * Made by CreateIQvImageBuffer() and ended by Release(). It is its own default allocator (global
 * new and delete); an application allocator is borrowed, must outlive the buffer and is told
 * OnDeregister() when the buffer ends. The memory only grows: a smaller size keeps the block.
 * The ROI view and the component accessor it hands out belong to it. One thread at a time.
 */
class CQvImageBuffer final : public IQvImageBufferInside, public IQvImageInside, public IQvAllocator
{
public:
    /// \param[in] pAllocator Application allocator (borrowed), or null for the built-in one.
    explicit CQvImageBuffer(IQvAllocator* pAllocator);
    ~CQvImageBuffer();
    CQvImageBuffer(const CQvImageBuffer&) = delete;
    CQvImageBuffer& operator=(const CQvImageBuffer&) = delete;

    // IQvImageBuffer
    void CreateBuffer(size_t width, size_t height, EQvPixelFormatNamingConvention_t pixelFormat,
                      _EQvMemoryInitialization_t memoryInitialization) override;
    IQvImage* GetIQvImage() override;
    void CopyImage(IQvImage* pSrc) override;
    void SetSize(size_t width, size_t height, EQvPixelFormatNamingConvention_t pixelFormat,
                 size_t linePitchAlignment) override;
    bool HasImageBuffer() override { return m_pBuffer != nullptr; }

    // IQvImage
    size_t GetImageWidth() override { return m_width; }
    size_t GetImageHeight() override { return m_height; }
    size_t GetImageLinePitch() override { return m_linePitch; }
    size_t GetImagePlanePitch() override { return m_height * m_linePitch; }
    EQvPixelFormatNamingConvention_t GetImagePixelFormat() override { return m_pixelFormat; }
    IQvImage* GetROIImage(size_t x, size_t y, size_t width, size_t height) override;
    void* GetImageBuffer() override { return m_pBuffer; }
    IQvPixelComponentValue* GetIQvPixelComponentValue(size_t x, size_t y) override;
    void* GetUserContext() override { return m_pUserContext; }

    // IQvAllocator: the built-in allocator. Allocate() reports failure with a null buffer.
    void Allocate(void** ppBuffer, size_t size, void** ppContext) override;
    void Deallocate(void* pBuffer, size_t size, void* pContext) override;
    void OnDeregister() override {}

    // IQvReleasable
    void Release() override;

    /// \return Bytes obtained from the allocator (the capacity; at least the image's size).
    size_t GetBufferSize() const { return m_bufferSize; }

private:
    /// Ends the ROI view and gives the memory back; the buffer is empty afterwards.
    void Deallocate();

    void* m_pBuffer = nullptr;      // from m_pAllocator; null when there is none
    void* m_pUserContext = nullptr; // returned by m_pAllocator with m_pBuffer
    size_t m_bufferSize = 0;        // capacity in bytes
    IQvAllocator* const m_pAllocator; // borrowed application allocator, or this
    size_t m_width = 0;
    size_t m_height = 0;
    size_t m_linePitch = 0;
    EQvPixelFormatNamingConvention_t m_pixelFormat = QvPFNC_Invalid;
    CQvPixelComponent m_pixelComponent;       // handed out by GetIQvPixelComponentValue()
    std::unique_ptr<CQvROIImage> m_pROIImage; // owned; made by the first GetROIImage()
};
} // namespace QvApi
