#include "KesraNTC/net/VariantEncoding.h"

#include "KesraNTC/base/CDebug.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

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
}

/// What writing a variant throws, S_OK when it throws nothing.
HRESULT WriteError(const VARIANT& variant)
{
    CNTPacket packet = Started();
    const _variant_t value(variant);
    try {
        packet << value;
        return S_OK;
    } catch (const _com_error& error) {
        return error.Error();
    }
}

TEST(VariantEncoding, NullReferencesThrowWhatIsWrongWithThem)
{
    EXPECT_EQ(E_POINTER, WriteError(OfType(VT_R8 | VT_BYREF)));
    EXPECT_EQ(E_POINTER, WriteError(OfType(VT_BOOL | VT_BYREF)));
    for (const VARTYPE type : {VT_BSTR, VT_DECIMAL}) {
        VARIANT null = OfType(static_cast<VARTYPE>(type | VT_BYREF));
        _variant_t target;
        const HRESULT conversion = VariantChangeType(&target, &null, 0, type);
        EXPECT_TRUE(FAILED(conversion));
        EXPECT_EQ(conversion, WriteError(null)) << type;
    }

    BSTR none = nullptr;
    VARIANT reference = OfType(VT_BSTR | VT_BYREF);
    reference.pbstrVal = &none;
    CNTPacket packet = Started();
    packet << _variant_t(reference);
    EXPECT_EQ(Bytes("\x08\0\0\0", 4), Payload(packet, {2, 2}));
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

TEST(VariantEncoding, TellsTraceOfTypesThatHaveNoValueHere)
{
    std::vector<string> traced;
    CDebug::SetTraceHook(
        [](void* context, const char* text) {
            static_cast<std::vector<string>*>(context)->emplace_back(text);
        },
        &traced);
    CY amount{};
    _variant_t value;
    value.vt = VT_CY | VT_BYREF;
    value.pcyVal = &amount;
    CNTPacket packet = Started();
    packet << value << static_cast<unsigned short>(VT_I4 | VT_BYREF);
    packet.SetBufPoint(CNTPacket::HeaderSize);
    packet >> value >> value;
    CDebug::SetTraceHook(nullptr, nullptr);
    EXPECT_EQ((std::vector<string>{"CNTPacket::operator<<() doesn't support for type 4006",
                                   "CNTPacket::operator>>() doesn't support for type 6",
                                   "CNTPacket::operator>>() doesn't support for type 4003"}),
              traced);
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

/// What a variant whose bytes are all 0xA5 becomes when only so many bytes of an encoding have come.
VARIANT ReadShort(CNTPacket packet, int arrived)
{
    packet.SetBufSize(static_cast<unsigned short>(CNTPacket::HeaderSize + arrived));
    packet.SetBufPoint(CNTPacket::HeaderSize);
    _variant_t value;
    std::memset(static_cast<VARIANT*>(&value), 0xA5, sizeof(VARIANT));
    value.vt = VT_I8;
    packet >> value;
    EXPECT_EQ(packet.GetBufSize(), packet.GetBufPoint());
    return value.Detach();
}

TEST(VariantEncoding, AValueCutAnywhereHasItsTypeAndTheBytesThatCame)
{
    VARIANT decimal = OfType(VT_DECIMAL);
    decimal.decVal.scale = 3;
    decimal.decVal.Lo64 = 0x1122334455667788;
    const int tagSize = sizeof(VARTYPE);
    for (const _variant_t& value : {_variant_t(decimal), _variant_t(0.1), _variant_t(0x01020304L),
                                    _variant_t(short{0x0506}), _variant_t(static_cast<BYTE>(7))}) {
        CNTPacket whole = Started();
        whole << value;
        const int size = whole.GetBufSize() - CNTPacket::HeaderSize;
        for (int arrived = 0; arrived <= size; ++arrived) {
            VARIANT expected;
            std::memset(&expected, 0xA5, sizeof expected);
            const auto came = static_cast<std::size_t>(std::max(arrived - tagSize, 0));
            if (value.vt == VT_DECIMAL)
                std::memcpy(&expected.decVal, &value.decVal, came);
            else
                std::memcpy(&expected.llVal, &value.llVal, came);
            expected.vt = arrived < tagSize ? static_cast<VARTYPE>(VT_EMPTY) : value.vt;
            const VARIANT read = ReadShort(whole, arrived);
            EXPECT_EQ(Bytes(reinterpret_cast<const char*>(&expected), sizeof expected),
                      Bytes(reinterpret_cast<const char*>(&read), sizeof read))
                << value.vt << " of which " << arrived << " bytes came";
        }
    }
}

TEST(VariantEncoding, ATextCutAnywhereEndsThereAndABooleanIsFalse)
{
    CNTPacket whole = Started();
    whole << _variant_t(OLESTR("abcdef"));
    for (int arrived = 0; arrived <= 10; ++arrived) {
        VARIANT read = ReadShort(whole, arrived);
        const _variant_t text(read, false);
        ASSERT_EQ(arrived < 2 ? VT_EMPTY : VT_BSTR, text.vt) << arrived;
        const UINT length = text.vt == VT_BSTR ? SysStringLen(text.bstrVal) : 0;
        EXPECT_EQ(static_cast<UINT>(std::max(arrived - 4, 0)), length) << arrived;
    }
    CNTPacket packet = Started();
    packet << static_cast<unsigned short>(VT_BSTR) << static_cast<unsigned short>(0xFFFF) << 'x';
    VARIANT read = ReadShort(packet, 5);
    EXPECT_EQ(1U, SysStringLen(_variant_t(read, false).bstrVal));

    packet = Started();
    packet << _variant_t(true);
    EXPECT_EQ(VARIANT_FALSE, ReadShort(packet, 2).boolVal);
    EXPECT_EQ(VARIANT_TRUE, ReadShort(packet, 3).boolVal);
}

TEST(VariantEncoding, AFullPacketLeavesOutWhatDoesNotFit)
{
    CNTPacket packet = Started();
    const string filling(CNTPacket::Capacity - 4 - 2 - 5, 'x');
    packet << filling << _variant_t(0x01020304L);
    EXPECT_EQ(CNTPacket::Capacity - 3, packet.GetBufSize());
}

} // namespace
