#pragma once

#include <cstdint>

#include <Base/GCString.h>
#include <GenApi/IPort.h>
#include <GenApi/NodeMapRef.h>
#include <GenTL/GenTL.h>
#include <QvApi/QvPort.h>

namespace QvApi
{
/**
 * \brief A module's port as the library sees it: the public port, the GenApi IPort its node
 *        map is connected to, and the chunk-data plumbing of the module's buffers.
 *
 * Owned by its module. Read()/Write() run under the node map's lock (any thread); the chunk
 * operations on the data stream's threads as its Part of the acquisition path decides.
 */
class IQvPortInside : public IQvPort, public GenApi::IPort
{
public:
    /// \return The GenTL port handle (the module's own handle, or the remote device's).
    virtual GenTL::PORT_HANDLE GetPortHandle() = 0;
    /**
     * \brief Points this port's chunk adapter at \a lengthBytes bytes of chunk payload at
     *        \a pBuffer (the adapter is made on first use, after the port's TL type).
     * \throws GenICam exceptions of the adapter for a bad layout; BadAllocException.
     */
    virtual void AttachChunkBuffer(uint8_t* pBuffer, int64_t lengthBytes) = 0;
    /// \brief Detaches the adapter from the buffer attached last; the adapter is kept.
    virtual void DetachChunkBuffer() = 0;
    /**
     * \brief Builds a separate node map from the branch under \a rootName of this port's
     *        description, connected to this port.
     * \param[out] nodeMap Receives the node map.
     */
    virtual void CreateSubTreeNodeMap(GenICam::gcstring rootName, GenApi::CNodeMapRef& nodeMap,
                                      bool doRenameToRoot) = 0;
    /// \brief Prepares the chunk factory from the "ChunkData" (or "ChunkDataControl") branch.
    virtual void CreateNodeMapFactoryForChunkData(bool doRenameToRoot) = 0;
    /// \brief Makes a per-buffer chunk node map (TLParamsLock set to 1 when writable).
    virtual void CreateSubTreeNodeMapForChunkData(GenApi::CNodeMapRef& nodeMap) = 0;
    virtual ~IQvPortInside() = default;
};
} // namespace QvApi
