#pragma once

// Shared by the image tests: library session, owning buffer handles, exception text checks and
// an allocator that guards its blocks.

#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <Base/GCException.h>
#include <QvApi/QvAllocator.h>
#include <QvApi/QvApiFunctions.h>
#include <QvApi/QvImage.h>
#include <QvApi/QvImageBuffer.h>
#include <QvApi/QvPixelComponent.h>
#include <QvApi/QvPixelFormat.h>

namespace QvApiTest
{
/// Every pixel format the library knows, in table order.
inline const std::vector<QvApi::EQvPixelFormatNamingConvention_t>& AllFormats()
{
    static const std::vector<QvApi::EQvPixelFormatNamingConvention_t> formats = {
    QvApi::QvPFNC_Mono1p,
    QvApi::QvPFNC_Mono2p,
    QvApi::QvPFNC_Mono4p,
    QvApi::QvPFNC_Mono8,
    QvApi::QvPFNC_Mono10,
    QvApi::QvPFNC_Mono10p,
    QvApi::QvPFNC_Mono12,
    QvApi::QvPFNC_Mono12p,
    QvApi::QvPFNC_Mono14,
    QvApi::QvPFNC_Mono14p,
    QvApi::QvPFNC_Mono16,
    QvApi::QvPFNC_BayerGR4p,
    QvApi::QvPFNC_BayerRG4p,
    QvApi::QvPFNC_BayerGB4p,
    QvApi::QvPFNC_BayerBG4p,
    QvApi::QvPFNC_BayerGR8,
    QvApi::QvPFNC_BayerGR10,
    QvApi::QvPFNC_BayerGR10p,
    QvApi::QvPFNC_BayerGR12,
    QvApi::QvPFNC_BayerGR12p,
    QvApi::QvPFNC_BayerGR14,
    QvApi::QvPFNC_BayerGR14p,
    QvApi::QvPFNC_BayerGR16,
    QvApi::QvPFNC_BayerRG8,
    QvApi::QvPFNC_BayerRG10,
    QvApi::QvPFNC_BayerRG10p,
    QvApi::QvPFNC_BayerRG12,
    QvApi::QvPFNC_BayerRG12p,
    QvApi::QvPFNC_BayerRG14,
    QvApi::QvPFNC_BayerRG14p,
    QvApi::QvPFNC_BayerRG16,
    QvApi::QvPFNC_BayerGB8,
    QvApi::QvPFNC_BayerGB10,
    QvApi::QvPFNC_BayerGB10p,
    QvApi::QvPFNC_BayerGB12,
    QvApi::QvPFNC_BayerGB12p,
    QvApi::QvPFNC_BayerGB14,
    QvApi::QvPFNC_BayerGB14p,
    QvApi::QvPFNC_BayerGB16,
    QvApi::QvPFNC_BayerBG8,
    QvApi::QvPFNC_BayerBG10,
    QvApi::QvPFNC_BayerBG10p,
    QvApi::QvPFNC_BayerBG12,
    QvApi::QvPFNC_BayerBG12p,
    QvApi::QvPFNC_BayerBG14,
    QvApi::QvPFNC_BayerBG14p,
    QvApi::QvPFNC_BayerBG16,
    QvApi::QvPFNC_GVSP_Mono10Packed,
    QvApi::QvPFNC_GVSP_Mono12Packed,
    QvApi::QvPFNC_GVSP_BayerGR10Packed,
    QvApi::QvPFNC_GVSP_BayerGR12Packed,
    QvApi::QvPFNC_GVSP_BayerRG10Packed,
    QvApi::QvPFNC_GVSP_BayerRG12Packed,
    QvApi::QvPFNC_GVSP_BayerGB10Packed,
    QvApi::QvPFNC_GVSP_BayerGB12Packed,
    QvApi::QvPFNC_GVSP_BayerBG10Packed,
    QvApi::QvPFNC_GVSP_BayerBG12Packed,
    QvApi::QvPFNC_RGB8,
    QvApi::QvPFNC_BGR8,
    QvApi::QvPFNC_BGR10,
    QvApi::QvPFNC_BGR12,
    QvApi::QvPFNC_BGR14,
    QvApi::QvPFNC_BGR16,
    QvApi::QvPFNC_RGBa8,
    QvApi::QvPFNC_BGRa8,
    QvApi::QvPFNC_BGRa10,
    QvApi::QvPFNC_BGRa12,
    QvApi::QvPFNC_BGRa14,
    QvApi::QvPFNC_BGRa16,
    QvApi::QvPFNC_RGB10p32,
    QvApi::QvPFNC_CBGR10p32,
    QvApi::QvPFNC_YCbCr8,
    QvApi::QvPFNC_YCbCr411_8,
    QvApi::QvPFNC_YCbCr422_8,
    QvApi::QvPFNC_YCbCr709_422_8,
    QvApi::QvPFNC_RGB8_Planar,
    QvApi::QvPFNC_RGB10_Planar,
    QvApi::QvPFNC_RGB12_Planar,
    QvApi::QvPFNC_RGB16_Planar,
    QvApi::QvPFNC_RGB16,
    QvApi::QvPFNC_BGR10p,
    QvApi::QvPFNC_BGR12p,
    QvApi::QvPFNC_RGB10p,
    QvApi::QvPFNC_RGB12p,
    QvApi::QvPFNC_YCbCr601_422_8,
    QvApi::QvPFNC_YCbCr411_8_CbYYCrYY,
    QvApi::QvPFNC_YCbCr601_411_8_CbYYCrYY,
    QvApi::QvPFNC_YCbCr709_411_8_CbYYCrYY,
    QvApi::QvPFNC_YCbCr422_8_CbYCrY,
    QvApi::QvPFNC_YCbCr601_422_8_CbYCrY,
    QvApi::QvPFNC_YCbCr709_422_8_CbYCrY,
    QvApi::QvPFNC_YCbCr8_CbYCr,
    QvApi::QvPFNC_YCbCr601_8_CbYCr,
    QvApi::QvPFNC_YCbCr709_8_CbYCr,
    QvApi::QvPFNC_YUV411_8_UYYVYY,
    QvApi::QvPFNC_YUV422_8_UYVY,
    QvApi::QvPFNC_YUV8_UYV,
    QvApi::QvPFNC_YUV422_8};
    return formats;
}

/// Initialises the library for one test and terminates it afterwards.
class ImageTest : public ::testing::Test
{
protected:
    void SetUp() override { QvApi::QvApiInitialize(QVAPI_VERSION); }
    void TearDown() override { QvApi::QvApiTerminate(); }
};

struct ReleaseBuffer
{
    void operator()(QvApi::IQvImageBufferReleasable* p) const { p->Release(); }
};
using BufferPtr = std::unique_ptr<QvApi::IQvImageBufferReleasable, ReleaseBuffer>;

inline BufferPtr MakeBuffer(QvApi::IQvAllocator* pAllocator = nullptr)
{
    return BufferPtr(QvApi::CreateIQvImageBuffer(pAllocator));
}

/// The image face of a buffer.
inline QvApi::IQvImage* ImageOf(const BufferPtr& buffer)
{
    return buffer->GetIQvImage();
}

inline uint8_t* BytesOf(QvApi::IQvImage* pImage)
{
    return static_cast<uint8_t*>(pImage->GetImageBuffer());
}

/// Runs \a call and returns the description of the E it throws; fails the test otherwise.
template <typename E>
std::string DescriptionOf(const std::function<void()>& call)
{
    try
    {
        call();
    }
    catch (const E& e)
    {
        return e.GetDescription();
    }
    catch (const std::exception& e)
    {
        ADD_FAILURE() << "unexpected exception: " << e.what();
        return "<wrong exception>";
    }
    ADD_FAILURE() << "nothing thrown";
    return "<nothing thrown>";
}

/// Components of pixel (x, y) of \a pImage as (code, value) pairs.
inline std::vector<std::pair<uint32_t, uint64_t>> ComponentsAt(QvApi::IQvImage* pImage, size_t x, size_t y)
{
    QvApi::IQvPixelComponentValue* pValue = pImage->GetIQvPixelComponentValue(x, y);
    std::vector<std::pair<uint32_t, uint64_t>> components;
    for (size_t i = 0; i < pValue->GetCount(); ++i)
        components.emplace_back(pValue->GetPixelComponent(i), pValue->GetValue(i));
    return components;
}

/**
 * An application allocator that surrounds each block with guard bytes, records its calls and
 * can refuse. Guards are checked on Deallocate() and by GuardsIntact().
 */
class GuardedAllocator : public QvApi::IQvAllocator
{
public:
    static constexpr size_t kGuardBytes = 64;
    static constexpr uint8_t kGuardValue = 0xA5;
    static constexpr size_t kLargestBlock = size_t(1) << 30; // larger requests are refused

