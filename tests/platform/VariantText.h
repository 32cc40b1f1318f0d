#pragma once

#include "KesraNTC/platform/Platform.h"

#include <charconv>
#include <string>

// How the variant tests write values and results down.

/// A conversion's target: the value in words, or the result code as "mismatch", "overflow", "bad type".
inline std::string ResultText(HRESULT result)
{
    switch (result) {
    case S_OK:
        return "ok";
    case DISP_E_TYPEMISMATCH:
        return "mismatch";
    case DISP_E_OVERFLOW:
        return "overflow";
    case DISP_E_BADVARTYPE:
        return "bad type";
    default:
        return "result " + std::to_string(result);
    }
}

template <class Real> std::string RealText(Real value)
{
    char text[64];
    return std::string(text, std::to_chars(text, text + sizeof text, value).ptr);
}

inline std::string TextOf(BSTR text)
{
    return "'" + std::string(text, text + SysStringLen(text)) + "'";
}

inline std::string DecimalText(const DECIMAL& decimal)
{
    return (decimal.sign != 0 ? "-" : "") + (decimal.Hi32 != 0 ? std::to_string(decimal.Hi32) + ":" : "") +
           std::to_string(decimal.Lo64) + "e-" + std::to_string(decimal.scale);
}

/// Currencies in ten-thousandths, decimals as digits and power of ten, texts in quotes.
inline std::string ValueText(const VARIANT& variant)
{
    switch (variant.vt) {
    case VT_EMPTY:
        return "empty";
    case VT_NULL:
        return "null";
    case VT_I1:
        return std::to_string(static_cast<signed char>(variant.cVal));
    case VT_UI1:
        return std::to_string(variant.bVal);
    case VT_I2:
    case VT_BOOL:
        return std::to_string(variant.iVal);
    case VT_UI2:
        return std::to_string(variant.uiVal);
    case VT_I4:
    case VT_INT:
    case VT_ERROR:
        return std::to_string(variant.lVal);
    case VT_UI4:
    case VT_UINT:
        return std::to_string(variant.ulVal);
    case VT_I8:
    case VT_CY:
        return std::to_string(variant.llVal);
    case VT_UI8:
        return std::to_string(variant.ullVal);
    case VT_R4:
        return RealText(variant.fltVal);
    case VT_R8:
    case VT_DATE:
        return RealText(variant.dblVal);
    case VT_BSTR:
        return TextOf(variant.bstrVal);
    case VT_DECIMAL:
        return DecimalText(variant.decVal);
    default:
        return "type " + std::to_string(variant.vt);
    }
}

/// Converts as for a user in the United States and tells what came out.
inline std::string Converted(const VARIANT& source, VARTYPE type, USHORT flags = 0)
{
    constexpr LCID UnitedStates = 0x0409;
    VARIANT copy = source;
    VARIANT target;
    VariantInit(&target);
    target.vt = VT_I4;
    target.lVal = 4711;
    const HRESULT result = VariantChangeTypeEx(&target, &copy, UnitedStates, flags, type);
    if (FAILED(result))
        return target.vt == VT_I4 && target.lVal == 4711 ? ResultText(result) : "a changed target";
    const std::string text = target.vt == type ? ValueText(target) : "a wrong type";
    VariantClear(&target);
    return text;
}
