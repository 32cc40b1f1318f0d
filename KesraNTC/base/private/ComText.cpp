#include "KesraNTC/platform/private/ComText.h"

#include "KesraNTC/platform/Export.h"

#include <climits>
#include <cstring>
#include <new>

namespace _com_util
{
// Null where the text is null and where memory runs out: the caller's class throws then, in its own module.
KESRANTC_API BSTR WINAPI ConvertStringToBSTR(const char* text)
{
    const std::size_t length = text ? std::strlen(text) : 0;
    if (!text || length > INT_MAX / sizeof(OLECHAR) - 1)
        return nullptr;
    if (length == 0)
        return SysAllocStringLen(nullptr, 0);
    const int bytes = static_cast<int>(length);
    const int units = MultiByteToWideChar(CP_ACP, 0, text, bytes, nullptr, 0);
    const BSTR wide = SysAllocStringLen(nullptr, static_cast<UINT>(units));
    if (wide)
        MultiByteToWideChar(CP_ACP, 0, text, bytes, wide, units);
    return wide;
}

// The caller deletes the array.
KESRANTC_API char* WINAPI ConvertBSTRToString(BSTR text)
{
    if (!text)
        return nullptr;
    const int units = static_cast<int>(SysStringLen(text));
    const int bytes =
        units > 0 ? WideCharToMultiByte(CP_ACP, 0, text, units, nullptr, 0, nullptr, nullptr) : 0;
    auto* narrow = new (std::nothrow) char[static_cast<std::size_t>(bytes) + 1];
    if (!narrow)
        return nullptr;
    if (bytes > 0)
        WideCharToMultiByte(CP_ACP, 0, text, units, narrow, bytes, nullptr, nullptr);
    narrow[bytes] = '\0';
    return narrow;
}
} // namespace _com_util
