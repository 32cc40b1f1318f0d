#include "KesraNTC/platform/Platform.h"

#include <gtest/gtest.h>

#include <cstring>

namespace
{

TEST(Bstr, CountsCharactersAndKeepsEmbeddedNuls)
{
    const BSTR text = SysAllocStringLen(OLESTR("ab\0cd"), 5);
    ASSERT_NE(nullptr, text);
    EXPECT_EQ(5U, SysStringLen(text));
    EXPECT_EQ(10U, SysStringByteLen(text));
    EXPECT_EQ(0, std::memcmp(text, OLESTR("ab\0cd"), 12));
    UINT count = 0;
    std::memcpy(&count, reinterpret_cast<const char*>(text) - 4, 4);
    EXPECT_EQ(10U, count);
    SysFreeString(text);

    const BSTR untilNul = SysAllocString(OLESTR("ab\0cd"));
    EXPECT_EQ(2U, SysStringLen(untilNul));
    SysFreeString(untilNul);
}

TEST(Bstr, NullIsEmpty)
{
    EXPECT_EQ(0U, SysStringLen(nullptr));
    EXPECT_EQ(0U, SysStringByteLen(nullptr));
    EXPECT_EQ(nullptr, SysAllocString(nullptr));
    SysFreeString(nullptr);

    const BSTR empty = SysAllocString(OLESTR(""));
    ASSERT_NE(nullptr, empty);
    EXPECT_EQ(0U, SysStringLen(empty));
    EXPECT_EQ(0, empty[0]);
    SysFreeString(empty);
}

TEST(Bstr, BytesNeedNotBeCharacters)
{
    const BSTR odd = SysAllocStringByteLen("abc", 3);
    EXPECT_EQ(3U, SysStringByteLen(odd));
    EXPECT_EQ(1U, SysStringLen(odd));
    EXPECT_EQ(0, std::memcmp(odd, "abc\0", 5));
    SysFreeString(odd);

    const BSTR room = SysAllocStringLen(nullptr, 3);
    EXPECT_EQ(3U, SysStringLen(room));
    EXPECT_EQ(0, room[3]);
    SysFreeString(room);
}

TEST(Bstr, RefusesWhatMemoryCannotHold)
{
    EXPECT_EQ(nullptr, SysAllocStringLen(nullptr, 0xFFFFFFFF));
    EXPECT_EQ(nullptr, SysAllocStringLen(nullptr, 0x80000000));
    EXPECT_EQ(nullptr, SysAllocStringByteLen(nullptr, 0xFFFFFFFE));
}

} // namespace
