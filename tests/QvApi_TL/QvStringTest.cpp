#include <QvApi/QvString.h>

#include <clocale>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include <Base/GCException.h>

using QvApi::CQvString;

namespace
{
// Sets LC_CTYPE for the test and restores it afterwards.
class CScopedCType
{
public:
    explicit CScopedCType(const char* locale) : m_previous(setlocale(LC_CTYPE, nullptr))
    {
        m_ok = setlocale(LC_CTYPE, locale) != nullptr;
    }
    ~CScopedCType() { setlocale(LC_CTYPE, m_previous.c_str()); }
    bool ok() const { return m_ok; }

private:
    std::string m_previous;
    bool m_ok = false;
};
} // namespace

TEST(CQvString, CopiesANarrowString)
{
    CQvString text("Width");
    EXPECT_STREQ(text.c_str(), "Width");
    EXPECT_EQ(text.str(), "Width");
    EXPECT_STREQ(static_cast<const char*>(text), "Width");
    EXPECT_EQ(CQvString(static_cast<const char*>(nullptr)).str(), "");
}

TEST(CQvString, RefusesAWideStringThatDoesNotTakeFourBytesPerCharacter)
{
    CScopedCType locale("C");
    try
    {
        CQvString text(L"abc");
        FAIL() << "no exception";
    }
    catch (const GenICam::RuntimeException& e)
    {
        EXPECT_STREQ(e.GetDescription(), "Unable to convert string.");
        EXPECT_STREQ(e.GetSourceFileName(), "QvApi_TL/QvString.cpp");
    }
}

TEST(CQvString, RefusesPlainAsciiUnderUtf8)
{
    CScopedCType locale("C.UTF-8");
    if (!locale.ok())
        GTEST_SKIP() << "no C.UTF-8 locale";
    EXPECT_THROW(CQvString(L"abc"), GenICam::RuntimeException);
}

TEST(CQvString, AcceptsExactlyFourBytesPerCharacter)
{
    CScopedCType locale("C.UTF-8");
    if (!locale.ok())
        GTEST_SKIP() << "no C.UTF-8 locale";
    // Two characters outside the basic plane: four UTF-8 bytes each.
    CQvString text(L"\U0001F600\U0001F680");
    EXPECT_EQ(text.str(), "\xF0\x9F\x98\x80\xF0\x9F\x9A\x80");
    EXPECT_EQ(text.str().size(), 8u);
}

TEST(CQvString, AnEmptyOrNullWideStringIsEmpty)
{
    EXPECT_EQ(CQvString(L"").str(), "");
    EXPECT_EQ(CQvString(static_cast<const wchar_t*>(nullptr)).str(), "");
}
