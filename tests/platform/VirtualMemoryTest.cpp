#include "KesraNTC/platform/Platform.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>

namespace
{

constexpr std::size_t PageSize = 4096;

char* Allocate(SIZE_T size)
{
    return static_cast<char*>(VirtualAlloc(nullptr, size, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
}

bool Release(void* pages)
{
    return VirtualFree(pages, 0, MEM_RELEASE) != FALSE;
}

TEST(VirtualMemory, BlocksAreAlignedZeroedAndApart)
{
    const std::array<SIZE_T, 5> sizes{1, PageSize - 1, PageSize, 65536, 10 * PageSize + 1};
    std::array<char*, sizes.size()> blocks{};
    // The second time around the system hands out pages that were written to.
    for (int round = 0; round < 2; ++round) {
        for (std::size_t i = 0; i < sizes.size(); ++i) {
            blocks[i] = Allocate(sizes[i]);
            ASSERT_NE(nullptr, blocks[i]);
            EXPECT_EQ(0U, reinterpret_cast<std::uintptr_t>(blocks[i]) % PageSize);
            for (SIZE_T at = 0; at < sizes[i]; ++at)
                ASSERT_EQ('\0', blocks[i][at]) << at;
            std::memset(blocks[i], static_cast<int>(i + 1), sizes[i]);
        }
        for (std::size_t i = 0; i < sizes.size(); ++i) {
            for (SIZE_T at = 0; at < sizes[i]; ++at)
                ASSERT_EQ(static_cast<char>(i + 1), blocks[i][at]) << at;
            EXPECT_TRUE(Release(blocks[i]));
        }
    }
}

// Side by side these would fill a 32-bit process several times.
TEST(VirtualMemory, WhatIsReleasedIsAvailableAgain)
{
    constexpr SIZE_T Size = SIZE_T{256} << 20;
    for (int i = 0; i < 64; ++i) {
        char* pages = Allocate(Size);
        ASSERT_NE(nullptr, pages) << i;
        pages[Size - 1] = 'x';
        ASSERT_TRUE(Release(pages));
    }
}

TEST(VirtualMemory, WhatCannotBeHadIsNull)
{
    SetLastError(ERROR_SUCCESS);
    // Less than the addresses that a process of 32 bits has, but more than are free in one piece.
    EXPECT_EQ(nullptr, Allocate(SIZE_MAX / 16 * 7));
    EXPECT_EQ(ERROR_NOT_ENOUGH_MEMORY, GetLastError());
    EXPECT_EQ(nullptr, Allocate(0));
    EXPECT_EQ(ERROR_INVALID_PARAMETER, GetLastError());
    char* pages = Allocate(1);
    EXPECT_FALSE(VirtualFree(pages, PageSize, MEM_RELEASE));
    EXPECT_EQ(ERROR_INVALID_PARAMETER, GetLastError());
    EXPECT_FALSE(Release(nullptr));
    EXPECT_TRUE(Release(pages));
}

} // namespace
