#include "virtual/VirtualConnection.h"

#include "modules/GenTLError.h"

namespace QvGenTL {

CVirtualConnection::CVirtualConnection(CVirtualCamera& camera, GenTL::DEVICE_ACCESS_FLAGS flags)
    : m_camera(camera), m_flags(flags)
{
}

CVirtualConnection::~CVirtualConnection()
{
    Close();
}

void CVirtualConnection::CheckOpen() const
{
    if (m_closed)
        ThrowGenTL(GenTL::GC_ERR_INVALID_HANDLE, "The device is closed");
}

void CVirtualConnection::ReadRemote(uint64_t address, void* pBuffer, size_t size)
{
    CheckOpen();
    m_camera.ReadRegister(address, pBuffer, size);
}

void CVirtualConnection::WriteRemote(uint64_t address, const void* pBuffer, size_t size)
{
    CheckOpen();
    m_camera.WriteRegister(address, pBuffer, size);
}

void CVirtualConnection::SetTLParamsLocked(bool locked)
{
    CheckOpen();
    m_camera.SetTLParamsLocked(locked);
}

void CVirtualConnection::StartStreaming(IStreamSink* sink)
{
    CheckOpen();
    m_camera.StartStreaming(sink);
}

void CVirtualConnection::StopStreaming(bool kill)
{
    if (!m_closed)
        m_camera.StopStreaming(kill);
}

void CVirtualConnection::Close()
{
    if (!m_closed.exchange(true))
        m_camera.Disconnect();
}

} // namespace QvGenTL
