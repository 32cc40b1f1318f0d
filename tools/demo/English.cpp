#include "tools/demo/English.h"

#include "tools/demo/Narrator.h"

#include "server/messages/ResultCodes.h"
#include "server/world/Catalogue.h"

#include <cmath>

using Kesra::ItemUse;
using Kesra::Result;

namespace
{

const char* Explanation(Result result)
{
    switch (result) {
    case Result::Done:
        return "done";
    case Result::BadArgument:
        return "a value is out of range or does not fit the others";
    case Result::NotLoggedOn:
        return "nobody is logged on";
    case Result::WrongPassword:
        return "the password is wrong";
    case Result::AccountInUse:
        return "the account is logged on elsewhere";
    case Result::Full:
        return "there is no room for more";
    case Result::NoSuchAvatar:
        return "there is no such avatar";
    case Result::AvatarExists:
        return "the place or the name is taken";
    case Result::BadName:
        return "the name is not allowed";
    case Result::NotReady:
        return "no avatar has been chosen";
    case Result::NotPlaying:
        return "the avatar is in no session";
    case Result::AlreadyPlaying:
        return "the avatar is in a session already";
    case Result::NoSuchSession:
        return "there is no such session";
    case Result::NoSuchObject:
        return "there is no such object";
    case Result::NoSuchItem:
        return "there is no such item";
    case Result::NoSuchSkill:
        return "there is no such skill";
    case Result::NotEnoughGold:
        return "the gold does not suffice";
    case Result::NotAllowed:
        return "only others may do that";
    case Result::Dead:
        return "the avatar is dead";
    case Result::Silenced:
        return "a game master has forbidden to chat";
    case Result::NotTrading:
        return "the two do not trade";
    case Result::PlaceTaken:
        return "something else is already there";
    }
    return "a code that this program does not know";
}

const char* NameOf(ItemUse use)
{
    switch (use) {
    case ItemUse::Weapon:
        return "sword";
    case ItemUse::Clothes:
        return "hat";
    case ItemUse::Potion:
        return "potion";
    case ItemUse::Stone:
        return "stone";
    case ItemUse::Jewel:
        return "jewel";
    case ItemUse::SkillBook:
        return "book";
    }
    return "thing";
}

} // namespace

std::string Count(long long number, const std::string& one)
{
    return Count(number, one, one + "s");
}

std::string Count(long long number, const std::string& one, const std::string& many)
{
    return Words(number, " ", number == 1 ? one : many);
}

std::string Things(long long number, long kind)
{
    if (kind > Kesra::SkillBookBase)
        return Count(number, "book", "books") + Words(" of skill ", kind - Kesra::SkillBookBase);
    const Kesra::ItemKind* known = Kesra::FindItemKind(kind);
    return known != nullptr ? Count(number, NameOf(known->Use))
                            : Count(number, "thing") + Words(" of kind ", kind);
}

std::string Place(const CNTVector& position)
{
    return Words("(", std::lround(position[0]), ", ", std::lround(position[2]), ")");
}

std::string Meaning(unsigned long result)
{
    return Words(Explanation(static_cast<Result>(result)), " (code ", result, ")");
}
