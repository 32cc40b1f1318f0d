#include "server/GameServer.h"
#include "server/Signals.h"

#include <CLI/CLI.hpp>

#include <fstream>
#include <iostream>
#include <sstream>

namespace
{

std::string ContentsOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw std::runtime_error("cannot read " + path);
    std::ostringstream contents;
    contents << file.rdbuf();
    return contents.str();
}

/// Takes ADDRESS:PORT apart.
void SetAddress(const std::string& text, Kesra::ServerOptions& options)
{
    const std::size_t colon = text.rfind(':');
    const std::string port = colon == std::string::npos ? "" : text.substr(colon + 1);
    const bool number =
        !port.empty() && port.size() <= 5 && port.find_first_not_of("0123456789") == std::string::npos;
    if (!number || std::stoul(port) > 65535)
        throw std::runtime_error("not an address and a port: " + text);
    options.Address = text.substr(0, colon);
    options.Port = static_cast<unsigned short>(std::stoul(port));
}

} // namespace

int main(int argc, char** argv)
{
    CLI::App app{"The reference game server of KesraNTC."};
    std::string address = "127.0.0.1:0";
    std::string scenario;
    std::vector<std::string> masters;
    int clockInterval = 5000;
    bool quiet = false;
    app.add_option("--listen", address, "address and port; port 0 lets the system choose")
        ->capture_default_str();
    app.add_option("--scenario", scenario, "file of messages to push when a player says /scenario");
    app.add_option("--master", masters, "ACCOUNT:PASSWORD of a game master; may be given more than once");
    app.add_option("--clock", clockInterval,
                   "milliseconds between clock messages; 0 sends only the one after a logon")
        ->capture_default_str()
        ->check(CLI::NonNegativeNumber);
    app.add_flag("--quiet", quiet, "print the port and nothing else");
    CLI11_PARSE(app, argc, argv);

    try {
        Kesra::ServerOptions options;
        SetAddress(address, options);
        options.ClockInterval = std::chrono::milliseconds(clockInterval);
        if (!quiet)
            options.Log = [](const std::string& line) { std::cerr << line << '\n'; };
        Kesra::GameServer server(options);
        for (const std::string& master : masters) {
            const std::size_t colon = std::min(master.find(':'), master.size());
            server.AddAccount(master.substr(0, colon), master.substr(std::min(colon + 1, master.size())),
                              true);
        }
        if (!scenario.empty())
            server.LoadScenario(ContentsOf(scenario));
        std::cout << "listening on " << options.Address << ":" << server.GetPort() << std::endl;
        Kesra::WaitForEndSignal();
    } catch (const std::exception& error) {
        std::cerr << "kesra-server: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
