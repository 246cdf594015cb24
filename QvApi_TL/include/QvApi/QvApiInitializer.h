#pragma once

#include <QvApi/QvApiDefs.h>
#include <QvApi/QvApiFunctions.h>

namespace QvApi
{
/**
 * \brief Pairs QvApiInitialize() with QvApiTerminate() for a scope:
 * \code
 *   int main()
 *   {
 *       QvApi::CQvApiInitializer library;   // before every owner of library objects
 *       QvApi::CIQvSystemPtr system(QvApi::CreateIQvSystem());
 *       ...
 *   }
 * \endcode
 * Declare it before the owners of library objects so that they are released first.
 * Initialise from one thread; not copyable.
 */
class CQvApiInitializer
{
public:
    /**
     * \param[in] version The version the caller was built against.
     * \throws As QvApiInitialize(); nothing is to be undone then.
     */
    explicit CQvApiInitializer(uint32_t version = QVAPI_VERSION) { QvApiInitialize(version); }
    /// Calls QvApiTerminate(); an exception from it is swallowed.
    ~CQvApiInitializer()
    {
        try
        {
            QvApiTerminate();
        }
        catch (...)
        {
        }
    }
    CQvApiInitializer(const CQvApiInitializer&) = delete;
    CQvApiInitializer& operator=(const CQvApiInitializer&) = delete;
};
} // namespace QvApi
