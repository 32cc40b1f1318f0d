#pragma once

#include "KesraNTC/rpc/MessageNumbers.h"

class CNTPacket;

namespace Kesra
{

class Peer;

/// A message of a game's own, outside the library's numbers: a property collection, which the server sends
/// back.
constexpr MessageNumber GAME_PROPERTIES{30001};

/// One message that clients send.
struct RequestRow {
    MessageNumber Number;
    const char* Name;
    /// Decodes the packet and calls the peer's method; false when the payload is malformed.
    bool (*Carry)(Peer& peer, CNTPacket& packet);
};

/// Null for a number that is no request.
const RequestRow* FindRequest(unsigned short number);

} // namespace Kesra
