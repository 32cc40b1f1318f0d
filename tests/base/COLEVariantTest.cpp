#include "KesraNTC/base/COLEVariant.h"

#include "KesraNTC/base/CDebug.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <type_traits>

namespace
{

static_assert(std::is_base_of_v<tagVARIANT, COLEVariant> && sizeof(COLEVariant) == 16);

VARIANT OfType(VARTYPE type)
{
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = type;
    return variant;
}

COLEVariant FromText(const OLECHAR* text, UINT length)
{
    VARIANT variant = OfType(VT_BSTR);
    variant.bstrVal = SysAllocStringLen(text, length);
    COLEVariant result;
    result.Attach(variant);
    return result;
}

COLEVariant FromBytes(LONG lowerBound, const char* bytes)
{
    VARIANT variant = OfType(VT_ARRAY | VT_UI1);
    const auto size = static_cast<ULONG>(std::strlen(bytes));
    variant.parray = SafeArrayCreateVector(VT_UI1, lowerBound, size);
    void* data = nullptr;
    EXPECT_EQ(S_OK, SafeArrayAccessData(variant.parray, &data));
    std::memcpy(data, bytes, size);
    SafeArrayUnaccessData(variant.parray);
    COLEVariant result;
    result.Attach(variant);
    return result;
}

TEST(COLEVariant, ConstructorsChooseTheType)
{
    const COLEVariant empty;
    const char zeros[16] = {};
    EXPECT_EQ(0, std::memcmp(&empty, zeros, 16));
    EXPECT_EQ(VT_UI1, COLEVariant(static_cast<unsigned char>(200)).vt);
    EXPECT_EQ(200, COLEVariant(static_cast<unsigned char>(200)).bVal);
    EXPECT_EQ(VT_R4, COLEVariant(0.5F).vt);
    EXPECT_EQ(VT_R8, COLEVariant(0.5).vt);

    COLEDateTime date(2000, 2, 29, 12, 0, 0);
    date.SetStatus(COLEDateTime::invalid);
    EXPECT_EQ(VT_DATE, COLEVariant(date).vt);
    EXPECT_EQ(36585.5, COLEVariant(date).date);

    const COLEVariant yes(short{5}, VT_BOOL);
    EXPECT_EQ(VT_BOOL, yes.vt);
    EXPECT_EQ(VARIANT_TRUE, yes.boolVal);
    EXPECT_EQ(VT_I2, COLEVariant(short{5}, VT_R8).vt);
    EXPECT_EQ(5, COLEVariant(short{5}, VT_R8).iVal);
    EXPECT_EQ(VARIANT_FALSE, COLEVariant(0L, VT_BOOL).boolVal);
    EXPECT_EQ(VT_ERROR, COLEVariant(7L, VT_ERROR).vt);
    EXPECT_EQ(7, COLEVariant(7L, VT_ERROR).scode);
    EXPECT_EQ(VT_I4, COLEVariant(7L, VT_I2).vt);
    EXPECT_EQ(-7, COLEVariant(-7L, VT_I2).lVal);
}

TEST(COLEVariant, CopiesAreDeepAndSelfAssignmentChangesNothing)
{
    COLEVariant text = FromText(OLESTR("a\0b"), 3);
    COLEVariant copy(text);
    EXPECT_NE(text.bstrVal, copy.bstrVal);
    EXPECT_TRUE(copy == text);
    const BSTR before = copy.bstrVal;
    const COLEVariant& same = copy;
    copy = same;
    copy = static_cast<const tagVARIANT&>(same);
    EXPECT_EQ(before, copy.bstrVal);

    copy = FromBytes(0, "bytes");
    EXPECT_TRUE(copy == FromBytes(0, "bytes"));
    copy = COLEVariant();
    EXPECT_EQ(VT_EMPTY, copy.vt);
}

TEST(COLEVariant, AssignmentKeepsTheTypesThatCanHoldTheValue)
{
    COLEVariant variant(short{1}, VT_BOOL);
    variant = short{3};
    EXPECT_EQ(VT_BOOL, variant.vt);
    EXPECT_EQ(VARIANT_TRUE, variant.boolVal);
    variant = 0L;
    EXPECT_EQ(VT_BOOL, variant.vt);
    EXPECT_EQ(VARIANT_FALSE, variant.boolVal);

    variant = COLEVariant(1L, VT_ERROR);
    variant = 8L;
    EXPECT_EQ(VT_ERROR, variant.vt);
    EXPECT_EQ(8, variant.scode);
    variant = short{8};
    EXPECT_EQ(VT_I2, variant.vt);
    variant = 9L;
    EXPECT_EQ(VT_I4, variant.vt);
    variant = 0.5;
    EXPECT_EQ(VT_R8, variant.vt);
    variant = short{3};
    EXPECT_EQ(VT_I2, variant.vt);
    EXPECT_EQ(3, variant.iVal);
    variant = COLEDateTime(2.0);
    EXPECT_EQ(VT_DATE, variant.vt);
    variant = static_cast<unsigned char>(4);
    EXPECT_EQ(VT_UI1, variant.vt);

    variant = FromText(OLESTR("released"), 8);
    variant = 2.5F;
    EXPECT_EQ(VT_R4, variant.vt);
    EXPECT_EQ(2.5F, variant.fltVal);
}

TEST(COLEVariant, ComparesByType)
{
    const double nan = std::nan("");
    EXPECT_TRUE(COLEVariant() == OfType(VT_EMPTY));
    EXPECT_FALSE(COLEVariant() == OfType(VT_NULL));
    EXPECT_TRUE(COLEVariant(0.0) == COLEVariant(-0.0));
    EXPECT_TRUE(COLEVariant(nan) == COLEVariant(1.0));
    EXPECT_TRUE(COLEVariant(1.0F) == COLEVariant(std::numeric_limits<float>::quiet_NaN()));
    EXPECT_FALSE(COLEVariant(1.0) == COLEVariant(2.0));
    EXPECT_FALSE(COLEVariant(1.0) == COLEVariant(1.0F));
    EXPECT_FALSE(COLEVariant(1L, VT_I4) == COLEVariant(1L, VT_ERROR));
    EXPECT_FALSE(COLEVariant(1L, VT_I4) == COLEVariant(0x10001L, VT_I4));

    VARIANT currency = OfType(VT_CY);
    currency.cyVal.int64 = 0x100000001;
    COLEVariant other(currency);
    EXPECT_TRUE(other == currency);
    other.cyVal.Hi = 2;
    EXPECT_FALSE(other == currency);

    for (const VARTYPE type : {VT_I1, VT_UI2, VT_UI4, VT_INT, VT_UINT, VT_I8, VT_DECIMAL}) {
        const COLEVariant left(OfType(type));
        EXPECT_FALSE(left == COLEVariant(OfType(type))) << type;
        EXPECT_TRUE(left == left) << type;
    }
}

TEST(COLEVariant, ComparesTextsByTheirBytes)
{
    const COLEVariant text = FromText(OLESTR("a\0b"), 3);
    EXPECT_TRUE(text == FromText(OLESTR("a\0b"), 3));
    EXPECT_FALSE(text == FromText(OLESTR("a\0c"), 3));
    EXPECT_FALSE(text == FromText(OLESTR("a\0b"), 2));
    EXPECT_TRUE(FromText(OLESTR(""), 0) == OfType(VT_BSTR));
    EXPECT_TRUE(COLEVariant(OfType(VT_BSTR)) == OfType(VT_BSTR));
    EXPECT_FALSE(COLEVariant(OfType(VT_BSTR)) == text);
}

TEST(COLEVariant, ComparesArraysToTheLastElement)
{
    EXPECT_TRUE(FromBytes(0, "wxyz") == FromBytes(1, "wxyz"));
    EXPECT_FALSE(FromBytes(0, "wxyz") == FromBytes(0, "wxyZ"));
    EXPECT_FALSE(FromBytes(0, "wxyz") == FromBytes(0, "wxy"));
    EXPECT_FALSE(FromBytes(0, "w") == FromBytes(0, "z"));
    EXPECT_TRUE(FromBytes(0, "") == FromBytes(5, ""));

    const VARIANT null = OfType(VT_ARRAY | VT_UI1);
    EXPECT_TRUE(COLEVariant(null) == null);
    EXPECT_FALSE(COLEVariant(null) == FromBytes(0, "w"));

    VARIANT matrix = OfType(VT_ARRAY | VT_I2);
    SAFEARRAYBOUND bounds[] = {{2, 0}, {3, 0}};
    matrix.parray = SafeArrayCreate(VT_I2, 2, bounds);
    COLEVariant owner;
    owner.Attach(matrix);
    COLEVariant copy(owner);
    EXPECT_TRUE(copy == owner);
    void* data = nullptr;
    SafeArrayAccessData(copy.parray, &data);
    static_cast<SHORT*>(data)[5] = 1;
    SafeArrayUnaccessData(copy.parray);
    EXPECT_FALSE(copy == owner);
}

TEST(COLEVariant, ConvertsInPlaceOrFromASource)
{
    COLEVariant variant(5L, VT_I4);
    variant.ChangeType(VT_BSTR, nullptr);
    EXPECT_TRUE(variant == FromText(OLESTR("5"), 1));
    const BSTR before = variant.bstrVal;
    variant.ChangeType(VT_BSTR, nullptr);
    EXPECT_EQ(before, variant.bstrVal);

    COLEVariant source(2.5);
    variant.ChangeType(VT_I2, source);
    EXPECT_EQ(VT_I2, variant.vt);
    EXPECT_EQ(2, variant.iVal);
    source = FromText(OLESTR("none"), 4);
    variant.ChangeType(VT_I4, source);
    EXPECT_EQ(VT_I2, variant.vt);
    EXPECT_EQ(2, variant.iVal);
}

TEST(COLEVariant, TellsTraceWhatFailed)
{
    std::string traced;
    CDebug::SetTraceHook([](void* context, const char* text) { *static_cast<std::string*>(context) += text; },
                         &traced);
    COLEVariant value(5L, VT_I4);
    value.ChangeType(VT_UNKNOWN, nullptr);
    CDebug::SetTraceHook(nullptr, nullptr);
    EXPECT_EQ("OLE Exception at OLEVariant : 324\n", traced);
    EXPECT_EQ(VT_I4, value.vt);
    EXPECT_EQ(5, value.lVal);
}

TEST(COLEVariant, HandsItsValueOverAndBack)
{
    COLEVariant variant = FromText(OLESTR("text"), 4);
    const BSTR text = variant.bstrVal;
    VARIANT raw = variant.Detach();
    EXPECT_EQ(VT_EMPTY, variant.vt);
    EXPECT_EQ(text, raw.bstrVal);
    variant = 1L;
    variant.Attach(raw);
    EXPECT_EQ(VT_EMPTY, raw.vt);
    EXPECT_EQ(text, variant.bstrVal);
    tagVARIANT* const address = variant;
    EXPECT_EQ(&variant, address);
    variant._ClearCompat();
    EXPECT_EQ(VT_EMPTY, variant.vt);
}

} // namespace
