#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include <GenTL/GenTL.h>

#include "modules/HandleObject.h"
#include "modules/InfoValue.h"

namespace QvGenTL {

/// Time-outs this long or longer wait for ever (and cannot overflow the clock); covers GENTL_INFINITE.
constexpr uint64_t kWaitForeverMs = 1000ull * 3600 * 24 * 365;

/**
 * One registered GenTL event of a module (GCRegisterEvent): a FIFO of data entries that
 * EventGetData waits on. Entries are raw records whose layout depends on the event type
 * (see QvGenTL/VirtualCamera.h); EventGetDataInfo decodes them through DataInfo.
 *
 * Kill aborts the waits in progress with GC_ERR_ABORT; a kill while nobody waits aborts the
 * next wait that would block. Close (unregistration, module close) aborts every wait for good.
 * Any thread.
 */
class CEvent : public CHandleObject
{
public:
    /// tlType selects the wire layout of remote-device events ("GEV", "U3V", other: generic).
    CEvent(GenTL::EVENT_TYPE type, std::string tlType);

    GenTL::EVENT_TYPE Type() const { return m_type; }

    /// Copies the oldest entry into pBuffer and removes it; returns the GenTL result
    /// (time-outs and aborts are ordinary results here, not exceptions).
    virtual GenTL::GC_ERROR GetData(void* pBuffer, size_t* piSize, uint64_t timeoutMs) = 0;
    virtual void Flush() = 0;
    virtual void Kill() = 0;
    virtual void Close() = 0;
    virtual size_t NumInQueue() = 0;
    virtual uint64_t NumFired() = 0;

    /// Largest entry EventGetData can return.
    size_t MaxDataSize() const;
    /// Largest output of EventGetDataInfo.
    size_t MaxDataInfoSize() const;

    CInfoValue Info(GenTL::EVENT_INFO_CMD command);
    /// Decodes one entry previously returned by GetData; throws CGenTLError on bad input.
    CInfoValue DataInfo(const void* pInBuffer, size_t inSize, GenTL::EVENT_DATA_INFO_CMD command) const;

private:
    const GenTL::EVENT_TYPE m_type;
    const std::string m_tlType;
};

} // namespace QvGenTL
