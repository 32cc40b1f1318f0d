#pragma once

#include "KesraNTC/base/CFixCharString.h"
#include "KesraNTC/net/CNTPacket.h"
#include "KesraNTC/rpc/private/RequestFields.h"
#include "KesraNTC/world/CDRVector.h"
#include "KesraNTC/world/CNTVector.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <vector>

namespace Kesra
{

/// Scalars, texts and records have their own readers.
template <class T> void ReadField(CNTPacket& packet, T& value)
{
    packet >> value;
}

/// A bounded text: at most N bytes are kept, the rest is stepped over.
template <int N> void ReadField(CNTPacket& packet, CFixCharString<N>& text)
{
    unsigned short length = 0;
    packet >> length;
    const unsigned short kept = std::min(length, static_cast<unsigned short>(N));
    char* characters = text.GetBuffer();
    const int read = kept > 0 ? packet.Read(characters, kept) : 0;
    characters[read] = '\0';
    packet.SkipRead(static_cast<unsigned short>(length - kept));
}

/// A list: a signed 16-bit count and the elements. A list whose count is not there stays as it is, and so do
/// elements for which no data is left; they are not even visited, so that a lying count costs no more than
/// their memory.
template <class T> void ReadField(CNTPacket& packet, std::vector<T>& list)
{
    short count = 0;
    if (packet.Read(&count, sizeof count) != sizeof count)
        return;
    list.resize(static_cast<std::size_t>(std::max(count, short{0})));
    for (T& element : list) {
        if (packet.IsAtEnd())
            break;
        ReadField(packet, element);
    }
}

/// Whether a field of this type has the same size in every packet.
template <class Field>
constexpr bool IsFixed =
    std::is_arithmetic_v<Field> || std::is_same_v<Field, CNTVector> || std::is_same_v<Field, CDRVector>;

/// Reads fields that are known to be there, with the effect of a packet's own operators; but the position is
/// stored once, at the end. Not for a packet that is read without scrambling. Streams like a packet.
class FieldReader
{
public:
    explicit FieldReader(unsigned char* at) : At(at) {}

    template <class T> FieldReader& operator>>(T& value)
    {
        if constexpr (std::is_same_v<T, long>)
            value = static_cast<std::int32_t>(Take<std::uint32_t>());
        else if constexpr (std::is_same_v<T, unsigned long>)
            value = Take<std::uint32_t>();
        else if constexpr (std::is_same_v<T, bool>)
            value = Take<std::uint8_t>() != 0;
        else if constexpr (std::is_arithmetic_v<T>)
            TakeInto(value);
        else
            ReadFields(*this, value);
        return *this;
    }

private:
    template <class T> void TakeInto(T& value)
    {
        using Bits = std::conditional_t<
            sizeof(T) == 8, std::uint64_t,
            std::conditional_t<sizeof(T) == 4, std::uint32_t,
                               std::conditional_t<sizeof(T) == 2, std::uint16_t, std::uint8_t>>>;
        const Bits bits = Take<Bits>();
        std::memcpy(&value, &bits, sizeof value);
    }
    template <class Bits> Bits Take()
    {
        Bits bits;
        std::memcpy(&bits, At, sizeof bits);
        bits = static_cast<Bits>(bits ^ CNTPacket::KeyOf<Bits>());
        std::memcpy(At, &bits, sizeof bits);
        At += sizeof bits;
        return bits;
    }

    unsigned char* At;
};

/// Reads all fields of a message, in order. Where they always have the same size, that they are all there is
/// asked once.
template <class... Fields> void ReadMessage(CNTPacket& packet, Fields&... fields)
{
    if constexpr (sizeof...(Fields) != 0 && (IsFixed<Fields> && ...)) {
        FieldSize size;
        (size << ... << fields);
        const unsigned end = packet.GetBufPoint() + size.Bytes;
        if (end <= std::min(packet.GetBufSize(), CNTPacket::Capacity)) {
            FieldReader reader(packet.GetBuf() + packet.GetBufPoint());
            (reader >> ... >> fields);
            packet.SetBufPoint(static_cast<unsigned short>(end));
            return;
        }
    }
    (ReadField(packet, fields), ...);
}

} // namespace Kesra
