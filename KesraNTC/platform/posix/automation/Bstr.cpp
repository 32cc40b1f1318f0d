#include "KesraNTC/platform/posix/automation/Bstr.h"

#include <cstdlib>
#include <cstring>
#include <string>

namespace
{

// The byte count takes the last four bytes of the prefix, so that pointers in a BSTR array stay aligned.
constexpr std::size_t PrefixSize = 8;
constexpr UINT LargestByteLength = 0x7FFFFFF0;

char* CountOf(char* text)
{
    return text - sizeof(UINT);
}

} // namespace

BSTR SysAllocString(const OLECHAR* text)
{
    if (text == nullptr)
        return nullptr;
    const std::size_t length = std::char_traits<OLECHAR>::length(text);
    return length > LargestByteLength / 2 ? nullptr : SysAllocStringLen(text, static_cast<UINT>(length));
}

BSTR SysAllocStringLen(const OLECHAR* text, UINT length)
{
    if (length > LargestByteLength / 2)
        return nullptr;
    return SysAllocStringByteLen(reinterpret_cast<LPCSTR>(text), length * 2);
}

BSTR SysAllocStringByteLen(LPCSTR bytes, UINT byteLength)
{
    if (byteLength > LargestByteLength)
        return nullptr;
    // An odd last byte and the terminator after it are rounded up to whole characters.
    void* const block = std::calloc(1, PrefixSize + byteLength + byteLength % 2 + sizeof(OLECHAR));
    if (block == nullptr)
        return nullptr;
    char* const text = static_cast<char*>(block) + PrefixSize;
    std::memcpy(CountOf(text), &byteLength, sizeof byteLength);
    if (bytes != nullptr)
        std::memcpy(text, bytes, byteLength);
    return reinterpret_cast<BSTR>(text);
}

void SysFreeString(BSTR text)
{
    if (text != nullptr)
        std::free(reinterpret_cast<char*>(text) - PrefixSize);
}

UINT SysStringLen(BSTR text)
{
    return SysStringByteLen(text) / 2;
}

UINT SysStringByteLen(BSTR text)
{
    UINT byteLength = 0;
    if (text != nullptr)
        std::memcpy(&byteLength, CountOf(reinterpret_cast<char*>(text)), sizeof byteLength);
    return byteLength;
}
