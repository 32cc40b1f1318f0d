#pragma once

#include <cstddef>
#include <span>
#include <utility>

namespace Kesra
{

/// Bytes in their order, in blocks of pages of their own, which go back to the system as they are used up.
/// What is appended in one piece lies in one piece. Belongs to whoever holds its lock.
class ByteBlocks
{
public:
    static constexpr std::size_t BlockSize = std::size_t{64} * 1024;
    static constexpr std::size_t Beyond = 64; ///< bytes that may be read, though not used, behind any piece

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

    /// Half a block at most. Throws std::bad_alloc, nothing appended.
    void Append(const void* data, std::size_t size);
    /// How many bytes still go where the last ones lie.
    std::size_t GetRoom() const { return Last != nullptr ? Block::Room() - Last->End : 0; }

    bool IsEmpty() const { return Bytes == 0; }
    std::size_t GetSize() const { return Bytes; }
    /// The oldest bytes that lie in one piece; they stay where they are until they are popped.
    std::span<const unsigned char> Front() const
    {
        if (First == nullptr)
            return {};
        return {First->Data() + First->Begin, First->End - First->Begin};
    }
    /// Gives up the first so many bytes of Front. The last block that became empty is kept for what comes.
    void Pop(std::size_t size)
    {
        Bytes -= size;
        First->Begin += size;
        if (First->Begin == First->End)
            DropFirst();
    }
    void Clear();
    /// Gives the empty block back, too.
    void ReleaseSpare();

private:
    struct Block {
        static constexpr std::size_t Room() { return BlockSize - sizeof(Block) - Beyond; }
        static Block* Make();
        static void Free(Block* block);
        unsigned char* Data() { return reinterpret_cast<unsigned char*>(this + 1); }

        Block* Next = nullptr;
        std::size_t Begin = 0;
        std::size_t End = 0;
    };

    unsigned char* Reserve(std::size_t size);
    void DropFirst();

    Block* First = nullptr;
    Block* Last = nullptr;
    Block* Spare = nullptr;
    std::size_t Bytes = 0;
};

} // namespace Kesra
