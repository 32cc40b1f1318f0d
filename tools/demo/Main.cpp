#include "tools/demo/Story.h"

#include "server/GameServer.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <memory>

namespace
{

constexpr std::chrono::milliseconds ClockInterval{1000};

/// Takes ADDRESS:PORT apart; false when it is none.
bool SetServer(const std::string& text, StoryOptions& options)
{
    const std::size_t colon = text.rfind(':');
    if (colon == std::string::npos)
        return false;
    options.Address = text.substr(0, colon);
    const std::string port = text.substr(colon + 1);
    const bool number = port.size() <= 5 && port.find_first_not_of("0123456789") == std::string::npos;
    const unsigned long value = number ? std::strtoul(port.c_str(), nullptr, 10) : 0;
    options.Port = static_cast<unsigned short>(value);
    return value >= 1 && value <= 65535;
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

} // namespace

int main(int argc, char** argv)
{
    CLI::App app{"Two clients play a short story against a game server."};
    std::string server;
    StoryOptions options;
    options.MasterAccount = "mina";
    options.MasterPassword = "kesra";
    app.add_option("--server", server, "ADDRESS:PORT of a running server instead of one of its own");
    auto* account =
        app.add_option("--account", options.MasterAccount, "a game master's account on that server");
    app.add_option("--password", options.MasterPassword, "its password");
    CLI11_PARSE(app, argc, argv);

    try {
        std::unique_ptr<Kesra::GameServer> own;
        if (server.empty()) {
            own = StartServer(options);
        } else if (!SetServer(server, options)) {
            std::cerr << "kesra-demo: not an address and a port: " << server << '\n';
            return 2;
        } else {
            // Names that the server has not seen yet.
            options.Suffix =
                std::to_string(std::chrono::system_clock::now().time_since_epoch().count() % 100'000'000);
            options.Master = account->count() > 0;
            if (!options.Master)
                options.MasterAccount += options.Suffix;
        }
        std::cout << "Playing on " << options.Address << ":" << options.Port << std::endl;
        Story story(options);
        return story.Play() ? 0 : 1;
    } catch (const std::exception& error) {
        std::cerr << "kesra-demo: " << error.what() << '\n';
        return 1;
    }
}
