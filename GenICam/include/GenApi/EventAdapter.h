#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include <Base/GCLinkage.h>

namespace GenApi
{
struct INodeMap;
class CEventPort;

/**
 * \brief Delivers device events to the event Port nodes of a node map.
 *
 * Each Port node with an EventID gets a CEventPort; DeliverMessage() splits a message the
 * transport's way and copies each event's data to every port with its ID, so that the event
 * features (EventExposureEndTimestamp, ...) read it. The port and every node reading through it
 * are invalidated and their callbacks fire: register a node callback on an event feature and
 * read the values inside it. Events whose ID no port has change nothing and fire nothing.
 * Malformed messages are refused with a RuntimeException before anything is delivered, and no
 * byte outside the message is read.
 *
 * Event ports are NI while no adapter is attached to the map, NA until their first event, RO
 * afterwards.
 *
 * Lifetime: the node map must outlive the adapter, or DetachNodeMap() must run first.
 * Threads: any (typically an event listener thread); each delivery holds the node map's lock
 * and fires the callbacks as a node write would.
 */
class GENICAM_API CEventAdapter
{
public:
    /// An adapter feeding the event ports of \a pNodeMap, or none yet when null.
    explicit CEventAdapter(INodeMap* pNodeMap = nullptr);
    CEventAdapter(const CEventAdapter&) = delete;
    CEventAdapter& operator=(const CEventAdapter&) = delete;
    /// Disconnects the event ports (they become NI).
    virtual ~CEventAdapter();

    /// Connects an event port to every Port node with an EventID (replacing the map attached before).
    virtual void AttachNodeMap(INodeMap* pNodeMap);
    /// Disconnects every event port.
    virtual void DetachNodeMap();

    /**
     * \brief Delivers one message of the transport (a whole packet, header included).
     * \param[in] pMessage The message; only its first \a numBytes bytes are read.
     * \param[in] numBytes Length of the message in bytes.
     * \throws RuntimeException "Malformed message - ..." when the message is not valid.
     */
    virtual void DeliverMessage(const uint8_t pMessage[], uint32_t numBytes) = 0;

protected:
    /**
     * \brief Copies \a lengthBytes bytes to every port with \a eventId and fires the callbacks.
     * \return The number of ports that received them.
     */
    int DeliverToPorts(uint64_t eventId, const uint8_t* pData, int64_t lengthBytes);

    INodeMap* m_pNodeMap = nullptr; // borrowed; must outlive the adapter or be detached first
    std::vector<std::unique_ptr<CEventPort>> m_eventPorts;
};
} // namespace GenApi
