#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>

/// An empty directory of its own that is the process's current one while the object lives, so that a test
/// reads the log that the library writes there. One at a time.
class LogDirectory
{
public:
    LogDirectory() : Before(std::filesystem::current_path())
    {
        static std::atomic<unsigned> made{0};
        const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
        Own = std::filesystem::temp_directory_path() /
              ("KesraNTC-" + std::to_string(now) + "-" + std::to_string(++made));
        std::filesystem::create_directory(Own);
        std::filesystem::current_path(Own);
    }
    LogDirectory(const LogDirectory&) = delete;
    LogDirectory& operator=(const LogDirectory&) = delete;
    ~LogDirectory()
    {
        std::error_code ignored;
        std::filesystem::current_path(Before, ignored);
        std::filesystem::remove_all(Own, ignored);
    }

    const std::filesystem::path& Path() const { return Own; }

    /// The bytes of the log as they stand in its file, empty when there is none. Midnight may have split it
    /// into two files.
    std::string Log() const
    {
        std::string bytes;
        std::error_code none;
        for (const auto& entry : std::filesystem::directory_iterator(Own / "KESRA_NETWORK_LOG", none)) {
            std::ifstream file(entry.path(), std::ios::binary);
            bytes.append(std::istreambuf_iterator<char>(file), {});
        }
        return bytes;
    }

    /// Forgets what has been logged so far.
    void Clear() const { std::filesystem::remove_all(Own / "KESRA_NETWORK_LOG"); }

    /// Whether a line of the log is this text, given without its line end.
    bool HasLine(const std::string& text) const
    {
        return ("\r\n" + Log()).find("\r\n" + text + "\r\n") != std::string::npos;
    }

private:
    std::filesystem::path Before;
    std::filesystem::path Own;
};
