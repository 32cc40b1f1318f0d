#include "KesraNTC/platform/posix/automation/Variant.h"

#include "KesraNTC/platform/posix/automation/Bstr.h"
#include "KesraNTC/platform/posix/automation/SafeArray.h"

#include <cstring>

namespace
{

bool IsValueType(unsigned type)
{
    return type <= VT_UINT && type != VT_DECIMAL + 1;
}

bool IsElementType(unsigned type)
{
    return IsValueType(type) && type != VT_EMPTY && type != VT_NULL;
}

/// Types that a variant may have.
bool IsVariantType(VARTYPE type)
{
    const unsigned base = type & VT_TYPEMASK;
    switch (type & ~unsigned{VT_TYPEMASK}) {
    case 0:
        return IsValueType(base) && base != VT_VARIANT;
    case VT_ARRAY:
    case VT_BYREF:
    case VT_ARRAY | VT_BYREF:
        return IsElementType(base);
    default:
        return false;
    }
}

bool HoldsArray(const VARIANT& variant)
{
    return (variant.vt & (VT_ARRAY | VT_BYREF)) == VT_ARRAY;
}

/// Makes the bits a value of their own, after they were copied from another variant.
HRESULT Duplicate(VARIANT& variant)
{
    if (HoldsArray(variant))
        return SafeArrayCopy(variant.parray, &variant.parray);
    switch (variant.vt) {
    case VT_BSTR:
        if (variant.bstrVal != nullptr) {
            variant.bstrVal = SysAllocStringByteLen(reinterpret_cast<LPCSTR>(variant.bstrVal),
                                                    SysStringByteLen(variant.bstrVal));
            return variant.bstrVal == nullptr ? E_OUTOFMEMORY : S_OK;
        }
        break;
    case VT_UNKNOWN:
    case VT_DISPATCH:
        if (variant.punkVal != nullptr)
            variant.punkVal->AddRef();
        break;
    default:
        break;
    }
    return S_OK;
}

HRESULT Replace(VARIANT& target, VARIANT& copy)
{
    const HRESULT result = VariantClear(&target);
    if (FAILED(result))
        VariantClear(&copy);
    else
        target = copy;
    return result;
}

template <class T> void Load(VARIANT& target, const VARIANT& source)
{
    std::memcpy(&target.llVal, source.byref, sizeof(T));
}

/// The value behind a reference, still owned by whom it belongs to.
HRESULT Dereference(VARIANT& target, const VARIANT& source)
{
    if (source.byref == nullptr)
        return E_INVALIDARG;
    std::memset(&target, 0, sizeof target);
    target.vt = static_cast<VARTYPE>(source.vt & ~VT_BYREF);
    if ((target.vt & VT_ARRAY) != 0) {
        target.parray = *source.pparray;
        return S_OK;
    }
    switch (target.vt) {
    case VT_I1:
    case VT_UI1:
        Load<BYTE>(target, source);
        return S_OK;
    case VT_I2:
    case VT_UI2:
    case VT_BOOL:
        Load<USHORT>(target, source);
        return S_OK;
    case VT_BSTR:
    case VT_UNKNOWN:
    case VT_DISPATCH:
        Load<void*>(target, source);
        return S_OK;
    case VT_I8:
    case VT_UI8:
    case VT_R8:
    case VT_DATE:
    case VT_CY:
        Load<ULONGLONG>(target, source);
        return S_OK;
    case VT_DECIMAL:
        target.decVal = *source.pdecVal;
        target.vt = VT_DECIMAL;
        return S_OK;
    case VT_VARIANT:
        // One reference to a variant is followed, and one more in that variant, but not to a third.
        target = *source.pvarVal;
        if ((target.vt & VT_BYREF) == 0)
            return S_OK;
        return target.vt == (VT_VARIANT | VT_BYREF) ? E_INVALIDARG : Dereference(target, VARIANT{target});
    default:
        Load<ULONG>(target, source);
        return S_OK;
    }
}

} // namespace

void VariantInit(VARIANT* variant)
{
    std::memset(variant, 0, sizeof *variant);
}

HRESULT VariantClear(VARIANT* variant)
{
    if (!IsVariantType(variant->vt))
        return DISP_E_BADVARTYPE;
    if (HoldsArray(*variant)) {
        const HRESULT result = SafeArrayDestroy(variant->parray);
        if (FAILED(result))
            return result;
    } else if (variant->vt == VT_BSTR) {
        SysFreeString(variant->bstrVal);
    } else if ((variant->vt == VT_UNKNOWN || variant->vt == VT_DISPATCH) && variant->punkVal != nullptr) {
        variant->punkVal->Release();
    }
    variant->vt = VT_EMPTY;
    return S_OK;
}

HRESULT VariantCopy(VARIANT* target, const VARIANT* source)
{
    if (target == source)
        return S_OK;
    if (!IsVariantType(source->vt))
        return DISP_E_BADVARTYPE;
    // Copied before the target is cleared: the source may lie in an array that the target holds.
    VARIANT copy = *source;
    const HRESULT result = Duplicate(copy);
    return FAILED(result) ? result : Replace(*target, copy);
}

HRESULT VariantCopyInd(VARIANT* target, const VARIANT* source)
{
    if ((source->vt & VT_BYREF) == 0)
        return VariantCopy(target, source);
    if (!IsVariantType(source->vt))
        return DISP_E_BADVARTYPE;
    VARIANT value;
    HRESULT result = Dereference(value, *source);
    if (SUCCEEDED(result) && !IsVariantType(value.vt))
        result = DISP_E_BADVARTYPE;
    if (SUCCEEDED(result))
        result = Duplicate(value);
    return FAILED(result) ? result : Replace(*target, value);
}
