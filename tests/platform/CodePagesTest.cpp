#include "KesraNTC/platform/Platform.h"

#include <gtest/gtest.h>

#include <string>

// Conversions between 16-bit wide text and code page 949 (AC00 is B0 A1, AC02
// is 81 41) or UTF-8.
namespace
{
using WideText = std::basic_string<OLECHAR>;

WideText ToWide(UINT page, const std::string& text)
{
    WideText wide(text.size() + 1, OLESTR('#'));
    const int length = MultiByteToWideChar(page, 0, text.data(), static_cast<int>(text.size()), wide.data(),
                                           static_cast<int>(wide.size()));
    wide.resize(static_cast<std::size_t>(length));
    return wide;
}

std::string ToBytes(UINT page, const WideText& text)
{
    std::string bytes(text.size() * 4 + 1, '#');
    const int length = WideCharToMultiByte(page, 0, text.data(), static_cast<int>(text.size()), bytes.data(),
                                           static_cast<int>(bytes.size()), nullptr, nullptr);
    bytes.resize(static_cast<std::size_t>(length));
    return bytes;
}

TEST(CodePages, KoreanTextGoesBothWays)
{
    const WideText wide = OLESTR("a\\\uAC00\uAC02\uD55C\uFF21\u20AC");
    const std::string bytes = "a\\\xB0\xA1\x81\x41\xC7\xD1\xA3\xC1\xA2\xE6";
    EXPECT_EQ(ToWide(949, bytes), wide);
    EXPECT_EQ(ToBytes(949, wide), bytes);
    // The two rows of characters that users define.
    const WideText defined = OLESTR("\uE000\uE05E\uE0BB");
    EXPECT_EQ(ToWide(949, "\xC9\xA1\xFE\xA1\xFE\xFE"), defined);
    EXPECT_EQ(ToBytes(949, defined), "\xC9\xA1\xFE\xA1\xFE\xFE");
}

TEST(CodePages, EveryDoubleByteCharacterComesBack)
{
    int count = 0;
    for (int lead = 0x81; lead <= 0xFE; ++lead)
        for (int trail = 0x41; trail <= 0xFE; ++trail) {
            const std::string bytes = {static_cast<char>(lead), static_cast<char>(trail)};
            OLECHAR wide[4];
            if (MultiByteToWideChar(949, MB_ERR_INVALID_CHARS, bytes.data(), 2, wide, 4) != 1)
                continue;
            ++count;
            ASSERT_EQ(ToBytes(949, WideText(wide, 1)), bytes);
        }
    // 8822 syllables of the extension and the whole of the older standard.
    EXPECT_GT(count, 17000);
}

TEST(CodePages, Utf8GoesBothWays)
{
    const WideText wide = OLESTR("a\u00E9\uAC00\U0001F600");
    const std::string bytes = "a\xC3\xA9\xEA\xB0\x80\xF0\x9F\x98\x80";
    EXPECT_EQ(ToWide(CP_UTF8, bytes), wide);
    EXPECT_EQ(ToBytes(CP_UTF8, wide), bytes);
}

TEST(CodePages, ASourceLengthOfMinusOneTakesTheTerminator)
{
    OLECHAR wide[8];
    ASSERT_EQ(MultiByteToWideChar(949, 0, "a\xB0\xA1", -1, wide, 8), 3);
    EXPECT_EQ(WideText(wide), OLESTR("a\uAC00"));
    char bytes[8];
    ASSERT_EQ(WideCharToMultiByte(949, 0, OLESTR("a\uAC00"), -1, bytes, 8, nullptr, nullptr), 4);
    EXPECT_STREQ(bytes, "a\xB0\xA1");
}

TEST(CodePages, ATargetLengthOfZeroAsksForTheSize)
{
    EXPECT_EQ(MultiByteToWideChar(949, 0, "a\xB0\xA1", -1, nullptr, 0), 3);
    EXPECT_EQ(MultiByteToWideChar(949, 0, "a\xB0\xA1", 3, nullptr, 0), 2);
    EXPECT_EQ(WideCharToMultiByte(949, 0, OLESTR("a\uAC00"), 2, nullptr, 0, nullptr, nullptr), 3);
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, OLESTR("a\uAC00"), -1, nullptr, 0, nullptr, nullptr), 5);
}

TEST(CodePages, TooLittleRoomIsAnError)
{
    OLECHAR wide[2];
    SetLastError(0);
    EXPECT_EQ(MultiByteToWideChar(949, 0, "abc", 3, wide, 2), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER));
    char bytes[4] = "...";
    SetLastError(0);
    EXPECT_EQ(WideCharToMultiByte(949, 0, OLESTR("a\uAC00"), 2, bytes, 2, nullptr, nullptr), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER));
    EXPECT_EQ(bytes[2], '.');
}

