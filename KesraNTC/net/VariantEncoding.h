#pragma once

#include "KesraNTC/net/CNTPacket.h"
#include "KesraNTC/platform/Export.h"
#include "KesraNTC/platform/Platform.h"

/// Writes a variant that describes itself: its type code, 2 bytes, and its value. VT_NULL has no value; VT_I1
/// and VT_UI1 take 1 byte, VT_I2 and VT_UI2 take 2, VT_I4, VT_UI4, VT_INT, VT_UINT and VT_R4 take 4, VT_R8
/// and VT_DATE take 8, VT_BOOL takes 1 (1 or 0), VT_DECIMAL takes 16, and VT_BSTR is a length-prefixed string
/// in the ANSI code page, up to its first NUL. A reference is written as the value behind it. Any other type
/// travels as its code alone. Throws _com_error when a reference is null or a text cannot be converted.
CNTPacket& operator<<(CNTPacket& packet, const _variant_t& value);
/// Reads what was written, or nothing but the code of a type that has no value here; the target is empty
/// then. What the packet does not hold is 0. Throws _com_error when a text cannot be converted.
CNTPacket& operator>>(CNTPacket& packet, _variant_t& value);

namespace Kesra
{
// The operators with their errors as codes.
KESRANTC_API HRESULT PutVariant(CNTPacket& packet, const _variant_t& value) noexcept;
KESRANTC_API HRESULT GetVariant(CNTPacket& packet, _variant_t& value) noexcept;

/// Writes as operator<< does, and tells whether the whole value found room.
bool WriteVariant(CNTPacket& packet, const _variant_t& value);
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
