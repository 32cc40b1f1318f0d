#include "KesraNTC/platform/Platform.h"

#include <gtest/gtest.h>

#include <cstring>

namespace
{

template <class T> T* Access(SAFEARRAY* array)
{
    void* data = nullptr;
    EXPECT_EQ(S_OK, SafeArrayAccessData(array, &data));
    return static_cast<T*>(data);
}

TEST(SafeArray, KnowsItsShape)
{
    SAFEARRAYBOUND bounds[] = {{3, -1}, {2, 10}};
    SAFEARRAY* const array = SafeArrayCreate(VT_I4, 2, bounds);
    ASSERT_NE(nullptr, array);
    EXPECT_EQ(2U, SafeArrayGetDim(array));
    EXPECT_EQ(4U, SafeArrayGetElemsize(array));
    VARTYPE type = VT_EMPTY;
    EXPECT_EQ(S_OK, SafeArrayGetVartype(array, &type));
    EXPECT_EQ(VT_I4, type);

    LONG bound = 0;
    EXPECT_EQ(S_OK, SafeArrayGetLBound(array, 1, &bound));
    EXPECT_EQ(-1, bound);
    EXPECT_EQ(S_OK, SafeArrayGetUBound(array, 1, &bound));
    EXPECT_EQ(1, bound);
    EXPECT_EQ(S_OK, SafeArrayGetLBound(array, 2, &bound));
    EXPECT_EQ(10, bound);
    EXPECT_EQ(S_OK, SafeArrayGetUBound(array, 2, &bound));
    EXPECT_EQ(11, bound);
    EXPECT_EQ(DISP_E_BADINDEX, SafeArrayGetLBound(array, 0, &bound));
    EXPECT_EQ(DISP_E_BADINDEX, SafeArrayGetUBound(array, 3, &bound));
    EXPECT_EQ(S_OK, SafeArrayDestroy(array));
}

TEST(SafeArray, TellsWhatItHolds)
{
    SAFEARRAYBOUND bounds[] = {{1, 0}};
    const auto featuresOf = [&bounds](VARTYPE type) {
        SAFEARRAY* const array = SafeArrayCreate(type, 1, bounds);
        const int features = array->fFeatures;
        EXPECT_EQ(S_OK, SafeArrayDestroy(array));
        return features;
    };
    EXPECT_EQ(FADF_HAVEVARTYPE, featuresOf(VT_UI1));
    EXPECT_EQ(FADF_BSTR | FADF_HAVEVARTYPE, featuresOf(VT_BSTR));
    EXPECT_EQ(FADF_VARIANT | FADF_HAVEVARTYPE, featuresOf(VT_VARIANT));
}

TEST(SafeArray, ElementsBeginZeroedAndAreCopied)
{
    SAFEARRAY* const array = SafeArrayCreateVector(VT_UI1, 5, 4);
    BYTE* const bytes = Access<BYTE>(array);
    EXPECT_EQ(0, std::memcmp(bytes, "\0\0\0\0", 4));
    std::memcpy(bytes, "wxyz", 4);
    SAFEARRAY* copy = nullptr;
    ASSERT_EQ(S_OK, SafeArrayCopy(array, &copy));
    std::memcpy(bytes, "1234", 4);
    EXPECT_EQ(S_OK, SafeArrayUnaccessData(array));
    EXPECT_EQ(S_OK, SafeArrayDestroy(array));

    EXPECT_EQ(0, std::memcmp(Access<BYTE>(copy), "wxyz", 4));
    LONG bound = 0;
    EXPECT_EQ(S_OK, SafeArrayGetLBound(copy, 1, &bound));
    EXPECT_EQ(5, bound);
    SafeArrayUnaccessData(copy);
    EXPECT_EQ(S_OK, SafeArrayDestroy(copy));
}

TEST(SafeArray, OwnsTextsAndVariantsInIt)
{
    SAFEARRAY* const texts = SafeArrayCreateVector(VT_BSTR, 0, 3);
    BSTR* const elements = Access<BSTR>(texts);
    elements[0] = SysAllocString(OLESTR("one"));
    elements[2] = SysAllocStringLen(OLESTR("t\0o"), 3);
    SafeArrayUnaccessData(texts);
    SAFEARRAY* const variants = SafeArrayCreateVector(VT_VARIANT, 0, 2);
    VARIANT* const values = Access<VARIANT>(variants);
    values[0].vt = VT_BSTR;
    values[0].bstrVal = SysAllocString(OLESTR("text"));
    values[1].vt = VT_ARRAY | VT_BSTR;
    values[1].parray = texts;
    SafeArrayUnaccessData(variants);

    SAFEARRAY* copy = nullptr;
    ASSERT_EQ(S_OK, SafeArrayCopy(variants, &copy));
    EXPECT_EQ(S_OK, SafeArrayDestroy(variants));
    const VARIANT* const copied = Access<VARIANT>(copy);
    EXPECT_EQ(0, std::memcmp(copied[0].bstrVal, OLESTR("text"), 10));
    ASSERT_EQ(VT_ARRAY | VT_BSTR, copied[1].vt);
    const BSTR* const copiedTexts = Access<BSTR>(copied[1].parray);
    EXPECT_EQ(0, std::memcmp(copiedTexts[0], OLESTR("one"), 8));
    EXPECT_EQ(0U, SysStringLen(copiedTexts[1]));
    EXPECT_EQ(3U, SysStringLen(copiedTexts[2]));
    EXPECT_EQ(0, std::memcmp(copiedTexts[2], OLESTR("t\0o"), 8));
    SafeArrayUnaccessData(copied[1].parray);
    SafeArrayUnaccessData(copy);
    EXPECT_EQ(S_OK, SafeArrayDestroy(copy));
}

TEST(SafeArray, ALockedArrayIsNotDestroyed)
{
    SAFEARRAY* const array = SafeArrayCreateVector(VT_I2, 0, 1);
    EXPECT_EQ(E_UNEXPECTED, SafeArrayUnaccessData(array));
    Access<SHORT>(array);
    EXPECT_EQ(DISP_E_ARRAYISLOCKED, SafeArrayDestroy(array));
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_ARRAY | VT_I2;
    variant.parray = array;
    EXPECT_EQ(DISP_E_ARRAYISLOCKED, VariantClear(&variant));
    EXPECT_EQ(S_OK, SafeArrayUnaccessData(array));
    variant.vt = VT_ARRAY | VT_I2;
    EXPECT_EQ(S_OK, VariantClear(&variant));
    EXPECT_EQ(VT_EMPTY, variant.vt);
}

TEST(SafeArray, NullAndImpossibleArrays)
{
    SAFEARRAY* copy = reinterpret_cast<SAFEARRAY*>(&copy);
    LONG bound = 0;
    void* data = nullptr;
    EXPECT_EQ(S_OK, SafeArrayDestroy(nullptr));
    EXPECT_EQ(S_OK, SafeArrayCopy(nullptr, &copy));
    EXPECT_EQ(nullptr, copy);
    EXPECT_EQ(0U, SafeArrayGetDim(nullptr));
    EXPECT_EQ(0U, SafeArrayGetElemsize(nullptr));
    EXPECT_EQ(E_INVALIDARG, SafeArrayGetLBound(nullptr, 1, &bound));
    EXPECT_EQ(E_INVALIDARG, SafeArrayGetUBound(nullptr, 1, &bound));
    EXPECT_EQ(E_INVALIDARG, SafeArrayAccessData(nullptr, &data));
    EXPECT_EQ(E_INVALIDARG, SafeArrayUnaccessData(nullptr));

    EXPECT_EQ(nullptr, SafeArrayCreateVector(VT_EMPTY, 0, 1));
    EXPECT_EQ(nullptr, SafeArrayCreateVector(VT_NULL, 0, 1));
    EXPECT_EQ(nullptr, SafeArrayCreateVector(15, 0, 1));
    EXPECT_EQ(nullptr, SafeArrayCreateVector(VT_R8, 0, 0x10000001));
    SAFEARRAYBOUND bounds{1, 0};
    EXPECT_EQ(nullptr, SafeArrayCreate(VT_R8, 0, &bounds));

    SAFEARRAY* const empty = SafeArrayCreateVector(VT_UI1, 3, 0);
    ASSERT_NE(nullptr, empty);
    EXPECT_EQ(S_OK, SafeArrayGetUBound(empty, 1, &bound));
    EXPECT_EQ(2, bound);
    EXPECT_EQ(S_OK, SafeArrayDestroy(empty));
}

} // namespace
