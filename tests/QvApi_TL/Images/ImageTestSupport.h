#pragma once

// Shared by the image tests: library session, owning buffer handles, exception text checks and
// an allocator that guards its blocks.

#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
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

    void Allocate(void** ppBuffer, size_t size, void** ppContext) override
    {
        ++allocateCount;
        lastAllocateSize = size;
        if (refuse)
        {
            *ppBuffer = nullptr;
            *ppContext = nullptr;
            return;
        }
        auto block = std::make_unique<std::vector<uint8_t>>(size + 2 * kGuardBytes, kGuardValue);
        *ppBuffer = block->data() + kGuardBytes;
        *ppContext = block.get();
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
    int allocateCount = 0;
    int deallocateCount = 0;
    int deregisterCount = 0;
    size_t lastAllocateSize = 0;
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
