#include "tools/demo/Player.h"

#include "server/Texts.h"

#include <algorithm>
#include <cmath>

namespace
{

/// Where a heading leads: 0 degrees is +z, 90 is +x.
CNTVector DirectionOf(float heading)
{
    const float radians = heading * 3.14159265F / 180.0F;
    return CNTVector(std::sin(radians), 0.0F, std::cos(radians));
}

} // namespace

Player::Player(Narrator& narrator, const std::string& name) : Name(name), Book(narrator) {}

bool Player::Connect(const std::string& address, unsigned short port)
{
    Connection.Attach(this);
    Connection.Attach(&Proxy);
    Connection.SetServerPort(port);
    return Connection.SetServerAddr(address.c_str()) && Connection.Startup() && Connection.ConnectToServer();
}

void Player::Frame(float seconds)
{
    Connection.ProcessQueuedMessageFromServer();
    Connection.UpdateFrame();

    Received = Connection.Received().Packets;
    std::vector<std::function<void()>> events;
    {
        const std::lock_guard lock(Mutex);
        events.swap(Noted);
    }
    for (const auto& event : events)
        event();

    for (auto& [id, avatar] : Avatars)
        avatar.GetDRVector()->Move(seconds, 0);
    CNTVector position = Own.GetPos();
    CNTVector step = Own.GetVel();
    step *= Own.GetSpeed() * seconds;
    position += step;
    Own.SetPos(position);
    if (Own.Move(seconds, 0)) {
        Proxy.CS_AvatarMove(Own, 0, ++Steps);
        ++Reports;
    }
}

void Player::Walk(float heading, float speed)
{
    CNTVector direction = DirectionOf(heading);
    Own.SetVel(direction);
    Own.SetAY(heading);
    Own.SetSpeed(speed);
}

void Player::Turn(float degrees)
{
    Walk(Own.GetAY() + degrees, Own.GetSpeed());
}

void Player::Tell(const std::string& what)
{
    Book.Line(Name, what);
}

bool Player::Take(unsigned short number)
{
    if (Taken[number] >= Received[number])
        return false;
    ++Taken[number];
    return true;
}

TItem* Player::FindItem(long kind)
{
    const auto found =
        std::find_if(Items.begin(), Items.end(), [=](const TItem& item) { return item.GetItemID() == kind; });
    return found == Items.end() ? nullptr : &*found;
}

void Player::Note(std::function<void()> event)
{
    const std::lock_guard lock(Mutex);
    Noted.push_back(std::move(event));
}

std::string Player::NameOf(unsigned long id)
{
    if (id == ID)
        return Name;
    const auto found = Avatars.find(id);
    return found == Avatars.end() ? Words("object ", id)
                                  : Kesra::Utf8Text(static_cast<const char*>(found->second.GetNickname()));
}

/// Remembers another avatar; what is shown of it starts where it is.
void Player::Meet(TAvatar avatar)
{
    const auto known = Avatars.find(avatar.GetID());
    const bool fresh = known == Avatars.end();
    if (!fresh) {
        known->second.SetNickname(avatar.GetNickname());
        known->second.SetTransparentFlag(avatar.IsTransparent());
        return;
    }
    CDRVector& movement = *Avatars.emplace(avatar.GetID(), avatar).first->second.GetDRVector();
    CNTVector position = movement.GetPos();
    CNTVector direction = DirectionOf(movement.GetAY());
    float standing = 0;
    float heading = movement.GetAY();
    movement.SetTarget(position, direction, standing, heading);
    movement.SetFollower(position, direction, standing, heading);
    movement.SetDRState(DR_FOLLOW);
}

void Player::SC_AvatarMove(short& who, CDRVector& movement, unsigned short&, unsigned long&)
{
    Note([this, who, movement] {
        const auto found = Avatars.find(static_cast<unsigned long>(who));
        if (found == Avatars.end())
            return;
        CNTVector position = movement.GetPos();
        CNTVector direction = DirectionOf(movement.GetAY());
        found->second.GetDRVector()->SetTarget(position, direction, movement.GetSpeed(), movement.GetAY());
        found->second.SetDRVectorState(DR_NEWTARGET);
    });
}
