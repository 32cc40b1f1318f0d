#include "tests/conformance/Relay.h"

#include <array>
#include <fstream>

namespace Kesra
{

using asio::ip::tcp;

Relay::Relay(unsigned short serverPort)
    : Acceptor(Context, tcp::endpoint(asio::ip::address_v4::loopback(), 0)),
      Client(Context),
      Server(Context),
      Worker([this, serverPort] { Join(serverPort); })
{
}

Relay::~Relay()
{
    if (Worker.joinable())
        Worker.join();
}

void Relay::Write(const std::filesystem::path& directory)
{
    Worker.join();
    std::ofstream(directory / "client.bin", std::ios::binary) << FromClient;
    std::ofstream(directory / "server.bin", std::ios::binary) << FromServer;
}

void Relay::Join(unsigned short serverPort)
{
    Acceptor.accept(Client);
    Server.connect(tcp::endpoint(asio::ip::address_v4::loopback(), serverPort));
    std::thread down([this] { Pass(Server, Client, FromServer); });
    Pass(Client, Server, FromClient);
    down.join();
}

void Relay::Pass(Socket& from, Socket& to, std::string& seen)
{
    std::array<char, 4096> bytes;
    asio::error_code ended;
    asio::error_code ignored; // a receiver that is gone takes nothing more; what was sent still counts
    while (const std::size_t n = from.read_some(asio::buffer(bytes), ended)) {
        seen.append(bytes.data(), n);
        asio::write(to, asio::buffer(bytes, n), ignored);
    }
    to.shutdown(Socket::shutdown_send, ignored);
}

} // namespace Kesra
