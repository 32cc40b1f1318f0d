#include "tests/windows/values/Values.h"

#include <cstdio>

namespace
{
std::string Escaped(std::string_view text)
{
    constexpr char Digits[] = "0123456789abcdef";
    std::string escaped;
    for (const char ch : text) {
        const auto byte = static_cast<unsigned char>(ch);
        if (byte >= 0x20 && byte < 0x7F && ch != '\\')
            escaped += ch;
        else
            escaped += {'\\', 'x', Digits[byte >> 4], Digits[byte & 15]};
    }
    return escaped;
}
} // namespace

void Print(std::string_view label, std::string_view result)
{
    std::printf("%s = %s\n", Escaped(label).c_str(), Escaped(result).c_str());
}

std::string Quoted(std::string_view text)
{
    return "'" + std::string(text) + "'";
}

int main()
{
    PrintFormats();
    PrintTexts();
    PrintDates();
    PrintVariants();
    PrintCollections();
    return std::fflush(stdout) == 0 ? 0 : 1;
}
