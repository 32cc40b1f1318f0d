#include "RawPeer.h"

#include <asio.hpp>

#include <chrono>
#include <cstring>
#include <stdexcept>

struct RawPeer::Implementation {
    /// Begins an operation and waits for its end; what it says.
    template <class Begin> asio::error_code Do(Begin begin)
    {
        bool done = false;
        asio::error_code result;
        begin([&](asio::error_code error, std::size_t) {
            result = error;
            done = true;
        });
        Context.restart();
        Context.run_for(std::chrono::minutes(1));
        if (!done) {
            Socket.close();
            Context.run();
            throw std::runtime_error("the server has neither answered nor taken anything for a minute");
        }
        return result;
    }

    asio::io_context Context{1};
    asio::ip::tcp::socket Socket{Context};
};

RawPeer::RawPeer(unsigned short port) : Inner(std::make_unique<Implementation>())
{
    Inner->Socket.connect({asio::ip::address_v4::loopback(), port});
    Inner->Socket.set_option(asio::ip::tcp::no_delay(true));
}

RawPeer::~RawPeer() = default;

bool RawPeer::Send(const Bytes& bytes)
{
    return Send(bytes.data(), bytes.size());
}

bool RawPeer::Send(const unsigned char* bytes, std::size_t size)
{
    return !Inner->Do([&](auto done) { asio::async_write(Inner->Socket, asio::buffer(bytes, size), done); });
}

RawPeer::Bytes RawPeer::ReadPacket()
{
    Bytes packet(4);
    const auto read = [this](unsigned char* bytes, std::size_t size) {
        return Inner->Do(
            [&](auto done) { asio::async_read(Inner->Socket, asio::buffer(bytes, size), done); });
    };
    if (read(packet.data(), packet.size()))
        return {};
    unsigned short size;
    std::memcpy(&size, packet.data() + 2, sizeof size);
    packet.resize(size);
    return read(packet.data() + 4, size - 4U) ? Bytes{} : packet;
}

RawPeer::Bytes RawPeer::ReadToEnd()
{
    Bytes bytes;
    Inner->Do([&](auto done) { asio::async_read(Inner->Socket, asio::dynamic_buffer(bytes), done); });
    return bytes;
}

void RawPeer::ShutdownSend()
{
    Inner->Socket.shutdown(asio::socket_base::shutdown_send);
}

void RawPeer::Close()
{
    Inner->Socket.close();
}

void RawPeer::Reset()
{
    Inner->Socket.set_option(asio::socket_base::linger(true, 0));
    Inner->Socket.close();
}

unsigned short RawPeer::Port() const
{
    return Inner->Socket.local_endpoint().port();
}

std::intptr_t RawPeer::Handle() const
{
    return static_cast<std::intptr_t>(Inner->Socket.native_handle());
}
