#pragma once

#include <cstddef>
#include <string>

namespace Kesra
{

/// The header and the limit of a packet, for the code that sees bytes only.
constexpr std::size_t PacketHeaderSize = 4;
constexpr std::size_t PacketLimit = 4096;

/// A connection as the game logic sees it. Used on the server's thread only.
class Link
{
public:
    virtual ~Link() = default;

    /// Queues a packet; never blocks.
    virtual void Send(const unsigned char* bytes, std::size_t size) = 0;

    /// The same for the answer to a waiting request, which the faults may delay, change or suppress.
    virtual void SendReply(const unsigned char* bytes, std::size_t size) = 0;

    /// What the log calls it: its number and the peer's address.
    virtual const std::string& Name() const = 0;

    /// The peer has logged on: from now on it may stay as long as it likes.
    virtual void Admit() = 0;

    /// Ends the connection when everything queued so far has been written. `why` goes to the log.
    virtual void CloseWhenSent(const std::string& why) = 0;
};

} // namespace Kesra
