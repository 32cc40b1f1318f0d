#pragma once

#include "KesraNTC/platform/Export.h"
#include "KesraNTC/platform/posix/Types.h"

// The multibyte functions of the C runtime in code page 949: a lead byte (81 to FE) and the byte after it are
// one character; a lead byte before the terminator ends the text.

/// Takes 949 alone, the page that is always in force.
KESRANTC_API int _setmbcp(int codePage);

inline int _ismbblead(unsigned int ch)
{
    return ch >= 0x81 && ch <= 0xFE;
}

KESRANTC_API int _mbscmp(const unsigned char* left, const unsigned char* right);
KESRANTC_API int _mbsicmp(const unsigned char* left, const unsigned char* right);
KESRANTC_API int _mbscoll(const unsigned char* left, const unsigned char* right);
KESRANTC_API int _mbsicoll(const unsigned char* left, const unsigned char* right);

KESRANTC_API const unsigned char* _mbspbrk(const unsigned char* text, const unsigned char* set);

KESRANTC_API unsigned char* _mbsupr(unsigned char* text);
KESRANTC_API unsigned char* _mbslwr(unsigned char* text);
KESRANTC_API unsigned char* _mbsrev(unsigned char* text);
