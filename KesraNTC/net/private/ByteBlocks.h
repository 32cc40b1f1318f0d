#pragma once

#include <cstddef>
#include <span>
#include <utility>

namespace Kesra
{

/// Bytes in their order, in blocks of pages of their own, which go back to the system as they are used up.
/// What is appended in one piece (at most 4096 bytes) lies in one piece. Belongs to whoever holds its lock.
class ByteBlocks
{
public:
    static constexpr std::size_t BlockSize = std::size_t{64} * 1024;

    ByteBlocks() = default;
    ByteBlocks(const ByteBlocks& other);
    ByteBlocks& operator=(const ByteBlocks& other);
    ~ByteBlocks();

    void Swap(ByteBlocks& other) noexcept
    {
        std::swap(First, other.First);
        std::swap(Last, other.Last);
        std::swap(Spare, other.Spare);
        std::swap(Bytes, other.Bytes);
    }

    /// Throws std::bad_alloc, nothing appended.
    void Append(const void* data, std::size_t size);

    bool IsEmpty() const { return Bytes == 0; }
    std::size_t GetSize() const { return Bytes; }
    /// The oldest bytes that lie in one piece; they stay where they are until they are popped.
    std::span<const unsigned char> Front() const;
    /// Gives up the first so many bytes of Front. The last block that became empty is kept for what comes.
    void Pop(std::size_t size);
    void Clear();
    /// Gives the empty block back, too.
    void ReleaseSpare();

private:
    struct Block;

    unsigned char* Reserve(std::size_t size);
    void Drop(Block* block);

    Block* First = nullptr;
    Block* Last = nullptr;
    Block* Spare = nullptr;
    std::size_t Bytes = 0;
};

} // namespace Kesra
