#include "server/peer/Peer.h"

#include "server/peer/RequestTable.h"

namespace Kesra
{
namespace
{

constexpr unsigned ComplaintsPerSecond = 20;

} // namespace

Peer::Peer(Link& connection, World& world, Recorder& recorder, const PeerSettings& settings)
    : Connection(connection), Game(world), Record(recorder), Settings(settings)
{
}

Peer::~Peer()
{
    LogUntold();
    LogOff();
}

void Peer::Handle(CNTPacket& packet)
{
    unsigned short number = 0;
    packet >> number;
    Current = FindRequest(number);
    if (Current == nullptr)
        Ignore(number, "unknown number");
    else if (!Current->Carry(*this, packet))
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
    Complain("message " + std::to_string(number) + " ignored, " + why);
    Record.CountIgnored();
}

void Peer::Complain(const std::string& what)
{
    const auto now = Clock::now();
    if (now - ComplaintsSince >= std::chrono::seconds(1)) {
        LogUntold();
        ComplaintsSince = now;
        Complaints = 0;
    }
    if (++Complaints <= ComplaintsPerSecond)
        Record.Log(Connection.Name() + ": " + what);
}

void Peer::LogUntold()
{
    if (Complaints > ComplaintsPerSecond)
        Record.Log(Connection.Name() + ": " + std::to_string(Complaints - ComplaintsPerSecond) +
                   " more requests were refused, ignored or reports");
}

void Peer::LogRefusal(Result why, const std::string& about)
{
    Complain(std::string(Current->Name) + (about.empty() ? "" : " with " + about) +
             " refused: " + TextOf(why) + " (" + std::to_string(static_cast<int>(why)) + ")");
    Record.CountRefused();
}

void Peer::Refuse(Result why)
{
    LogRefusal(why);
    Send(Notification<SC_EVENT16010>(why));
}

void Peer::Report(Result result)
{
    if (result != Result::Done)
        Refuse(result);
}

bool Peer::MustPlay()
{
    if (!IsPlaying())
        Refuse(Result::NotPlaying);
    return IsPlaying();
}

bool Peer::CanAct()
{
    if (!MustPlay())
        return false;
    if (Self->Dead) {
        Refuse(Result::Dead);
        return false;
    }
    return true;
}

Character* Peer::ChosenAvatar(short index, Result& result) const
{
    const bool valid = Owner != nullptr && index >= 0 && index < AvatarsPerAccount;
    Character* character = valid ? Owner->Avatars[static_cast<std::size_t>(index)].get() : nullptr;
    if (character == nullptr)
        result = Owner == nullptr ? Result::NotLoggedOn : Result::NoSuchAvatar;
    return character;
}

void Peer::GiveUp(const std::string& successor)
{
    LogOff();
    Connection.CloseWhenSent("its account logs on with " + successor);
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
        Owner->User = nullptr;
        Owner = nullptr;
    }
}

} // namespace Kesra
