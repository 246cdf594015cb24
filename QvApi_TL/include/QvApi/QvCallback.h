#pragma once

#include <Base/GCString.h>
#include <GenTL/GenTL.h>
#include <QvApi/QvApiDefs.h>

namespace QvApi
{
class IQvSystem;
class IQvInterface;
class IQvDevice;
class IQvDataStream;
class IQvStreamBuffer;

/// What a callback is called for; the value of IQvCallbackParamBase::GetCallbackType().
enum EQvCallbackType_t
{
    QvCallbackTypeGenTLEventErrorTL = 0,  ///< GenTL error event of a system
    QvCallbackTypeGenTLEventErrorIF = 1,  ///< GenTL error event of an interface
    QvCallbackTypeGenTLEventErrorDEV = 2, ///< GenTL error event of a device
    QvCallbackTypeGenTLEventErrorDS = 3,  ///< GenTL error event of a data stream
    QvCallbackTypeGenTLEventErrorSB = 4,  ///< GenTL error event of a stream buffer
    QvCallbackTypeGenTLEventNewBuffer = 5 ///< a new buffer on a data stream
};

/**
 * \brief The parameter passed to IQvCallback::Invoke(). Cast it to the interface that
 *        GetCallbackType() names. Valid only during the call.
 */
class QVAPI_API IQvCallbackParamBase
{
public:
    /// Which event this is; tells the parameter's concrete interface.
    virtual EQvCallbackType_t GetCallbackType() const = 0;

protected:
    ~IQvCallbackParamBase() = default; // parameters live on the dispatching stack
};

/// A GenTL error event of a module (callback types 0 to 4).
class QVAPI_API IQvCallbackParamGenTLEventError : public IQvCallbackParamBase
{
public:
    /// The GenTL error code the producer reported with the event.
    virtual GenTL::GC_ERROR GetGCError() const = 0;
    /// The producer's description of the error.
    virtual GenICam::gcstring GetDescription() const = 0;
};

/// Error event of a system (type 0).
class QVAPI_API IQvCallbackParamGenTLEventErrorTL : public IQvCallbackParamGenTLEventError
{
public:
    /// The system that reported the error; borrowed.
    virtual IQvSystem* GetIQvSystem() const = 0;
};

/// Error event of an interface (type 1).
class QVAPI_API IQvCallbackParamGenTLEventErrorIF : public IQvCallbackParamGenTLEventError
{
public:
    /// The interface that reported the error; borrowed.
    virtual IQvInterface* GetIQvInterface() const = 0;
};

/// Error event of a device (type 2).
class QVAPI_API IQvCallbackParamGenTLEventErrorDEV : public IQvCallbackParamGenTLEventError
{
public:
    /// The device that reported the error; borrowed.
    virtual IQvDevice* GetIQvDevice() const = 0;
};

/// Error event of a data stream (type 3).
class QVAPI_API IQvCallbackParamGenTLEventErrorDS : public IQvCallbackParamGenTLEventError
{
public:
    /// The data stream that reported the error; borrowed.
    virtual IQvDataStream* GetIQvDataStream() const = 0;
};

/// Error event of a stream buffer (type 4).
class QVAPI_API IQvCallbackParamGenTLEventErrorSB : public IQvCallbackParamGenTLEventError
{
public:
    /// The stream buffer that reported the error; borrowed.
    virtual IQvStreamBuffer* GetIQvStreamBuffer() const = 0;
};

/// A new buffer on a data stream (type 5): retrieve it with the stream's RetrieveBuffer().
class QVAPI_API IQvCallbackParamGenTLEventNewBuffer : public IQvCallbackParamBase
{
public:
    /// The data stream that received the buffer; borrowed.
    virtual IQvDataStream* GetIQvDataStream() const = 0;
};

/**
 * \brief An application callback. Implemented by the application; owned, once registered, by
 *        the module's callback manager, which calls Release() exactly once when the
 *        registration ends.
 */
class QVAPI_API IQvCallback
{
public:
    /**
     * \brief Runs the callback for one event.
     * \param[in] param The event; valid only during the call.
     * \note Runs on the module's listener thread with the module's callback lock held: keep it
     *       short, and catch every exception (one that escapes terminates the process).
     *       Registering or deregistering callbacks of the same module from inside is allowed.
     */
    virtual void Invoke(IQvCallbackParamBase* param) = 0;
    /// Disposes of the callback object; called once, by its callback manager.
    virtual void Release() = 0;

protected:
    ~IQvCallback() = default; // disposed of through Release()
};

/**
 * \brief Registration of application callbacks on a module. Any thread; waits while the
 *        module's callbacks are running.
 */
class QVAPI_API IQvRegisterCallback
{
public:
    /**
     * \brief Registers \a pCallback; the module now owns it.
     * \return The handle for DeregisterCallback(). The same object registered twice gets two
     *         handles and runs twice per event.
     * \throws GenICam::BadAllocException when memory runs out (\a pCallback is then not owned).
     */
    virtual void* RegisterCallback(IQvCallback* pCallback) = 0;
    /**
     * \brief Ends a registration and calls the callback's Release().
     * \throws GenICam::InvalidArgumentException "hCallback is invalid." for an unknown, null or
     *         already deregistered handle.
     */
    virtual void DeregisterCallback(void* hCallback) = 0;

protected:
    ~IQvRegisterCallback() = default; // not deleted through this interface
};

/**
 * \brief A registry that also dispatches: RunCallback() invokes every registered callback.
 */
class QVAPI_API IQvCallbackManager : public IQvRegisterCallback
{
public:
    /// Invokes every registered callback with \a param, one after the other, under the lock.
    virtual void RunCallback(IQvCallbackParamBase* param) = 0;
};
} // namespace QvApi
