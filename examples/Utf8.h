// Names and chat lines travel in code page 949; terminals show UTF-8. Copy this to any program of yours.
#pragma once

#include <KesraNTC/KesraNTC.h>

#include <cstring>
#include <string>
#include <vector>

/// A text of the wire as people's terminals show it; what is no text of code page 949 becomes question marks.
inline std::string Utf8(const char* wire)
{
    const int length = static_cast<int>(std::strlen(wire));
    if (length == 0)
        return {}; // the conversions refuse empty texts
    std::vector<WCHAR> wide(static_cast<std::size_t>(length));
    const int units = MultiByteToWideChar(949, 0, wire, length, wide.data(), length);
    std::string text(static_cast<std::size_t>(units) * 3, '\0'); // no such character takes more
    const int bytes = WideCharToMultiByte(CP_UTF8, 0, wide.data(), units, text.data(),
                                          static_cast<int>(text.size()), nullptr, nullptr);
    text.resize(static_cast<std::size_t>(bytes));
    return text;
}
