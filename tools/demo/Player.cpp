#include "tools/demo/Player.h"

#include "server/messages/Texts.h"

#include <algorithm>

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
    CNTVector direction = CDRVector::DirectionOf(heading);
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

CNTVector Player::ShownPlace(const Player& other)
{
    const auto found = Avatars.find(other.ID);
    return found == Avatars.end() ? CNTVector() : found->second.GetDRVector()->GetPos();
}

void Player::Put(const TItem& item)
{
    TakeAway(item.GetItemIndex());
    Items.push_back(item);
}

TItem* Player::ItemAt(short index)
{
    const auto found = std::find_if(Items.begin(), Items.end(),
                                    [=](const TItem& item) { return item.GetItemIndex() == index; });
    return found == Items.end() ? nullptr : &*found;
}

TItem Player::TakeAway(short index)
{
    TItem* item = ItemAt(index);
    if (item == nullptr)
        return TItem();
    const TItem gone = *item;
    Items.erase(Items.begin() + (item - Items.data()));
    return gone;
}

void Player::SetCount(short index, long count)
{
    if (count == 0)
        TakeAway(index);
    else if (TItem* item = ItemAt(index))
        item->SetItemCount(count);
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
    if (Monsters.count(id) != 0)
        return Words("monster ", id);
    const auto found = Avatars.find(id);
    return found == Avatars.end() ? Words("object ", id)
                                  : Kesra::Utf8Text(static_cast<const char*>(found->second.GetNickname()));
}

void Player::Meet(const TAvatar& avatar)
{
    TAvatar& kept = Avatars[avatar.GetID()];
    kept = avatar;
    kept.InitDRVector();
}

void Player::SC_AvatarMove(short& who, CDRVector& movement, unsigned short&, unsigned long&)
{
    Note([this, who, movement] {
        const auto found = Avatars.find(static_cast<unsigned long>(who));
        if (found != Avatars.end())
            found->second.SetDRVectorReport(movement);
    });
}
