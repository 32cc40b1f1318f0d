#pragma once

class CNTBaseClient;
class CNTPacket;

namespace Kesra
{

/// What is done with a packet, its position behind the header.
using MessageAction = void (*)(CNTBaseClient& client, CNTPacket& packet);

/// The action for a message number; null for a number the protocol does not know.
MessageAction ActionFor(unsigned short number);

} // namespace Kesra
