// Library start-up and shut-down: version check, initialisation count, cache path, factories.
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include <QvApi/QvApiFunctions.h>
#include <QvApi/QvImageBuffer.h>

#include "tests/QvApi_TL/Images/ImageTestSupport.h"

using namespace QvApi;
using QvApiTest::DescriptionOf;

namespace
{
bool IsInitialised()
{
    try
    {
        CheckQvApiInitialized();
        return true;
    }
    catch (const GenICam::RuntimeException&)
    {
        return false;
    }
}

// Leaves the library uninitialised whatever a failed test left behind.
class QvApiLifecycle : public ::testing::Test
{
protected:
    void TearDown() override
    {
        while (IsInitialised())
            QvApiTerminate();
    }
};
} // namespace

TEST_F(QvApiLifecycle, AcceptsAnyPatchLevelOfTheSameMajorAndMinor)
{
    QvApiInitialize(0x01000000);
    QvApiInitialize(0x0100FF07);
    EXPECT_TRUE(IsInitialised());
    QvApiTerminate();
    QvApiTerminate();
    EXPECT_FALSE(IsInitialised());
}

TEST_F(QvApiLifecycle, RejectsAnotherMinorNamingTheBuildVersion)
{
    EXPECT_EQ(DescriptionOf<GenICam::RuntimeException>([] { QvApiInitialize(0x01010005); }),
              "The version of the runtime library is not matched the version of the build time library. "
              "Runtime:1.0.5, Build time:1.1.5");
    EXPECT_FALSE(IsInitialised());
    // The failed call did not count: one initialisation needs exactly one termination.
    QvApiInitialize(QVAPI_VERSION);
    QvApiTerminate();
    EXPECT_FALSE(IsInitialised());
}

TEST_F(QvApiLifecycle, CountsNestedInitialisations)
{
    QvApiInitialize(QVAPI_VERSION);
    QvApiInitialize(QVAPI_VERSION);
    QvApiTerminate();
    EXPECT_TRUE(IsInitialised());
    EXPECT_EQ(GetIQvPixelFormatInfo(QvPFNC_Mono8)->GetEachPixelTotalBitCount(), 8u);
    QvApiTerminate();
    EXPECT_FALSE(IsInitialised());
    EXPECT_EQ(DescriptionOf<GenICam::RuntimeException>([] { QvApiTerminate(); }), "QvApi is not initialized.");
    // Terminating an uninitialised library did not drive the count below zero.
    QvApiInitialize(QVAPI_VERSION);
    EXPECT_TRUE(IsInitialised());
}

TEST_F(QvApiLifecycle, RebuildsTheTablesAfterAFullTermination)
{
    QvApiInitialize(QVAPI_VERSION);
    QvApiTerminate();
    QvApiInitialize(QVAPI_VERSION);
    EXPECT_STREQ(GetIQvPixelFormatInfo(QvPFNC_BayerRG12)->GetName().c_str(), "BayerRG12");
    EXPECT_STREQ(GetIQvPixelComponentInfo(QvPixelComponent_Gr12)->GetName().c_str(), "Gr12");
}

TEST_F(QvApiLifecycle, ReportsTheVersionOnlyWhenInitialised)
{
    EXPECT_EQ(DescriptionOf<GenICam::RuntimeException>([] { GetQvApiVersion(); }), "QvApi is not initialized.");
    EXPECT_EQ(DescriptionOf<GenICam::RuntimeException>([] { GetQvApiVersionText(); }),
              "QvApi is not initialized.");
    QvApiInitialize(QVAPI_VERSION);
    EXPECT_EQ(GetQvApiVersion(), 0x01000005u);
    EXPECT_STREQ(GetQvApiVersionText().c_str(), "1.0.5");
}

TEST_F(QvApiLifecycle, CreatesImageBuffersOnlyWhenInitialised)
{
    EXPECT_EQ(DescriptionOf<GenICam::RuntimeException>([] { CreateIQvImageBuffer(nullptr); }),
              "QvApi is not initialized.");
    QvApiInitialize(QVAPI_VERSION);
    IQvImageBufferReleasable* pBuffer = CreateIQvImageBuffer(nullptr);
    ASSERT_NE(pBuffer, nullptr);
    EXPECT_FALSE(pBuffer->HasImageBuffer());
    pBuffer->Release();
}

TEST_F(QvApiLifecycle, ExtendsTheGenApiCachePathAtEveryFirstInitialisation)
{
    setenv("GENICAM_CACHE_V3_0", "/tmp/qv-cache", 1);
    QvApiInitialize(QVAPI_VERSION);
    EXPECT_STREQ(getenv("GENICAM_CACHE_V3_0"), "/tmp/qv-cache/GenICam/xml/cache");
    QvApiInitialize(QVAPI_VERSION); // nested: no set-up
    EXPECT_STREQ(getenv("GENICAM_CACHE_V3_0"), "/tmp/qv-cache/GenICam/xml/cache");
    QvApiTerminate();
    QvApiTerminate();
    QvApiInitialize(QVAPI_VERSION);
    EXPECT_STREQ(getenv("GENICAM_CACHE_V3_0"), "/tmp/qv-cache/GenICam/xml/cache/GenICam/xml/cache");
    unsetenv("GENICAM_CACHE_V3_0");
}

TEST_F(QvApiLifecycle, LeavesAnUnsetGenApiCacheUnset)
{
    unsetenv("GENICAM_CACHE_V3_0");
    SetGenApiCache();
    EXPECT_EQ(getenv("GENICAM_CACHE_V3_0"), nullptr);
    QvApiInitialize(QVAPI_VERSION);
    EXPECT_EQ(getenv("GENICAM_CACHE_V3_0"), nullptr);
}
