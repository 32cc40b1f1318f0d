#include "KesraNTC/net/VariantEncoding.h"

#include "KesraNTC/base/CString.h"
#include "KesraNTC/base/Trace.h"
#include "KesraNTC/net/private/AnsiText.h"
#include "KesraNTC/net/private/ComResult.h"

#include <cstring>

namespace
{

/// Bytes of the values that travel as they lie in memory, 0 of all others.
constexpr unsigned short PlainSize(VARTYPE type)
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
    case VT_R4:
        return 4;
    case VT_R8:
    case VT_DATE:
        return 8;
    default:
        return 0;
    }
}

bool WriteTag(CNTPacket& packet, VARTYPE tag)
{
    return packet.Write(&tag, sizeof tag);
}

/// The bytes of the value, or those that a reference points at.
const void* Value(const _variant_t& value)
{
    if ((value.vt & VT_BYREF) == 0)
        return &value.llVal;
    if (value.byref == nullptr)
        _com_issue_error(E_POINTER);
    return value.byref;
}

/// The variant itself, or what it refers to, in a copy. Of a null reference the conversion decides what is
/// wrong with it.
const _variant_t& Plain(const _variant_t& value, VARTYPE type, _variant_t& copy)
{
    if (value.vt == type)
        return value;
    copy.ChangeType(type, &value);
    return copy;
}

bool WriteBoolean(CNTPacket& packet, const _variant_t& value)
{
    VARIANT_BOOL flag = VARIANT_FALSE;
    std::memcpy(&flag, Value(value), sizeof flag);
    const unsigned char byte = flag != VARIANT_FALSE ? 1 : 0;
    return packet.Write(&byte, 1);
}

bool WriteBstr(CNTPacket& packet, const _variant_t& value)
{
    _variant_t copy;
    return Kesra::WriteText(packet, Kesra::AnsiFromBstr(Plain(value, VT_BSTR, copy).bstrVal).c_str());
}

bool WriteDecimal(CNTPacket& packet, const _variant_t& value)
{
    _variant_t copy;
    return packet.Write(&Plain(value, VT_DECIMAL, copy).decVal, sizeof(DECIMAL));
}

bool WriteValue(CNTPacket& packet, const _variant_t& value, VARTYPE tag)
{
    switch (tag) {
    case VT_NULL:
        return true;
    case VT_BOOL:
        return WriteBoolean(packet, value);
    case VT_BSTR:
        return WriteBstr(packet, value);
    case VT_DECIMAL:
        return WriteDecimal(packet, value);
    default:
        if (PlainSize(tag) != 0)
            return packet.Write(Value(value), PlainSize(tag));
        TRACE("CNTPacket::operator<<() doesn't support for type %x", value.vt);
        return true;
    }
}

void ReadBoolean(CNTPacket& packet, _variant_t& value)
{
    unsigned char byte = 0;
    packet >> byte;
    value.vt = VT_BOOL;
    value.boolVal = byte != 0 ? VARIANT_TRUE : VARIANT_FALSE;
}

void ReadBstr(CNTPacket& packet, _variant_t& value)
{
    CString text;
    packet >> text;
    value.Clear();
    value.bstrVal = Kesra::BstrFromAnsi(static_cast<const char*>(text));
    value.vt = VT_BSTR;
}

void ReadDecimal(CNTPacket& packet, _variant_t& value)
{
    DECIMAL decimal = value.decVal;
    packet.Read(&decimal, sizeof decimal);
    value.decVal = decimal;
    value.vt = VT_DECIMAL;
}

void ReadPlain(CNTPacket& packet, _variant_t& value, VARTYPE tag)
{
    packet.Read(&value.llVal, PlainSize(tag));
    value.vt = tag;
}

} // namespace

bool Kesra::WriteText(CNTPacket& packet, const char* text)
{
    const std::size_t before = packet.GetBufSize();
    packet.WriteString(text);
    return packet.GetBufSize() - before == sizeof(unsigned short) + std::strlen(text);
}

bool Kesra::HoldsPointer(const VARIANT& value)
{
    return (value.vt & (VT_BYREF | VT_ARRAY)) != 0 || value.vt == VT_BSTR || value.vt == VT_DISPATCH ||
           value.vt == VT_UNKNOWN;
}

bool Kesra::WriteVariant(CNTPacket& packet, const _variant_t& value)
{
    const auto tag = static_cast<VARTYPE>(value.vt & ~VT_BYREF);
    const bool tagFits = WriteTag(packet, tag);
    return WriteValue(packet, value, tag) && tagFits;
}

HRESULT Kesra::PutVariant(CNTPacket& packet, const _variant_t& value) noexcept
{
    return ComResult([&] { WriteVariant(packet, value); });
}

HRESULT Kesra::GetVariant(CNTPacket& packet, _variant_t& value) noexcept
{
    return ComResult([&] { ReadVariant(packet, value); });
}

void Kesra::ReadVariant(CNTPacket& packet, _variant_t& value)
{
    constexpr VARTYPE BstrReference = VT_BSTR | VT_BYREF;
    const bool isPointing = HoldsPointer(value);
    value.Clear();
    if (isPointing)
        value.decVal = {};
    VARTYPE tag = VT_EMPTY;
    if (packet.Read(&tag, sizeof tag) != sizeof tag)
        return;
    switch (tag) {
    case VT_NULL:
        value.vt = VT_NULL;
        break;
    case VT_BOOL:
        ReadBoolean(packet, value);
        break;
    case VT_BSTR:
    case BstrReference:
        ReadBstr(packet, value);
        break;
    case VT_DECIMAL:
        ReadDecimal(packet, value);
        break;
    default:
        if (PlainSize(tag) != 0)
            ReadPlain(packet, value, tag);
        else
            TRACE("CNTPacket::operator>>() doesn't support for type %x", tag);
    }
}
