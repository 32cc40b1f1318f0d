#include "KesraNTC/platform/Platform.h"

#include <gtest/gtest.h>

#include <string>

// The multibyte functions of the C runtime in code page 949, where 81 41, 81 61
// and B0 A1 are one character each.
namespace
{
const unsigned char* Bytes(const char* text)
{
    return reinterpret_cast<const unsigned char*>(text);
}

std::string Changed(unsigned char* (*change)(unsigned char*), std::string text)
{
    change(reinterpret_cast<unsigned char*>(text.data()));
    return text;
}

class Multibyte : public testing::Test
{
protected:
    void SetUp() override { ASSERT_EQ(_setmbcp(949), 0); }
};

TEST_F(Multibyte, KnowsTheLeadBytes)
{
    EXPECT_FALSE(_ismbblead('A'));
    EXPECT_FALSE(_ismbblead(0x80));
    EXPECT_TRUE(_ismbblead(0x81));
    EXPECT_TRUE(_ismbblead(0xFE));
    EXPECT_FALSE(_ismbblead(0xFF));
}

TEST_F(Multibyte, ComparesByCharacterCode)
{
    EXPECT_EQ(_mbscmp(Bytes("abc"), Bytes("abc")), 0);
    EXPECT_LT(_mbscmp(Bytes("ab"), Bytes("abc")), 0);
    EXPECT_GT(_mbscmp(Bytes("b"), Bytes("abc")), 0);
    EXPECT_LT(_mbscmp(Bytes("z"), Bytes("\xB0\xA1")), 0);
    EXPECT_LT(_mbscmp(Bytes("\x81\x41"), Bytes("\x81\x61")), 0);
    EXPECT_EQ(_mbsicmp(Bytes("aBc"), Bytes("AbC")), 0);
    EXPECT_NE(_mbsicmp(Bytes("\x81\x41"), Bytes("\x81\x61")), 0);
    EXPECT_GT(_mbsicmp(Bytes("a"), Bytes("_")), 0);
}

TEST_F(Multibyte, CollatesByTheDictionary)
{
    EXPECT_LT(_mbscoll(Bytes("apple"), Bytes("Banana")), 0);
    EXPECT_EQ(_mbscoll(Bytes("same"), Bytes("same")), 0);
    EXPECT_NE(_mbscoll(Bytes("apple"), Bytes("Apple")), 0);
    EXPECT_EQ(_mbsicoll(Bytes("apple"), Bytes("APPLE")), 0);
    EXPECT_LT(_mbscoll(Bytes("\xB0\xA1"), Bytes("\x81\x41")), 0);
    EXPECT_LT(_mbscoll(Bytes("9"), Bytes("a")), 0);
    EXPECT_LT(_mbscoll(Bytes("z"), Bytes("\xB0\xA1")), 0);
}

TEST_F(Multibyte, SearchesForWholeCharacters)
{
    const unsigned char* text = Bytes("ab\x81\x41"
                                      "A");
    EXPECT_EQ(_mbspbrk(text, Bytes("xA")), text + 4);
    EXPECT_EQ(_mbspbrk(text, Bytes("\x81\x41")), text + 2);
    EXPECT_EQ(_mbspbrk(text, Bytes("xyz")), nullptr);
}

TEST_F(Multibyte, MapsAndReversesWholeCharacters)
{
    EXPECT_EQ(Changed(_mbsupr, "aZ1\x81\x61"), "AZ1\x81\x61");
    EXPECT_EQ(Changed(_mbslwr, "aZ1\x81\x41"), "az1\x81\x41");
    EXPECT_EQ(Changed(_mbsrev, "ab\xB0\xA1"
                               "c"),
              "c\xB0\xA1"
              "ba");
    EXPECT_EQ(Changed(_mbsrev, ""), "");
}
} // namespace
