#include "tests/conformance/OwnPackets.h"

#include "KesraNTC/KesraNTC.h"
#include "KesraNTC/base/private/Korean.h"

#include <fstream>

namespace Kesra
{

void OwnPackets::WriteAll()
{
    CPartyMember member;
    member.Value1 = -2;
    member.Text1 = "boss";
    member.Text2 = "이상한"_949;
    member.Value3 = 32767;
    member.Value4 = 255;
    Write(700, "CPartyMember,CPartyMember", member, CPartyMember());
    Write(701, "sAttackResult,u8", sAttackResult{-5, 6, 200}, static_cast<unsigned char>(7));
    Write(702, "systemtime,date", _SYSTEMTIME{2003, 7, 2, 15, 8, 9, 10, 999}, COLEDateTime(-1.25));
    Write(703, "f64,vector,movement", -0.1, CNTVector(1, 2, 3), CDRVector());

    // Two numbers are written plain, and the one that travels plain is not.
    constexpr unsigned short special[] = {486, 747, 508};
    for (unsigned short number : special)
        Write(number, "u32,text,i8,bool", 0x01020304U, "hello", static_cast<char>(-1), true);

    WriteVariants();
    WriteCollection();
}

void OwnPackets::WriteVariants()
{
    _variant_t null;
    null.vt = VT_NULL;
    _variant_t currency;
    currency.vt = VT_CY;
    LONG number = -7;
    VARIANT reference{};
    reference.vt = VT_I4 | VT_BYREF;
    reference.plVal = &number;
    DECIMAL decimal{};
    decimal.wReserved = VT_DECIMAL;
    decimal.scale = 3;
    decimal.sign = DECIMAL_NEG;
    decimal.Hi32 = 0x11223344;
    decimal.Lo32 = 0x55667788;
    decimal.Mid32 = 0x99AABBCC;

    WriteVariant(_variant_t(), VT_EMPTY);
    WriteVariant(null, VT_NULL);
    WriteVariant(currency, VT_CY);
    WriteVariant(short{-2}, VT_I2, -2);
    WriteVariant(-70000L, VT_I4, -70000);
    WriteVariant(reference, VT_I4, -7);
    WriteVariant(-0.1F, VT_R4, -0.1F);
    WriteVariant(1e300, VT_R8, 1e300);
    WriteVariant(_variant_t(36585.5, VT_DATE), VT_DATE, 36585.5);
    WriteVariant("", VT_BSTR, "");
    WriteVariant(OLESTR("hello"), VT_BSTR, "hello");
    WriteVariant("이상한 서버"_949, VT_BSTR, "이상한 서버"_949);
    WriteVariant(true, VT_BOOL, true);
    WriteVariant(decimal, VT_DECIMAL, decimal);
    WriteVariant(static_cast<char>(-1), VT_I1, -1);
    WriteVariant(BYTE{255}, VT_UI1, 255);
    WriteVariant(static_cast<unsigned short>(65535), VT_UI2, 65535);
    WriteVariant(0xFFFFFFFFUL, VT_UI4, 0xFFFFFFFFUL);
    WriteVariant(-5, VT_INT, -5);
    WriteVariant(5U, VT_UINT, 5);
}

void OwnPackets::WriteCollection()
{
    CPropCollection properties;
    Append(CollectionNumber, properties);
    Record.Own(CollectionNumber, "collection", Fields(0));

    properties.SetProperty("b", 1L);
    properties.SetProperty("A", "text");
    properties.SetProperty("hp", 2.5);
    properties.SetProperty("HP", _variant_t());
    Append(CollectionNumber, properties);
    Record.Own(CollectionNumber, "collection",
               Fields(3, "A", VT_BSTR + 0, "text", "b", VT_I4 + 0, 1, "hp", VT_EMPTY + 0));
}

void OwnPackets::Save(const std::filesystem::path& directory) const
{
    std::ofstream(directory / "own.bin", std::ios::binary) << Bytes;
}

} // namespace Kesra
