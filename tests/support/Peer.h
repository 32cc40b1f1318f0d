#pragma once

#include <asio.hpp>

#include <string>
#include <string_view>

namespace Test
{

/// The other end of a connection, driven by the test byte by byte.
class Peer
{
public:
    Peer() : Acceptor(Context, {asio::ip::address_v4::loopback(), 0}), Socket(Context) {}
    /// Takes in little at a time, so that its client soon has to wait with sending.
    explicit Peer(asio::socket_base::receive_buffer_size little) : Peer() { Acceptor.set_option(little); }

    unsigned short Port() const { return Acceptor.local_endpoint().port(); }
    int Descriptor() { return static_cast<int>(Socket.native_handle()); }
    void Accept()
    {
        Socket = asio::ip::tcp::socket(Context);
        Acceptor.accept(Socket);
        Socket.set_option(asio::ip::tcp::no_delay(true));
    }

    /// What is sent to a client that has gone is lost.
    void Send(std::string_view bytes)
    {
        asio::error_code error;
        asio::write(Socket, asio::buffer(bytes.data(), bytes.size()), error);
    }
    /// Exactly so many bytes, or fewer when the client closes.
    std::string Receive(std::size_t size)
    {
        std::string bytes(size, '\0');
        asio::error_code error;
        bytes.resize(asio::read(Socket, asio::buffer(bytes), error));
        return bytes;
    }
    void Close()
    {
        asio::error_code error;
        Socket.close(error);
    }
    /// Ends the connection with a reset instead of an orderly close.
    void Reset()
    {
        Socket.set_option(asio::socket_base::linger(true, 0));
        Close();
    }

private:
    asio::io_context Context;
    asio::ip::tcp::acceptor Acceptor;
    asio::ip::tcp::socket Socket;
};

/// The bytes of a packet as they travel.
template <class Packet> std::string BytesOf(const Packet& packet)
{
    return std::string(reinterpret_cast<const char*>(packet.GetBuf()), packet.GetBufSize());
}

} // namespace Test
