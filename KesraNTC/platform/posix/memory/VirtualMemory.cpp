#include "KesraNTC/platform/posix/memory/VirtualMemory.h"

#include "KesraNTC/platform/private/Pages.h"

#include <cstdint>
#include <new>
#include <sys/mman.h>
#include <unistd.h>

namespace
{

// The system wants the size of what it takes back: it stands in a page of its own in front, so that neither a
// table nor a lock is needed.
struct Header {
    SIZE_T MappedSize;
};

SIZE_T GetPageSize()
{
    static const auto size = static_cast<SIZE_T>(sysconf(_SC_PAGESIZE));
    return size;
}

} // namespace

LPVOID VirtualAlloc(LPVOID address, SIZE_T size, DWORD type, DWORD protection)
{
    if (address != nullptr || size == 0 || type != (MEM_RESERVE | MEM_COMMIT) ||
        protection != PAGE_READWRITE) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    const SIZE_T page = GetPageSize();
    if (size > SIZE_MAX - 2 * page) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    const SIZE_T mapped = page + (size + page - 1) / page * page;
    void* pages = mmap(nullptr, mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    // Huge pages would make untouched ones resident.
    madvise(pages, mapped, MADV_NOHUGEPAGE);
    new (pages) Header{mapped};
    return static_cast<char*>(pages) + page;
}

BOOL VirtualFree(LPVOID address, SIZE_T size, DWORD type)
{
    const SIZE_T page = GetPageSize();
    if (address == nullptr || reinterpret_cast<std::uintptr_t>(address) % page != 0 || size != 0 ||
        type != MEM_RELEASE) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    void* pages = static_cast<char*>(address) - page;
    if (munmap(pages, static_cast<Header*>(pages)->MappedSize) == 0)
        return TRUE;
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return FALSE;
}

void Kesra::ForgetPages(void* data, std::size_t size)
{
    const SIZE_T page = GetPageSize();
    const std::uintptr_t begin = (reinterpret_cast<std::uintptr_t>(data) + page - 1) / page * page;
    const std::uintptr_t end = (reinterpret_cast<std::uintptr_t>(data) + size) / page * page;
    if (begin < end)
        madvise(reinterpret_cast<void*>(begin), end - begin, MADV_DONTNEED);
}
