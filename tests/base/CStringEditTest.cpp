#include "KesraNTC/base/CString.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <random>
#include <string>

// In code page 949 the bytes B0 A1 are one syllable; 81 41 is another whose second byte is the letter A, 81
// 61 one whose second byte is the letter a. B0 B0 and B0 A1 B0 hold bytes that lead or trail depending on
// where one starts.
namespace
{
void ExpectText(const CString& string, const std::string& text)
{
    EXPECT_EQ(std::string(string, static_cast<std::size_t>(string.GetLength())), text);
    EXPECT_EQ(static_cast<const char*>(string)[string.GetLength()], '\0');
}

bool IsShared(const CString& left, const CString& right)
{
    return static_cast<const char*>(left) == static_cast<const char*>(right);
}

TEST(CStringSearch, FindsCharactersAndTexts)
{
    const CString text("abcabc");
    EXPECT_EQ(text.Find('b'), 1);
    EXPECT_EQ(text.Find('b', 2), 4);
    EXPECT_EQ(text.Find('c', -5), 2);
    EXPECT_EQ(text.Find('z'), -1);
    EXPECT_EQ(text.Find('c', 6), -1);
    EXPECT_EQ(text.Find('a', INT_MAX), -1);
    EXPECT_EQ(text.Find("ca"), 2);
    EXPECT_EQ(text.Find("abc", 1), 3);
    EXPECT_EQ(text.Find("abcd"), -1);
    EXPECT_EQ(text.Find(""), 0);
    EXPECT_EQ(text.Find("", 6), 6);
    EXPECT_EQ(text.Find("", 7), -1);
    EXPECT_EQ(text.ReverseFind('a'), 3);
    EXPECT_EQ(text.ReverseFind('z'), -1);
    EXPECT_EQ(text.FindOneOf("xcb"), 1);
    EXPECT_EQ(text.FindOneOf("xyz"), -1);
    EXPECT_EQ(text.FindOneOf(nullptr), -1);
    EXPECT_EQ(CString().Find(""), 0);
    EXPECT_EQ(CString().Find('a'), -1);
    EXPECT_EQ(CString().ReverseFind('a'), -1);
}

TEST(CStringSearch, NeverMatchesATrailByteOrHalfACharacter)
{
    const CString text("\x81\x41\x81\x5C"
                       "A\x81\x61");
    EXPECT_EQ(text.Find('A'), 4);
    EXPECT_EQ(text.Find('a'), -1);
    EXPECT_EQ(text.Find('\\'), -1);
    EXPECT_EQ(text.Find('\x81'), -1);
    EXPECT_EQ(text.Find("A"), 4);
    EXPECT_EQ(text.Find("\x81\x61"), 5);
    EXPECT_EQ(text.ReverseFind('a'), -1);
    EXPECT_EQ(text.ReverseFind('A'), 4);
    EXPECT_EQ(text.FindOneOf("\\a"), -1);
    EXPECT_EQ(text.FindOneOf("A\x81\x5C"), 2);

    const CString run("\xB0\xB0\xA1\xB0\xA1\xB0\xB0\xA1");
    EXPECT_EQ(run.Find("\xB0\xA1"), 6);
    EXPECT_EQ(run.Find("\xA1\xB0"), 2);
    EXPECT_EQ(run.Find("\xB0"), -1);
}

// A second opinion on where characters start: walk from the beginning, one character at a time.
int FindByWalking(const std::string& text, const std::string& wanted)
{
    for (std::size_t at = 0; at < text.size();) {
        if (text.compare(at, wanted.size(), wanted) == 0)
            return static_cast<int>(at);
        const auto byte = static_cast<unsigned char>(text[at]);
        at += byte >= 0x81 && byte <= 0xFE ? 2 : 1;
    }
    return -1;
}

TEST(CStringSearch, AgreesWithAWalkOverTheCharactersOfRandomTexts)
{
    std::mt19937 random(949);
    const std::string units[] = {"a",        "A",        "\\",       "\x81\x41", "\x81\x61",
                                 "\xB0\xA1", "\xA1\xB0", "\xB0\xB0", "\xA1\xA1"};
    const auto pick = [&](std::size_t count) {
        std::string text;
        while (count--)
            text += units[random() % std::size(units)];
        return text;
    };
    for (int round = 0; round < 3000; ++round) {
        const std::string text = pick(random() % 20);
        const std::string wanted = pick(1 + random() % 2);
        ASSERT_EQ(CString(text.c_str()).Find(wanted.c_str()), FindByWalking(text, wanted))
            << text << " / " << wanted;

        CString replaced(text.c_str());
        replaced.Replace(wanted.c_str(), "#");
        ASSERT_EQ(FindByWalking(std::string(replaced), wanted), -1) << text << " / " << wanted;
    }
}

TEST(CStringSearch, ExtractsWithinTheText)
{
    const CString text("abcdef");
    ExpectText(text.Mid(2, 100), "cdef");
    ExpectText(text.Mid(10, 1), "");
    ExpectText(text.Mid(6), "");
    ExpectText(text.Mid(-3, 2), "ab");
    ExpectText(text.Mid(2, -1), "");
    ExpectText(text.Mid(2, INT_MAX), "cdef");
    ExpectText(text.Mid(4), "ef");
    ExpectText(text.Left(-1), "");
    ExpectText(text.Left(2), "ab");
    ExpectText(text.Right(2), "ef");
    ExpectText(text.Right(-1), "");
    EXPECT_TRUE(IsShared(text, text.Left(6)) && IsShared(text, text.Right(100)));
    EXPECT_TRUE(IsShared(text, text.Mid(0)) && IsShared(text, text.Mid(-1, 6)));
    EXPECT_EQ(text.Mid(1, 3).GetAllocLength(), 3);

    ExpectText(text.SpanIncluding("cba"), "abc");
    ExpectText(text.SpanExcluding("fd"), "abc");
    ExpectText(text.SpanIncluding(nullptr), "");
    ExpectText(text.SpanExcluding(nullptr), "abcdef");
    ExpectText(CString("\x81\x41"
                       "Ab")
                   .SpanExcluding("A"),
               "\x81\x41");
}

TEST(CStringEdit, MapsTheCaseOfWholeCharacters)
{
    CString text("aZ\x81\x61\x81\x5A\xA3\xE1!");
    const CString before(text);
    text.MakeUpper();
    ExpectText(text, "AZ\x81\x61\x81\x5A\xA3\xC1!");
    text.MakeLower();
    ExpectText(text, "az\x81\x61\x81\x5A\xA3\xE1!");
    ExpectText(before, "aZ\x81\x61\x81\x5A\xA3\xE1!");
    CString empty;
    empty.MakeUpper();
    empty.MakeReverse();
    ExpectText(empty, "");
}

// A game writes 61 B0 into a larger buffer and leaves other text of its own behind the terminator.
TEST(CStringEdit, HalfACharacterNeverTakesWhatIsBehindTheText)
{
    const auto changed = [](void (CString::*change)()) {
        CString text;
        std::memcpy(text.GetBuffer(8), "a\xB0\0bc\xB0z", 8);
        text.ReleaseBuffer();
        (text.*change)();
        EXPECT_EQ(std::string(static_cast<const char*>(text) + 3, 4), "bc\xB0z");
        return std::string(text);
    };
    EXPECT_EQ(changed(&CString::MakeUpper), "A\xB0");
    EXPECT_EQ(changed(&CString::MakeLower), "a\xB0");
    EXPECT_EQ(changed(&CString::MakeReverse), "a\xB0");

    const char set[] = {'\xB0', '\0', 'b', '\0'};
    EXPECT_EQ(CString("ab").FindOneOf(set), -1);
    EXPECT_EQ(CString("a\xB0").FindOneOf("\xB0"), -1);
    CString half("\xFA");
    half.MakeUpper();
    ExpectText(half, "\xFA");
}

TEST(CStringEdit, ReversesCharactersNotBytes)
{
    CString text("a\xB0\xA1"
                 "bc\x81\x41");
    text.MakeReverse();
    ExpectText(text, "\x81\x41"
                     "cb\xB0\xA1"
                     "a");
    text.MakeReverse();
    ExpectText(text, "a\xB0\xA1"
                     "bc\x81\x41");
}

TEST(CStringEdit, ReplacesCharacters)
{
    CString text("A\x81\x41"
                 "A");
    const CString before(text);
    EXPECT_EQ(text.Replace('A', 'x'), 2);
    ExpectText(text, "x\x81\x41"
                     "x");
    EXPECT_EQ(text.Replace('x', 'x'), 0);
    EXPECT_EQ(text.Replace('?', 'x'), 0);
    EXPECT_EQ(text.Replace('\x81', 'x'), 0);
    ExpectText(before, "A\x81\x41"
                       "A");
}

TEST(CStringEdit, ReplacesTexts)
{
    CString text("aaaa");
    EXPECT_EQ(text.Replace("aa", "b"), 2);
    ExpectText(text, "bb");
    const CString shared(text);
    EXPECT_EQ(text.Replace("b", "xyz"), 2);
    ExpectText(text, "xyzxyz");
    EXPECT_EQ(text.GetAllocLength(), 6);
    ExpectText(shared, "bb");
    EXPECT_EQ(text.Replace("", "q"), 0);
    EXPECT_EQ(text.Replace(nullptr, "q"), 0);
    EXPECT_EQ(text.Replace("y", nullptr), 2);
    ExpectText(text, "xzxz");
    EXPECT_EQ(text.Replace("xzxz", ""), 1);
    ExpectText(text, "");
    EXPECT_EQ(text.Replace("a", "b"), 0);

    CString korean("\x81\x41"
                   "AA");
    EXPECT_EQ(korean.Replace("A", "BB"), 2);
    ExpectText(korean, "\x81\x41"
                       "BBBB");
}

TEST(CStringEdit, EditingUsesTheRoomThereIs)
{
    CString text("a-b-c");
    const char* locked = (text.GetBuffer(20), text.LockBuffer());
    text.Replace("-", " and ");
    text.Insert(0, "see ");
    EXPECT_EQ(static_cast<const char*>(text), locked);
    ExpectText(text, "see a and b and c");
}

TEST(CStringEdit, ArgumentsMayLieInTheTextItself)
{
    CString text("abcabc");
    const char* own = text;
    EXPECT_EQ(text.Replace(own + 4, own), 2);
    ExpectText(text, "aabcabcaabcabc");
    text = "abc";
    EXPECT_EQ(text.Insert(1, static_cast<const char*>(text)), 6);
    ExpectText(text, "aabcbc");
    text = "xxabxx";
    text.TrimRight(static_cast<const char*>(text) + 4);
    ExpectText(text, "xxab");
    CString empty;
    EXPECT_EQ(empty.Insert(0, static_cast<const char*>(empty)), 0);
    EXPECT_EQ(empty.Replace(static_cast<const char*>(empty), "x"), 0);
}

TEST(CStringEdit, RemovesInsertsAndDeletes)
{
    CString text("a-b-c\x81\x2D");
    EXPECT_EQ(text.Remove('-'), 2);
    ExpectText(text, "abc\x81\x2D");
    EXPECT_EQ(text.Remove('-'), 0);

    text = "abcdef";
    EXPECT_EQ(text.Delete(1, 2), 6);
    ExpectText(text, "adef");
    EXPECT_EQ(text.Delete(-1), 4);
    ExpectText(text, "def");
    EXPECT_EQ(text.Delete(3), 3);
    EXPECT_EQ(text.Delete(0, 0), 3);
    EXPECT_EQ(text.Delete(1, INT_MAX), 3);
    ExpectText(text, "d");

    const CString shared(text);
    EXPECT_EQ(text.Insert(-4, 'c'), 2);
    EXPECT_EQ(text.Insert(100, "ef"), 4);
    EXPECT_EQ(text.Insert(2, ""), 4);
    EXPECT_EQ(text.Insert(2, nullptr), 4);
    ExpectText(text, "cdef");
    ExpectText(shared, "d");
    CString empty;
    EXPECT_EQ(empty.Insert(5, 'x'), 1);
    ExpectText(empty, "x");
}

TEST(CStringEdit, TrimsWholeCharacters)
{
    const auto trimmed = [](CString text, auto... what) {
        text.TrimLeft(what...);
        text.TrimRight(what...);
        return text;
    };
    ExpectText(trimmed(" \t\r\n\v\f a b \n"), "a b");
    ExpectText(trimmed(" \t"), "");
    ExpectText(trimmed("xxaxbxx", 'x'), "axb");
    ExpectText(trimmed("xyaxbyx", "xy"), "axb");
    ExpectText(trimmed("xyx", "yx"), "");
    ExpectText(trimmed("A\x81\x41"
                       "A",
                       'A'),
               "\x81\x41");
    ExpectText(trimmed("\x81\x41", 'A'), "\x81\x41");
    ExpectText(trimmed("\xB0\xA1z\xB0\xA1\xB0\xA1", "\xB0\xA1"), "z");
    ExpectText(trimmed("\xB0\xA1\xA1\xA1", "\xA1\xA1"), "\xB0\xA1");
    ExpectText(trimmed("a", static_cast<const char*>(nullptr)), "a");

    CString text("  shared  ");
    const CString other(text);
    text.TrimRight();
    text.TrimLeft();
    ExpectText(text, "shared");
    ExpectText(other, "  shared  ");
}

TEST(CStringEdit, ConvertsBetweenAnsiAndOem)
{
    CString text("a\xB0\xA1\\");
    const CString other(text);
    text.CharToOemA();
    text.OemToCharA();
    ExpectText(text, "a\xB0\xA1\\");
    EXPECT_FALSE(IsShared(text, other));
    // Bytes that are no characters may come out shorter.
    for (void (CString::*convert)() : {&CString::CharToOemA, &CString::OemToCharA}) {
        CString broken("a\xFA\xFFz\xFA");
        (broken.*convert)();
        EXPECT_EQ(static_cast<std::size_t>(broken.GetLength()), std::strlen(broken));
        EXPECT_EQ(broken[0], 'a');
    }
}
} // namespace
