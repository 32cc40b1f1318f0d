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

/// Copies a packet from where ByteBlocks::Beyond more bytes may be read to where 4096 may be written. In
/// blocks of a size that the compiler knows: most packets are a few dozen bytes.
inline void CopyPacket(unsigned char* to, const unsigned char* from, std::size_t size)
{
    constexpr std::size_t Piece = ByteBlocks::Beyond;
    constexpr std::size_t Few = 4 * Piece;
    static_assert(CNTPacket::Capacity % Piece == 0);
    if (size > Few) {
        std::memcpy(to, from, size);
        return;
    }
    for (std::size_t at = 0; at < size; at += Piece)
        std::memcpy(to + at, from + at, Piece);
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
    /// Half a block at most. Throws std::bad_alloc; those before the one that did not fit are kept.
    void Append(const char* packets, std::size_t bytes, std::size_t count)
    {
        if (bytes > Bytes.GetRoom())
            FillBlock(packets, bytes, count);
        Bytes.Append(packets, bytes);
        Count += count;
    }
    /// Moves the oldest into the given packet, its position at 0.
    void PopInto(CNTPacket& packet)
    {
        const unsigned char* front = Bytes.Front().data();
        const std::size_t size = SizeOfPacket(front);
        CopyPacket(packet.GetBuf(), front, size);
        packet.SetBufSize(static_cast<unsigned short>(size));
        packet.SetBufPoint(0);
        Bytes.Pop(size);
        --Count;
    }
    void Clear()
    {
        Bytes.Clear();
        Count = 0;
    }

private:
    /// Appends what still goes into the last block and leaves the rest to the next.
    void FillBlock(const char*& packets, std::size_t& bytes, std::size_t& count)
    {
        const std::size_t room = Bytes.GetRoom();
        std::size_t fits = 0;
        std::size_t fitting = 0;
        for (; fits + SizeOfPacket(packets + fits) <= room; fits += SizeOfPacket(packets + fits))
            ++fitting;
        Bytes.Append(packets, fits);
        Count += fitting;
        packets += fits;
        bytes -= fits;
        count -= fitting;
    }
};

} // namespace Kesra
