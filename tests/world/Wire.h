#pragma once

#include "KesraNTC/net/CNTPacket.h"

#include <cstdint>
#include <vector>

using Bytes = std::vector<std::uint8_t>;

/// A packet with its header written, as a sender begins one. Packets of number 747 are written unscrambled.
inline CNTPacket Begun(unsigned short number = 12003)
{
    CNTPacket packet;
    packet << number << static_cast<unsigned short>(0);
    return packet;
}

/// What a receiver of the packet reads from, its header already read.
inline CNTPacket Received(const CNTPacket& sent)
{
    CNTPacket packet = sent;
    packet.SetBufPoint(CNTPacket::HeaderSize);
    return packet;
}

/// The same when only so many payload bytes arrived.
inline CNTPacket Received(const CNTPacket& sent, int payload)
{
    CNTPacket packet = Received(sent);
    packet.SetBufSize(static_cast<unsigned short>(CNTPacket::HeaderSize + payload));
    return packet;
}

/// The unscrambled wire form of a value.
template <class T> Bytes WireForm(const T& value)
{
    CNTPacket packet = Begun(747);
    packet << value;
    return Bytes(packet.GetBuf() + CNTPacket::HeaderSize, packet.GetBuf() + packet.GetBufSize());
}

/// How many payload bytes have been read.
inline int BytesRead(const CNTPacket& packet)
{
    return packet.GetBufPoint() - CNTPacket::HeaderSize;
}
