#pragma once

#include <cstddef>
#include <cstdint>

#ifdef __clang__
// Clang cannot look into these literals and would call each of them an insecure format.
#pragma clang diagnostic ignored "-Wformat-security"
#endif

/// Korean message texts. The game, its log and the people who read it use code page 949, while this source is
/// UTF-8: `"헤더"_949` is a `const char*` to the code page 949 bytes of the text, made by the compiler and
/// living as long as the program. A character that the table lacks does not compile; add it here.
namespace Kesra
{

struct Hangul {
    char16_t Unicode;
    std::uint16_t CodePage949;
};

/// The syllables that the library's messages use.
inline constexpr Hangul HangulTable[] = {
    {u'가', 0xB0A1}, {u'경', 0xB0E6}, {u'고', 0xB0ED}, {u'구', 0xB1B8}, {u'그', 0xB1D7}, {u'기', 0xB1E2},
    {u'긴', 0xB1E4}, {u'길', 0xB1E6}, {u'꽉', 0xB2CB}, {u'났', 0xB3B5}, {u'내', 0xB3BB}, {u'냥', 0xB3C9},
    {u'너', 0xB3CA}, {u'넘', 0xB3D1}, {u'는', 0xB4C2}, {u'다', 0xB4D9}, {u'당', 0xB4E7}, {u'대', 0xB4EB},
    {u'더', 0xB4F5}, {u'데', 0xB5A5}, {u'덱', 0xB5A6}, {u'된', 0xB5C8}, {u'드', 0xB5E5}, {u'들', 0xB5E9},
    {u'량', 0xB7AE}, {u'러', 0xB7AF}, {u'레', 0xB7B9}, {u'려', 0xB7C1}, {u'룹', 0xB7EC}, {u'를', 0xB8A6},
    {u'리', 0xB8AE}, {u'많', 0xB8B9}, {u'메', 0xB8DE}, {u'못', 0xB8F8}, {u'무', 0xB9AB}, {u'바', 0xB9D9},
    {u'발', 0xB9DF}, {u'버', 0xB9F6}, {u'번', 0xB9F8}, {u'보', 0xBAB8}, {u'사', 0xBBE7}, {u'상', 0xBBF3},
    {u'샌', 0xBBF7}, {u'생', 0xBBFD}, {u'서', 0xBCAD}, {u'송', 0xBCDB}, {u'수', 0xBCF6}, {u'스', 0xBDBA},
    {u'시', 0xBDC3}, {u'신', 0xBDC5}, {u'쓸', 0xBEB5}, {u'어', 0xBEEE}, {u'엄', 0xBEF6}, {u'없', 0xBEF8},
    {u'에', 0xBFA1}, {u'왔', 0xBFD4}, {u'원', 0xBFF8}, {u'월', 0xBFF9}, {u'은', 0xC0BA}, {u'을', 0xC0BB},
    {u'의', 0xC0C7}, {u'이', 0xC0CC}, {u'인', 0xC0CE}, {u'일', 0xC0CF}, {u'읽', 0xC0D0}, {u'잘', 0xC0DF},
    {u'조', 0xC1B6}, {u'중', 0xC1DF}, {u'즈', 0xC1EE}, {u'지', 0xC1F6}, {u'차', 0xC2F7}, {u'찾', 0xC3A3},
    {u'체', 0xC3BC}, {u'초', 0xC3CA}, {u'최', 0xC3D6}, {u'크', 0xC5A9}, {u'킬', 0xC5B3}, {u'킷', 0xC5B6},
    {u'타', 0xC5B8}, {u'터', 0xC5CD}, {u'턴', 0xC5CF}, {u'트', 0xC6AE}, {u'패', 0xC6D0}, {u'퍼', 0xC6DB},
    {u'포', 0xC6F7}, {u'하', 0xC7CF}, {u'한', 0xC7D1}, {u'했', 0xC7DF}, {u'헤', 0xC7EC}, {u'호', 0xC8A3},
};

/// The UTF-8 source text of a literal.
template <std::size_t N> struct Utf8Text {
    char Bytes[N] = {};

    // NOLINTNEXTLINE(google-explicit-constructor): a literal becomes a template argument through it
    constexpr Utf8Text(const char (&text)[N])
    {
        for (std::size_t i = 0; i < N; ++i)
            Bytes[i] = text[i];
    }
};

/// No syllable takes more bytes in code page 949 than in UTF-8, so the room of the source text is enough.
template <std::size_t N> struct KoreanText {
    char Bytes[N] = {};
};

constexpr std::uint16_t CodePage949Of(char16_t syllable)
{
    for (const Hangul& entry : HangulTable)
        if (entry.Unicode == syllable)
            return entry.CodePage949;
    throw "the syllable is missing from HangulTable";
}

template <std::size_t N> constexpr KoreanText<N> EncodeKorean(const Utf8Text<N>& text)
{
    KoreanText<N> result;
    std::size_t out = 0;
    for (std::size_t i = 0; i < N;) {
        const auto lead = static_cast<unsigned char>(text.Bytes[i]);
        if (lead < 0x80) {
            result.Bytes[out++] = text.Bytes[i++];
            continue;
        }
        if ((lead & 0xF0) != 0xE0 || i + 2 >= N)
            throw "only ASCII and Hangul can be written";
        const auto syllable = static_cast<char16_t>(
            ((lead & 0x0F) << 12) | ((text.Bytes[i + 1] & 0x3F) << 6) | (text.Bytes[i + 2] & 0x3F));
        const std::uint16_t code = CodePage949Of(syllable);
        result.Bytes[out++] = static_cast<char>(code >> 8);
        result.Bytes[out++] = static_cast<char>(code & 0xFF);
        i += 3;
    }
    return result;
}

template <Utf8Text text> inline constexpr auto KoreanBytes = EncodeKorean(text);

template <Utf8Text text> consteval const char* operator""_949()
{
    return KoreanBytes<text>.Bytes;
}

} // namespace Kesra
