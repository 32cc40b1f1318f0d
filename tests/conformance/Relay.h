#pragma once

#include <asio.hpp>

#include <filesystem>
#include <string>
#include <thread>

namespace Kesra
{

/// Stands between one client and its server on the loopback and keeps what passes in each direction.
class Relay
{
public:
    /// Listens on a free port; the first client is joined with the server at that port.
    explicit Relay(unsigned short serverPort);
    ~Relay();
    Relay(const Relay&) = delete;
    Relay& operator=(const Relay&) = delete;

    unsigned short Port() const { return Acceptor.local_endpoint().port(); }

    /// Waits until both sides have closed, then writes client.bin and server.bin.
    void Write(const std::filesystem::path& directory);

private:
    using Socket = asio::ip::tcp::socket;

    void Join(unsigned short serverPort);
    static void Pass(Socket& from, Socket& to, std::string& seen);

    asio::io_context Context;
    asio::ip::tcp::acceptor Acceptor;
    Socket Client;
    Socket Server;
    std::string FromClient;
    std::string FromServer;
    std::thread Worker;
};

} // namespace Kesra
