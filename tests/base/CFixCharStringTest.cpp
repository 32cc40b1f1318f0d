#include "KesraNTC/base/CFixCharString.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

namespace
{
TEST(CFixCharString, IsItsBytesAndNothingElse)
{
    using Name = CFixCharString<20>;
    static_assert(sizeof(Name) == 21 && Name::Capacity == 20);
    static_assert(std::is_trivially_copyable_v<Name>);
    const Name name("Kim");
    EXPECT_STREQ(reinterpret_cast<const char*>(&name), "Kim");
}

TEST(CFixCharString, CutsWhatDoesNotFit)
{
    CFixCharString<4> text("abcdef");
    EXPECT_STREQ(text, "abcd");
    text = "xyz";
    EXPECT_STREQ(text, "xyz");
    text = "1234";
    EXPECT_STREQ(text, "1234");
    text = nullptr;
    EXPECT_STREQ(text, "");
    EXPECT_STREQ(CFixCharString<4>(), "");
    EXPECT_STREQ(CFixCharString<4>(nullptr), "");
}

TEST(CFixCharString, MayTakeAPartOfItself)
{
    CFixCharString<8> text("abcdefgh");
    text = static_cast<const char*>(text) + 3;
    EXPECT_STREQ(text, "defgh");
}

TEST(CFixCharString, ComparesCharactersNotAddresses)
{
    const CFixCharString<8> text("same");
    EXPECT_TRUE(text == CFixCharString<8>("same"));
    EXPECT_TRUE(text == "same");
    EXPECT_TRUE(text != "other");
}
} // namespace