    void Allocate(void** ppBuffer, size_t size, void** ppContext) override
    {
        ++allocateCount;
        lastAllocateSize = size;
        if (refuse || size > kLargestBlock)
        {
            if (throwWhenRefusing)
                throw std::bad_alloc();
            *ppBuffer = nullptr;
            *ppContext = nullptr;
            return;
        }
        auto block = std::make_unique<std::vector<uint8_t>>(size + 2 * kGuardBytes, kGuardValue);
        *ppBuffer = block->data() + kGuardBytes;
        *ppContext = block.get();
        lastAllocateContext = block.get();
        m_blocks.push_back(std::move(block));
    }

    void Deallocate(void* pBuffer, size_t size, void* pContext) override
    {
        ++deallocateCount;
        lastDeallocateSize = size;
        lastDeallocateContext = pContext;
        for (auto it = m_blocks.begin(); it != m_blocks.end(); ++it)
        {
            if (it->get() == pContext)
            {
                EXPECT_EQ((*it)->data() + kGuardBytes, pBuffer);
                EXPECT_TRUE(Intact(**it)) << "guard bytes overwritten";
                m_blocks.erase(it);
                return;
            }
        }
        ADD_FAILURE() << "Deallocate of a block this allocator did not provide";
    }

    void OnDeregister() override { ++deregisterCount; }

    bool GuardsIntact() const
    {
        for (const auto& block : m_blocks)
            if (!Intact(*block))
                return false;
        return true;
    }
    size_t LiveBlocks() const { return m_blocks.size(); }

    bool refuse = false;
    bool throwWhenRefusing = false; // refuse with std::bad_alloc instead of a null block
    int allocateCount = 0;
    int deallocateCount = 0;
    int deregisterCount = 0;
    size_t lastAllocateSize = 0;
    void* lastAllocateContext = nullptr;
    size_t lastDeallocateSize = 0;
    void* lastDeallocateContext = nullptr;

private:
    static bool Intact(const std::vector<uint8_t>& block)
    {
        const size_t size = block.size();
        for (size_t i = 0; i < kGuardBytes; ++i)
            if (block[i] != kGuardValue || block[size - 1 - i] != kGuardValue)
                return false;
        return true;
    }

    std::vector<std::unique_ptr<std::vector<uint8_t>>> m_blocks;
};
} // namespace QvApiTest
