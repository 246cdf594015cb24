#include <QvApi/QvString.h>

#include <cstdlib>
#include <cwchar>
#include <new>
#include <vector>

#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
CQvString::CQvString(const char* text) : m_text(text != nullptr ? text : "") {}

CQvString::CQvString(const wchar_t* text)
{
    if (text == nullptr)
        return;
    try
    {
        const size_t capacity = 4 * wcslen(text);
        std::vector<char> buffer(capacity);
        const size_t converted = wcstombs(buffer.data(), text, capacity);
        // Strict on purpose: only a conversion that fills the whole buffer is accepted.
        if (converted != capacity)
            QV_THROW(RuntimeException, "Unable to convert string.");
        // The buffer holds no terminating zero when it is full: bound the copy by the length.
        m_text.assign(buffer.data(), converted);
    }
    QV_CATCH_BAD_ALLOC()
}
} // namespace QvApi
