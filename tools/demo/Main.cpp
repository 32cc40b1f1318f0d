#include "tools/demo/LogFolder.h"
#include "tools/demo/Story.h"

#include "server/GameServer.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <memory>

namespace
{

constexpr std::chrono::milliseconds ClockInterval{1000};
constexpr int WrongUse = 2; // exit code

/// Takes ADDRESS:PORT apart; empty when it is one, otherwise what is wrong.
std::string SetServer(const std::string& text, StoryOptions& options)
{
    const std::size_t colon = std::min(text.rfind(':'), text.size());
    options.Address = text.substr(0, colon);
    const std::string port = text.substr(std::min(colon + 1, text.size()));
    const bool number =
        !port.empty() && port.size() <= 5 && port.find_first_not_of("0123456789") == std::string::npos;
    const unsigned long value = number ? std::stoul(port) : 0;
    if (options.Address.empty() || value < 1 || value > 65535)
        return "'" + text + "' is not ADDRESS:PORT, for example 127.0.0.1:7001";
    if (options.Address.size() >= sizeof CNTBaseClient::ServerAddr)
        return "the address '" + options.Address + "' is too long: the library takes at most 29 characters";
    options.Port = static_cast<unsigned short>(value);
    return {};
}

std::unique_ptr<Kesra::GameServer> StartServer(StoryOptions& options)
{
    Kesra::ServerOptions serverOptions;
    serverOptions.ClockInterval = ClockInterval;
    auto server = std::make_unique<Kesra::GameServer>(serverOptions);
    server->AddAccount(options.MasterAccount, options.MasterPassword, true);
    options.Address = serverOptions.Address;
    options.Port = server->GetPort();
    return server;
}

/// On somebody else's server the names have to be new, and so has the account unless one was given.
void MakeNamesNew(StoryOptions& options, bool hasAccount)
{
    options.Suffix =
        std::to_string(std::chrono::system_clock::now().time_since_epoch().count() % 100'000'000);
    options.Master = hasAccount;
    if (!hasAccount)
        options.MasterAccount += options.Suffix;
}

int Play(StoryOptions& options, bool ownServer)
{
    LogFolder folder;
    try {
        std::unique_ptr<Kesra::GameServer> own;
        if (ownServer)
            own = StartServer(options);
        std::cout << "Playing on " << (ownServer ? "a server of its own, " : "the server ") << options.Address
                  << ":" << options.Port << std::endl;
        Story(options).Play();
        return 0;
    } catch (const std::exception& error) {
        std::cout << std::flush;
        std::cerr << "kesra-demo: " << error.what() << '\n';
        const std::string log = folder.Keep();
        if (!log.empty())
            std::cerr << "The library's log of this run is in " << log << '\n';
        return 1;
    }
}

} // namespace

int main(int argc, char** argv)
{
    CLI::App app{"Two clients play a short story against a game server."};
    std::string server;
    StoryOptions options;
    options.MasterAccount = "mina";
    options.MasterPassword = "kesra";
    auto* given =
        app.add_option("--server", server, "ADDRESS:PORT of a running server instead of one of its own");
    auto* account =
        app.add_option("--account", options.MasterAccount, "a game master's account on that server");
    app.add_option("--password", options.MasterPassword, "its password");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : WrongUse;
    }

    const bool ownServer = given->count() == 0;
    if (!ownServer) {
        const std::string wrong = SetServer(server, options);
        if (!wrong.empty()) {
            std::cerr << "kesra-demo: " << wrong << '\n';
            return WrongUse;
        }
        MakeNamesNew(options, account->count() > 0);
    }
    return Play(options, ownServer);
}
