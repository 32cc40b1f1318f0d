#include "KesraNTC/net/private/ByteBlocks.h"

#include "KesraNTC/net/private/OutOfMemory.h"
#include "KesraNTC/platform/Platform.h"

#include <cstring>
#include <new>

namespace Kesra
{

ByteBlocks::Block* ByteBlocks::Block::Make()
{
    void* pages = VirtualAlloc(nullptr, BlockSize, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
    if (pages == nullptr)
        throw OutOfMemory();
    return new (pages) Block;
}

void ByteBlocks::Block::Free(Block* block)
{
    if (block != nullptr)
        VirtualFree(block, 0, MEM_RELEASE);
}

ByteBlocks::ByteBlocks(const ByteBlocks& other)
{
    *this = other;
}

ByteBlocks& ByteBlocks::operator=(const ByteBlocks& other)
{
    if (this == &other)
        return *this;
    Clear();
    for (Block* block = other.First; block != nullptr; block = block->Next) {
        const std::size_t size = block->End - block->Begin;
        std::memcpy(Reserve(size), block->Data() + block->Begin, size);
        Bytes += size;
    }
    return *this;
}

ByteBlocks::~ByteBlocks()
{
    Clear();
    ReleaseSpare();
}

unsigned char* ByteBlocks::Reserve(std::size_t size)
{
    if (GetRoom() < size) {
        Block* block = Spare != nullptr ? std::exchange(Spare, nullptr) : Block::Make();
        (Last != nullptr ? Last->Next : First) = block;
        Last = block;
    }
    unsigned char* at = Last->Data() + Last->End;
    Last->End += size;
    return at;
}

void ByteBlocks::Append(const void* data, std::size_t size)
{
    if (size == 0)
        return;
    std::memcpy(Reserve(size), data, size);
    Bytes += size;
}

void ByteBlocks::DropFirst()
{
    Block* empty = First;
    First = empty->Next;
    if (First == nullptr)
        Last = nullptr;
    if (Spare != nullptr) {
        Block::Free(empty);
        return;
    }
    *empty = Block{};
    Spare = empty;
}

void ByteBlocks::Clear()
{
    while (First != nullptr)
        Block::Free(std::exchange(First, First->Next));
    Last = nullptr;
    Bytes = 0;
}

void ByteBlocks::ReleaseSpare()
{
    Block::Free(std::exchange(Spare, nullptr));
}

} // namespace Kesra
