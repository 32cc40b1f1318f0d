#pragma once

#include <filesystem>
#include <string>

/// A temporary folder in which the program stands while the object lives, so that the library's log is
/// written there and not where the program was started.
class LogFolder
{
public:
    LogFolder();
    LogFolder(const LogFolder&) = delete;
    LogFolder& operator=(const LogFolder&) = delete;
    /// Goes back, and removes the folder unless it is to be kept.
    ~LogFolder();

    /// Leaves the log for somebody to read. Gives the folder that holds it, an empty text when there is none.
    std::string Keep();

private:
    const std::filesystem::path Before;
    std::filesystem::path Own;
    bool Kept = false;
};
