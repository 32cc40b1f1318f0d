#include "tests/windows/values/Values.h"

#include <KesraNTC/KesraNTC.h>

namespace
{
std::string Content(const CString& text)
{
    const std::size_t length = static_cast<std::size_t>(text.GetLength());
    const bool isWhole = length == std::strlen(text);
    return std::string(text, length) + (isWhole ? "" : " with another length than its text");
}

int Sign(int order)
{
    return (order > 0) - (order < 0);
}

/// Texts of whole and of half characters, of bytes that lead or trail depending on where one starts.
std::string TakeText(Sequence& sequence)
{
    constexpr const char* Units[] = {"a",        "Z",        "m",        " ",        "\\",   "\xB0\xA1",
                                     "\x81\x41", "\x81\x61", "\xA3\xE1", "\xA3\xC1", "\xFA", "\xB0",
                                     "\xB0\xB0", "\xFF",     "\x80",     "\xA5\xE1", "\t"};
    std::string text;
    for (unsigned count = sequence.Below(7); count > 0; --count)
        text += Units[sequence.Below(std::size(Units))];
    return text;
}

std::string Changed(const std::string& text, void (CString::*change)())
{
    CString changed(text.c_str());
    (changed.*change)();
    return Content(changed);
}

/// The characters that change, lead by lead.
void PrintCaseMapping()
{
    for (int lead = 0; lead < 0x100; ++lead) {
        std::string mapped;
        for (int trail = lead == 0 ? 1 : 0; trail < 0x100; ++trail) {
            std::string character(1, static_cast<char>(trail));
            if (lead)
                character.insert(0, 1, static_cast<char>(lead));
            for (void (CString::*change)() : {&CString::MakeUpper, &CString::MakeLower}) {
                const std::string result = Changed(character, change);
                if (result != character.c_str())
                    mapped += character + " " + result + ", ";
            }
        }
        Print("case with lead " + std::to_string(lead), mapped);
    }
}

void PrintEditing(const std::string& text)
{
    const std::string label = Quoted(text) + " ";
    Print(label + "upper, lower, reverse", Changed(text, &CString::MakeUpper) + "|" +
                                               Changed(text, &CString::MakeLower) + "|" +
                                               Changed(text, &CString::MakeReverse));
    Print(label + "trimmed", Changed(text, &CString::TrimLeft) + "|" + Changed(text, &CString::TrimRight));
}

void PrintEditing(const std::string& text, const std::string& other)
{
    const std::string label = Quoted(text) + " with " + Quoted(other) + " ";
    const CString string(text.c_str());
    const char* word = other.c_str();
    const char first = other.empty() ? 'a' : other[0];
    Print(label + "found", std::to_string(string.Find(first)) + " " + std::to_string(string.Find(word)) +
                               " " + std::to_string(string.Find(word, 2)) + " " +
                               std::to_string(string.ReverseFind(first)) + " " +
                               std::to_string(string.FindOneOf(word)));
    Print(label + "spans", Content(string.SpanIncluding(word)) + "|" + Content(string.SpanExcluding(word)));
    CString replaced(string), removed(string), inserted(string), trimmed(string);
    const int count = replaced.Replace(word, "<>") + removed.Remove(first) * 100;
    inserted.Insert(1, word);
    inserted.Delete(3, 2);
    trimmed.TrimLeft(word);
    trimmed.TrimRight(word);
    Print(label + "edited", std::to_string(count) + " " + Content(replaced) + "|" + Content(removed) + "|" +
                                Content(inserted) + "|" + Content(trimmed));
    Print(label + "compared", std::to_string(Sign(string.Compare(word))) + " " +
                                  std::to_string(Sign(string.CompareNoCase(word))));
}

/// Of these characters every system knows the same order.
void PrintCollation()
{
    constexpr const char* Units[] = {"a",        "A",        "b",        "Z",       "0",        "9",
                                     "-",        " ",        "_",        "!",       "\xB0\xA1", "\xB0\xA2",
                                     "\x81\x41", "\xC7\xD1", "\xA3\xE1", "\xA3\xC1"};
    Sequence sequence;
    const auto take = [&] {
        std::string text;
        for (unsigned count = sequence.Below(4); count > 0; --count)
            text += Units[sequence.Below(std::size(Units))];
        return text;
    };
    for (int round = 0; round < 500; ++round) {
        const std::string left = take(), right = take();
        const CString string(left.c_str());
        Print(Quoted(left) + " collated with " + Quoted(right),
              std::to_string(Sign(string.Collate(right.c_str()))) + " " +
                  std::to_string(Sign(string.CollateNoCase(right.c_str()))));
    }
}

void PrintWideTexts()
{
    for (unsigned row = 0; row < 0x100; ++row) {
        std::vector<unsigned short> wide;
        for (unsigned column = 0; column < 0x100; ++column)
            wide.push_back(static_cast<unsigned short>(row << 8 | column));
        if (row == 0)
            wide.erase(wide.begin());
        // The private and the compatibility characters, and the halves of pairs, are each system's own
        // matter.
        if (row < 0xD8 || row == 0xFF)
            Print("wide row " + std::to_string(row),
                  Content(CString(wide.data(), static_cast<int>(wide.size()))));
    }
    Print("wide literal", Content(CString(L"a\uAC00\u00E9\u0E01")));
    Print("wide unit text", Content(CString(OLESTR("a\uAC00\u00E9\u0E01"))));
}
} // namespace

void PrintTexts()
{
    PrintCaseMapping();
    Sequence sequence;
    for (int round = 0; round < 300; ++round) {
        const std::string text = TakeText(sequence);
        PrintEditing(text);
        PrintEditing(text, TakeText(sequence));
    }
    PrintCollation();
    PrintWideTexts();
    for (const char* text : {"", "a\xB0\xA1\\", "\xA3\xE1\xC7\xD1 z"})
        Print("code pages of " + Quoted(text),
              Changed(text, &CString::CharToOemA) + "|" + Changed(text, &CString::OemToCharA));
}
