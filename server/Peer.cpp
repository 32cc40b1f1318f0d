#include "server/Peer.h"

#include "server/RequestTable.h"

namespace Kesra
{

Peer::Peer(Link& connection, PeerID id, World& world, Recorder& recorder, const PeerSettings& settings)
    : Connection(connection), Number(id), Game(world), Record(recorder), Settings(settings)
{
}

Peer::~Peer()
{
    LogOff();
}

void Peer::Handle(CNTPacket& packet)
{
    unsigned short number = 0;
    packet >> number;
    const RequestRow* row = FindRequest(number);
    if (row == nullptr)
        Ignore(number, "unknown number");
    else if (!row->Carry(*this, packet))
        Ignore(number, "malformed payload");
}

void Peer::SendClock()
{
    if (Owner == nullptr)
        return;
    ClockSent = Clock::now();
    const auto milliseconds =
        std::chrono::duration_cast<std::chrono::milliseconds>(ClockSent.time_since_epoch());
    const auto serverTime = static_cast<std::uint32_t>(milliseconds.count());
    Send(MessageOf(SC_SET_NET_TIME, serverTime, Latency));
}

void Peer::Ignore(unsigned short number, const std::string& why)
{
    Record.Log("connection " + std::to_string(Number) + ": message " + std::to_string(number) + " ignored, " +
               why);
    Record.CountIgnored();
}

void Peer::Refuse(Result why)
{
    Send(Notification<SC_EVENT16010>(why));
}

void Peer::Report(Result result)
{
    if (result != Result::Done)
        Refuse(result);
}

bool Peer::CanAct()
{
    if (Self == nullptr || !Self->IsPlaying()) {
        Refuse(Result::NotPlaying);
        return false;
    }
    if (Self->Dead) {
        Refuse(Result::Dead);
        return false;
    }
    return true;
}

Character* Peer::ChosenAvatar(short index) const
{
    if (Owner == nullptr || index < 0 || index >= AvatarsPerAccount)
        return nullptr;
    return Owner->Avatars[static_cast<std::size_t>(index)].get();
}

void Peer::LetGo()
{
    Game.Leave(*Self);
    Game.Parties.Leave(*Self);
    Game.ForgetInvitations(*Self);
    Self->Player = nullptr;
    Self = nullptr;
}

void Peer::LogOff()
{
    if (Self != nullptr)
        LetGo();
    if (Owner != nullptr) {
        Owner->LoggedOn = nullptr;
        Owner = nullptr;
    }
}

} // namespace Kesra
