#pragma once

#include <cstdint>
#include <memory>

#include <Base/GCString.h>
#include <GenApi/ChunkAdapter.h>
#include <GenApi/Types.h>
#include <GenTL/GenTL.h>

#include "QvApi_TL/QvPortInfo.h"
#include "QvApi_TL/QvPortInside.h"
#include "QvApi_TL/QvPortURLInfo.h"
#include "QvSDKCommon/QvXMLFile.h"

namespace QvApi
{
class CQvGenTLLib;

/**
 * \brief One GenTL port: register access (the GenApi IPort of the module's node map), its URL
 *        and port information, its description loader (which owns the node map) and the chunk
 *        adapter of the buffers its module delivers.
 *
 * Owned by the module whose handle it wraps; the handle is the module's and is not closed here.
 * The node map is created on first use. Read()/Write() take no lock of their own: the node map
 * calls them under its lock. Node-map creation: one thread at a time (the module's owner).
 */
class QVAPI_API CQvPort : public IQvPortInside
{
public:
    /**
     * \param[in] pCQvGenTL         Producer binding; borrowed, must outlive the port.
     * \param[in] hPort             The port handle; must not be null.
     * \param[in] accessMode        RW for module ports; the remote device's follows the open
     *                              flags. Only WO and RW allow Write().
     * \param[in] nodeMapNamePrefix Device name of the node map, e.g. "RemoteDevice_<ID>".
     */
    CQvPort(CQvGenTLLib* pCQvGenTL, GenTL::PORT_HANDLE hPort, GenApi::EAccessMode accessMode,
            const GenICam::gcstring& nodeMapNamePrefix);
    /// Deletes the chunk adapter, then the description loader and with it the node map.
    ~CQvPort() override;
    CQvPort(const CQvPort&) = delete;
    CQvPort& operator=(const CQvPort&) = delete;

    // IQvPort
    uint32_t GetPortURLCount() override;
    uint32_t GetPortURLIndex() override;
    void SetPortURLIndex(uint32_t nURLIndex) override;
    IQvPortURLInfo* GetIQvPortURLInfo() override;
    GenApi::INodeMap* GetINodeMap() override;
    IQvPortInfo* GetIQvPortInfo() override;
    GenICam::gcstring GetXMLFileName() override;
    void SaveXMLFile(const GenICam::gcstring& fileName) override;

    // IQvPortInside
    GenTL::PORT_HANDLE GetPortHandle() override;
    void AttachChunkBuffer(uint8_t* pBuffer, int64_t lengthBytes) override;
    void DetachChunkBuffer() override;
    void CreateSubTreeNodeMap(GenICam::gcstring rootName, GenApi::CNodeMapRef& nodeMap, bool doRenameToRoot) override;
    void CreateNodeMapFactoryForChunkData(bool doRenameToRoot) override;
    void CreateSubTreeNodeMapForChunkData(GenApi::CNodeMapRef& nodeMap) override;

    // GenApi::IPort
    /**
     * \brief GCReadPort of \a lengthBytes bytes at \a address.
     * \throws CQvGenTLErrorException "%d = GCReadPort(0x%p, %I64d, 0x%p, 0x%p)" on failure, or
     *         with code 0 and "... Length:%I64d != %I64d" when fewer bytes came back.
     */
    void Read(void* pBuffer, int64_t address, int64_t lengthBytes) override;
    /**
     * \brief GCWritePort of \a lengthBytes bytes at \a address.
     * \throws GenICam::RuntimeException "Port is not writable." for a port opened RO, NA or NI,
     *         before the producer is called.
     * \throws CQvGenTLErrorException for a negative result, or with the (positive) result when
     *         fewer bytes were written.
     */
    void Write(const void* pBuffer, int64_t address, int64_t lengthBytes) override;
    GenApi::EAccessMode GetAccessMode() const override;

    /// \return The description loader (tests and the module's own use).
    CQvXMLFile& GetXMLFile() { return m_xmlFile; }
    /// \return The chunk adapter made by the first AttachChunkBuffer(), or null.
    GenApi::CChunkAdapter* GetChunkAdapter() const { return m_pChunkAdapter.get(); }

private:
    /// Loads and connects the node map from the selected URL unless it exists.
    void CreateNodeMap();

    CQvGenTLLib* const m_pCQvGenTL; // borrowed from the system, which outlives every port
    const GenTL::PORT_HANDLE m_hPort;
    CQvPortURLInfo m_portURLInfo;
    CQvPortInfo m_portInfo;
    std::unique_ptr<GenApi::CChunkAdapter> m_pChunkAdapter; // made on first use; reads m_xmlFile's node map
    const GenApi::EAccessMode m_accessMode;
    CQvXMLFile m_xmlFile;
};
} // namespace QvApi
