#include "tests/platform/VariantText.h"

#include <gtest/gtest.h>

namespace
{

struct CountedObject : IUnknown {
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++References; }
    ULONG STDMETHODCALLTYPE Release() override { return --References; }
    ULONG References = 1;
};

VARIANT OfType(VARTYPE type)
{
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = type;
    return variant;
}

template <class Call> HRESULT ErrorOf(Call call)
{
    try {
        call();
    } catch (const _com_error& error) {
        return error.Error();
    }
    return S_OK;
}

TEST(Variant, Layout)
{
    VARIANT variant = OfType(VT_I4);
    variant.lVal = 0x01020304;
    const auto* const bytes = reinterpret_cast<const unsigned char*>(&variant);
    EXPECT_EQ(16U, sizeof(VARIANT));
    EXPECT_EQ(16U, sizeof(DECIMAL));
    EXPECT_EQ(4, bytes[8]);
    variant.decVal.scale = 5;
    variant.decVal.Hi32 = 6;
    EXPECT_EQ(5, bytes[2]);
    EXPECT_EQ(6, bytes[4]);
    EXPECT_EQ(VT_I4, variant.vt);
}

TEST(Variant, CopiesAreDeep)
{
    VARIANT source = OfType(VT_BSTR);
    source.bstrVal = SysAllocStringLen(OLESTR("a\0b"), 3);
    VARIANT copy = OfType(VT_EMPTY);
    ASSERT_EQ(S_OK, VariantCopy(&copy, &source));
    EXPECT_NE(source.bstrVal, copy.bstrVal);
    EXPECT_EQ(S_OK, VariantCopy(&copy, &copy));
    source.bstrVal[0] = 'x';
    EXPECT_EQ(S_OK, VariantClear(&source));
    EXPECT_EQ(VT_EMPTY, source.vt);
    EXPECT_EQ(std::string("'a\0b'", 5), ValueText(copy));

    source = OfType(VT_BSTR);
    ASSERT_EQ(S_OK, VariantCopy(&copy, &source));
    EXPECT_EQ(VT_BSTR, copy.vt);
    EXPECT_EQ(0U, SysStringLen(copy.bstrVal));
    VariantClear(&copy);

    source = OfType(VT_ARRAY | VT_BSTR);
    source.parray = SafeArrayCreateVector(VT_BSTR, 0, 2);
    ASSERT_EQ(S_OK, VariantCopy(&copy, &source));
    EXPECT_NE(source.parray, copy.parray);
    VariantClear(&copy);
    VariantClear(&source);
}

TEST(Variant, CountsReferencesToObjects)
{
    CountedObject object;
    VARIANT source = OfType(VT_UNKNOWN);
    source.punkVal = &object;
    VARIANT copy = OfType(VT_EMPTY);
    ASSERT_EQ(S_OK, VariantCopy(&copy, &source));
    EXPECT_EQ(2U, object.References);
    VariantClear(&copy);
    EXPECT_EQ(1U, object.References);

    SAFEARRAY* const array = SafeArrayCreateVector(VT_UNKNOWN, 0, 2);
    void* data = nullptr;
    SafeArrayAccessData(array, &data);
    static_cast<IUnknown**>(data)[1] = &object;
    SafeArrayUnaccessData(array);
    SAFEARRAY* arrayCopy = nullptr;
    ASSERT_EQ(S_OK, SafeArrayCopy(array, &arrayCopy));
    EXPECT_EQ(2U, object.References);
    SafeArrayDestroy(arrayCopy);
    SafeArrayDestroy(array);
    EXPECT_EQ(0U, object.References);
}

