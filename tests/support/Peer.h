#pragma once

#include <asio.hpp>
#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace Test
{

/// The other end of a connection, driven by the test byte by byte. What makes it wait longer than a minute
/// fails.
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
        if (!Await("a client has come", Acceptor.native_handle(), ForReading))
            return;
        Acceptor.accept(Socket);
        Socket.set_option(asio::ip::tcp::no_delay(true));
        Socket.non_blocking(true);
    }

    /// What is sent to a client that has gone is lost.
    void Send(std::string_view bytes)
    {
        asio::error_code error;
        while (!bytes.empty() && MayGoOn(error) &&
               Await("the client takes what is sent", Socket.native_handle(), ForWriting))
            bytes.remove_prefix(Socket.write_some(asio::buffer(bytes.data(), bytes.size()), error));
    }
    /// Exactly so many bytes, or fewer when the client closes.
    std::string Receive(std::size_t size)
    {
        std::string bytes(size, '\0');
        std::size_t done = 0;
        asio::error_code error;
        while (done != size && MayGoOn(error) &&
               Await("the client sends or closes", Socket.native_handle(), ForReading))
            done += Socket.read_some(asio::buffer(&bytes[done], size - done), error);
        bytes.resize(done);
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
    enum Direction { ForReading, ForWriting };

    static bool MayGoOn(const asio::error_code& error) { return !error || error == asio::error::would_block; }
    template <class Handle> static bool Await(const char* what, Handle handle, Direction direction)
    {
        fd_set handles;
        FD_ZERO(&handles);
        FD_SET(handle, &handles);
        timeval limit{60, 0};
        const int ready = select(static_cast<int>(handle) + 1, direction == ForReading ? &handles : nullptr,
                                 direction == ForWriting ? &handles : nullptr, nullptr, &limit);
        EXPECT_NE(ready, 0) << "waited in vain until " << what;
        return ready > 0;
    }

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
