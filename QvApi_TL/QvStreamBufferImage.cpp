#include "QvApi_TL/QvStreamBufferImage.h"

#include <cstdint>

#include <GenApi/IEnumeration.h>
#include <GenApi/IInteger.h>
#include <GenApi/INode.h>
#include <GenApi/INodeMap.h>
#include <QvApi/QvApiFunctions.h>

#include "QvApi_TL/QvDeviceInside.h"
#include "QvApi_TL/QvInterfaceInside.h"
#include "QvApi_TL/QvStreamBuffer.h"
#include "QvSDKCommon/QvROIImage.h"
#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
namespace
{
// PFNC codes of the CoaXPress pixel formats, by class, variant and size (1..5); 0 marks a
// combination without PFNC counterpart.
constexpr uint32_t kNone = 0;
constexpr uint32_t kCxpMono[5] = {QvPFNC_Mono8, QvPFNC_Mono10, QvPFNC_Mono12, QvPFNC_Mono14, QvPFNC_Mono16};
// Bayer has no 14-bit entry on purpose.
constexpr uint32_t kCxpBayer[4][5] = {
    {QvPFNC_BayerGR8, QvPFNC_BayerGR10, QvPFNC_BayerGR12, kNone, QvPFNC_BayerGR16},
    {QvPFNC_BayerRG8, QvPFNC_BayerRG10, QvPFNC_BayerRG12, kNone, QvPFNC_BayerRG16},
    {QvPFNC_BayerGB8, QvPFNC_BayerGB10, QvPFNC_BayerGB12, kNone, QvPFNC_BayerGB16},
    {QvPFNC_BayerBG8, QvPFNC_BayerBG10, QvPFNC_BayerBG12, kNone, QvPFNC_BayerBG16},
};
} // namespace

// The image getters' answers for the current fill, each asked once (failures are not kept, so
// they repeat as the getter would). Used by one thread at a time, like the image.
class CQvStreamBufferImage::CFillGeometry final : public IQvImageInside
{
public:
    explicit CFillGeometry(CQvStreamBufferImage* pImage) : m_pImage(pImage) {}

    size_t GetImageWidth() override { return Known(m_width, kWidth, [this] { return m_pImage->GetImageWidth(); }); }
    size_t GetImageHeight() override
    {
        return Known(m_height, kHeight, [this] { return m_pImage->GetImageHeight(); });
    }
    size_t GetImageLinePitch() override
    {
        return Known(m_linePitch, kLinePitch, [this] { return m_pImage->GetImageLinePitch(); });
    }
    size_t GetImagePlanePitch() override { return GetImageLinePitch() * GetImageHeight(); }
    EQvPixelFormatNamingConvention_t GetImagePixelFormat() override
    {
        return Known(m_format, kFormat, [this] { return m_pImage->GetImagePixelFormat(); });
    }
    void* GetImageBuffer() override
    {
        return Known(m_pPixels, kBuffer, [this] { return m_pImage->GetImageBuffer(); });
    }
    void* GetUserContext() override { return m_pImage->GetUserContext(); }
    IQvImage* GetROIImage(size_t x, size_t y, size_t width, size_t height) override
    {
        return m_pImage->GetROIImage(x, y, width, height);
    }
    IQvPixelComponentValue* GetIQvPixelComponentValue(size_t x, size_t y) override
    {
        return m_pImage->GetIQvPixelComponentValue(x, y);
    }

private:
    enum : unsigned
    {
        kWidth = 1,
        kHeight = 2,
        kLinePitch = 4,
        kFormat = 8,
        kBuffer = 16
    };
    template <class T, class Fetch>
    T Known(T& value, unsigned bit, Fetch fetch)
    {
        const uint64_t fill = m_pImage->m_fill.load(std::memory_order_acquire);
        if (fill != m_knownFill)
        {
            m_known = 0;
            m_knownFill = fill;
        }
        if ((m_known & bit) == 0)
        {
            value = fetch();
            m_known |= bit;
        }
        return value;
    }

    CQvStreamBufferImage* const m_pImage;
    uint64_t m_knownFill = 0;
    unsigned m_known = 0; // the k... bits of the values below that belong to m_knownFill
    size_t m_width = 0;
    size_t m_height = 0;
    size_t m_linePitch = 0;
    EQvPixelFormatNamingConvention_t m_format{};
    void* m_pPixels = nullptr;
};