TEST(CodePages, ImpossibleArgumentsAreRefused)
{
    const auto refused = [](int result) { return result == 0 && GetLastError() == ERROR_INVALID_PARAMETER; };
    OLECHAR wide[4];
    char bytes[4];
    BOOL used;
    EXPECT_TRUE(refused(MultiByteToWideChar(949, 0, "a", 0, wide, 4)));
    EXPECT_TRUE(refused(MultiByteToWideChar(949, 0, nullptr, 1, wide, 4)));
    EXPECT_TRUE(refused(MultiByteToWideChar(949, 0, "a", 1, nullptr, 4)));
    EXPECT_TRUE(refused(MultiByteToWideChar(12, 0, "a", 1, wide, 4)));
    EXPECT_TRUE(refused(WideCharToMultiByte(949, 0, OLESTR("a"), 0, bytes, 4, nullptr, nullptr)));
    EXPECT_TRUE(refused(WideCharToMultiByte(949, 0, OLESTR("a"), 1, bytes, -1, nullptr, nullptr)));
    if (!KESRANTC_UNDER_WINE) {
        // Documented so for UTF-8; Wine lets both pass.
        EXPECT_TRUE(refused(WideCharToMultiByte(CP_UTF8, 0, OLESTR("a"), 1, bytes, 4, "?", nullptr)));
        EXPECT_TRUE(refused(WideCharToMultiByte(CP_UTF8, 0, OLESTR("a"), 1, bytes, 4, nullptr, &used)));
    }
}

TEST(CodePages, WhatThePageCannotHoldBecomesTheDefaultCharacter)
{
    EXPECT_EQ(ToBytes(949, OLESTR("a\u0E01z")), "a?z");
    char bytes[8] = "";
    BOOL used = FALSE;
    EXPECT_EQ(WideCharToMultiByte(949, 0, OLESTR("a\u0E01"), -1, bytes, 8, "_", &used), 3);
    EXPECT_STREQ(bytes, "a_");
    EXPECT_TRUE(used);
    EXPECT_EQ(WideCharToMultiByte(949, 0, OLESTR("a"), -1, bytes, 8, nullptr, &used), 2);
    EXPECT_FALSE(used);
}

TEST(CodePages, WhatThePageLacksBecomesItsNearestCharacter)
{
    EXPECT_EQ(ToBytes(949, OLESTR("\u00A9\u00A3\u20A9\u00E9\u1100\u1161\uFFA1\u24B6")),
              "\xA8\xCF\xA1\xCC\\e\xA4\xA1\xA4\xBF\xA4\xA1\xA8\xCD");
    char bytes[8] = "";
    BOOL used = TRUE;
    EXPECT_EQ(WideCharToMultiByte(949, 0, OLESTR("\u00E9"), -1, bytes, 8, nullptr, &used), 2);
    EXPECT_STREQ(bytes, "e");
    EXPECT_FALSE(used);
}

TEST(CodePages, BrokenBytesNeverSwallowTheTerminator)
{
    OLECHAR wide[8];
    ASSERT_EQ(MultiByteToWideChar(949, 0, "a\xB0", -1, wide, 8), 3);
    EXPECT_EQ(wide[2], 0);
    SetLastError(0);
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, "a\xEA\xB0", 3, wide, 8), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NO_UNICODE_TRANSLATION));
    EXPECT_EQ(ToWide(CP_UTF8, "a\xEA\xB0z"), OLESTR("a\uFFFDz"));
    if (!KESRANTC_UNDER_WINE) {
        // One for every byte that begins nothing; Wine takes two of them together.
        EXPECT_EQ(ToWide(CP_UTF8, "\xF4\x90\x80\x80"), OLESTR("\uFFFD\uFFFD\uFFFD\uFFFD"));
    }
    const OLECHAR loneSurrogate[] = {0xD83D, 'z'};
    EXPECT_EQ(ToBytes(CP_UTF8, WideText(loneSurrogate, 2)), "\xEF\xBF\xBDz");
}

TEST(CodePages, AnsiAndOemAreOne)
{
    char text[] = "a\xB0\xA1\\";
    EXPECT_TRUE(CharToOemA(text, text));
    EXPECT_STREQ(text, "a\xB0\xA1\\");
    char copy[8];
    EXPECT_TRUE(OemToCharA(text, copy));
    EXPECT_STREQ(copy, text);
}
} // namespace
