#include "KesraNTC/platform/private/ComText.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

// What a game's variants call for texts in code page 949.
namespace
{
std::string ThereAndBack(const char* text)
{
    const BSTR wide = _com_util::ConvertStringToBSTR(text);
    const std::unique_ptr<char[]> narrow(_com_util::ConvertBSTRToString(wide));
    SysFreeString(wide);
    return narrow.get();
}

TEST(ComText, ConvertsThereAndBack)
{
    EXPECT_EQ(ThereAndBack("a\xB0\xA1z"), "a\xB0\xA1z");
    EXPECT_EQ(ThereAndBack(""), "");
    EXPECT_EQ(ThereAndBack("a\xB0"), "a?");
    EXPECT_EQ(ThereAndBack(std::string(100000, 'x').c_str()), std::string(100000, 'x'));
    EXPECT_EQ(_com_util::ConvertStringToBSTR(nullptr), nullptr);
    EXPECT_EQ(_com_util::ConvertBSTRToString(nullptr), nullptr);

    const BSTR wide = SysAllocStringLen(OLESTR("a\0\uAC00\u0E01"), 4);
    const std::unique_ptr<char[]> narrow(_com_util::ConvertBSTRToString(wide));
    EXPECT_EQ(std::string(narrow.get(), 6), std::string("a\0\xB0\xA1?\0", 6));
    SysFreeString(wide);
}
} // namespace
