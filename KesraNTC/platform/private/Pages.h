#pragma once

#include "KesraNTC/platform/Platform.h"

#include <cstddef>
#include <cstdint>

namespace Kesra
{

#ifdef _WIN32
/// Nobody needs what lies in these bytes, which may be a part of anything allocated: the system may take back
/// the memory of the whole pages among them until they are written again.
inline void ForgetPages(void* data, std::size_t size)
{
    constexpr std::uintptr_t Page = 4096;
    const std::uintptr_t begin = (reinterpret_cast<std::uintptr_t>(data) + Page - 1) / Page * Page;
    const std::uintptr_t end = (reinterpret_cast<std::uintptr_t>(data) + size) / Page * Page;
    if (begin < end)
        VirtualAlloc(reinterpret_cast<void*>(begin), end - begin, MEM_RESET, PAGE_READWRITE);
}
#else
/// Nobody needs what lies in these bytes, which may be a part of anything allocated: the memory of the whole
/// pages among them goes back to the system until they are written again.
void ForgetPages(void* data, std::size_t size);
#endif

} // namespace Kesra
