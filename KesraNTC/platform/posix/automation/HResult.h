#pragma once

#include "KesraNTC/platform/posix/Types.h"

// Result codes: negative when the call failed.
constexpr HRESULT S_OK = 0;
constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002);
constexpr HRESULT E_POINTER = static_cast<HRESULT>(0x80004003);
constexpr HRESULT E_UNEXPECTED = static_cast<HRESULT>(0x8000FFFF);
constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000E);
constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057);
constexpr HRESULT DISP_E_TYPEMISMATCH = static_cast<HRESULT>(0x80020005);
constexpr HRESULT DISP_E_BADVARTYPE = static_cast<HRESULT>(0x80020008);
constexpr HRESULT DISP_E_OVERFLOW = static_cast<HRESULT>(0x8002000A);
constexpr HRESULT DISP_E_BADINDEX = static_cast<HRESULT>(0x8002000B);
constexpr HRESULT DISP_E_ARRAYISLOCKED = static_cast<HRESULT>(0x8002000D);

constexpr bool SUCCEEDED(HRESULT result)
{
    return result >= 0;
}
constexpr bool FAILED(HRESULT result)
{
    return result < 0;
}
