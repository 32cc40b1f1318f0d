#include "tests/interposed/Calls.h"

#include <cstdlib>

using Interposed::Call;
using Interposed::Fails;

// The dynamic loader allocates before it can look up names: these are the C library's own.
extern "C" {
void* __libc_malloc(size_t size) noexcept;
void* __libc_calloc(size_t count, size_t size) noexcept;

void* malloc(size_t size) noexcept
{
    return Fails(Call::Allocate, __builtin_return_address(0)) ? nullptr : __libc_malloc(size);
}

void* calloc(size_t count, size_t size) noexcept
{
    return Fails(Call::AllocateZeroed, __builtin_return_address(0)) ? nullptr : __libc_calloc(count, size);
}
}
