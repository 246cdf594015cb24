#pragma once

#include <string>

#include <GenTL/GenTL.h>

/**
 * A GenTL producer loaded with dlopen: the entry points gentl-grab uses. Load throws
 * std::runtime_error when the file cannot be loaded or lacks one of them.
 */
class CGenTLLibrary
{
public:
    explicit CGenTLLibrary(const std::string& path);
    ~CGenTLLibrary();
    CGenTLLibrary(const CGenTLLibrary&) = delete;
    CGenTLLibrary& operator=(const CGenTLLibrary&) = delete;

    /// The first producer on GENICAM_GENTL64_PATH whose file name is preferred, else the first
    /// *.cti at all; empty if there is none.
    static std::string Find(const std::string& preferred);

    /// Throws std::runtime_error naming the call and the producer's last error unless result is 0.
    void Check(GenTL::GC_ERROR result, const char* call) const;

    GenTL::PGCGetLastError GCGetLastError = nullptr;
    GenTL::PGCInitLib GCInitLib = nullptr;
    GenTL::PGCCloseLib GCCloseLib = nullptr;
    GenTL::PGCReadPort GCReadPort = nullptr;
    GenTL::PGCWritePort GCWritePort = nullptr;
    GenTL::PGCGetPortInfo GCGetPortInfo = nullptr;
    GenTL::PGCGetPortURLInfo GCGetPortURLInfo = nullptr;
    GenTL::PGCRegisterEvent GCRegisterEvent = nullptr;
    GenTL::PGCUnregisterEvent GCUnregisterEvent = nullptr;
    GenTL::PEventGetData EventGetData = nullptr;
    GenTL::PTLOpen TLOpen = nullptr;
    GenTL::PTLClose TLClose = nullptr;
    GenTL::PTLUpdateInterfaceList TLUpdateInterfaceList = nullptr;
    GenTL::PTLGetNumInterfaces TLGetNumInterfaces = nullptr;
    GenTL::PTLGetInterfaceID TLGetInterfaceID = nullptr;
    GenTL::PTLGetInterfaceInfo TLGetInterfaceInfo = nullptr;
    GenTL::PTLOpenInterface TLOpenInterface = nullptr;
    GenTL::PIFClose IFClose = nullptr;
    GenTL::PIFUpdateDeviceList IFUpdateDeviceList = nullptr;
    GenTL::PIFGetNumDevices IFGetNumDevices = nullptr;
    GenTL::PIFGetDeviceID IFGetDeviceID = nullptr;
    GenTL::PIFOpenDevice IFOpenDevice = nullptr;
    GenTL::PDevGetPort DevGetPort = nullptr;
    GenTL::PDevGetDataStreamID DevGetDataStreamID = nullptr;
    GenTL::PDevOpenDataStream DevOpenDataStream = nullptr;
    GenTL::PDevGetInfo DevGetInfo = nullptr;
    GenTL::PDevClose DevClose = nullptr;
    GenTL::PDSAllocAndAnnounceBuffer DSAllocAndAnnounceBuffer = nullptr;
    GenTL::PDSQueueBuffer DSQueueBuffer = nullptr;
    GenTL::PDSRevokeBuffer DSRevokeBuffer = nullptr;
    GenTL::PDSFlushQueue DSFlushQueue = nullptr;
    GenTL::PDSStartAcquisition DSStartAcquisition = nullptr;
    GenTL::PDSStopAcquisition DSStopAcquisition = nullptr;
    GenTL::PDSGetInfo DSGetInfo = nullptr;
    GenTL::PDSGetBufferInfo DSGetBufferInfo = nullptr;
    GenTL::PDSClose DSClose = nullptr;

private:
    void* m_library = nullptr; // dlopen handle, closed by the destructor
};
