#include "KesraNTC/platform/Platform.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <string>

namespace
{
// The message, or "<error>" where the call fails.
std::string Message(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    char* message = nullptr;
    const DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_ALLOCATE_BUFFER, format,
                                        0, 0, reinterpret_cast<LPSTR>(&message), 0, &arguments);
    va_end(arguments);
    if (length == 0)
        return "<error>";
    const std::string text = message;
    EXPECT_EQ(text.size(), length);
    EXPECT_EQ(LocalFree(message), nullptr);
    return text;
}

TEST(Messages, InsertsAreTakenByNumber)
{
    EXPECT_EQ(Message("%1 %2", "a", "b"), "a b");
    EXPECT_EQ(Message("%2 %1 %2", "a", "b"), "b a b");
    EXPECT_EQ(Message("%10", "1", "2", "3", "4", "5", "6", "7", "8", "9", "ten"), "ten");
    EXPECT_EQ(Message("%1!d! %2!04x! %3!u!", -7, 0xAB, 9), "-7 00ab 9");
    EXPECT_EQ(Message("%1!5s!|%2!-5s!|", "ab", "cd"), "   ab|cd   |");
    if (!KESRANTC_UNDER_WINE) {
        // Documented so; Wine's narrow form counts the two stars wrongly and takes the next argument.
        EXPECT_EQ(Message("%1!*.*s! %4", 4, 2, "abc", "d"), "  ab d");
    }
    EXPECT_EQ(Message("%1!c!%2!S!", 'x', OLESTR("wide")), "xwide");
}

TEST(Messages, EscapesStandForTheirCharacters)
{
    EXPECT_EQ(Message("100%% sure%!"), "100% sure!");
    EXPECT_EQ(Message("% a%.%"
                      "!"),
              " a.!");
    EXPECT_EQ(Message("a%nb%rc%td"), "a\r\nb\rc\td");
    EXPECT_EQ(Message("a\nb\r\nc\rd"), "a\r\nb\r\nc\r\nd");
    EXPECT_EQ(Message("end%0 not shown"), "end");
}

TEST(Messages, BrokenFormatsFail)
{
    EXPECT_EQ(Message("%1!s", "a"), "<error>");
    EXPECT_EQ(Message("half%"), "<error>");
    EXPECT_EQ(Message(""), "<error>");
}
} // namespace
