#include "RawPeer.h"

#include <asio.hpp>

#include <cstring>

struct RawPeer::Implementation {
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
    asio::error_code error;
    asio::write(Inner->Socket, asio::buffer(bytes, size), error);
    return !error;
}

RawPeer::Bytes RawPeer::ReadPacket()
{
    Bytes packet(4);
    asio::error_code error;
    asio::read(Inner->Socket, asio::buffer(packet), error);
    if (error)
        return {};
    unsigned short size;
    std::memcpy(&size, packet.data() + 2, sizeof size);
    packet.resize(size);
    asio::read(Inner->Socket, asio::buffer(packet.data() + 4, size - 4U), error);
    return error ? Bytes{} : packet;
}

RawPeer::Bytes RawPeer::ReadToEnd()
{
    Bytes bytes;
    asio::error_code error;
    asio::read(Inner->Socket, asio::dynamic_buffer(bytes), error);
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