CQvStreamBufferImage::CQvStreamBufferImage(CQvStreamBuffer* pBuffer) : m_pBuffer(pBuffer) {}

CQvStreamBufferImage::~CQvStreamBufferImage() = default;

void CQvStreamBufferImage::ReleaseROIImage()
{
    m_pROIImage.reset();
}

EQvPixelFormatNamingConvention_t CQvStreamBufferImage::MapCoaXPressPixelFormat(uint64_t cxpPixelFormat)
{
    const uint32_t pixelClass = static_cast<uint32_t>((cxpPixelFormat >> 8) & 0xF);
    const uint32_t variant = static_cast<uint32_t>((cxpPixelFormat >> 4) & 0xF);
    const uint32_t size = static_cast<uint32_t>(cxpPixelFormat & 0xF);
    uint32_t code = kNone;
    if (pixelClass == 1 && size >= 1 && size <= 5)
        code = kCxpMono[size - 1]; // every variant
    else if (pixelClass == 3 && variant >= 1 && variant <= 4 && size >= 1 && size <= 5)
        code = kCxpBayer[variant - 1][size - 1];
    else if (size == 1 && pixelClass == 4 && variant == 0)
        code = QvPFNC_RGB8;
    else if (size == 1 && pixelClass == 5 && variant == 0)
        code = QvPFNC_RGBa8;
    else if (size == 1 && pixelClass == 7 && variant == 2)
        code = QvPFNC_YCbCr601_422_8;
    else if (size == 1 && pixelClass == 8 && variant == 2)
        code = QvPFNC_YCbCr709_422_8;
    return static_cast<EQvPixelFormatNamingConvention_t>(code != kNone ? code : QvPFNC_Invalid);
}

size_t CQvStreamBufferImage::ChunkInteger(const char* name, std::atomic<GenApi::IInteger*>& cache)
{
    GenApi::IInteger* pNode = cache.load(std::memory_order_acquire);
    if (pNode == nullptr)
    {
        GenApi::INodeMap* pChunkNodeMap = m_pBuffer->GetChunkINodeMap();
        if (pChunkNodeMap == nullptr)
            return 0;
        pNode = dynamic_cast<GenApi::IInteger*>(pChunkNodeMap->GetNode(name));
        if (pNode == nullptr)
            return 0;
        cache.store(pNode, std::memory_order_release);
    }
    try
    {
        return static_cast<size_t>(pNode->GetValue());
    }
    catch (const GenICam::GenericException&)
    {
        return 0; // the chunk is not in this buffer
    }
}

size_t CQvStreamBufferImage::GetImageWidth()
{
    QV_ASSERT(m_pBuffer->GetBufferHandle() != nullptr, "m_hStreamBuffer != NULL");
    try
    {
        return m_pBuffer->Info().GetWidth();
    }
    catch (const GenICam::GenericException&)
    {
    }
    return ChunkInteger("ChunkWidth", m_pChunkWidth);
}

size_t CQvStreamBufferImage::GetImageHeight()
{
    QV_ASSERT(m_pBuffer->GetBufferHandle() != nullptr, "m_hStreamBuffer != NULL");
    try
    {
        const size_t delivered = m_pBuffer->Info().GetDeliverdImageHeight();
        if (delivered != 0)
            return delivered;
    }
    catch (const GenICam::GenericException&)
    {
    }
    try
    {
        return m_pBuffer->Info().GetHeight();
    }
    catch (const GenICam::GenericException&)
    {
    }
    return ChunkInteger("ChunkHeight", m_pChunkHeight);
}

size_t CQvStreamBufferImage::GetImageLinePitch()
{
    QV_ASSERT(m_pBuffer->GetBufferHandle() != nullptr, "m_hStreamBuffer != NULL");
    const IQvPixelFormatInfo* pFormat = GetIQvPixelFormatInfo(GetImagePixelFormat());
    size_t linePitch = static_cast<size_t>(pFormat->GetRequiredLinePitch(GetImageWidth(), 1));
    try
    {
        linePitch += m_pBuffer->Info().GetXPadding();
    }
    catch (const GenICam::GenericException&)
    {
    }
    return linePitch;
}

