#include "server/Program.h"

#include "server/log/LogWriter.h"
#include "server/messages/Texts.h"
#include "server/network/Signals.h"
#include "server/world/World.h"

#include <CLI/CLI.hpp>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <limits>
#include <sstream>

namespace Kesra
{
namespace
{

constexpr int MostConnections = 1'000'000;
constexpr int SecondsPerDay = 86'400;
constexpr int MillisecondsPerDay = SecondsPerDay * 1000;
constexpr std::size_t Mebibyte = 1024 * 1024;
constexpr int MostMebibytes = 2047; // what a 32-bit process can count

std::string ContentsOf(const std::string& path)
{
    if (std::filesystem::is_directory(path))
        throw std::runtime_error("cannot read the scenario " + path + ": a folder, not a text file");
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw std::runtime_error("cannot read the scenario " + path + ": " + std::strerror(errno));
    std::ostringstream contents;
    contents << file.rdbuf();
    return contents.str();
}

/// Takes [ADDRESS]:PORT apart; what is wrong with it, or nothing.
std::string SetAddress(const std::string& text, ServerOptions& options)
{
    constexpr unsigned long highest = std::numeric_limits<unsigned short>::max();
    const std::size_t colon = text.rfind(':');
    const std::string port = colon == std::string::npos ? "" : text.substr(colon + 1);
    const bool number =
        !port.empty() && port.size() <= 5 && port.find_first_not_of("0123456789") == std::string::npos;
    if (!number || std::stoul(port) > highest)
        return "not ADDRESS:PORT or :PORT with a port from 0 to 65535, such as 127.0.0.1:7001: " + text;
    if (colon > 0)
        options.Address = text.substr(0, colon);
    options.Port = static_cast<unsigned short>(std::stoul(port));
    return {};
}

/// The same for ACCOUNT:PASSWORD.
std::string AddMaster(const std::string& text, std::vector<ServerCommand::Master>& masters)
{
    const std::size_t colon = std::min(text.find(':'), text.size());
    const std::string account = WireText(text.substr(0, colon));
    const std::string password = WireText(text.substr(std::min(colon + 1, text.size())));
    if (!IsAccountName(account) || password.empty())
        return "not ACCOUNT:PASSWORD with an account of 1 to 64 bytes and a password, such as mina:secret: " +
               text;
    masters.push_back({account, password});
    return {};
}

/// Values that the command line gives as plain numbers.
struct Numbers {
    int Clock = 5000;
    int Connections = 1000;
    int LogonTime = 300;
    int Queue = 64;
    int PeerTimeout = 60;
};

void AddNumbers(CLI::App& app, Numbers& numbers)
{
    const auto add = [&](const char* name, int& value, int lowest, int highest, const char* meaning) {
        app.add_option(name, value, meaning)->capture_default_str()->check(CLI::Range(lowest, highest));
    };
    add("--clock", numbers.Clock, 0, MillisecondsPerDay,
        "milliseconds between clock messages; 0 sends only the one after a logon");
    add("--connections", numbers.Connections, 1, MostConnections, "connections at a time");
    add("--logon-time", numbers.LogonTime, 0, SecondsPerDay,
        "seconds that a connection may stay without a logon; 0 is for ever");
    add("--queue", numbers.Queue, 1, MostMebibytes, "MiB that may wait to be sent, to all clients together");
    add("--peer-timeout", numbers.PeerTimeout, 0, SecondsPerDay,
        "seconds after which a client that neither acknowledges nor answers is dropped; 0 is never");
}

void SetNumbers(const Numbers& numbers, ServerOptions& options)
{
    options.ClockInterval = std::chrono::milliseconds(numbers.Clock);
    options.Limits.Connections = static_cast<std::size_t>(numbers.Connections);
    options.Limits.LogonTime = std::chrono::seconds(numbers.LogonTime);
    options.Limits.QueuedBytes = static_cast<std::size_t>(numbers.Queue) * Mebibyte;
    options.Limits.PeerTimeout = std::chrono::seconds(numbers.PeerTimeout);
}

void Serve(const ServerCommand& command)
{
    GameServer server(command.Options);
    for (const ServerCommand::Master& master : command.Masters)
        server.AddAccount(master.Account, master.Password, true);
    if (!command.Scenario.empty())
        server.LoadScenario(ContentsOf(command.Scenario), command.Scenario);
    std::cout << "listening on " << command.Options.Address << ":" << server.GetPort() << std::endl;
    WaitForEndSignal();
}

int Fail(const std::string& why)
{
    std::cerr << "kesra-server: " << why << '\n';
    return 1;
}

} // namespace

ServerCommand ParseServerCommand(int argc, const char* const* argv)
{
    CLI::App app{"The reference game server of KesraNTC.", "kesra-server"};
    ServerCommand command;
    Numbers numbers;
    std::string address = "127.0.0.1:0";
    std::vector<std::string> masters;
    const auto takeAddress = [&](std::string& text) { return SetAddress(text, command.Options); };
    const auto takeMaster = [&](std::string& text) { return AddMaster(text, command.Masters); };
    app.add_option("--listen", address, "port 0 lets the system choose; without an address: 127.0.0.1")
        ->capture_default_str()
        ->type_name("[ADDRESS]:PORT")
        ->check(CLI::Validator(takeAddress, ""));
    auto* scenario = app.add_option("--scenario", command.Scenario,
                                    "file of messages to push when a player says /scenario")
                         ->type_name("FILE");
    app.add_flag("--start", command.Options.StartsScenario,
                 "start the scenario when the first player enters a play session")
        ->needs(scenario);
    app.add_flag("--loop", command.Options.LoopsScenario,
                 "begin it again when it is over, while anybody plays")
        ->needs(scenario);
    app.add_option("--master", masters, "account of a game master; may be given more than once")
        ->type_name("ACCOUNT:PASSWORD")
        ->check(CLI::Validator(takeMaster, ""));
    AddNumbers(app, numbers);
    app.add_flag("--quiet", command.Quiet, "print the address and no log");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        std::ostringstream text;
        const int code = app.exit(error, text, text);
        throw CommandLineEnd(text.str(), code == 0 ? 0 : 2);
    }
    SetNumbers(numbers, command.Options);
    return command;
}

int RunServerProgram(int argc, const char* const* argv)
{
    IgnoreBrokenPipes();
    ServerCommand command;
    try {
        command = ParseServerCommand(argc, argv);
    } catch (const CommandLineEnd& end) {
        (end.ExitCode == 0 ? std::cout : std::cerr) << end.what();
        return end.ExitCode;
    }
    LogWriter log(std::cerr);
    if (!command.Quiet)
        command.Options.Log = [&log](const std::string& line) { log.Write(line); };
    int code = 0;
    try {
        Serve(command);
    } catch (const std::exception& error) {
        log.Finish();
        code = Fail(error.what());
    }
    // Whoever reads the log may have stopped; nobody waits for that.
    if (!log.Finish())
        std::_Exit(code);
    return code;
}

} // namespace Kesra
