#pragma once

#include "server/GameServer.h"

#include <stdexcept>
#include <string>
#include <vector>

namespace Kesra
{

/// What the command line of the server program asks for.
struct ServerCommand {
    struct Master {
        std::string Account; ///< as it travels, like the password
        std::string Password;
    };

    ServerOptions Options;
    std::vector<Master> Masters;
    std::string Scenario; ///< path of a file, empty for none
    bool Quiet = false;
};

/// The command line asks for help or cannot be followed: what() is what to print.
class CommandLineEnd : public std::runtime_error
{
public:
    CommandLineEnd(const std::string& text, int exitCode) : std::runtime_error(text), ExitCode(exitCode) {}

    const int ExitCode; ///< 0 for help, else 2
};

/// Reads a command line, the program's name included; throws CommandLineEnd.
ServerCommand ParseServerCommand(int argc, const char* const* argv);

/// The whole server program: runs until SIGINT or SIGTERM and returns the exit code.
int RunServerProgram(int argc, const char* const* argv);

} // namespace Kesra
