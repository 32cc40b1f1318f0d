#include "tools/demo/LogFolder.h"

#include <chrono>
#include <system_error>

namespace fs = std::filesystem;

LogFolder::LogFolder() : Before(fs::current_path())
{
    auto number = std::chrono::system_clock::now().time_since_epoch().count();
    do
        Own = fs::temp_directory_path() / ("kesra-demo-" + std::to_string(number++));
    while (!fs::create_directory(Own));
    fs::current_path(Own);
}

LogFolder::~LogFolder()
{
    std::error_code ignored;
    fs::current_path(Before, ignored);
    if (!Kept)
        fs::remove_all(Own, ignored);
}

std::string LogFolder::Keep()
{
    const fs::path log = Own / "KESRA_NETWORK_LOG";
    Kept = fs::exists(log);
    return Kept ? log.string() : "";
}
