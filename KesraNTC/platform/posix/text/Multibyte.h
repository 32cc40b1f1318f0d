#pragma once

#include "KesraNTC/platform/Export.h"
#include "KesraNTC/platform/posix/Types.h"

// Comparing texts of code page 949 as a Korean dictionary orders them.

using LCID = DWORD;

constexpr DWORD NORM_IGNORECASE = 0x1;
constexpr DWORD SORT_STRINGSORT = 0x1000;

constexpr int CSTR_LESS_THAN = 1;
constexpr int CSTR_EQUAL = 2;
constexpr int CSTR_GREATER_THAN = 3;

/// Every language is Korean here. Takes SORT_STRINGSORT with or without NORM_IGNORECASE; a length of -1
/// stands for a text that ends at its NUL. Hanja stand in the order of Unicode, not at their readings.
KESRANTC_API int CompareStringA(LCID language, DWORD flags, LPCSTR left, int leftLength, LPCSTR right,
                                int rightLength);
