#include "KesraNTC/platform/Platform.h"

#include <gtest/gtest.h>

#include <string>

namespace
{
constexpr LCID Korean = 0x0412;

int Order(const char* left, const char* right, DWORD flags = 0)
{
    return CompareStringA(Korean, SORT_STRINGSORT | flags, left, -1, right, -1);
}

int OrderWhateverTheCase(const char* left, const char* right)
{
    return Order(left, right, NORM_IGNORECASE);
}

// Every text comes before the next one. Each pair of bytes from B0 A1 on is a syllable of code page 949; A3
// C1 and A3 E1 are the full-width letters A and a.
TEST(Multibyte, OrdersAsAKoreanDictionaryDoes)
{
    const char* const ascending[] = {"",         "'",
                                     "a-b",      "a b",
                                     "a!b",      "a_b",
                                     "a\\b",     "a+b",
                                     "a>b",      "a0b",
                                     "a1",       "a10",
                                     "a2",       "ab",
                                     "aB",       "Ab",
                                     "AB",       "apple",
                                     "Banana",   "z",
                                     "\xB0\xA1", "\xB0\xA1\xB3\xAA",
                                     "\xB0\xA2", "\x81\x41",
                                     "\xB0\xA4"};
    for (std::size_t i = 0; i + 1 < std::size(ascending); ++i) {
        EXPECT_EQ(Order(ascending[i], ascending[i + 1]), CSTR_LESS_THAN) << i;
        EXPECT_EQ(Order(ascending[i + 1], ascending[i]), CSTR_GREATER_THAN) << i;
        EXPECT_EQ(Order(ascending[i], ascending[i]), CSTR_EQUAL) << i;
    }
}

TEST(Multibyte, CaseAndWidthDecideBetweenEqualLetters)
{
    EXPECT_EQ(OrderWhateverTheCase("apple", "APPLE"), CSTR_EQUAL);
    EXPECT_EQ(OrderWhateverTheCase("\xA3\xC1", "\xA3\xE1"), CSTR_EQUAL);
    EXPECT_EQ(OrderWhateverTheCase("a", "\xA3\xC1"), CSTR_LESS_THAN);
    EXPECT_EQ(Order("a", "\xA3\xE1"), CSTR_LESS_THAN);
    EXPECT_EQ(Order("\xA3\xE1", "A"), CSTR_LESS_THAN);
    EXPECT_EQ(Order("A", "\xA3\xC1"), CSTR_LESS_THAN);
    EXPECT_EQ(Order("Az", "ab"), CSTR_GREATER_THAN);
}

TEST(Multibyte, LengthsBoundTheTexts)
{
    EXPECT_EQ(CompareStringA(Korean, SORT_STRINGSORT, "abc", 2, "abd", 2), CSTR_EQUAL);
    EXPECT_EQ(CompareStringA(Korean, SORT_STRINGSORT, "abc", 0, "", -1), CSTR_EQUAL);
    EXPECT_EQ(CompareStringA(Korean, SORT_STRINGSORT, "abc", 3, "ab", -1), CSTR_GREATER_THAN);
    EXPECT_EQ(CompareStringA(Korean, SORT_STRINGSORT, nullptr, -1, "ab", -1), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
}
} // namespace