TEST(Variant, ReferencesAreCopiedAsReferencesUnlessFollowed)
{
    BSTR text = SysAllocString(OLESTR("abc"));
    VARIANT reference = OfType(VT_BSTR | VT_BYREF);
    reference.pbstrVal = &text;
    VARIANT copy = OfType(VT_EMPTY);
    ASSERT_EQ(S_OK, VariantCopy(&copy, &reference));
    EXPECT_EQ(VT_BSTR | VT_BYREF, copy.vt);
    EXPECT_EQ(&text, copy.pbstrVal);
    ASSERT_EQ(S_OK, VariantCopyInd(&copy, &reference));
    EXPECT_EQ(VT_BSTR, copy.vt);
    EXPECT_NE(text, copy.bstrVal);
    EXPECT_EQ("'abc'", ValueText(copy));
    VariantClear(&copy);

    VARIANT outer = OfType(VT_VARIANT | VT_BYREF);
    outer.pvarVal = &reference;
    ASSERT_EQ(S_OK, VariantCopyInd(&copy, &outer));
    EXPECT_EQ("'abc'", ValueText(copy));
    VariantClear(&copy);
    EXPECT_EQ(S_OK, VariantClear(&reference));
    EXPECT_EQ(3U, SysStringLen(text));
    SysFreeString(text);
}

TEST(Variant, TypesThatAreNone)
{
    for (const VARTYPE type : std::initializer_list<VARTYPE>{15, 24, 0x1003, VT_ARRAY, VT_BYREF}) {
        VARIANT variant = OfType(type);
        VARIANT copy = OfType(VT_EMPTY);
        EXPECT_EQ(DISP_E_BADVARTYPE, VariantClear(&variant)) << type;
        EXPECT_EQ(type, variant.vt);
        EXPECT_EQ(DISP_E_BADVARTYPE, VariantCopy(&copy, &variant)) << type;
    }
}

TEST(Variant, WrapperTypes)
{
    EXPECT_EQ(VT_EMPTY, _variant_t().vt);
    EXPECT_EQ(VT_I2, _variant_t(short{5}).vt);
    EXPECT_EQ(VT_I4, _variant_t(5L).vt);
    EXPECT_EQ(VT_INT, _variant_t(5).vt);
    EXPECT_EQ(VT_UI4, _variant_t(5UL).vt);
    EXPECT_EQ(VT_UINT, _variant_t(5U).vt);
    EXPECT_EQ(VT_I8, _variant_t(5LL).vt);
    EXPECT_EQ(VT_UI8, _variant_t(5ULL).vt);
    EXPECT_EQ(VT_I1, _variant_t('x').vt);
    EXPECT_EQ(VT_UI1, _variant_t(BYTE{5}).vt);
    EXPECT_EQ(VT_UI2, _variant_t(USHORT{5}).vt);
    EXPECT_EQ(VT_R4, _variant_t(0.5F).vt);
    EXPECT_EQ(VT_R8, _variant_t(0.5).vt);
    EXPECT_EQ(VT_DATE, _variant_t(0.5, VT_DATE).vt);
    EXPECT_EQ(VT_ERROR, _variant_t(7L, VT_ERROR).vt);
    EXPECT_EQ(VARIANT_TRUE, _variant_t(7L, VT_BOOL).boolVal);
    EXPECT_EQ(VARIANT_TRUE, _variant_t(true).boolVal);
    EXPECT_EQ(VARIANT_FALSE, _variant_t(short{0}, VT_BOOL).boolVal);
    EXPECT_EQ("'abc'", ValueText(_variant_t(OLESTR("abc"))));
    EXPECT_EQ(nullptr, _variant_t(static_cast<const OLECHAR*>(nullptr)).bstrVal);
    EXPECT_EQ(E_INVALIDARG, ErrorOf([] { _variant_t(short{5}, VT_I4); }));
    EXPECT_EQ(E_POINTER, ErrorOf([] { _variant_t(static_cast<const VARIANT*>(nullptr)); }));
}

