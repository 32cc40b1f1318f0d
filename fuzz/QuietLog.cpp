// The log must not grow by a line per malformed stream: the process works in a directory of its own, in which
// a plain file stands where the log's directory would be.

#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace
{

namespace fs = std::filesystem;

/// Paths of the command line stay what they were in the directory that the caller is in.
std::string Absolute(const std::string& argument)
{
    const std::string prefix = "-artifact_prefix=";
    if (argument.starts_with(prefix)) // ends in a name or a slash, and keeps it
        return prefix + (fs::current_path() / argument.substr(prefix.size())).string();
    return argument.starts_with("-") ? argument : fs::absolute(argument).string();
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    static std::vector<std::string> arguments;
    static std::vector<char*> pointers;
    arguments.emplace_back((*argv)[0]);
    for (int i = 1; i < *argc; ++i)
        arguments.push_back(Absolute((*argv)[i]));
    for (std::string& argument : arguments)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    *argv = pointers.data();

    const fs::path place = fs::temp_directory_path() / ("kesra-fuzz-" + std::to_string(getpid()));
    fs::create_directories(place);
    std::ofstream(place / "KESRA_NETWORK_LOG");
    fs::current_path(place);
    return 0;
}
