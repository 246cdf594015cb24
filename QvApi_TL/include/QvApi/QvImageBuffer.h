#pragma once

#include <QvApi/QvApiDefs.h>
#include <QvApi/QvImage.h>
#include <QvApi/QvPixelFormat.h>
#include <QvApi/QvReleasable.h>

namespace QvApi
{
/// How CreateBuffer() fills new memory.
enum _EQvMemoryInitialization_t : uint32_t
{
    QvMemoryInitialization_None = 0, ///< Leave the memory as it is.
    QvMemoryInitialization_Zero = 1, ///< Every byte 0.
    QvMemoryInitialization_FF = 2,   ///< Every byte 0xFF.
    QvMemoryInitialization_Chart = 3 ///< The format's test chart; zero bytes where there is none.
};
typedef _EQvMemoryInitialization_t EQvMemoryInitialization_t;

/**
 * \brief An application-owned image: memory from an allocator plus geometry and format.
 *
 * One thread at a time; its views and component accessor share that rule.
 */
class IQvImageBuffer
{
public:
    /**
     * \brief Sizes the buffer (as SetSize() with the format's own pitch alignment), then fills
     *        the whole block, not only the image, as \a memoryInitialization says.
     * \throws As SetSize().
     */
    virtual void CreateBuffer(size_t width, size_t height, EQvPixelFormatNamingConvention_t pixelFormat,
                              _EQvMemoryInitialization_t memoryInitialization) = 0;
    /**
     * \return The image face of this buffer (the same object; do not release it separately).
     * \throws RuntimeException "There is no available image." while there is no memory.
     */
    virtual IQvImage* GetIQvImage() = 0;
    /**
     * \brief Resizes this buffer to the source's geometry and format and copies its pixels.
     *
     * The destination pitch is the format's default; lines are copied with the smaller of the
     * two pitches. The source may be a view of this buffer (an in-place crop).
     * \param[in] pSrc An image made by this library (image buffer, view, stream buffer image).
     * \throws As SetSize().
     */
    virtual void CopyImage(IQvImage* pSrc) = 0;
    /**
     * \brief Gives the buffer a geometry and format, reusing the memory when it is big enough.
     *
     * Memory is not cleared. A reallocation ends the ROI view handed out before.
     * \param[in] width              Pixels per line.
     * \param[in] height             Lines.
     * \param[in] pixelFormat        Format of the pixels.
     * \param[in] linePitchAlignment Byte multiple of the line pitch; 0 takes the format's own.
     * \throws OutOfRangeException when width or height is 0.
     * \throws RuntimeException "Unknown pixelformat 0x%X" for a code the library does not know.
     * \throws BadAllocException when the allocator provides no memory; the buffer is then empty.
     */
    virtual void SetSize(size_t width, size_t height, EQvPixelFormatNamingConvention_t pixelFormat,
                         size_t linePitchAlignment) = 0;
    /// \return True while the buffer holds memory.
    virtual bool HasImageBuffer() = 0;

protected:
    ~IQvImageBuffer() = default;
};

/**
 * \brief An image buffer as a factory returns it: Release() frees its memory through the
 *        allocator and then tells an application allocator that it is no longer used.
 */
class IQvImageBufferReleasable : public IQvImageBuffer, public IQvReleasable
{
protected:
    ~IQvImageBufferReleasable() = default;
};
} // namespace QvApi
