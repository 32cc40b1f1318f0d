#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdio>

namespace Kesra
{

/// Formats as printf does, cut to what the buffer holds with its NUL; empty when the format cannot be used.
template <std::size_t N> void BoundedFormat(char (&buffer)[N], const char* format, std::va_list arguments)
{
    if (format == nullptr || std::vsnprintf(buffer, N, format, arguments) < 0)
        buffer[0] = '\0';
}

} // namespace Kesra
