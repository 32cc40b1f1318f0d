#include "KesraNTC/platform/Platform.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string>

namespace
{
// Tests may run side by side in one folder.
std::string Name()
{
    return std::string("KesraNTC_") + testing::UnitTest::GetInstance()->current_test_info()->name() + ".tmp";
}

HANDLE Open(DWORD access, DWORD share, DWORD disposition, const std::string& name = Name())
{
    return CreateFileA(name.c_str(), access, share, nullptr, disposition, FILE_ATTRIBUTE_ARCHIVE, nullptr);
}

HANDLE OpenForAppending()
{
    return Open(GENERIC_WRITE, FILE_SHARE_READ, OPEN_ALWAYS);
}

HANDLE OpenForReading()
{
    return Open(GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING);
}

void Write(HANDLE file, const std::string& text)
{
    DWORD written = 0;
    ASSERT_TRUE(WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr));
    ASSERT_EQ(written, text.size());
}

std::string ReadAll()
{
    const HANDLE file = OpenForReading();
    EXPECT_NE(file, INVALID_HANDLE_VALUE);
    char text[100];
    DWORD read = 77;
    EXPECT_TRUE(ReadFile(file, text, sizeof text, &read, nullptr));
    EXPECT_TRUE(CloseHandle(file));
    return std::string(text, read);
}

class Files : public testing::Test
{
protected:
    void SetUp() override { DeleteFileA(Name().c_str()); }
    void TearDown() override { DeleteFileA(Name().c_str()); }
};

TEST_F(Files, OpenAlwaysCreatesOnceAndThenOpens)
{
    HANDLE file = OpenForAppending();
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), 0u);
    Write(file, "first\r\n");
    ASSERT_TRUE(CloseHandle(file));

    file = OpenForAppending();
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS));
    EXPECT_EQ(SetFilePointer(file, 0, nullptr, FILE_END), 7u);
    Write(file, std::string("second\0", 7));
    ASSERT_TRUE(CloseHandle(file));
    EXPECT_EQ(ReadAll(), std::string("first\r\nsecond\0", 14));
}

TEST_F(Files, ThePointerMovesWithinTheFile)
{
    const HANDLE file = OpenForAppending();
    Write(file, "0123456789");
    EXPECT_EQ(SetFilePointer(file, 2, nullptr, FILE_BEGIN), 2u);
    Write(file, "ab");
    EXPECT_EQ(SetFilePointer(file, 1, nullptr, FILE_CURRENT), 5u);
    Write(file, "c");
    EXPECT_EQ(SetFilePointer(file, -1, nullptr, FILE_END), 9u);
    Write(file, "d");
    EXPECT_EQ(SetFilePointer(file, -1, nullptr, FILE_BEGIN), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NEGATIVE_SEEK));
    EXPECT_TRUE(CloseHandle(file));
    EXPECT_EQ(ReadAll(), "01ab4c678d");
}

TEST_F(Files, ReadingStopsAtTheEnd)
{
    HANDLE file = OpenForAppending();
    Write(file, "abc");
    CloseHandle(file);
    file = OpenForReading();
    char text[8] = "#######";
    DWORD read = 0;
    EXPECT_TRUE(ReadFile(file, text, 2, &read, nullptr));
    EXPECT_EQ(read, 2u);
    EXPECT_TRUE(ReadFile(file, text + 2, 5, &read, nullptr));
    EXPECT_EQ(read, 1u);
    EXPECT_STREQ(text, "abc####");
    EXPECT_TRUE(ReadFile(file, text, 5, &read, nullptr));
    EXPECT_EQ(read, 0u);
    CloseHandle(file);
}

TEST_F(Files, AccessThatWasNotAskedForIsDenied)
{
    HANDLE file = OpenForAppending();
    char text[4];
    DWORD count = 77;
    EXPECT_FALSE(ReadFile(file, text, 4, &count, nullptr));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ACCESS_DENIED));
    EXPECT_EQ(count, 0u);
    CloseHandle(file);
    file = OpenForReading();
    EXPECT_FALSE(WriteFile(file, "x", 1, &count, nullptr));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ACCESS_DENIED));
    CloseHandle(file);
}

TEST_F(Files, AWriterKeepsOthersFromWritingAndDeleting)
{
    const HANDLE file = OpenForAppending();
    EXPECT_EQ(OpenForAppending(), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_SHARING_VIOLATION));
    EXPECT_FALSE(DeleteFileA(Name().c_str()));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_SHARING_VIOLATION));
    CloseHandle(file);
    EXPECT_TRUE(DeleteFileA(Name().c_str()));
    EXPECT_FALSE(DeleteFileA(Name().c_str()));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
}

TEST_F(Files, WhatCannotBeOpenedSaysWhy)
{
    EXPECT_EQ(OpenForReading(), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(Open(GENERIC_WRITE, FILE_SHARE_READ, OPEN_ALWAYS, "no such folder/file"), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_PATH_NOT_FOUND));
    EXPECT_EQ(Open(GENERIC_WRITE, FILE_SHARE_READ, OPEN_ALWAYS, "."), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ACCESS_DENIED));
}

TEST_F(Files, ABackslashSeparatesFolders)
{
    const HANDLE file = Open(GENERIC_WRITE, FILE_SHARE_READ, OPEN_ALWAYS, ".\\" + Name());
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    Write(file, "here");
    CloseHandle(file);
    EXPECT_EQ(ReadAll(), "here");
}

TEST_F(Files, HandlesOfNoFileAreRefused)
{
    char text[4];
    DWORD count;
    EXPECT_FALSE(ReadFile(INVALID_HANDLE_VALUE, text, 4, &count, nullptr));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_FALSE(WriteFile(INVALID_HANDLE_VALUE, text, 4, &count, nullptr));
    EXPECT_EQ(SetFilePointer(INVALID_HANDLE_VALUE, 0, nullptr, FILE_END), INVALID_SET_FILE_POINTER);
}
TEST_F(Files, AFolderIsMadeOnce)
{
    const std::string folder = Name() + ".folder";
    const std::string inside = folder + "\\file";
    std::filesystem::remove_all(folder);
    EXPECT_EQ(_mkdir(folder.c_str()), 0);
    EXPECT_EQ(_mkdir(folder.c_str()), -1);
    EXPECT_EQ(errno, EEXIST);
    EXPECT_EQ(_mkdir((inside + "\\deeper").c_str()), -1);
    EXPECT_EQ(errno, ENOENT);

    const HANDLE file = Open(GENERIC_WRITE, 0, OPEN_ALWAYS, inside);
    EXPECT_NE(file, INVALID_HANDLE_VALUE);
    EXPECT_TRUE(CloseHandle(file));
    EXPECT_TRUE(DeleteFileA(inside.c_str()));
    EXPECT_TRUE(std::filesystem::remove(folder));
}

} // namespace
