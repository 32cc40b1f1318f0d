#include "KesraNTC/platform/posix/automation/VariantClass.h"

#include "KesraNTC/platform/posix/automation/Bstr.h"
#include "KesraNTC/platform/posix/text/CodePages.h"

namespace
{

void Require(bool condition, HRESULT failure)
{
    if (!condition)
        _com_issue_error(failure);
}

BSTR FromAnsi(const char* text)
{
    const int length = MultiByteToWideChar(CP_ACP, 0, text, -1, nullptr, 0);
    Require(length > 0, E_OUTOFMEMORY);
    const BSTR wide = SysAllocStringLen(nullptr, static_cast<UINT>(length - 1));
    Require(wide != nullptr, E_OUTOFMEMORY);
    MultiByteToWideChar(CP_ACP, 0, text, -1, wide, length);
    return wide;
}

} // namespace

_variant_t::_variant_t(VARIANT& source, bool copy) : _variant_t()
{
    if (copy)
        *this = source;
    else
        Attach(source);
}

_variant_t::_variant_t(short value, VARTYPE type) : _variant_t()
{
    Require(type == VT_I2 || type == VT_BOOL, E_INVALIDARG);
    vt = type;
    *this = value;
}

_variant_t::_variant_t(long value, VARTYPE type) : _variant_t()
{
    Require(type == VT_I4 || type == VT_ERROR || type == VT_BOOL, E_INVALIDARG);
    vt = type;
    *this = value;
}

_variant_t::_variant_t(double value, VARTYPE type) : _variant_t()
{
    Require(type == VT_R8 || type == VT_DATE, E_INVALIDARG);
    vt = type;
    *this = value;
}

_variant_t& _variant_t::operator=(const VARIANT& source)
{
    _com_util::CheckError(VariantCopy(this, &source));
    return *this;
}

_variant_t& _variant_t::operator=(const VARIANT* source)
{
    Require(source != nullptr, E_POINTER);
    return *this = *source;
}

_variant_t& _variant_t::operator=(short value)
{
    if (vt == VT_BOOL)
        return *this = value != 0;
    return Store(VT_I2, &VARIANT::iVal, value);
}

_variant_t& _variant_t::operator=(long value)
{
    if (vt == VT_BOOL)
        return *this = value != 0;
    return Store(vt == VT_ERROR ? VT_ERROR : VT_I4, &VARIANT::lVal, static_cast<LONG>(value));
}

_variant_t& _variant_t::operator=(double value)
{
    return Store(vt == VT_DATE ? VT_DATE : VT_R8, &VARIANT::dblVal, value);
}

_variant_t& _variant_t::operator=(const DECIMAL& value)
{
    Clear();
    decVal = value;
    vt = VT_DECIMAL;
    return *this;
}

_variant_t& _variant_t::operator=(const OLECHAR* text)
{
    // Allocated before the old value goes: the text may lie in it.
    const BSTR copy = SysAllocString(text);
    Require(copy != nullptr || text == nullptr, E_OUTOFMEMORY);
    Clear();
    vt = VT_BSTR;
    bstrVal = copy;
    return *this;
}

_variant_t& _variant_t::operator=(const char* text)
{
    const BSTR converted = text != nullptr ? FromAnsi(text) : nullptr;
    Clear();
    vt = VT_BSTR;
    bstrVal = converted;
    return *this;
}

void _variant_t::Clear()
{
    _com_util::CheckError(VariantClear(this));
}

void _variant_t::Attach(VARIANT& source)
{
    Clear();
    static_cast<VARIANT&>(*this) = source;
    source.vt = VT_EMPTY;
}

VARIANT _variant_t::Detach()
{
    const VARIANT value = *this;
    vt = VT_EMPTY;
    return value;
}

VARIANT* _variant_t::GetAddress()
{
    Clear();
    return this;
}

void _variant_t::ChangeType(VARTYPE type, const _variant_t* source)
{
    if (source == nullptr)
        source = this;
    if (source != this || vt != type)
        _com_util::CheckError(VariantChangeType(this, source, 0, type));
}
