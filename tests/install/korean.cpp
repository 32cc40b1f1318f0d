// The conversion that docs/using.md shows, there and back, for Korean, for ASCII and for nothing.
#include "korean-block.h"

#include <cstdio>

int main()
{
    const std::string korean = "\xBE\xC8\xB3\xE7, Mina";
    const std::string utf8 = "\xEC\x95\x88\xEB\x85\x95, Mina";
    const bool right = Utf8(korean) == utf8 && CP949(utf8) == korean && Utf8("").empty() && CP949("").empty();
    std::puts(right ? utf8.c_str() : "the conversion of docs/using.md is wrong");
    return right ? 0 : 1;
}
