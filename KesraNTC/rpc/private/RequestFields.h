#pragma once

#include "KesraNTC/base/CFixCharString.h"
#include "KesraNTC/base/CString.h"
#include "KesraNTC/net/CNTPacket.h"
#include "KesraNTC/world/CDRVector.h"
#include "KesraNTC/world/CNTVector.h"

#include <cstdint>
#include <cstring>
#include <type_traits>
#include <vector>

namespace Kesra
{

/// A text as a request carries it: its characters before the NUL and their count.
struct RequestText {
    explicit RequestText(const char* text)
        : Characters(text), Length(static_cast<std::uint16_t>(std::strlen(text)))
    {
    }
    const char* Characters;
    std::uint16_t Length;
};

// What a method's argument is on the wire: texts are measured once, everything else travels as it is.
template <class T> const T& AsField(const T& value)
{
    return value;
}
inline RequestText AsField(const CString& text)
{
    return RequestText(text);
}
template <int N> RequestText AsField(const CFixCharString<N>& text)
{
    return RequestText(text);
}

// A list is its 16-bit count and its elements.
template <class T> CNTPacket& operator<<(CNTPacket& packet, const std::vector<T>& list)
{
    packet << static_cast<short>(list.size());
    for (const T& element : list)
        packet << element;
    return packet;
}
inline CNTPacket& operator<<(CNTPacket& packet, const RequestText& text)
{
    packet.WriteString(text.Characters);
    return packet;
}

/// Counts the bytes of fields in wire form. Streams like a packet.
class FieldSize
{
public:
    template <class T> FieldSize& operator<<(const T& value)
    {
        if constexpr (std::is_same_v<T, long> || std::is_same_v<T, unsigned long>)
            Bytes += 4;
        else if constexpr (std::is_arithmetic_v<T>)
            Bytes += sizeof value;
        else
            WriteFields(*this, value);
        return *this;
    }
    FieldSize& operator<<(const RequestText& text)
    {
        Bytes += 2U + text.Length;
        return *this;
    }

    unsigned Bytes = 0;
};

/// Writes fields that are known to fit behind one another, with the bytes a packet's own operators would
/// give; but position and size are stored once, at the end. Streams like a packet.
class FieldWriter
{
public:
    explicit FieldWriter(unsigned char* at) : At(at) {}

    template <class T> FieldWriter& operator<<(const T& value)
    {
        if constexpr (std::is_same_v<T, long> || std::is_same_v<T, unsigned long>)
            Put(static_cast<std::uint32_t>(value));
        else if constexpr (sizeof(T) == 8 && std::is_arithmetic_v<T>)
            PutBits<std::uint64_t>(value);
        else if constexpr (sizeof(T) == 4 && std::is_arithmetic_v<T>)
            PutBits<std::uint32_t>(value);
        else if constexpr (std::is_arithmetic_v<T>)
            Put(static_cast<std::make_unsigned_t<std::conditional_t<sizeof(T) == 1, char, short>>>(value));
        else
            WriteFields(*this, value);
        return *this;
    }
    FieldWriter& operator<<(const RequestText& text)
    {
        Put(text.Length);
        std::memcpy(At, text.Characters, text.Length);
        CNTPacket::Concrete(At, text.Length);
        At += text.Length;
        return *this;
    }

private:
    template <class Bits, class T> void PutBits(T value)
    {
        Bits bits;
        std::memcpy(&bits, &value, sizeof bits);
        Put(bits);
    }
    template <class Bits> void Put(Bits bits)
    {
        bits = static_cast<Bits>(bits ^ CNTPacket::KeyOf<Bits>());
        std::memcpy(At, &bits, sizeof bits);
        At += sizeof bits;
    }

    unsigned char* At;
};

template <class T> struct IsList : std::false_type {
};
template <class T> struct IsList<std::vector<T>> : std::true_type {
};

/// Writes fields one by one into an empty packet; what does not fit is left out.
template <class... Fields>
void WriteEachField(CNTPacket& packet, unsigned short number, const Fields&... fields)
{
    packet << number << static_cast<unsigned short>(0);
    ((packet << fields), ...);
}

/// Makes an unzeroed packet the request with this number and these fields.
template <class... Fields>
void WriteFieldsAtOnce(CNTPacket& packet, unsigned short number, const Fields&... fields)
{
    FieldSize size;
    ((size << fields), ...);
    const unsigned total = CNTPacket::HeaderSize + size.Bytes;
    if (total > CNTPacket::Capacity) {
        WriteEachField(packet, number, fields...);
        return;
    }
    const std::uint16_t header[2] = {number, static_cast<std::uint16_t>(total)};
    std::memcpy(packet.GetBuf(), header, sizeof header);
    FieldWriter writer(packet.GetBuf() + sizeof header);
    ((writer << fields), ...);
    packet.SetBufSize(header[1]);
    packet.SetBufPoint(header[1]);
}

/// Builds a request. Requests with a list go field by field, since any of its elements may not fit.
template <class... Fields>
void BuildRequest(CNTPacket& packet, unsigned short number, const Fields&... fields)
{
    if constexpr ((IsList<Fields>::value || ...))
        WriteEachField(packet, number, AsField(fields)...);
    else
        WriteFieldsAtOnce(packet, number, AsField(fields)...);
}

} // namespace Kesra
