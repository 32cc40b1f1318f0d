#pragma once

#include "server/messages/ResultCodes.h"

#include "KesraNTC/world/TItem.h"
#include "KesraNTC/world/TSkill.h"

#include <array>
#include <list>
#include <vector>

namespace Kesra
{

class Character;

/// What one side puts on the table.
struct Offer {
    std::vector<TItem> Items;
    std::vector<TSkill> Skills;
    long Gold = 0;
};

/// The trades between two characters: asked for, agreed to, offers made, signed by both, carried out. A
/// character has one at a time, and every offer is checked again when both have signed.
class BarterBook
{
public:
    Result Ask(Character& from, Character* to);
    Result Answer(Character& from, Character* to, short answer);
    Result Cancel(Character& from, Character* to);
    Result Deal(Character& from, Character* to, const Offer& offer);
    Result Sign(Character& from, Character* to);
    /// Ends whatever trade the character is in.
    void Cancel(Character& character);

private:
    struct Side {
        Character* Who = nullptr;
        Kesra::Offer Offer;
        bool Signed = false;
    };
    struct Trade {
        std::array<Side, 2> Sides; ///< who asked, then who was asked
        bool Open = false;
    };

    Trade* Find(const Character& one, const Character* other);
    Trade* FindAny(const Character& one);
    void Remove(const Trade& trade);
    static Side& SideOf(Trade& trade, const Character& who);
    static Side& OtherSide(Trade& trade, const Character& who);
    static bool CanKeep(const Side& from, const Side& to);
    static void HandOver(const Side& from, const Side& to);
    void Conclude(Trade& trade);

    std::list<Trade> Trades;
};

} // namespace Kesra
