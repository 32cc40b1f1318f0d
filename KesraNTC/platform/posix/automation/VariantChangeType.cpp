#include "KesraNTC/platform/posix/automation/Bstr.h"
#include "KesraNTC/platform/posix/automation/Variant.h"
#include "KesraNTC/platform/posix/automation/private/DateText.h"
#include "KesraNTC/platform/posix/automation/private/FixedPoint.h"
#include "KesraNTC/platform/posix/automation/private/NumberText.h"

#include <cfloat>
#include <cmath>
#include <new>

namespace
{

using Kesra::FixedPoint;

constexpr int SingleDigits = 7;
constexpr int DoubleDigits = 15;

/// What a source holds, whatever its type: an exact number, a real one, or a text.
struct Source {
    enum Kind { Exact, Real, Text } Holds = Exact;
    FixedPoint Fixed;
    double Number = 0;
    int Digits = DoubleDigits; ///< that a real number is good for
    std::u16string_view Characters;

    void SetExact(const FixedPoint& value) { Fixed = value; }
    void SetReal(double value, int digits)
    {
        Holds = Real;
        Number = value;
        Digits = digits;
    }
};

HRESULT ReadSource(const VARIANT& variant, Source& source)
{
    using Kesra::FixedFromInteger;
    switch (variant.vt) {
    case VT_EMPTY:
        return S_OK;
    case VT_I1:
        source.SetExact(FixedFromInteger(static_cast<signed char>(variant.cVal)));
        return S_OK;
    case VT_UI1:
        source.SetExact(FixedFromInteger(variant.bVal));
        return S_OK;
    case VT_I2:
    case VT_BOOL:
        source.SetExact(FixedFromInteger(variant.iVal));
        return S_OK;
    case VT_UI2:
        source.SetExact(FixedFromInteger(variant.uiVal));
        return S_OK;
    case VT_I4:
    case VT_INT:
        source.SetExact(FixedFromInteger(variant.lVal));
        return S_OK;
    case VT_UI4:
    case VT_UINT:
        source.SetExact(FixedFromInteger(variant.ulVal));
        return S_OK;
    case VT_I8:
        source.SetExact(FixedFromInteger(variant.llVal));
        return S_OK;
    case VT_UI8:
        source.SetExact(FixedFromInteger(variant.ullVal));
        return S_OK;
    case VT_CY:
        source.SetExact(Kesra::FixedFromCurrency(variant.cyVal));
        return S_OK;
    case VT_DECIMAL:
        return Kesra::FixedFromDecimal(variant.decVal, source.Fixed) ? S_OK : E_INVALIDARG;
    case VT_R4:
        source.SetReal(variant.fltVal, SingleDigits);
        return S_OK;
    case VT_R8:
    case VT_DATE:
        source.SetReal(variant.dblVal, DoubleDigits);
        return S_OK;
    case VT_BSTR:
        source.Holds = Source::Text;
        source.Characters = std::u16string_view(variant.bstrVal, SysStringLen(variant.bstrVal));
        return S_OK;
    default:
        return DISP_E_TYPEMISMATCH;
    }
}

HRESULT ToFixed(const Source& source, FixedPoint& value)
{
    Kesra::Numeral numeral;
    switch (source.Holds) {
    case Source::Real:
        return Kesra::FixedFromDouble(source.Number, source.Digits, value) ? S_OK : DISP_E_OVERFLOW;
    case Source::Text:
        if (!Kesra::ParseNumeral(source.Characters, numeral))
            return DISP_E_TYPEMISMATCH;
        return Kesra::ToFixedPoint(numeral, value) ? S_OK : DISP_E_OVERFLOW;
    default:
        value = source.Fixed;
        return S_OK;
    }
}

HRESULT ToReal(const Source& source, double& value)
{
    Kesra::Numeral numeral;
    switch (source.Holds) {
    case Source::Real:
        value = source.Number;
        return S_OK;
    case Source::Text:
        return Kesra::ParseNumeral(source.Characters, numeral) ? Kesra::ToDouble(numeral, value)
                                                               : DISP_E_TYPEMISMATCH;
    default:
        value = Kesra::ToDouble(source.Fixed);
        return S_OK;
    }
}

/// Rounds a real number to even from all its digits, not only those it is good for.
template <class Real, class Integer> HRESULT RealToInteger(Real real, Integer& value)
{
    const Real rounded = std::nearbyint(real);
    const Real limit = std::ldexp(Real{1}, std::numeric_limits<Integer>::digits);
    if (!(rounded >= (std::is_signed_v<Integer> ? -limit : 0) && rounded < limit))
        return DISP_E_OVERFLOW;
    value = static_cast<Integer>(rounded);
    return S_OK;
}

template <class Integer> HRESULT ToInteger(const Source& source, Integer& value)
{
    if (source.Holds == Source::Real)
        return RealToInteger(source.Number, value);
    FixedPoint fixed;
    const HRESULT result = ToFixed(source, fixed);
    return FAILED(result) ? result : Kesra::ToInteger(fixed, value);
}

HRESULT ToCurrency(const Source& source, CY& value)
{
    if (source.Holds == Source::Real)
        return RealToInteger(source.Number * 10'000.0L, value.int64);
    FixedPoint fixed;
    const HRESULT result = ToFixed(source, fixed);
    return FAILED(result) ? result : Kesra::ToCurrency(fixed, value);
}

HRESULT ToDecimal(const Source& source, VARIANT& target)
{
    FixedPoint fixed;
    const HRESULT result = ToFixed(source, fixed);
    return FAILED(result) ? result : Kesra::ToDecimal(fixed, target.decVal);
}

HRESULT ToSingle(const Source& source, float& value)
{
    double real = 0;
    const HRESULT result = ToReal(source, real);
    if (FAILED(result))
        return result;
    if (std::fabs(real) > FLT_MAX && std::isfinite(real))
        return DISP_E_OVERFLOW;
    value = static_cast<float>(real);
    return S_OK;
}

HRESULT ToDate(const Source& source, DATE& value)
{
    if (source.Holds == Source::Text)
        return Kesra::ParseDate(source.Characters, value) ? S_OK : DISP_E_TYPEMISMATCH;
    const HRESULT result = ToReal(source, value);
    if (FAILED(result))
        return result;
    return value > Kesra::EarliestDate - 1 && value < Kesra::EndOfDates ? S_OK : DISP_E_OVERFLOW;
}

bool IsWord(std::u16string_view text, std::u16string_view word)
{
    if (text.size() != word.size())
        return false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool letter = word[i] >= u'a' && word[i] <= u'z';
        if ((letter ? text[i] | 0x20 : text[i]) != word[i])
            return false;
    }
    return true;
}

HRESULT ToBoolean(const Source& source, VARIANT_BOOL& value)
{
    double real = 0;
    if (source.Holds == Source::Text && IsWord(source.Characters, u"true")) {
        real = 1;
    } else if (source.Holds == Source::Exact) {
        real = source.Fixed.Magnitude != 0 ? 1 : 0;
    } else if (source.Holds != Source::Text || !IsWord(source.Characters, u"false")) {
        const HRESULT result = ToReal(source, real);
        if (FAILED(result))
            return result;
    }
    value = real != 0 ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
}

HRESULT ToText(const Source& source, const VARIANT& variant, USHORT flags, BSTR& value)
{
    std::string text;
    if (variant.vt == VT_BOOL && (flags & VARIANT_ALPHABOOL) != 0)
        text = variant.boolVal != 0 ? "True" : "False";
    else if (variant.vt == VT_DATE) {
        if (!Kesra::DateToText(variant.date, text))
            return E_INVALIDARG;
    } else if (source.Holds == Source::Real)
        text = Kesra::RealToText(source.Number, source.Digits);
    else if (variant.vt != VT_EMPTY)
        text = Kesra::ToText(source.Fixed);
    const std::u16string wide(text.begin(), text.end());
    value = SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
    return value == nullptr ? E_OUTOFMEMORY : S_OK;
}

/// Bytes of an integer type, 0 of any other.
int IntegerWidth(VARTYPE type)
{
    switch (type) {
    case VT_I1:
    case VT_UI1:
        return 1;
    case VT_I2:
    case VT_UI2:
        return 2;
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
        return 4;
    case VT_I8:
    case VT_UI8:
        return 8;
    default:
        return 0;
    }
}

/// Integers of one width are taken over bit by bit, whatever their sign, and true has all bits set.
bool CopyBits(const VARIANT& variant, VARTYPE type, VARIANT& target)
{
    const int width = IntegerWidth(type);
    if (width == 0 || (variant.vt != VT_BOOL && IntegerWidth(variant.vt) != width))
        return false;
    target.llVal = variant.vt == VT_BOOL ? variant.boolVal : variant.llVal;
    return true;
}

HRESULT Convert(const VARIANT& variant, USHORT flags, VARTYPE type, VARIANT& target)
{
    if (const unsigned base = type & VT_TYPEMASK; base == VT_DECIMAL + 1 || base > VT_UINT)
        return DISP_E_BADVARTYPE;
    Source source;
    const HRESULT result = ReadSource(variant, source);
    if (FAILED(result) || CopyBits(variant, type, target))
        return result;
    switch (type) {
    case VT_I1:
        return ToInteger(source, reinterpret_cast<signed char&>(target.cVal));
    case VT_UI1:
        return ToInteger(source, target.bVal);
    case VT_I2:
        return ToInteger(source, target.iVal);
    case VT_UI2:
        return ToInteger(source, target.uiVal);
    case VT_I4:
    case VT_INT:
        return ToInteger(source, target.lVal);
    case VT_UI4:
    case VT_UINT:
        return ToInteger(source, target.ulVal);
    case VT_I8:
        return ToInteger(source, target.llVal);
    case VT_UI8:
        return ToInteger(source, target.ullVal);
    case VT_R4:
        return ToSingle(source, target.fltVal);
    case VT_R8:
        return ToReal(source, target.dblVal);
    case VT_CY:
        return ToCurrency(source, target.cyVal);
    case VT_DATE:
        return ToDate(source, target.date);
    case VT_DECIMAL:
        return ToDecimal(source, target);
    case VT_BOOL:
        return ToBoolean(source, target.boolVal);
    case VT_BSTR:
        return ToText(source, variant, flags, target.bstrVal);
    case VT_EMPTY:
    case VT_NULL:
        return S_OK;
    default:
        return DISP_E_TYPEMISMATCH;
    }
}

} // namespace

HRESULT VariantChangeType(VARIANT* target, const VARIANT* source, USHORT flags, VARTYPE type)
{
    VARIANT value;
    VariantInit(&value);
    HRESULT result = VariantCopyInd(&value, source);
    if (FAILED(result))
        return result;
    if (value.vt != type) {
        VARIANT converted;
        VariantInit(&converted);
        try {
            result = Convert(value, flags, type, converted);
        } catch (const std::bad_alloc&) {
            result = E_OUTOFMEMORY;
        }
        VariantClear(&value);
        if (FAILED(result))
            return result;
        converted.vt = type;
        value = converted;
    }
    result = VariantClear(target);
    if (FAILED(result))
        VariantClear(&value);
    else
        *target = value;
    return result;
}

HRESULT VariantChangeTypeEx(VARIANT* target, const VARIANT* source, LCID, USHORT flags, VARTYPE type)
{
    return VariantChangeType(target, source, flags, type);
}
