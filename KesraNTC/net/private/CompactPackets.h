#pragma once

#include "KesraNTC/net/CNTPacket.h"
#include "KesraNTC/net/private/ByteBlocks.h"

#include <cstring>

namespace Kesra
{

/// The size in the header that a packet in memory begins with.
inline std::size_t SizeOfPacket(const void* packet)
{
    unsigned short size = 0;
    std::memcpy(&size, static_cast<const char*>(packet) + 2, sizeof size);
    return size;
}

/// Whole packets one behind the other, as they arrived, and how many they are.
struct CompactPackets {
    ByteBlocks Bytes;
    std::size_t Count = 0;

    void Swap(CompactPackets& other) noexcept
    {
        Bytes.Swap(other.Bytes);
        std::swap(Count, other.Count);
    }
    /// Throws std::bad_alloc; those before the one that did not fit are kept.
    void Append(const char* packets, std::size_t bytes)
    {
        for (const char* const end = packets + bytes; packets != end; packets += SizeOfPacket(packets)) {
            Bytes.Append(packets, SizeOfPacket(packets));
            ++Count;
        }
    }
    /// Moves the oldest into the given packet, its position at 0.
    void PopInto(CNTPacket& packet)
    {
        const unsigned char* front = Bytes.Front().data();
        const std::size_t size = SizeOfPacket(front);
        packet.SetBufSize(0);
        packet.SetBufPoint(0);
        packet.Write(front, static_cast<unsigned short>(size));
        packet.SetBufPoint(0);
        Bytes.Pop(size);
        --Count;
    }
    void Clear()
    {
        Bytes.Clear();
        Count = 0;
    }
};

} // namespace Kesra
