#include "KesraNTC/base/private/Korean.h"
#include "KesraNTC/platform/Platform.h"

#include <gtest/gtest.h>

using namespace Kesra;

namespace
{

TEST(Korean, SyllablesBecomeTwoBytesOfCodePage949AndAsciiStays)
{
    EXPECT_STREQ("KESRA_NETWORK_LOG/%d\xBF\xF9%d\xC0\xCF.log", "KESRA_NETWORK_LOG/%d월%d일.log"_949);
    EXPECT_STREQ("", ""_949);
    EXPECT_STREQ("\xB9\xF6\xC6\xDB \xC5\xA9\xB1\xE2\xB8\xA6 \xB3\xD1\xBE\xEE\xBC\xAD",
                 "버퍼 크기를 넘어서"_949);
}

TEST(Korean, TheTableAgreesWithThePlatformsCodePage)
{
    for (const Hangul& entry : HangulTable) {
        const WCHAR wide = static_cast<WCHAR>(entry.Unicode);
        char bytes[4] = {};
        ASSERT_EQ(2, WideCharToMultiByte(949, 0, &wide, 1, bytes, sizeof bytes, nullptr, nullptr));
        EXPECT_EQ(static_cast<char>(entry.CodePage949 >> 8), bytes[0]) << std::hex << entry.CodePage949;
        EXPECT_EQ(static_cast<char>(entry.CodePage949 & 0xFF), bytes[1]) << std::hex << entry.CodePage949;
    }
}

} // namespace
