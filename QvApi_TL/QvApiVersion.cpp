// Keeps the library non-empty while its modules are being assembled.
#include <QvApi/QvApiDefs.h>

extern "C" QVAPI_API uint32_t QvApiBuildVersion()
{
    return QVAPI_VERSION;
}
