#include "KesraNTC/platform/Platform.h"

#include <algorithm>
#include <cerrno>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

namespace
{

const auto PageSize = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));

// How many of so many pages are in memory; -1 when they are not mapped.
int CountResident(char* first, std::size_t pages)
{
    std::vector<unsigned char> states(pages);
    if (mincore(first, pages * PageSize, states.data()) != 0)
        return errno == ENOMEM ? -1 : -2;
    return static_cast<int>(std::count_if(states.begin(), states.end(), [](int state) { return state & 1; }));
}

TEST(VirtualMemoryPages, OnlyTouchedOnesTakeMemoryAndAllGoBack)
{
    // Large enough for the system to think of huge pages.
    constexpr std::size_t Pages = 2048;
    auto* block =
        static_cast<char*>(VirtualAlloc(nullptr, Pages * PageSize, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
    ASSERT_NE(nullptr, block);
    EXPECT_EQ(0, CountResident(block, Pages));
    block[0] = block[Pages / 2 * PageSize] = block[Pages * PageSize - 1] = 'x';
    EXPECT_EQ(3, CountResident(block, Pages));
    ASSERT_TRUE(VirtualFree(block, 0, MEM_RELEASE));
    // Neither the ends nor the page in front stay behind.
    for (char* page : {block - PageSize, block, block + (Pages - 1) * PageSize})
        EXPECT_EQ(-1, CountResident(page, 1));
}

} // namespace
