#pragma once

#include <QvApi/QvApiDefs.h>

namespace QvApi
{
/**
 * \brief Application memory for image buffers and stream buffers.
 *
 * The library calls Allocate() whenever it needs a block and Deallocate() with the same size
 * and context when it gives the block back. OnDeregister() tells that the library holds no more
 * reference to the allocator. Calls come from the thread that resizes, copies or destroys the
 * buffer; the allocator must outlive every buffer made with it.
 */
class IQvAllocator
{
public:
    /**
     * \brief Provides a block of \a size bytes.
     * \param[out] ppBuffer  Receives the block's address, or null when none can be had (the
     *                       library then throws BadAllocException).
     * \param[in]  size      Bytes wanted.
     * \param[out] ppContext Receives any pointer the allocator wants back on Deallocate(); the
     *                       image reports it as its user context.
     */
    virtual void Allocate(void** ppBuffer, size_t size, void** ppContext) = 0;
    /**
     * \brief Takes back a block that Allocate() provided.
     * \param[in] pBuffer  The block.
     * \param[in] size     The size it was allocated with.
     * \param[in] pContext The context Allocate() returned with it.
     */
    virtual void Deallocate(void* pBuffer, size_t size, void* pContext) = 0;
    /// The library no longer refers to this allocator.
    virtual void OnDeregister() = 0;

protected:
    ~IQvAllocator() = default;
};
} // namespace QvApi
