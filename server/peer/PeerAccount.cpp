// Accounts and their avatars.
#include "server/messages/Texts.h"
#include "server/peer/Peer.h"
#include "server/peer/RequestTable.h"

#include "KesraNTC/base/COLEDateTime.h"
#include "KesraNTC/base/COLEDateTimeSpan.h"

namespace Kesra
{
namespace
{

constexpr long DaysUntilDeletion = 7;

} // namespace

Result Peer::CheckLogon(const std::string& name, const std::string& password)
{
    if (Owner != nullptr)
        return Result::AccountInUse;
    if (const Account* known = Game.FindAccount(name))
        return known->Password == password ? Result::Done : Result::WrongPassword;
    if (!IsAccountName(name))
        return Result::BadName;
    if (!Settings.OpenAccounts)
        return Result::WrongPassword;
    return Game.AddAccount(name, password, false) != nullptr ? Result::Done : Result::Full;
}

void Peer::Logon(Serial serial, const LongText& name, const LongText& password)
{
    const std::string about = "account " + LogText(name.Value);
    const Result result = CheckLogon(name.Value, password.Value);
    if (result != Result::Done) {
        Decline<CS_LOGON>(serial, result, about);
        return;
    }
    // Whoever comes back after a broken connection need not wait until the server has noticed the break.
    Account& account = *Game.FindAccount(name.Value);
    if (account.User != nullptr)
        account.User->GiveUp(Connection.Name());
    Owner = &account;
    Owner->User = this;
    Connection.Admit();
    Record.Log(Connection.Name() + ": " + about + " logs on");
    std::vector<TAvatar> avatars;
    std::vector<TPrivData> privData;
    for (const auto& character : Owner->Avatars) {
        if (character) {
            avatars.push_back(character->Avatar);
            privData.push_back(character->Priv);
        }
    }
    Reply<CS_LOGON>(serial, static_cast<unsigned short>(Owner->UserIndex), avatars, privData);
    Send(Notification<SC_GS_LIST>(Settings.GameServers));
    SendClock();
}

void Peer::CreateAvatar(Serial serial, short index, const LongText& nickname, short avatarTemplate)
{
    Answer<CS_CREATE_AVATAR>(
        serial, Owner == nullptr ? Result::NotLoggedOn
                                 : Game.CreateCharacter(*Owner, index, nickname.Value, avatarTemplate));
}

void Peer::DeleteAvatar(Serial serial, short index)
{
    Result result = Result::Done;
    Character* character = ChosenAvatar(index, result);
    if (character == nullptr) {
        Decline<CS_DELETE_AVATAR>(serial, result);
        return;
    }
    COLEDateTime when = COLEDateTime::GetTickCount();
    when += COLEDateTimeSpan(DaysUntilDeletion, 0, 0, 0);
    character->Priv.SetDeleteAvatarDate(when);
    Reply<CS_DELETE_AVATAR>(serial, when);
}

void Peer::CancelDeleteAvatar(Serial serial, short index)
{
    Result result = Result::Done;
    if (Character* character = ChosenAvatar(index, result))
        character->Priv.SetDeleteAvatarDate(COLEDateTime());
    Answer<CS_CANCEL_DELETE_AVATAR>(serial, result);
}

void Peer::TryOnSession(Serial serial, short index, short session)
{
    Result result = Result::Done;
    Character* character = ChosenAvatar(index, result);
    if (character != nullptr && (session < 1 || session > SessionCount))
        result = Result::NoSuchSession;
    else if (character != nullptr && IsPlaying())
        result = Result::AlreadyPlaying;
    if (result != Result::Done) {
        Decline<CS_TRY_ON_SESSION>(serial, result);
        return;
    }
    if (Self != nullptr && Self != character)
        LetGo();
    Self = character;
    Self->Player = &Connection;
    ChosenSession = session;
    Reply<CS_TRY_ON_SESSION>(serial, Self->Items, Self->Skills);
}

void Peer::ChangeAvatarNickName(char, Serial serial, const NameText& nickname)
{
    Answer<CS_CHANGE_AVATAR_NICK_NAME>(serial, Self == nullptr ? Result::NotReady
                                                               : Game.Rename(*Self, nickname.Value));
}

void Peer::EchoProperties(const CPropCollection& properties)
{
    Send(MessageOf(GAME_PROPERTIES, properties));
}

void Peer::Error(const LongText& text)
{
    Complain("reports: " + LogText(text.Value));
}

void Peer::ResponseNetTime(unsigned long)
{
    const auto passed = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - ClockSent);
    Latency = static_cast<unsigned long>(passed.count() / 2);
}

} // namespace Kesra