TEST(Variant, WrapperOwnsItsValue)
{
    _variant_t text(OLESTR("12"));
    _variant_t copy(text);
    copy = copy.GetVARIANT();
    EXPECT_NE(text.bstrVal, copy.bstrVal);
    EXPECT_EQ(12, static_cast<long>(copy));
    EXPECT_EQ(VT_BSTR, copy.vt);
    copy.ChangeType(VT_I2);
    EXPECT_EQ("12", ValueText(copy));
    copy.ChangeType(VT_R8, &text);
    EXPECT_EQ(VT_R8, copy.vt);

    copy = 1.5F;
    EXPECT_EQ("1.5", ValueText(copy));
    copy = _variant_t(0.5, VT_DATE);
    copy = 2.5;
    EXPECT_EQ(VT_DATE, copy.vt);
    copy = _variant_t(true);
    copy = 0L;
    EXPECT_EQ(VT_BOOL, copy.vt);
    EXPECT_EQ(VARIANT_FALSE, copy.boolVal);
    copy = OLESTR("again");
    EXPECT_EQ("'again'", ValueText(copy));

    VARIANT raw = text.Detach();
    EXPECT_EQ(VT_EMPTY, text.vt);
    copy.Attach(raw);
    EXPECT_EQ(VT_EMPTY, raw.vt);
    EXPECT_EQ("'12'", ValueText(copy));
    copy.Clear();
    EXPECT_EQ(VT_EMPTY, copy.vt);
}

TEST(Variant, WrapperThrowsWhatFailed)
{
    _variant_t text(OLESTR("abc"));
    EXPECT_EQ(DISP_E_TYPEMISMATCH, ErrorOf([&] { text.ChangeType(VT_I4); }));
    EXPECT_EQ("'abc'", ValueText(text));
    EXPECT_EQ(DISP_E_OVERFLOW, ErrorOf([] { static_cast<void>(static_cast<BYTE>(_variant_t(300L))); }));
    VARIANT bad = OfType(15);
    EXPECT_EQ(DISP_E_BADVARTYPE, ErrorOf([&] { _variant_t copy(bad); }));
}

TEST(Variant, DosDateTime)
{
    const auto dos = [](int year, int month, int day) {
        return static_cast<USHORT>((year - 1980) << 9 | month << 5 | day);
    };
    const auto time = [](int hour, int minute, int halfSecond) {
        return static_cast<USHORT>(hour << 11 | minute << 5 | halfSecond);
    };
    const USHORT firstDay = dos(1980, 1, 1);
    double date = 0;
    ASSERT_EQ(1, DosDateTimeToVariantTime(firstDay, 0, &date));
    EXPECT_DOUBLE_EQ(29221, date);
    ASSERT_EQ(1, DosDateTimeToVariantTime(dos(2003, 7, 15), time(8, 9, 5), &date));
    EXPECT_DOUBLE_EQ(37817 + (8 * 3600 + 9 * 60 + 10) / 86400.0, date);
    ASSERT_EQ(1, DosDateTimeToVariantTime(dos(2099, 12, 31), time(23, 59, 29), &date));
    EXPECT_DOUBLE_EQ(73050 + 86398 / 86400.0, date);

    // A day that the month does not have counts on from its first one.
    ASSERT_EQ(1, DosDateTimeToVariantTime(dos(2001, 2, 29), 0, &date));
    EXPECT_DOUBLE_EQ(36951, date);
    ASSERT_EQ(1, DosDateTimeToVariantTime(dos(2001, 2, 0), 0, &date));
    EXPECT_DOUBLE_EQ(36922, date);

    EXPECT_EQ(0, DosDateTimeToVariantTime(dos(2001, 13, 1), 0, &date));
    EXPECT_EQ(0, DosDateTimeToVariantTime(dos(2100, 1, 1), 0, &date));
    EXPECT_EQ(0, DosDateTimeToVariantTime(firstDay, time(24, 0, 0), &date));
    EXPECT_EQ(0, DosDateTimeToVariantTime(firstDay, time(0, 60, 0), &date));
    EXPECT_EQ(0, DosDateTimeToVariantTime(firstDay, time(0, 0, 30), &date));
}

} // namespace
