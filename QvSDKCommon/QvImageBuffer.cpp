#include "QvSDKCommon/QvImageBuffer.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>

#include <QvApi/QvApiFunctions.h>

#include "QvApi_TL/QvPixelFormatInfoInside.h"
#include "QvSDKCommon/LineCopy.h"
#include "QvSDKCommon/QvExceptionMacros.h"
#include "QvSDKCommon/QvTestChart.h"

namespace QvApi
{
CQvImageBuffer::CQvImageBuffer(IQvAllocator* pAllocator) : m_pAllocator(pAllocator != nullptr ? pAllocator : this)
{
}

CQvImageBuffer::~CQvImageBuffer()
{
    // An application allocator that throws must not take the process down with it.
    try
    {
        Deallocate();
    }
    catch (...)
    {
    }
    if (m_pAllocator != this)
    {
        try
        {
            m_pAllocator->OnDeregister();
        }
        catch (...)
        {
        }
    }
}

void CQvImageBuffer::Release()
{
    delete this;
}

void CQvImageBuffer::Allocate(void** ppBuffer, size_t size, void** ppContext)
{
    *ppBuffer = ::operator new(size, std::nothrow);
    *ppContext = nullptr;
}

void CQvImageBuffer::Deallocate(void* pBuffer, size_t /*size*/, void* /*pContext*/)
{
    ::operator delete(pBuffer);
}

void CQvImageBuffer::Deallocate()
{
    m_pROIImage.reset();
    if (m_pBuffer != nullptr)
    {
        void* pBuffer = m_pBuffer;
        m_pBuffer = nullptr;
        m_pAllocator->Deallocate(pBuffer, m_bufferSize, m_pUserContext);
    }
    m_pUserContext = nullptr;
    m_bufferSize = 0;
    m_width = 0;
    m_height = 0;
    m_linePitch = 0;
    m_pixelFormat = QvPFNC_Invalid;
}

void CQvImageBuffer::SetSize(size_t width, size_t height, EQvPixelFormatNamingConvention_t pixelFormat,
                             size_t linePitchAlignment)
{
    QV_CHECK_ABOVE("size_t nWidth", static_cast<long>(width), 0L);
    QV_CHECK_ABOVE("size_t nHeight", static_cast<long>(height), 0L);
    const auto* pIQvPixelFormatInfoDest =
        dynamic_cast<const IQvPixelFormatInfoInside*>(GetIQvPixelFormatInfo(pixelFormat));
    QV_ASSERT(pIQvPixelFormatInfoDest != nullptr, "(pIQvPixelFormatInfoDest) != NULL");

    if (linePitchAlignment == 0)
        linePitchAlignment = pIQvPixelFormatInfoDest->GetLinePitchAlignment();
    const size_t linePitch = pIQvPixelFormatInfoDest->GetRequiredLinePitch(width, linePitchAlignment);
    size_t requiredSize = 0;
    const bool tooLarge = __builtin_mul_overflow(linePitch, height, &requiredSize) ||
                          __builtin_mul_overflow(requiredSize, pIQvPixelFormatInfoDest->GetPlaneCount(), &requiredSize);

    if (m_pBuffer != nullptr && !tooLarge && requiredSize <= m_bufferSize)
    {
        m_width = width;
        m_height = height;
        m_linePitch = linePitch;
        m_pixelFormat = pixelFormat;
        return;
    }

    Deallocate();
    // No allocator can provide a block whose size does not even fit in size_t.
    if (QV_UNLIKELY(tooLarge))
        QV_THROW_EMPTY(BadAllocException);
    void* pBuffer = nullptr;
    void* pUserContext = nullptr;
    try
    {
        m_pAllocator->Allocate(&pBuffer, requiredSize, &pUserContext);
    }
    QV_CATCH_BAD_ALLOC() // an application allocator that throws instead of answering null
    if (QV_UNLIKELY(pBuffer == nullptr))
        QV_THROW_EMPTY(BadAllocException);
    m_pBuffer = pBuffer;
    m_pUserContext = pUserContext;
    m_bufferSize = requiredSize;
    m_width = width;
    m_height = height;
    m_linePitch = linePitch;
    m_pixelFormat = pixelFormat;
}

void CQvImageBuffer::CreateBuffer(size_t width, size_t height, EQvPixelFormatNamingConvention_t pixelFormat,
                                  _EQvMemoryInitialization_t memoryInitialization)
{
    SetSize(width, height, pixelFormat, 0);
    if (m_pBuffer == nullptr)
        return;
    // The constant fills cover the whole block, not only the image.
    switch (memoryInitialization)
    {
    case QvMemoryInitialization_Zero:
        memset(m_pBuffer, 0, m_bufferSize);
        break;
    case QvMemoryInitialization_FF:
        memset(m_pBuffer, 0xFF, m_bufferSize);
        break;
    case QvMemoryInitialization_Chart:
    {
        const ChartWriter_t writer = GetChartWriter(m_pixelFormat);
        if (writer == nullptr || !writer(static_cast<IQvImageInside*>(this), memoryInitialization))
            memset(m_pBuffer, 0, m_bufferSize);
        break;
    }
    default:
        break;
    }
}

IQvImage* CQvImageBuffer::GetIQvImage()
{
    if (QV_UNLIKELY(m_pBuffer == nullptr))
        QV_THROW(RuntimeException, "There is no available image.");
    return static_cast<IQvImageInside*>(this);
}

void CQvImageBuffer::CopyImage(IQvImage* pSrc)
{
    auto* pSrcIQvImageInside = dynamic_cast<IQvImageInside*>(pSrc);
    QV_ASSERT(pSrcIQvImageInside != nullptr, "(pSrcIQvImageInside) != NULL");
    // Everything about the source is read before SetSize(): the source may be a view of this
    // very buffer (an in-place crop), whose parent geometry SetSize() is about to change.
    const EQvPixelFormatNamingConvention_t pixelFormat = pSrc->GetImagePixelFormat();
    const size_t width = pSrc->GetImageWidth();
    const size_t height = pSrc->GetImageHeight();
    const size_t srcLinePitch = pSrc->GetImageLinePitch();
    const size_t srcPlanePitch = pSrc->GetImagePlanePitch();
    const auto* pSrcBuffer = static_cast<const uint8_t*>(pSrc->GetImageBuffer());

    SetSize(width, height, pixelFormat, 0);
    const IQvPixelFormatInfo* pInfo = GetIQvPixelFormatInfo(pixelFormat);
    const size_t planeCount = pInfo->GetPlaneCount();
    // Bytes that hold pixels in one line. Padding after them is not copied: a view's last line
    // may end right where its parent's memory ends, well before one full pitch.
    const size_t lineBytes = pInfo->GetRequiredLinePitch(width, 1);
    auto* pDst = static_cast<uint8_t*>(m_pBuffer);

    // An in-place crop copies forwards within one block (the destination never lies after its
    // source), which CopyLines handles. Equal pitches copy the plane as one block.
    for (size_t plane = 0; plane < planeCount; ++plane)
    {
        if (srcLinePitch == m_linePitch)
            CopyLines(pDst, 0, pSrcBuffer, 0, (height - 1) * m_linePitch + lineBytes, 1);
        else
            CopyLines(pDst, m_linePitch, pSrcBuffer, srcLinePitch, lineBytes, height);
        pSrcBuffer += srcPlanePitch;
        pDst += height * m_linePitch;
    }
}

IQvImage* CQvImageBuffer::GetROIImage(size_t x, size_t y, size_t width, size_t height)
{
    if (!m_pROIImage)
    {
        try
        {
            m_pROIImage.reset(new CQvROIImage(static_cast<IQvImageInside*>(this)));
        }
        QV_CATCH_BAD_ALLOC()
    }
    m_pROIImage->SetROI(x, y, width, height);
    return m_pROIImage.get();
}

IQvPixelComponentValue* CQvImageBuffer::GetIQvPixelComponentValue(size_t x, size_t y)
{
    m_pixelComponent.SetPixelComponent(static_cast<IQvImageInside*>(this), x, y);
    return &m_pixelComponent;
}
} // namespace QvApi
