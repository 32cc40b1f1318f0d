#pragma once

#include "KesraNTC/platform/posix/automation/ComError.h"
#include "KesraNTC/platform/posix/automation/Variant.h"

/// A variant that owns its value. What the calls beneath report as failed is thrown as _com_error.
class KESRANTC_API _variant_t : public tagVARIANT
{
public:
    _variant_t() noexcept { VariantInit(this); }
    _variant_t(const VARIANT& source) : _variant_t() { *this = source; }
    _variant_t(const VARIANT* source) : _variant_t() { *this = source; }
    _variant_t(const _variant_t& source) : _variant_t() { *this = source; }
    /// A copy, or the value itself, which leaves the source empty.
    _variant_t(VARIANT& source, bool copy);
    ~_variant_t() { VariantClear(this); }

    /// VT_I2 or VT_BOOL; any other type is E_INVALIDARG, as below.
    _variant_t(short value, VARTYPE type = VT_I2);
    /// VT_I4, VT_ERROR or VT_BOOL, of the low 32 bits.
    _variant_t(long value, VARTYPE type = VT_I4);
    /// VT_R8 or VT_DATE.
    _variant_t(double value, VARTYPE type = VT_R8);
    // NOLINTBEGIN(bugprone-exception-escape): giving a fresh variant a number cannot fail
    _variant_t(float value) noexcept : _variant_t() { *this = value; }
    _variant_t(const CY& value) noexcept : _variant_t() { *this = value; }
    _variant_t(const DECIMAL& value) noexcept : _variant_t() { *this = value; }
    _variant_t(const OLECHAR* text) : _variant_t() { *this = text; }
    _variant_t(const char* text) : _variant_t() { *this = text; }
    _variant_t(bool value) noexcept : _variant_t() { *this = value; }
    _variant_t(char value) noexcept : _variant_t() { *this = value; }
    _variant_t(BYTE value) noexcept : _variant_t() { *this = value; }
    _variant_t(unsigned short value) noexcept : _variant_t() { *this = value; }
    _variant_t(unsigned long value) noexcept : _variant_t() { *this = value; }
    _variant_t(int value) noexcept : _variant_t() { *this = value; }
    _variant_t(unsigned int value) noexcept : _variant_t() { *this = value; }
    _variant_t(long long value) noexcept : _variant_t() { *this = value; }
    _variant_t(unsigned long long value) noexcept : _variant_t() { *this = value; }
    // NOLINTEND(bugprone-exception-escape)

    _variant_t& operator=(const VARIANT& source);
    _variant_t& operator=(const VARIANT* source);
    _variant_t& operator=(const _variant_t& source) { return *this = static_cast<const VARIANT&>(source); }
    /// A Boolean stays one and tells whether the value is not 0.
    _variant_t& operator=(short value);
    /// The same; an error code stays one too.
    _variant_t& operator=(long value);
    /// A date stays one.
    _variant_t& operator=(double value);
    _variant_t& operator=(float value) { return Store(VT_R4, &VARIANT::fltVal, value); }
    _variant_t& operator=(const CY& value) { return Store(VT_CY, &VARIANT::cyVal, value); }
    _variant_t& operator=(const DECIMAL& value);
    _variant_t& operator=(const OLECHAR* text);
    /// Converts the text from the ANSI code page.
    _variant_t& operator=(const char* text);
    _variant_t& operator=(bool value)
    {
        return Store(VT_BOOL, &VARIANT::boolVal, value ? VARIANT_TRUE : VARIANT_FALSE);
    }
    _variant_t& operator=(char value) { return Store(VT_I1, &VARIANT::cVal, value); }
    _variant_t& operator=(BYTE value) { return Store(VT_UI1, &VARIANT::bVal, value); }
    _variant_t& operator=(unsigned short value) { return Store(VT_UI2, &VARIANT::uiVal, value); }
    _variant_t& operator=(unsigned long value)
    {
        return Store(VT_UI4, &VARIANT::ulVal, static_cast<ULONG>(value));
    }
    _variant_t& operator=(int value) { return Store(VT_INT, &VARIANT::intVal, value); }
    _variant_t& operator=(unsigned int value) { return Store(VT_UINT, &VARIANT::uintVal, value); }
    _variant_t& operator=(long long value) { return Store(VT_I8, &VARIANT::llVal, LONGLONG{value}); }
    _variant_t& operator=(unsigned long long value)
    {
        return Store(VT_UI8, &VARIANT::ullVal, ULONGLONG{value});
    }

    // The value, converted where the variant has another type.
    operator short() const { return Load(VT_I2, &VARIANT::iVal); }
    operator long() const { return Load(VT_I4, &VARIANT::lVal); }
    operator float() const { return Load(VT_R4, &VARIANT::fltVal); }
    operator double() const { return Load(VT_R8, &VARIANT::dblVal); }
    operator CY() const { return Load(VT_CY, &VARIANT::cyVal); }
    operator DECIMAL() const { return Load(VT_DECIMAL, &VARIANT::decVal); }
    operator bool() const { return Load(VT_BOOL, &VARIANT::boolVal) != VARIANT_FALSE; }
    operator char() const { return Load(VT_I1, &VARIANT::cVal); }
    operator BYTE() const { return Load(VT_UI1, &VARIANT::bVal); }
    operator unsigned short() const { return Load(VT_UI2, &VARIANT::uiVal); }
    operator unsigned long() const { return Load(VT_UI4, &VARIANT::ulVal); }
    operator int() const { return Load(VT_INT, &VARIANT::intVal); }
    operator unsigned int() const { return Load(VT_UINT, &VARIANT::uintVal); }
    operator long long() const { return Load(VT_I8, &VARIANT::llVal); }
    operator unsigned long long() const { return Load(VT_UI8, &VARIANT::ullVal); }

    void Clear();
    /// Takes the value over and leaves the source empty.
    void Attach(VARIANT& source);
    /// Gives the value to the caller, who clears it.
    VARIANT Detach();
    VARIANT& GetVARIANT() noexcept { return *this; }
    /// The address, for a call that fills it; the value is cleared before.
    VARIANT* GetAddress();
    /// Converts this value, or another one into this.
    void ChangeType(VARTYPE type, const _variant_t* source = nullptr);
    /// A text in the ANSI code page.
    void SetString(const char* text) { *this = text; }

private:
    template <class T> _variant_t& Store(VARTYPE type, T VARIANT::*member, const T& value)
    {
        if (vt != type) {
            Clear();
            vt = type;
        }
        this->*member = value;
        return *this;
    }
    template <class T> T Load(VARTYPE type, T VARIANT::*member) const
    {
        if (vt == type)
            return this->*member;
        _variant_t converted;
        converted.ChangeType(type, this);
        return converted.*member;
    }
};
