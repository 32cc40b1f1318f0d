#pragma once

#include "KesraNTC/base/CFixCharString.h"
#include "KesraNTC/net/CNTPacket.h"

#include <algorithm>
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

} // namespace Kesra
