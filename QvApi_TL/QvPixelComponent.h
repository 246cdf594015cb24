#pragma once

#include <stdint.h>

#include <vector>

#include <Base/GCSynch.h>
#include <QvApi/QvPixelComponent.h>

#include "QvApi_TL/QvPixelComponentValueInside.h"

namespace QvApi
{
class IQvImage;

/// One decoded component of a pixel: which channel at which depth, and its raw sample.
struct SPIXE_COMPONENT_INFO
{
    EQvPixelComponent_t component;
    uint64_t value;
};

/**
 * \brief Decodes (and writes) the components of one pixel of any image of a known format.
 *
 * Each image owns one and hands it out from GetIQvPixelComponentValue(); an ROI view hands out
 * its root image's. The image is borrowed for the length of each call only. Any thread: decoding
 * and reading are serialised by m_lock, but the component list is that of the pixel decoded
 * last, so one caller's decode-then-read must not interleave with another's.
 *
 * The formats are dispatched to one sample locator per family (raw, PFNC packed, GigE Vision
 * packed, interleaved colour, 10-bit in 32, packed colour, planar, YCbCr/YUV); reading and
 * writing share the locators, so a written sample is where the reader looks for it.
 */
class CQvPixelComponent final : public IQvPixelComponentValueInside
{
public:
    /// \throws std::bad_alloc.
    CQvPixelComponent();
    ~CQvPixelComponent() = default;
    CQvPixelComponent(const CQvPixelComponent&) = delete;
    CQvPixelComponent& operator=(const CQvPixelComponent&) = delete;

    size_t GetCount() override;
    uint64_t GetValue(size_t nIndex) override;
    EQvPixelComponent_t GetPixelComponent(size_t nIndex) override;
    void SetPixelComponent(IQvImage* pIQvImage, size_t x, size_t y) override;
    void WriteValue(IQvImage* pIQvImage, size_t x, size_t y, size_t nIndex, uint64_t value) override;

private:
    GenICam::CLock m_lock;
    // Guarded by m_lock.
    std::vector<SPIXE_COMPONENT_INFO> m_components; // of the pixel decoded last; capacity kept
};
} // namespace QvApi
