#pragma once

#include "KesraNTC/platform/Platform.h"

#include <string>
#include <string_view>

namespace Kesra
{

// Both throw _com_error when a text cannot be converted for want of memory.

/// The characters before the first NUL in the ANSI code page; null is the empty text.
std::string AnsiFromBstr(BSTR text);
/// A new text, never null, that belongs to the caller.
BSTR BstrFromAnsi(std::string_view text);

} // namespace Kesra
