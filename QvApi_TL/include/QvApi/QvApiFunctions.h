#pragma once

#include <stdint.h>

#include <Base/GCString.h>
#include <QvApi/QvApiDefs.h>
#include <QvApi/QvPixelComponent.h>
#include <QvApi/QvPixelFormat.h>
#include <QvApi/QvSystem.h>

namespace QvApi
{
class IQvAllocator;
class IQvImageBufferReleasable;
class IQvFeatureBagReleasable;

// ---- Start-up and shut-down ---------------------------------------------------------------------

/**
 * \brief Initialises the library; pairs with QvApiTerminate(). Nested pairs are counted.
 *
 * The first successful call appends "/GenICam/xml/cache" to GENICAM_CACHE_V3_0 (when set) and
 * builds the pixel format and component tables. Initialise from one thread: a second thread
 * initialising meanwhile may return before the tables exist.
 * \param[in] version The version the caller was built against (QVAPI_VERSION); major and minor
 *                    must match this library's, the patch level may differ.
 * \throws RuntimeException when major or minor differ (the count is not touched).
 * \throws BadAllocException when the tables cannot be built (the count stays raised).
 */
QVAPI_API void QvApiInitialize(uint32_t version = QVAPI_VERSION);

/**
 * \brief Undoes one QvApiInitialize(); the last one destroys the pixel tables.
 *
 * Objects the application still holds are not touched: release them first.
 * \throws RuntimeException "QvApi is not initialized." when there is nothing to undo.
 */
QVAPI_API void QvApiTerminate();

/// \throws RuntimeException "QvApi is not initialized." unless the library is initialised.
QVAPI_API void CheckQvApiInitialized();

/// \return This library's version: major in bits 24-31, minor in 16-23, patch in 0-7.
/// \throws RuntimeException when the library is not initialised.
QVAPI_API uint32_t GetQvApiVersion();

/// \return This library's version as text, "1.0.5".
/// \throws RuntimeException when the library is not initialised.
QVAPI_API GenICam::gcstring GetQvApiVersionText();

/**
 * \brief Points GENICAM_CACHE_V3_0, when it is set, at "<its value>/GenICam/xml/cache".
 *
 * Runs at every first initialisation, so a process that terminates completely and initialises
 * again extends the path once more. Not thread-safe (it changes the environment).
 */
QVAPI_API void SetGenApiCache();

// ---- Factories ----------------------------------------------------------------------------------

/**
 * \brief Loads a vendor's GenTL producer and opens its system (transport layer) with the
 *        interfaces of the types asked for.
 *
 * The producer file (QvSystemVendor_Default: "libqvgentl.cti", 1: "coaxlink.cti",
 * 2: "KYFGLibGenTL.cti", 3: "siso_gentl.cti") is searched on GENICAM_GENTL64_PATH. Vendors 1 to
 * 3 are used for CoaXPress only: their mask is \a eTargetInterface AND QvInterfaceType_CoaXPress.
 * A producer allows one open system at a time.
 * \param[in] eQvSystemVendor  Which producer.
 * \param[in] eTargetInterface Mask of the interface types to open; QvInterfaceType_All for all.
 * \return The system with one reference; the caller ends it with Release() after releasing
 *         the devices opened through it.
 * \throws RuntimeException when the library is not initialised, or "File %s not found.".
 * \throws OutOfRangeException "%s = %ld must be smaller than Max = %ld" ("eQvSystemVendor") for
 *         an unknown vendor; "%s = %ld must be equal or greater than Min = %ld"
 *         ("eTargetInterface") for a mask that is 0 (also after the CoaXPress restriction).
 * \throws CQvGenTLErrorException when the producer fails to initialise, open or list.
 * \throws CQvLinuxErrorException when the dynamic loader refuses the file; BadAllocException.
 */
QVAPI_API IQvSystemReleasable* CreateIQvSystem(_EQvSystemVendor_t eQvSystemVendor = QvSystemVendor_Default,
                                               _EQvInterfaceType_t eTargetInterface = QvInterfaceType_All);

/**
 * \brief A new, empty image buffer.
 * \param[in] pAllocator Application memory for the buffer, or null for the library's own. It
 *                       must outlive the buffer; its OnDeregister() runs when the buffer ends.
 * \return The buffer; the caller ends it with Release().
 * \throws RuntimeException when the library is not initialised; BadAllocException.
 */
QVAPI_API IQvImageBufferReleasable* CreateIQvImageBuffer(IQvAllocator* pAllocator = nullptr);

/**
 * \brief A new, empty feature bag (GenApi persistence files and strings).
 * \return The bag; the caller ends it with Release().
 * \throws RuntimeException when the library is not initialised; BadAllocException.
 */
QVAPI_API IQvFeatureBagReleasable* CreateIQvFeatureBag();

// ---- Pixel tables -------------------------------------------------------------------------------

/**
 * \return The record of pixel format \a value, owned by the library until the last
 *         QvApiTerminate(). Any thread.
 * \throws RuntimeException when the library is not initialised, or "Unknown pixelformat 0x%X".
 */
QVAPI_API const IQvPixelFormatInfo* GetIQvPixelFormatInfo(EQvPixelFormatNamingConvention_t value);

/**
 * \return The record of pixel component \a value, owned by the library until the last
 *         QvApiTerminate(). Any thread.
 * \throws RuntimeException when the library is not initialised; InvalidArgumentException
 *         "EQvPixelComponet_t %u is not supported." for a code not in the table.
 */
QVAPI_API const IQvPixelComponentInfo* GetIQvPixelComponentInfo(EQvPixelComponent_t value);
} // namespace QvApi
