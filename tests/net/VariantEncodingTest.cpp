#include "KesraNTC/net/VariantEncoding.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace
{

using std::string;

constexpr unsigned short Number = 1002;

CNTPacket Started()
{
    CNTPacket packet;
    packet << Number << static_cast<unsigned short>(0);
    return packet;
}

/// The payload with each of the given writes unscrambled.
string Payload(CNTPacket packet, std::initializer_list<unsigned short> widths)
{
    string payload;
    unsigned short at = CNTPacket::HeaderSize;
    for (const unsigned short width : widths) {
        packet.Concrete(packet.GetBuf() + at, width);
        payload.append(reinterpret_cast<const char*>(packet.GetBuf()) + at, width);
        at = static_cast<unsigned short>(at + width);
    }
    EXPECT_EQ(at, packet.GetBufSize());
    return payload;
}

VARIANT OfType(VARTYPE type)
{
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = type;
    return variant;
}

/// Writes a value and a mark behind it, reads both back and expects them to be in step.
_variant_t RoundTrip(const _variant_t& value)
{
    CNTPacket packet = Started();
    packet << value << 0x12345678;
    packet.SetBufPoint(CNTPacket::HeaderSize);
    _variant_t result(OLESTR("old value"));
    int mark = 0;
    packet >> result >> mark;
    EXPECT_EQ(0x12345678, mark);
    return result;
}

string Bytes(const char* bytes, std::size_t size)
{
    return string(bytes, size);
}

TEST(VariantEncoding, WireFormOfEveryType)
{
    CNTPacket packet = Started();
    packet << _variant_t(5L);
    EXPECT_EQ(Bytes("\3\0\5\0\0\0", 6), Payload(packet, {2, 4}));
    EXPECT_EQ(CNTPacket::Key ^ 3, packet.GetBuf()[4]);

    packet = Started();
    packet << _variant_t(true) << _variant_t(false);
    EXPECT_EQ(Bytes("\x0B\0\1\x0B\0\0", 6), Payload(packet, {2, 1, 2, 1}));

    packet = Started();
    packet << _variant_t(OLESTR("abc"));
    EXPECT_EQ(Bytes("\x08\0\3\0abc", 7), Payload(packet, {2, 2, 3}));

    packet = Started();
    packet << _variant_t(OfType(VT_NULL)) << _variant_t(static_cast<BYTE>(7)) << _variant_t(short{-2});
    EXPECT_EQ(Bytes("\1\0\x11\0\7\2\0\xFE\xFF", 9), Payload(packet, {2, 2, 1, 2, 2}));

    packet = Started();
    packet << _variant_t(1.0F) << _variant_t(1.0, VT_DATE);
    EXPECT_EQ(Bytes("\4\0\0\0\x80\x3F\7\0\0\0\0\0\0\0\xF0\x3F", 16), Payload(packet, {2, 4, 2, 8}));

    VARIANT decimal = OfType(VT_DECIMAL);
    decimal.decVal.scale = 2;
    decimal.decVal.sign = DECIMAL_NEG;
    decimal.decVal.Hi32 = 3;
    decimal.decVal.Lo64 = 0x500000004;
    packet = Started();
    packet << _variant_t(decimal);
    EXPECT_EQ(Bytes("\x0E\0\x0E\0\2\x80\3\0\0\0\4\0\0\0\5\0\0\0", 18), Payload(packet, {2, 16}));
}

TEST(VariantEncoding, ValuesComeBack)
{
    EXPECT_EQ(VT_NULL, RoundTrip(OfType(VT_NULL)).vt);
    EXPECT_EQ(-5, RoundTrip(short{-5}).iVal);
    EXPECT_EQ(VT_I4, RoundTrip(-5L).vt);
    EXPECT_EQ(-5, RoundTrip(-5L).lVal);
    EXPECT_EQ(VT_INT, RoundTrip(-5).vt);
    EXPECT_EQ(0xFFFFFFFE, RoundTrip(0xFFFFFFFEUL).ulVal);
    EXPECT_EQ(VT_UINT, RoundTrip(5U).vt);
    EXPECT_EQ(65535, RoundTrip(static_cast<USHORT>(65535)).uiVal);
    EXPECT_EQ('x', RoundTrip('x').cVal);
    EXPECT_EQ(200, RoundTrip(static_cast<BYTE>(200)).bVal);
    EXPECT_EQ(0.1F, RoundTrip(0.1F).fltVal);
    EXPECT_EQ(0.1, RoundTrip(0.1).dblVal);
    EXPECT_EQ(VT_DATE, RoundTrip(_variant_t(-1.25, VT_DATE)).vt);
    EXPECT_EQ(VARIANT_TRUE, RoundTrip(true).boolVal);
    EXPECT_EQ(VARIANT_FALSE, RoundTrip(false).boolVal);

    VARIANT decimal = OfType(VT_DECIMAL);
    decimal.decVal.scale = 28;
    decimal.decVal.Hi32 = 0xFFFFFFFF;
    decimal.decVal.Lo64 = 0xFFFFFFFFFFFFFFFE;
    const _variant_t read = RoundTrip(decimal);
    EXPECT_EQ(0, std::memcmp(&decimal, &read, sizeof decimal));
}

TEST(VariantEncoding, TextsTravelInTheAnsiCodePage)
{
    // Hangul of code page 949, and a character that it does not have.
    const _variant_t read = RoundTrip(OLESTR("a\uD55C\uAE00\u0E01"));
    ASSERT_EQ(VT_BSTR, read.vt);
    ASSERT_EQ(4U, SysStringLen(read.bstrVal));
    EXPECT_EQ(0, std::memcmp(read.bstrVal, OLESTR("a\uD55C\uAE00?"), 8));
    CNTPacket packet = Started();
    packet << _variant_t(OLESTR("\uD55C"));
    EXPECT_EQ(Bytes("\x08\0\2\0\xC7\xD1", 6), Payload(packet, {2, 2, 2}));

    for (const _variant_t& empty : {_variant_t(OLESTR("")), _variant_t(OfType(VT_BSTR))}) {
        const _variant_t text = RoundTrip(empty);
        ASSERT_EQ(VT_BSTR, text.vt);
        ASSERT_NE(nullptr, text.bstrVal);
        EXPECT_EQ(0U, SysStringLen(text.bstrVal));
    }

    VARIANT cut = OfType(VT_BSTR);
    cut.bstrVal = SysAllocStringLen(OLESTR("ab\0cd"), 5);
    EXPECT_EQ(2U, SysStringLen(RoundTrip(_variant_t(cut, false)).bstrVal));
}

TEST(VariantEncoding, ReferencesTravelAsWhatTheyReferTo)
{
    LONG number = 7;
    VARIANT reference = OfType(VT_I4 | VT_BYREF);
    reference.plVal = &number;
    CNTPacket packet = Started();
    packet << _variant_t(reference);
    EXPECT_EQ(Bytes("\3\0\7\0\0\0", 6), Payload(packet, {2, 4}));

    VARIANT_BOOL flag = VARIANT_TRUE;
    reference = OfType(VT_BOOL | VT_BYREF);
    reference.pboolVal = &flag;
    EXPECT_EQ(VARIANT_TRUE, RoundTrip(reference).boolVal);

    BSTR text = SysAllocString(OLESTR("abc"));
    reference = OfType(VT_BSTR | VT_BYREF);
    reference.pbstrVal = &text;
    const _variant_t read = RoundTrip(reference);
    EXPECT_EQ(VT_BSTR, read.vt);
    EXPECT_EQ(3U, SysStringLen(read.bstrVal));
    SysFreeString(text);

    DECIMAL decimal = OfType(VT_EMPTY).decVal;
    decimal.Lo64 = 9;
    reference = OfType(VT_DECIMAL | VT_BYREF);
    reference.pdecVal = &decimal;
    packet = Started();
    packet << _variant_t(reference);
    EXPECT_EQ(Bytes("\x0E\0\x0E\0\0\0\0\0\0\0\x09\0\0\0\0\0\0\0", 18), Payload(packet, {2, 16}));

    _variant_t nullReference;
    nullReference.vt = VT_NULL | VT_BYREF;
    packet = Started();
    packet << nullReference;
    EXPECT_EQ(Bytes("\1\0", 2), Payload(packet, {2}));
    nullReference.vt = VT_EMPTY;

    const _variant_t null(OfType(VT_R8 | VT_BYREF));
    EXPECT_THROW(packet << null, _com_error);
}

TEST(VariantEncoding, OtherTypesTravelAsTheirCodeAlone)
{
    VARIANT array = OfType(VT_ARRAY | VT_UI1);
    array.parray = SafeArrayCreateVector(VT_UI1, 0, 3);
    const _variant_t owner(array, false);
    for (const _variant_t& value : {_variant_t(), _variant_t(CY{}), _variant_t(7L, VT_ERROR), _variant_t(5LL),
                                    _variant_t(5ULL), owner}) {
        CNTPacket packet = Started();
        packet << value;
        const string tag(reinterpret_cast<const char*>(&value.vt), 2);
        EXPECT_EQ(tag, Payload(packet, {2}));
        EXPECT_EQ(VT_EMPTY, RoundTrip(value).vt);
    }
}

TEST(VariantEncoding, ReadsWhatOthersMaySend)
{
    CNTPacket packet = Started();
    packet << static_cast<unsigned short>(VT_BSTR | VT_BYREF) << "abc";
    packet << static_cast<unsigned short>(VT_BOOL) << static_cast<unsigned char>(9);
    packet << static_cast<unsigned short>(VT_I4 | VT_BYREF) << static_cast<unsigned short>(0xFFFF);
    packet.SetBufPoint(CNTPacket::HeaderSize);
    _variant_t value;
    packet >> value;
    EXPECT_EQ(VT_BSTR, value.vt);
    EXPECT_EQ(3U, SysStringLen(value.bstrVal));
    packet >> value;
    EXPECT_EQ(VARIANT_TRUE, value.boolVal);
    packet >> value;
    EXPECT_EQ(VT_EMPTY, value.vt);
    packet >> value;
    EXPECT_EQ(VT_EMPTY, value.vt);
}

TEST(VariantEncoding, CutAnywhereNothingIsReadThatIsNotThere)
{
    VARIANT decimal = OfType(VT_DECIMAL);
    decimal.decVal.Lo64 = 0x1122334455667788;
    for (const _variant_t& value : {_variant_t(OLESTR("abcdef")), _variant_t(decimal), _variant_t(0.1),
                                    _variant_t(0x01020304L), _variant_t(true)}) {
        CNTPacket whole = Started();
        whole << value;
        for (unsigned short size = CNTPacket::HeaderSize; size < whole.GetBufSize(); ++size) {
            CNTPacket packet(whole);
            packet.SetBufSize(size);
            packet.SetBufPoint(CNTPacket::HeaderSize);
            _variant_t read(OLESTR("old"));
            packet >> read;
            EXPECT_EQ(size, packet.GetBufPoint());
            const bool hasTag = size > CNTPacket::HeaderSize + 1;
            EXPECT_TRUE(read.vt == value.vt || !hasTag);
            EXPECT_TRUE(read.vt == VT_EMPTY || size > CNTPacket::HeaderSize);
        }
    }
    CNTPacket packet = Started();
    packet << static_cast<unsigned short>(VT_BSTR) << static_cast<unsigned short>(0xFFFF) << 'x';
    packet.SetBufPoint(CNTPacket::HeaderSize);
    _variant_t text;
    packet >> text;
    EXPECT_EQ(1U, SysStringLen(text.bstrVal));
}

TEST(VariantEncoding, AFullPacketLeavesOutWhatDoesNotFit)
{
    CNTPacket packet = Started();
    const string filling(CNTPacket::Capacity - 4 - 2 - 5, 'x');
    packet << filling << _variant_t(0x01020304L);
    EXPECT_EQ(CNTPacket::Capacity - 3, packet.GetBufSize());
}

} // namespace
