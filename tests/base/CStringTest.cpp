#include "KesraNTC/base/CString.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace
{
const char* Text(const CString& string)
{
    return string;
}

const unsigned short* Wide(const char16_t* text)
{
    return reinterpret_cast<const unsigned short*>(text);
}

void ExpectText(const CString& string, const std::string& text)
{
    EXPECT_EQ(std::string(Text(string)), text);
    EXPECT_EQ(string.GetLength(), static_cast<int>(text.size()));
}

TEST(CString, EmptyStringsShareOneBufferWhateverTheyCameFrom)
{
    const CString empty;
    const char* null = nullptr;
    const unsigned short* nullWide = nullptr;
    CString emptied("gone");
    emptied.Empty();
    CString roomy;
    roomy.GetBuffer(10);
    roomy.Empty();
    for (const CString& each :
         {CString(empty), CString(""), CString(null), CString(nullWide), CString(nullWide, 5),
          CString('x', 0), CString('x', -3), CString() + CString(), emptied, roomy}) {
        EXPECT_EQ(Text(each), Text(empty));
        EXPECT_TRUE(each.IsEmpty());
        EXPECT_EQ(each.GetAllocLength(), 0);
    }
}

TEST(CString, TheHeaderStandsBeforeTheCharacters)
{
    const CString one("abc");
    const CString two(one);
    const auto* header = reinterpret_cast<const CStringData*>(Text(one)) - 1;
    EXPECT_EQ(header->RefCount, 2);
    EXPECT_EQ(header->DataLength, 3);
    EXPECT_EQ(header->AllocLength, 3);
    const CString empty;
    EXPECT_EQ((reinterpret_cast<const CStringData*>(Text(empty)) - 1)->RefCount, -1);
    EXPECT_EQ(sizeof(CString), sizeof(char*));
}

TEST(CString, CopiesShareUntilOneIsWritten)
{
    CString first("hello");
    CString second = first;
    CString third;
    third = second;
    EXPECT_EQ(Text(first), Text(second));
    EXPECT_EQ(Text(first), Text(third));

    second.SetAt(0, 'j');
    third += "!";
    ExpectText(first, "hello");
    ExpectText(second, "jello");
    ExpectText(third, "hello!");
    EXPECT_NE(Text(first), Text(second));

    CString fourth = first;
    fourth = "abc";
    ExpectText(first, "hello");
    EXPECT_EQ(fourth.GetAllocLength(), 3);
}

TEST(CString, AssignmentKeepsAPrivateBufferThatIsLargeEnough)
{
    CString string("a long text");
    const char* buffer = string;
    string = "short";
    EXPECT_EQ(Text(string), buffer);
    EXPECT_EQ(string.GetAllocLength(), 11);
    ExpectText(string, "short");
    string = 'c';
    ExpectText(string, "c");
    string = reinterpret_cast<const unsigned char*>("bytes");
    ExpectText(string, "bytes");
    const char* null = nullptr;
    string = null;
    ExpectText(string, "");
    string = "now longer than before";
    EXPECT_EQ(string.GetAllocLength(), 22);
}

TEST(CString, AssignmentMayTakeAPartOfTheStringItself)
{
    CString string("abcdef");
    string = Text(string) + 2;
    ExpectText(string, "cdef");
    CString shared("abcdef");
    const CString other(shared);
    shared = Text(shared) + 3;
    ExpectText(shared, "def");
    ExpectText(other, "abcdef");
    const CString& self = shared;
    shared = self;
    ExpectText(shared, "def");
    EXPECT_NE(Text(shared), Text(other));
}

TEST(CString, MovingLeavesTheSourceEmptyAndLocksWhereTheyAre)
{
    CString source("text");
    const char* buffer = source;
    CString target(std::move(source));
    EXPECT_EQ(Text(target), buffer);
    CString locked("0123456789");
    const char* lockedBuffer = locked.LockBuffer();
    locked = std::move(target);
    EXPECT_EQ(Text(locked), lockedBuffer);
    ExpectText(locked, "text");
}

TEST(CString, WideTextsBecomeCodePage949)
{
    ExpectText(CString(Wide(u"a\uAC00\uD55Cz")), "a\xB0\xA1\xC7\xD1z");
    ExpectText(CString(Wide(u"\uAC00bcd"), 2), "\xB0\xA1"
                                               "b");
    ExpectText(CString(Wide(u"a\u0E01z")), "a?z");
    ExpectText(CString(Wide(u"abc"), -1), "");
    CString string("shared");
    const CString other(string);
    string = Wide(u"\uAC02");
    ExpectText(string, "\x81\x41");
    ExpectText(other, "shared");
    EXPECT_EQ(CString(Wide(u"abcd")).GetAllocLength(), 8);

    ExpectText(CString(L"a\uAC00z"), "a\xB0\xA1z");
    ExpectText(CString(u"a\uAC00z"), "a\xB0\xA1z");
    // A character beyond 16 bits is two units, neither of which the page has.
    ExpectText(CString(L"a\U0001F600"), "a??");
    ExpectText(CString(u"a\U0001F600"), "a??");
    string = L"wide \uAC01";
    ExpectText(string, "wide \xB0\xA2");
    string = u"";
    ExpectText(string, "");
    string = static_cast<const wchar_t*>(nullptr);
    ExpectText(string, "");
}

TEST(CString, GetBufferGivesPrivateRoomAndKeepsTheText)
{
    CString empty;
    char* room = empty.GetBuffer(10);
    EXPECT_EQ(empty.GetAllocLength(), 10);
    EXPECT_EQ(empty.GetLength(), 0);
    std::strcpy(room, "abc");
    empty.ReleaseBuffer();
    ExpectText(empty, "abc");

    CString one("text");
    const CString two(one);
    one.GetBuffer(2)[0] = 'T';
    one.ReleaseBuffer(3);
    ExpectText(one, "Tex");
    EXPECT_EQ(one.GetAllocLength(), 4);
    ExpectText(two, "text");

    char* all = one.GetBufferSetLength(6);
    EXPECT_STREQ(all, "Tex");
    EXPECT_EQ(one.GetLength(), 6);
    EXPECT_EQ(all[6], '\0');
    one.GetBufferSetLength(0);
    ExpectText(one, "");
}

TEST(CString, BufferLengthsOutOfRangeAreCut)
{
    CString string("abc");
    string.ReleaseBuffer(100);
    ExpectText(string, "abc");
    string.ReleaseBuffer(-7);
    ExpectText(string, "abc");
    string.GetBuffer(-4);
    string.GetBufferSetLength(-4);
    ExpectText(string, "");

    CString unterminated("abc");
    std::memcpy(unterminated.GetBuffer(3), "wxyz", 4);
    unterminated.ReleaseBuffer();
    ExpectText(unterminated, "wxy");

    CString empty;
    empty.GetBufferSetLength(0);
    empty.ReleaseBuffer();
    ExpectText(empty, "");
    EXPECT_THROW(string.GetBuffer(INT32_MAX), std::bad_alloc);
    ExpectText(string, "");
}

TEST(CString, FreeExtraLeavesExactlyTheText)
{
    CString string("abc");
    string.GetBuffer(100);
    string.FreeExtra();
    EXPECT_EQ(string.GetAllocLength(), 3);
    ExpectText(string, "abc");
    string.Empty();
    string.GetBuffer(100);
    string.FreeExtra();
    EXPECT_EQ(Text(string), Text(CString()));
}

TEST(CString, ALockedBufferIsNeverShared)
{
    CString string("text");
    char* locked = string.LockBuffer();
    CString copy(string);
    CString assigned;
    assigned = string;
    EXPECT_NE(Text(copy), locked);
    EXPECT_NE(Text(assigned), locked);
    ExpectText(copy, "text");

    const CString source("new");
    string = source;
    EXPECT_EQ(Text(string), locked);
    ExpectText(string, "new");
    string.Empty();
    EXPECT_EQ(Text(string), locked);
    ExpectText(string, "");

    string = "back";
    string.UnlockBuffer();
    const CString shared(string);
    EXPECT_EQ(Text(shared), locked);
    // Unlocking what is shared must not make the sharers forget each other.
    string.UnlockBuffer();
    string.SetAt(0, 'p');
    ExpectText(shared, "back");

    CString empty;
    empty.LockBuffer();
    empty.UnlockBuffer();
    empty = "usable";
    ExpectText(empty, "usable");
}

TEST(CString, IndexesOutsideTheTextReadAsNulAndAreNotWritten)
{
    CString string("abc");
    string.GetBuffer(10);
    for (const int index : {-1, 3, 5, 11, INT32_MAX, INT32_MIN}) {
        EXPECT_EQ(string[index], '\0');
        string.SetAt(index, 'x');
    }
    ExpectText(string, "abc");
    EXPECT_EQ(string[2], 'c');
    CString empty;
    empty.SetAt(0, 'x');
    ExpectText(CString(), "");
}

TEST(CString, ConcatenationAllocatesExactly)
{
    const CString ab("ab");
    const CString cd("cd");
    const char* null = nullptr;
    for (const CString& joined : {ab + cd, ab + "cd", "ab" + cd, (ab + 'c') + 'd', 'a' + ("b" + cd)}) {
        ExpectText(joined, "abcd");
        EXPECT_EQ(joined.GetAllocLength(), 4);
    }
    ExpectText(ab + null, "ab");
    ExpectText(null + ab, "ab");

    CString string("x");
    string += "yz";
    string += 'a';
    string += ab;
    string += null;
    string += "";
    ExpectText(string, "xyzaab");
    EXPECT_EQ(string.GetAllocLength(), 6);
}

TEST(CString, AppendingUsesTheRoomThereIs)
{
    CString string;
    const char* buffer = string.GetBuffer(8);
    string += "1234";
    string += "5678";
    EXPECT_EQ(Text(string), buffer);
    ExpectText(string, "12345678");
}

TEST(CString, AppendingShowsNoSpareRoom)
{
    std::string expected;
    CString string;
    for (int i = 0; i < 500; ++i) {
        string += static_cast<char>('a' + i % 26);
        expected += static_cast<char>('a' + i % 26);
        ASSERT_EQ(string.GetAllocLength(), i + 1);
    }
    ExpectText(string, expected);

    const CString shared(string);
    string += "!";
    ExpectText(string, expected + "!");
    EXPECT_EQ(string.GetAllocLength(), 501);
    ExpectText(shared, expected);

    std::strcpy(string.GetBuffer(600) + 501, "?");
    string.ReleaseBuffer();
    EXPECT_EQ(string.GetAllocLength(), 600);
    ExpectText(string, expected + "!?");
    string.FreeExtra();
    EXPECT_EQ(string.GetAllocLength(), 502);
    ExpectText(string, expected + "!?");

    CString small("short");
    small += " and locked";
    const char* locked = small.LockBuffer();
    small += '.';
    EXPECT_NE(Text(small), locked) << "the locked buffer ends where it seems to end";
    ExpectText(small, "short and locked.");
    EXPECT_EQ(Text(CString(small)), Text(small));
}

TEST(CString, AppendingItselfDoublesTheText)
{
    CString string("abc");
    string += string;
    ExpectText(string, "abcabc");
    string += Text(string) + 4;
    ExpectText(string, "abcabcbc");
    const CString other(string);
    string += string;
    ExpectText(string, "abcabcbcabcabcbc");
    ExpectText(other, "abcabcbc");
}

TEST(CString, ComparisonTakesDoubleByteCharactersAsOne)
{
    const CString string("abc");
    EXPECT_TRUE(string == "abc" && "abc" == string && string == CString("abc") && !(string != "abc"));
    EXPECT_TRUE(string < "abd" && "abb" < string && string <= "abc" && string >= CString("abc"));
    EXPECT_TRUE(CString("abd") > string && "abd" > string && string > "ab" && string != "ab");
    const char* null = nullptr;
    EXPECT_TRUE(CString() == null && string > null);

    EXPECT_EQ(string.CompareNoCase("ABC"), 0);
    EXPECT_GT(string.Compare("ABC"), 0);
    // The trail byte of U+AC05 is the letter A, that of U+AC24 the letter a.
    EXPECT_NE(CString("\x81\x41").CompareNoCase("\x81\x61"), 0);
    EXPECT_GT(CString("\x81\x41").Compare("zzz"), 0);
    EXPECT_EQ(CString("a\xB0\xA1\xA5\xC1").CompareNoCase("A\xB0\xA1\xA5\xE1"), 0);
    EXPECT_GT(CString("a").CompareNoCase("_"), 0);
    // Half a character ends a text, and nothing behind it is looked at.
    const char half[] = {'a', '\xB0', '\0', 'z', '\0'};
    const char otherHalf[] = {'A', '\xB0', '\0', 'y', '\0'};
    EXPECT_EQ(CString("a\xB0").Compare(half), 0);
    EXPECT_EQ(CString("a\xB0").CompareNoCase(otherHalf), 0);
    EXPECT_EQ(CString("a\xB0").Collate(half), 0);
    EXPECT_EQ(CString("a\xB0").CollateNoCase(otherHalf), 0);
    EXPECT_LT(CString("a\xB0").Compare("a\xB0\xA1"), 0);
}

TEST(CString, CollationFollowsTheDictionary)
{
    EXPECT_LT(CString("apple").Collate("Banana"), 0);
    EXPECT_LT(CString("apple").Collate("Apple"), 0);
    EXPECT_EQ(CString("apple").CollateNoCase("APPLE"), 0);
    EXPECT_EQ(CString("apple").Collate("apple"), 0);
    // The second syllable stands between the others in the dictionary but before both in the code page.
    EXPECT_LT(CString("\xB0\xA1").Collate("\x81\x41"), 0);
    EXPECT_LT(CString("\x81\x41").Collate("\xB0\xA4"), 0);
}

// The buffer of all empty texts belongs to every thread: ThreadSanitizer reports whoever writes it.
TEST(CString, EmptyTextsOfTwoThreadsNeverWriteTheirBuffer)
{
    const auto work = [] {
        CString empty;
        empty.GetBuffer(0);
        empty.GetBuffer(-1);
        empty.GetBufferSetLength(0);
        empty.ReleaseBuffer();
        empty.LockBuffer();
        empty.UnlockBuffer();
        empty.FreeExtra();
        empty.SetAt(0, 'x');
        empty.MakeUpper();
        empty.MakeLower();
        empty.MakeReverse();
        empty.TrimLeft();
        empty.TrimRight();
        empty.CharToOemA();
        empty.OemToCharA();
        empty.Format("");
        empty.Replace("a", "b");
        empty.Insert(0, "");
        empty += "";
        empty = "";
        empty = Wide(u"");
        EXPECT_EQ(Text(empty), Text(CString()));
        EXPECT_EQ(empty.GetAllocLength(), 0);
    };
    std::thread other(work);
    work();
    other.join();
}

TEST(CString, SharersOnDifferentThreadsCountTogether)
{
    auto original = std::make_unique<CString>("shared by all");
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([copy = *original, i] {
            for (int round = 0; round < 2000; ++round) {
                CString mine(copy);
                CString other;
                other = mine;
                mine.SetAt(i, '#');
                EXPECT_EQ(other, "shared by all");
            }
        });
    original.reset();
    for (std::thread& thread : threads)
        thread.join();
}
} // namespace
