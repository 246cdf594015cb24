#pragma once

#include <stdint.h>

#include <Base/GCString.h>
#include <QvApi/QvApiDefs.h>

namespace QvApi
{
class IQvImage;

/**
 * \brief One channel at one bit depth: channel x 2^24 + bits x 2^16.
 *
 * Channels: 1 mono, 2 red, 3 green, 4 blue, 5 Gr and 6 Gb (the green sites of a Bayer cell on a
 * red row and on a blue row), 7 Y, 8 Cb, 9 Cr, 10 U, 11 V.
 */
enum EQvPixelComponent_t : uint32_t
{
    QvPixelComponent_Unknown = 0x00000000u,
    QvPixelComponent_Mono1 = 0x01010000u,
    QvPixelComponent_Mono2 = 0x01020000u,
    QvPixelComponent_Mono4 = 0x01040000u,
    QvPixelComponent_Mono8 = 0x01080000u,
    QvPixelComponent_Mono10 = 0x010A0000u,
    QvPixelComponent_Mono12 = 0x010C0000u,
    QvPixelComponent_Mono14 = 0x010E0000u,
    QvPixelComponent_Mono16 = 0x01100000u,
    QvPixelComponent_R4 = 0x02040000u,
    QvPixelComponent_R8 = 0x02080000u,
    QvPixelComponent_R10 = 0x020A0000u,
    QvPixelComponent_R12 = 0x020C0000u,
    QvPixelComponent_R14 = 0x020E0000u,
    QvPixelComponent_R16 = 0x02100000u,
    QvPixelComponent_G4 = 0x03040000u,
    QvPixelComponent_G8 = 0x03080000u,
    QvPixelComponent_G10 = 0x030A0000u,
    QvPixelComponent_G12 = 0x030C0000u,
    QvPixelComponent_G14 = 0x030E0000u,
    QvPixelComponent_G16 = 0x03100000u,
    QvPixelComponent_B4 = 0x04040000u,
    QvPixelComponent_B8 = 0x04080000u,
    QvPixelComponent_B10 = 0x040A0000u,
    QvPixelComponent_B12 = 0x040C0000u,
    QvPixelComponent_B14 = 0x040E0000u,
    QvPixelComponent_B16 = 0x04100000u,
    QvPixelComponent_Gr4 = 0x05040000u,
    QvPixelComponent_Gr8 = 0x05080000u,
    QvPixelComponent_Gr10 = 0x050A0000u,
    QvPixelComponent_Gr12 = 0x050C0000u,
    QvPixelComponent_Gr14 = 0x050E0000u,
    QvPixelComponent_Gr16 = 0x05100000u,
    QvPixelComponent_Gb4 = 0x06040000u,
    QvPixelComponent_Gb8 = 0x06080000u,
    QvPixelComponent_Gb10 = 0x060A0000u,
    QvPixelComponent_Gb12 = 0x060C0000u,
    QvPixelComponent_Gb14 = 0x060E0000u,
    QvPixelComponent_Gb16 = 0x06100000u,
    QvPixelComponent_Y8 = 0x07080000u,
    QvPixelComponent_Cb8 = 0x08080000u,
    QvPixelComponent_Cr8 = 0x09080000u,
    QvPixelComponent_U8 = 0x0A080000u,
    QvPixelComponent_V8 = 0x0B080000u
};

/**
 * \brief Name and depth of one pixel component.
 *
 * Records belong to the library's component table (built by QvApiInitialize(), destroyed by the
 * last QvApiTerminate()); never delete one. Immutable; any thread.
 */
class IQvPixelComponentInfo
{
public:
    /// \return The component code.
    virtual EQvPixelComponent_t GetValue() const = 0;
    /// \return The name, e.g. "Gr12".
    virtual GenICam::gcstring GetName() const = 0;
    /// \return The bit depth.
    virtual uint64_t GetBitCount() const = 0;

protected:
    ~IQvPixelComponentInfo() = default;
};

/**
 * \brief The components of one decoded pixel, as (component, raw value) pairs.
 *
 * An image hands out one such accessor (IQvImage::GetIQvPixelComponentValue()) and positions it
 * anew on every call; the accessor belongs to the image, never release or delete it. Decoding
 * and reading are serialised by a lock inside, but the list is that of the pixel decoded last:
 * callers sharing one image must not interleave a decode and the reads that follow it.
 */
class IQvPixelComponentValue
{
public:
    /// \return How many components the pixel decoded last has (1 mono or Bayer, 3 colour).
    virtual size_t GetCount() = 0;
    /**
     * \return The raw, unscaled sample of entry \a nIndex.
     * \throws OutOfRangeException unless nIndex < GetCount().
     */
    virtual uint64_t GetValue(size_t nIndex) = 0;
    /**
     * \return The component code of entry \a nIndex.
     * \throws OutOfRangeException unless nIndex < GetCount().
     */
    virtual EQvPixelComponent_t GetPixelComponent(size_t nIndex) = 0;
    /**
     * \brief Decodes pixel (x, y) of \a pIQvImage into the component list.
     * \param[in] pIQvImage The image, borrowed for the call only; must not be null.
     * \param[in] x         Column of the pixel.
     * \param[in] y         Row of the pixel.
     * \throws OutOfRangeException when x or y lies outside the image.
     * \throws RuntimeException "Not supported pixelformat %s" when no reader handles the format,
     *         or "Unknown pixelformat 0x%X" when the code is not a pixel format at all.
     */
    virtual void SetPixelComponent(IQvImage* pIQvImage, size_t x, size_t y) = 0;
    /**
     * \brief Stores \a value as component \a nIndex of pixel (x, y), then decodes that pixel.
     *
     * The index is the component's place in the list that SetPixelComponent() makes for the
     * pixel (B, G, R for BGR8; Y, Cb, Cr for YCbCr 4:2:2 ...). Chroma samples shared by a group
     * of pixels change for the whole group. Bits outside the written sample keep their value.
     * \param[in] pIQvImage The image, borrowed for the call only; must not be null.
     * \param[in] x         Column of the pixel.
     * \param[in] y         Row of the pixel.
     * \param[in] nIndex    Which component of the pixel.
     * \param[in] value     The raw sample to store.
     * \throws OutOfRangeException when x, y or nIndex lie outside their ranges, or value does
     *         not fit the component's bit depth.
     * \throws RuntimeException "Not supported pixelformat %s" for formats whose sample layout
     *         cannot be written without disturbing neighbouring pixels.
     */
    virtual void WriteValue(IQvImage* pIQvImage, size_t x, size_t y, size_t nIndex, uint64_t value) = 0;

protected:
    ~IQvPixelComponentValue() = default;
};
} // namespace QvApi
