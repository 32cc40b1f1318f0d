#pragma once

#include <cstdint>

// Code page 949: what its bytes mean, for the conversion and the multibyte functions.
namespace Kesra::Uhc
{
constexpr std::uint16_t Unmapped = 0;

constexpr bool IsLead(unsigned char byte)
{
    return byte >= 0x81 && byte <= 0xFE;
}

/// The wide character of a code (one byte, or lead << 8 | trail); Unmapped where there is none.
char16_t ToWide(unsigned int code);

/// The code of a wide character; Unmapped where the page has none. NUL is never asked.
std::uint16_t FromWide(char16_t wide);
} // namespace Kesra::Uhc
