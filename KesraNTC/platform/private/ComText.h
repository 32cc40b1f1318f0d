#pragma once

#include "KesraNTC/platform/Platform.h"

// The two conversions that comutil.h declares, and that _variant_t and _bstr_t call for a text of the ANSI
// code page. The compiler's libraries for Windows lack them, so this library gives them to a game.
#ifndef _WIN32
#define WINAPI
namespace _com_util
{
BSTR ConvertStringToBSTR(const char* text);
char* ConvertBSTRToString(BSTR text);
} // namespace _com_util
#endif