size_t CQvStreamBufferImage::GetImagePlanePitch()
{
    QV_ASSERT(m_pBuffer->GetBufferHandle() != nullptr, "m_hStreamBuffer != NULL");
    return GetImageLinePitch() * GetImageHeight();
}

EQvPixelFormatNamingConvention_t CQvStreamBufferImage::GetImagePixelFormat()
{
    QV_ASSERT(m_pBuffer->GetBufferHandle() != nullptr, "m_hStreamBuffer != NULL");
    try
    {
        const uint64_t pixelFormat = m_pBuffer->Info().GetPixelFormat();
        const uint64_t nPixelFormatNamespace = m_pBuffer->Info().GetPixelFormatNameSpace();
        QV_ASSERT(nPixelFormatNamespace <= UINT32_MAX, "nPixelFormatNamespace <= UINT32_MAX");
        if (nPixelFormatNamespace == GenTL::PIXELFORMAT_NAMESPACE_PFNC_32BIT)
            return static_cast<EQvPixelFormatNamingConvention_t>(pixelFormat & 0xFFFFFFFFu);
        uint32_t interfaceType = m_interfaceType.load(std::memory_order_relaxed);
        if (interfaceType == 0)
        {
            interfaceType =
                m_pBuffer->GetIQvDataStreamInside()->GetIQvDeviceInside()->GetIQvInterfaceInside()->GetQvInterfaceType();
            m_interfaceType.store(interfaceType, std::memory_order_relaxed);
        }
        if (interfaceType != QvInterfaceType_CoaXPress)
            return static_cast<EQvPixelFormatNamingConvention_t>(pixelFormat & 0xFFFFFFFFu);
        return MapCoaXPressPixelFormat(pixelFormat);
    }
    catch (const GenICam::GenericException&)
    {
        // A producer that cannot tell: the camera may say it in the chunk data.
        GenApi::INodeMap* pChunkNodeMap = m_pBuffer->GetChunkINodeMap();
        GenApi::IEnumeration* pChunkPixelFormat =
            pChunkNodeMap != nullptr ? dynamic_cast<GenApi::IEnumeration*>(pChunkNodeMap->GetNode("ChunkPixelFormat"))
                                     : nullptr;
        if (pChunkPixelFormat == nullptr)
            throw;
        return static_cast<EQvPixelFormatNamingConvention_t>(
            static_cast<uint64_t>(pChunkPixelFormat->GetIntValue()) & 0xFFFFFFFFu);
    }
}

void* CQvStreamBufferImage::GetImageBuffer()
{
    QV_ASSERT(m_pBuffer->GetBufferHandle() != nullptr, "m_hStreamBuffer != NULL");
    uint8_t* pBase = static_cast<uint8_t*>(m_pBuffer->Info().GetBaseAddress());
    try
    {
        return pBase + m_pBuffer->Info().GetImageOffset();
    }
    catch (const GenICam::GenericException&)
    {
        return pBase;
    }
}

void* CQvStreamBufferImage::GetUserContext()
{
    return m_pBuffer->Info().GetUserPtr();
}

CQvStreamBufferImage::CFillGeometry& CQvStreamBufferImage::FillGeometry()
{
    if (m_pFillGeometry == nullptr)
    {
        try
        {
            m_pFillGeometry.reset(new CFillGeometry(this));
        }
        QV_CATCH_BAD_ALLOC()
    }
    return *m_pFillGeometry;
}

IQvImage* CQvStreamBufferImage::GetROIImage(size_t x, size_t y, size_t width, size_t height)
{
    if (m_pROIImage == nullptr)
    {
        try
        {
            m_pROIImage.reset(new CQvROIImage(static_cast<IQvImageInside*>(&FillGeometry())));
        }
        QV_CATCH_BAD_ALLOC()
    }
    m_pROIImage->SetROI(x, y, width, height);
    return m_pROIImage.get();
}

IQvPixelComponentValue* CQvStreamBufferImage::GetIQvPixelComponentValue(size_t x, size_t y)
{
    m_pixelComponent.SetPixelComponent(static_cast<IQvImageInside*>(&FillGeometry()), x, y);
    return &m_pixelComponent;
}
} // namespace QvApi
