#include "server/messages/ResultCodes.h"

namespace Kesra
{

const char* TextOf(Result result)
{
    switch (result) {
    case Result::Done:
        return "done";
    case Result::BadArgument:
        return "bad argument";
    case Result::NotLoggedOn:
        return "not logged on";
    case Result::WrongPassword:
        return "wrong password";
    case Result::AccountInUse:
        return "account in use";
    case Result::Full:
        return "full";
    case Result::NoSuchAvatar:
        return "no such avatar";
    case Result::AvatarExists:
        return "avatar exists";
    case Result::BadName:
        return "bad name";
    case Result::NotReady:
        return "not ready";
    case Result::NotPlaying:
        return "not playing";
    case Result::AlreadyPlaying:
        return "already playing";
    case Result::NoSuchSession:
        return "no such session";
    case Result::NoSuchObject:
        return "no such object";
    case Result::NoSuchItem:
        return "no such item";
    case Result::NoSuchSkill:
        return "no such skill";
    case Result::NotEnoughGold:
        return "not enough gold";
    case Result::NotAllowed:
        return "not allowed";
    case Result::Dead:
        return "dead";
    case Result::Silenced:
        return "silenced";
    case Result::NotTrading:
        return "not trading";
    case Result::PlaceTaken:
        return "place taken";
    }
    return "unknown";
}

} // namespace Kesra
