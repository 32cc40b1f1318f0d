#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

/// A bare TCP connection to the server: sends any bytes and reads packets without understanding them. What
/// waits longer than a minute throws.
class RawPeer
{
public:
    using Bytes = std::vector<unsigned char>;

    explicit RawPeer(unsigned short port);
    ~RawPeer();

    /// False when the server has ended the connection.
    bool Send(const Bytes& bytes);
    bool Send(const unsigned char* bytes, std::size_t size);
    /// One packet, header included; empty when the connection has ended instead.
    Bytes ReadPacket();
    /// Everything that arrives up to the end of the connection.
    Bytes ReadToEnd();
    /// Sends no more but goes on reading.
    void ShutdownSend();
    void Close();
    /// Closes so that the server sees a reset.
    void Reset();
    /// The port on its own side, by which the server's log knows it.
    unsigned short Port() const;
    /// The system's socket.
    std::intptr_t Handle() const;

private:
    struct Implementation;
    std::unique_ptr<Implementation> Inner;
};
