// Accounts and their avatars.
#include "server/Peer.h"
#include "server/RequestTable.h"
#include "server/Texts.h"

#include "KesraNTC/base/COLEDateTime.h"
#include "KesraNTC/base/COLEDateTimeSpan.h"

namespace Kesra
{
namespace
{

constexpr std::size_t AccountNameLimit = 64;
constexpr long DaysUntilDeletion = 7;

Result CheckLogon(const Account* account, const std::string& password)
{
    if (account == nullptr)
        return Result::Full;
    if (account->Password != password)
        return Result::WrongPassword;
    return account->LoggedOn != nullptr ? Result::AccountInUse : Result::Done;
}

} // namespace

void Peer::Logon(Serial serial, const LongText& name, const LongText& password)
{
    Account* account = Game.FindAccount(name.Value);
    if (account == nullptr && Owner == nullptr && Settings.OpenAccounts &&
        name.Value.size() <= AccountNameLimit)
        account = Game.AddAccount(name.Value, password.Value, false);
    const Result result = Owner != nullptr ? Result::AccountInUse : CheckLogon(account, password.Value);
    std::vector<TAvatar> avatars;
    std::vector<TPrivData> privData;
    if (result == Result::Done) {
        Owner = account;
        Owner->LoggedOn = &Connection;
        for (const auto& character : Owner->Avatars) {
            if (character) {
                avatars.push_back(character->Avatar);
                privData.push_back(character->Priv);
            }
        }
        Record.Log("connection " + std::to_string(Number) + ": account " + LogText(name.Value) + " logs on");
    }
    const auto userIndex = static_cast<unsigned short>(result == Result::Done ? Owner->UserIndex : 0);
    Reply(GS_REPLY_10002, serial, userIndex, avatars, privData, result);
    if (result == Result::Done) {
        Send(Notification<SC_GS_LIST>(Settings.GameServers));
        SendClock();
    }
}

void Peer::CreateAvatar(Serial serial, short index, const LongText& nickname, short avatarTemplate)
{
    const Result result = Owner == nullptr
                              ? Result::NotLoggedOn
                              : Game.CreateCharacter(*Owner, index, nickname.Value, avatarTemplate);
    Reply(GS_REPLY_10003, serial, result);
}

void Peer::DeleteAvatar(Serial serial, short index)
{
    Character* character = ChosenAvatar(index);
    COLEDateTime when = COLEDateTime::GetTickCount();
    if (character == nullptr) {
        Reply(GS_REPLY_10004, serial, when, Owner == nullptr ? Result::NotLoggedOn : Result::NoSuchAvatar);
        return;
    }
    when += COLEDateTimeSpan(DaysUntilDeletion, 0, 0, 0);
    character->Priv.SetDeleteAvatarDate(when);
    Reply(GS_REPLY_10004, serial, when, Result::Done);
}

void Peer::CancelDeleteAvatar(Serial serial, short index)
{
    Character* character = ChosenAvatar(index);
    if (character == nullptr) {
        Reply(GS_REPLY_10006, serial, Owner == nullptr ? Result::NotLoggedOn : Result::NoSuchAvatar);
        return;
    }
    character->Priv.SetDeleteAvatarDate(COLEDateTime());
    Reply(GS_REPLY_10006, serial, Result::Done);
}

void Peer::TryOnSession(Serial serial, short index, short session)
{
    Character* character = ChosenAvatar(index);
    Result result = Result::Done;
    if (character == nullptr)
        result = Owner == nullptr ? Result::NotLoggedOn : Result::NoSuchAvatar;
    else if (session < 1 || session > SessionCount)
        result = Result::NoSuchSession;
    else if (Self != nullptr && Self->IsPlaying())
        result = Result::AlreadyPlaying;
    if (result != Result::Done) {
        Reply(GS_REPLY_10007, serial, std::vector<TItem>(), std::vector<TSkill>(), result);
        return;
    }
    if (Self != nullptr && Self != character)
        LetGo();
    Self = character;
    Self->Player = &Connection;
    ChosenSession = session;
    Reply(GS_REPLY_10007, serial, Self->Items, Self->Skills, Result::Done);
}

void Peer::ChangeAvatarNickName(char, Serial serial, const LongText& nickname)
{
    Reply(GS_REPLY_10008, serial, Self == nullptr ? Result::NotReady : Game.Rename(*Self, nickname.Value));
}

void Peer::EchoProperties(const CPropCollection& properties)
{
    Send(MessageOf(GAME_PROPERTIES, properties));
}

void Peer::Error(const LongText& text)
{
    Record.Log("connection " + std::to_string(Number) + " reports: " + LogText(text.Value));
}

void Peer::ResponseNetTime(unsigned long)
{
    const auto passed = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - ClockSent);
    Latency = static_cast<unsigned long>(passed.count() / 2);
}

} // namespace Kesra
