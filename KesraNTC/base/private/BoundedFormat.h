#pragma once

#include "KesraNTC/base/CString.h"

#include <algorithm>
#include <cstdarg>
#include <cstddef>
#include <cstring>

namespace Kesra
{

/// Formats as CString::Format does, cut to what the buffer holds with its NUL.
template <std::size_t N> void BoundedFormat(char (&buffer)[N], const char* format, std::va_list arguments)
{
    CString text;
    text.FormatV(format, arguments);
    const std::size_t length = std::min(static_cast<std::size_t>(text.GetLength()), N - 1);
    std::memcpy(buffer, static_cast<const char*>(text), length);
    buffer[length] = '\0';
}

} // namespace Kesra
