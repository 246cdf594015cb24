#pragma once

// Shared by the acquisition tests, the soak test and the benchmark: cameras of libqvgentl.cti
// opened through the SDK, their features set by name, and application-side test doubles.

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <string>
#include <vector>

#include <GenApi/GenApi.h>
#include <QvApi_TL.h>
#include <QvGenTL/VirtualCamera.h>

namespace QvAcquisitionTest
{
/// The camera's node map.
inline GenApi::INodeMap& Remote(QvApi::IQvDevice* pDevice)
{
    return *pDevice->GetRemoteIQvPort()->GetINodeMap();
}
inline void SetInteger(QvApi::IQvDevice* pDevice, const char* name, int64_t value)
{
    GenApi::CIntegerPtr(Remote(pDevice).GetNode(name))->SetValue(value);
}
inline int64_t GetInteger(QvApi::IQvDevice* pDevice, const char* name)
{
    return GenApi::CIntegerPtr(Remote(pDevice).GetNode(name))->GetValue();
}
inline void SetFloat(QvApi::IQvDevice* pDevice, const char* name, double value)
{
    GenApi::CFloatPtr(Remote(pDevice).GetNode(name))->SetValue(value);
}
inline void SetBoolean(QvApi::IQvDevice* pDevice, const char* name, bool value)
{
    GenApi::CBooleanPtr(Remote(pDevice).GetNode(name))->SetValue(value);
}
inline void SetEnum(QvApi::IQvDevice* pDevice, const char* name, const char* entry)
{
    GenApi::CEnumerationPtr(Remote(pDevice).GetNode(name))->FromString(entry);
}
inline void Execute(QvApi::IQvDevice* pDevice, const char* name)
{
    GenApi::CCommandPtr(Remote(pDevice).GetNode(name))->Execute();
}

/// Paces the camera at \a frameRateHz with the frame stamp pattern (frame ID readable from the image).
inline void PaceCamera(QvApi::IQvDevice* pDevice, double frameRateHz, const char* pattern = "FrameCounter")
{
    SetEnum(pDevice, "TestPattern", pattern);
    SetFloat(pDevice, "ExposureTime", 20.0);
    if (frameRateHz > 0)
    {
        SetBoolean(pDevice, "AcquisitionFrameRateEnable", true);
        SetFloat(pDevice, "AcquisitionFrameRate", frameRateHz);
    }
    else
    {
        SetBoolean(pDevice, "AcquisitionFrameRateEnable", false);
    }
}

/// Turns chunk mode on with every chunk of the virtual camera.
inline void EnableAllChunks(QvApi::IQvDevice* pDevice)
{
    SetBoolean(pDevice, "ChunkModeActive", true);
    for (const char* chunk : {"Timestamp", "FrameID", "Width", "Height", "OffsetX", "OffsetY", "PixelFormat"})
    {
        SetEnum(pDevice, "ChunkSelector", chunk);
        SetBoolean(pDevice, "ChunkEnable", true);
    }
}

/**
 * \brief One system of libqvgentl.cti with one open camera per interface, in interface order.
 *        The library is initialised for the session's life.
 */
class CCameraSession
{
public:
    explicit CCameraSession(uint32_t interfaceMask = QvApi::QvInterfaceType_All)
    {
        QvApi::QvApiInitialize(QVAPI_VERSION);
        m_system.Reset(QvApi::CreateIQvSystem(QvApi::QvSystemVendor_Default,
                                              static_cast<QvApi::_EQvInterfaceType_t>(interfaceMask)));
        for (size_t i = 0; i < m_system->GetInterfaceCount(); ++i)
        {
            QvApi::IQvInterface* pInterface = m_system->GetIQvInterface(i);
            for (size_t d = 0; d < pInterface->GetDeviceCount(); ++d)
            {
                m_devices.emplace_back(pInterface->CreateIQvDevice(d, GenTL::DEVICE_ACCESS_CONTROL));
                m_tlTypes.push_back(pInterface->GetIQvInterfaceInfo()->GetTLType().c_str());
            }
        }
    }
    ~CCameraSession()
    {
        m_devices.clear(); // devices before the system
        m_system.Reset();
        QvApi::QvApiTerminate();
    }
    CCameraSession(const CCameraSession&) = delete;
    CCameraSession& operator=(const CCameraSession&) = delete;

    size_t GetDeviceCount() const { return m_devices.size(); }
    QvApi::IQvDeviceReleasable* Device(size_t index) { return m_devices.at(index).Get(); }
    const std::string& TLType(size_t index) const { return m_tlTypes.at(index); }
    /// The first camera on an interface of type \a tlType ("U3V", "GEV", "CXP"), or null.
    QvApi::IQvDeviceReleasable* Device(const std::string& tlType)
    {
        for (size_t i = 0; i < m_devices.size(); ++i)
        {
            if (m_tlTypes[i] == tlType)
                return m_devices[i].Get();
        }
        return nullptr;
    }
    QvApi::IQvSystem* System() { return m_system.Get(); }

private:
    QvApi::CIQvSystemPtr m_system;
    std::vector<QvApi::CIQvDevicePtr> m_devices;
    std::vector<std::string> m_tlTypes;
};

/// The frame ID the FrameCounter pattern stamped into a Mono8 buffer.
inline uint64_t StampOf(QvApi::IQvStreamBuffer* pBuffer)
{
    QvApi::IQvImage* pImage = pBuffer->GetIQvImage();
    return QvVirtualCamera::DecodeFrameStampMono8(static_cast<const uint8_t*>(pImage->GetImageBuffer()),
                                                  static_cast<uint32_t>(pImage->GetImageWidth()));
}

/// An application allocator that counts and checks what the library asks for.
class CCountingAllocator : public QvApi::IQvAllocator
{
public:
    void Allocate(void** ppBuffer, size_t size, void** ppContext) override
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        void* p = nullptr;
        if (!m_bFail && posix_memalign(&p, 4096, size) != 0)
            p = nullptr;
        *ppBuffer = p;
        *ppContext = p != nullptr ? reinterpret_cast<void*>(reinterpret_cast<uintptr_t>(p) ^ kContextKey) : nullptr;
        if (p != nullptr)
        {
            ++m_allocated;
            m_bytes += size;
        }
    }
    void Deallocate(void* pBuffer, size_t size, void* pContext) override
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (pContext != reinterpret_cast<void*>(reinterpret_cast<uintptr_t>(pBuffer) ^ kContextKey))
            ++m_badContexts;
        ++m_deallocated;
        m_bytes -= size;
        free(pBuffer);
    }
    void OnDeregister() override { ++m_deregistered; }

    static constexpr uintptr_t kContextKey = 0x5A5A5A5A;
    std::mutex m_mutex;
    bool m_bFail = false;
    int m_allocated = 0;
    int m_deallocated = 0;
    int m_badContexts = 0;
    int64_t m_bytes = 0;
    std::atomic<int> m_deregistered{0};
};
} // namespace QvAcquisitionTest
