#pragma once

#include <cstddef>
#include <memory>
#include <vector>

/// A bare TCP connection to the server: sends any bytes and reads packets without understanding them. Reads
/// block; the time limit of the test program guards them.
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
    /// Everything up to the end of the connection.
    Bytes ReadToEnd();
    /// Sends no more but goes on reading.
    void ShutdownSend();
    void Close();
    /// Closes so that the server sees a reset.
    void Reset();

private:
    struct Implementation;
    std::unique_ptr<Implementation> Inner;
};
