#pragma once

#include "KesraNTC/net/CNTPacket.h"
#include "KesraNTC/platform/Export.h"
#include "KesraNTC/platform/Platform.h"

/// Writes a variant that describes itself: its type code, 2 bytes, and its value. VT_NULL has no value; VT_I1
/// and VT_UI1 take 1 byte, VT_I2 and VT_UI2 take 2, VT_I4, VT_UI4, VT_INT, VT_UINT and VT_R4 take 4, VT_R8
/// and VT_DATE take 8, VT_BOOL takes 1 (1 or 0), VT_DECIMAL takes 16, and VT_BSTR is a length-prefixed string
/// in the ANSI code page, up to its first NUL. A reference is written as the value behind it. Any other type
/// travels as its code alone. Throws _com_error: E_OUTOFMEMORY when memory does not suffice, E_POINTER for a
/// null reference, and for one to a text or a decimal what VariantChangeType makes of it.
CNTPacket& operator<<(CNTPacket& packet, const _variant_t& value);
/// Reads what was written, after clearing the target, which stays empty when the packet does not hold a whole
/// type code or when the type has no value here. A value that the packet holds only in part gives the target
/// its type and the bytes that came; the other bytes stay as they were. A text ends where the packet ends,
/// and a Boolean without its byte is false. Throws _com_error: E_OUTOFMEMORY when memory does not suffice for
/// a text, and what VariantClear reports of the old value, which then stays.
CNTPacket& operator>>(CNTPacket& packet, _variant_t& value);

namespace Kesra
{
// The operators with their errors as codes.
KESRANTC_API HRESULT PutVariant(CNTPacket& packet, const _variant_t& value) noexcept;
KESRANTC_API HRESULT GetVariant(CNTPacket& packet, _variant_t& value) noexcept;

/// Writes as operator<< does, and tells whether the whole value found room.
bool WriteVariant(CNTPacket& packet, const _variant_t& value);
/// Whether its value is an address. Where one has gone, it must not turn up in a value of which a packet
/// holds only a part.
bool HoldsPointer(const VARIANT& value);
/// Reads as operator>> does.
void ReadVariant(CNTPacket& packet, _variant_t& value);
/// Writes a length-prefixed string and tells whether all of it found room.
bool WriteText(CNTPacket& packet, const char* text);
} // namespace Kesra

inline CNTPacket& operator<<(CNTPacket& packet, const _variant_t& value)
{
    _com_util::CheckError(Kesra::PutVariant(packet, value));
    return packet;
}

inline CNTPacket& operator>>(CNTPacket& packet, _variant_t& value)
{
    _com_util::CheckError(Kesra::GetVariant(packet, value));
    return packet;
}
