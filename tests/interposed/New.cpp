#include "tests/interposed/Calls.h"

#include <cstdlib>
#include <new>

using Interposed::Call;
using Interposed::FailureOf;

namespace
{

void* NewMemory(std::size_t size, Call call, const void* caller)
{
    return FailureOf(call, caller) == 0 ? std::malloc(size != 0 ? size : 1) : nullptr;
}

void* NewMemoryOrThrow(std::size_t size, const void* caller)
{
    void* memory = NewMemory(size, Call::New, caller);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

} // namespace

void* operator new(std::size_t size)
{
    return NewMemoryOrThrow(size, __builtin_return_address(0));
}

void* operator new[](std::size_t size)
{
    return NewMemoryOrThrow(size, __builtin_return_address(0));
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return NewMemory(size, Call::NewWithoutThrow, __builtin_return_address(0));
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    return NewMemory(size, Call::NewWithoutThrow, __builtin_return_address(0));
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, const std::nothrow_t&) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, const std::nothrow_t&) noexcept
{
    std::free(memory);
}
