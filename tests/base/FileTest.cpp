#include "KesraNTC/base/CFile.h"
#include "tests/support/LogDirectory.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <fstream>
#include <iterator>
#include <string>

namespace
{

std::string ContentOf(const char* name)
{
    std::ifstream file(name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

TEST(File, AppendsToWhatIsThere)
{
    const LogDirectory directory;
    std::ofstream("log.txt", std::ios::binary) << "old\n";
    CFile file;
    void* const handle = file.Open("log.txt");
    ASSERT_NE(INVALID_HANDLE_VALUE, handle);
    file.Write("%s %td\n", "line", std::ptrdiff_t{1});
    file.Write(static_cast<const void*>("a\0b"), 3);
    // Others may read while it is open.
    EXPECT_EQ(std::string("old\nline 1\na\0b", 14), ContentOf("log.txt"));
    file.Close();
    file.Close();

    ASSERT_NE(INVALID_HANDLE_VALUE, file.Open("new.txt"));
    const std::string text(600, 'x');
    file.Write("%s", text.c_str());
    file.Close();
    EXPECT_EQ(text.substr(0, 511), ContentOf("new.txt"));
}

TEST(File, FailedOpeningKeepsTheOpenFile)
{
    const LogDirectory directory;
    CFile file;
    EXPECT_EQ(INVALID_HANDLE_VALUE, file.Open(nullptr));
    file.Write(static_cast<const void*>("nowhere"), 7);
    ASSERT_NE(INVALID_HANDLE_VALUE, file.Open("kept.txt"));
    EXPECT_EQ(INVALID_HANDLE_VALUE, file.Open(nullptr));
    EXPECT_EQ(INVALID_HANDLE_VALUE, file.Open("no such directory/file.txt"));
    file.Write("still here");
    file.Close();
    EXPECT_EQ("still here", ContentOf("kept.txt"));
}

TEST(File, ReadsNothingFromAFileForWritingAndRemovesFiles)
{
    const LogDirectory directory;
    std::ofstream("file.txt") << "content";
    CFile file;
    ASSERT_NE(INVALID_HANDLE_VALUE, file.Open("file.txt"));
    char bytes[8] = "keep";
    EXPECT_EQ(0U, file.Read(bytes, sizeof bytes));
    EXPECT_EQ(0U, file.Read(nullptr, 0));
    file.Write(static_cast<const void*>(nullptr), 0);
    EXPECT_STREQ("keep", bytes);
    file.Close();
    file.Remove("file.txt");
    EXPECT_FALSE(std::filesystem::exists("file.txt"));
    file.Remove("file.txt");
}

TEST(File, DestructionLeavesTheFileOpen)
{
    const LogDirectory directory;
    void* handle = nullptr;
    {
        CFile file;
        handle = file.Open("open.txt");
    }
    DWORD written = 0;
    EXPECT_TRUE(WriteFile(handle, "x", 1, &written, nullptr));
    CloseHandle(handle);
    EXPECT_EQ("x", ContentOf("open.txt"));
}

} // namespace
