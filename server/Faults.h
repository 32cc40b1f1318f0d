#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <vector>

namespace Kesra
{

/// What happens to the replies of waiting requests.
enum class ReplyFault {
    None,        ///< answered at once
    Never,       ///< thrown away
    Held,        ///< kept back until GameServer::ReleaseReplies
    WrongSerial, ///< sent with a serial that no request of the peer carries
};

/// Misbehaviour that a test switches on; a default one means that the server behaves. Set it with
/// GameServer::SetFaults, for one connection or for all, at any time: it holds from the next packet on.
///
/// One-off faults are operations of GameServer: SendBytes (anything at all, malformed streams included),
/// SendHeader (a lone header with any number and size), Close (orderly) and Reset (abortive).
struct Faults {
    ReplyFault Replies = ReplyFault::None;

    /// How late a reply goes out, for ReplyFault::None and WrongSerial.
    std::chrono::milliseconds ReplyDelay{0};

    /// Every packet is written in pieces that end at these offsets (ascending; offsets beyond the packet are
    /// ignored), each piece handed to the kernel on its own, SplitPause after the one before.
    std::vector<std::size_t> SplitAt;
    std::chrono::microseconds SplitPause{200};

    /// Close the connection in an orderly way when exactly this many bytes have been written to it, counted
    /// from its first one.
    std::optional<std::size_t> CloseAfterBytes;

    /// Take in nothing: what the peer sends stays in the buffers, beyond a few kilobytes in those of the
    /// kernel.
    bool StopReading = false;
};

} // namespace Kesra
