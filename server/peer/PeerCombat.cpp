// Fighting monsters and growing stronger.
#include "server/peer/Peer.h"

#include <cmath>

namespace Kesra
{
namespace
{

constexpr float AreaRadius = 300.0F;
constexpr short HurtAnimation = 2;
constexpr short KiPointsPerLevel = 3;
constexpr short KiLimit = 100;
constexpr float MonsterSpeed = 40.0F;

float GroundDistance(const CNTVector& one, const CNTVector& other)
{
    return std::hypot(one[0] - other[0], one[2] - other[2]);
}

} // namespace

void Peer::SendPoints(Character& character)
{
    TPrivData& priv = character.Priv;
    character.Send(Notification<SC_PRIV13005>(priv.GetHP(), priv.GetMP(), priv.GetSP()));
}

void Peer::AttackMonster(unsigned long object, unsigned long, unsigned short, unsigned short)
{
    if (!CanAct())
        return;
    Monster* monster = Game.FindMonster(*Self, object);
    if (monster == nullptr) {
        Refuse(Result::NoSuchObject);
        return;
    }
    Fight(*monster, Self->Damage());
}

void Peer::SkillAttackMonster(unsigned long object, unsigned long, unsigned short, unsigned short)
{
    if (!CanAct())
        return;
    Monster* monster = Game.FindMonster(*Self, object);
    TSkill* skill =
        Self->FindSkill(Self->Priv.GetSelectSkillIndex(static_cast<short>(Self->Priv.GetUseSkillGroup())));
    const SkillKind* kind = skill != nullptr ? FindSkillKind(skill->GetSkillID()) : nullptr;
    if (monster == nullptr || kind == nullptr || Self->Priv.GetMP() < kind->Cost) {
        Refuse(monster == nullptr ? Result::NoSuchObject : Result::NoSuchSkill);
        return;
    }
    Self->Priv.SetMP(Self->Priv.GetMP() - kind->Cost);
    skill->SetSkillExp(skill->GetSkillExp() + 1);
    Send(Notification<SC_PRIV13007>(skill->GetSkillIndex(), skill->GetSkillExp()));
    SendPoints(*Self);
    Fight(*monster, static_cast<short>(Self->Damage() + kind->Strength));
}

/// One blow each way, told to everybody around.
void Peer::Fight(Monster& monster, short damage)
{
    const unsigned long id = monster.Record.GetID();
    const Outcome outcome = Hurt(monster, damage);
    Game.SendToSession(Self->Session(), Notification<SC_EVENT12006>(id, damage, outcome));
    if (outcome == Outcome::Killed)
        Defeat(monster);
    else
        StrikeBack(monster);
}

Outcome Peer::Hurt(Monster& monster, short damage)
{
    monster.Record.SetMonHP(std::max(0.0F, monster.Record.GetMonHP() - damage));
    return monster.Record.GetMonHP() > 0 ? Outcome::Hit : Outcome::Killed;
}

/// The monster walks up to who hit it and hits too.
void Peer::StrikeBack(Monster& monster)
{
    const unsigned long id = monster.Record.GetID();
    const short session = Self->Session();
    CNTVector position = Self->Position();
    CDRVector& movement = *monster.Record.GetDRVector();
    movement.SetPos(position);
    movement.SetSpeed(MonsterSpeed);
    Game.SendToSession(session,
                       Notification<SC_OBJECT_MOVE>(id, movement, monster.Record.GetCurZoneID(), 0L));
    Game.SendToSession(session, Notification<SC_EVENT15003>(id, HurtAnimation));

    const int damage = std::max(1, monster.Kind->Damage - Self->Protection());
    Self->Priv.SetHP(std::max(0.0F, Self->Priv.GetHP() - static_cast<float>(damage)));
    Game.SendToSession(session, Notification<SC_EVENT12007>(id, Self->ID(), damage, Self->Priv.GetHP()));
    SendPoints(*Self);
    if (Self->Priv.GetHP() <= 0) {
        Self->Dead = true;
        Game.SendToSession(session, Notification<SC_EVENT12008>(Self->ShortID()));
    }
}

void Peer::Defeat(Monster& monster)
{
    const int experience = monster.Kind->Experience;
    Game.SendToSession(Self->Session(), Notification<SC_EVENT12009>(monster.Record.GetID()));
    Game.DropLoot(*Self, monster);
    Game.Respawn(Self->Session(), monster);
    if (Self->Learn(experience))
        Game.SendToSession(Self->Session(), Notification<SC_EVENT16020>(Self->Avatar), Self);
    TPrivData& priv = Self->Priv;
    Send(Notification<SC_PRIV13004>(priv.GetLevel(), priv.GetParamPoint(), priv.GetExp(),
                                    priv.GetMaxInventorySlot(), priv.GetHP(), priv.GetMP(), priv.GetSP(),
                                    priv.MaxHP, priv.MaxMP, priv.MaxSP));
}

void Peer::AttackArea(const CNTVector& position)
{
    if (!CanAct())
        return;
    if (!IsPosition(position)) {
        Refuse(Result::BadArgument);
        return;
    }
    std::vector<long> targets;
    std::vector<short> damages;
    std::vector<char> outcomes;
    std::vector<Monster*> killed;
    const short damage = Self->Damage();
    for (auto& [id, monster] : Game.SessionOf(*Self).Monsters) {
        if (GroundDistance(monster.Record.GetDRVector()->GetPos(), position) > AreaRadius)
            continue;
        const Outcome outcome = Hurt(monster, damage);
        targets.push_back(static_cast<long>(id));
        damages.push_back(damage);
        outcomes.push_back(static_cast<char>(outcome));
        if (outcome == Outcome::Killed)
            killed.push_back(&monster);
    }
    Game.SendToSession(Self->Session(), Notification<SC_EVENT16013>(position));
    Game.SendToSession(Self->Session(), Notification<SC_EVENT12012>(targets, damages, outcomes));
    for (Monster* monster : killed)
        Defeat(*monster);
}

void Peer::ResetKiSystem(short attack, short defence, short intellect)
{
    if (!CanAct())
        return;
    const auto valid = [](short value) { return value >= 1 && value <= KiLimit; };
    const int points = KiPointsPerLevel * (Self->Priv.GetLevel() + 1);
    if (!valid(attack) || !valid(defence) || !valid(intellect) || attack + defence + intellect > points) {
        Refuse(Result::BadArgument);
        return;
    }
    TPrivData& priv = Self->Priv;
    priv.SetAtkReDivision(attack);
    priv.SetDefReDivision(defence);
    priv.SetIntellectReDivision(intellect);
    Self->UpdateDerived();
    Send(Notification<SC_EVENT17002>(attack, defence, intellect, priv.MaxHP, priv.MaxMP, priv.MaxSP));
}

void Peer::IncParameter(short parameter)
{
    if (!CanAct())
        return;
    TPrivData& priv = Self->Priv;
    if (parameter < 1 || parameter > 6 || priv.GetParamPoint() < 1) {
        Refuse(Result::BadArgument);
        return;
    }
    switch (parameter) {
    case 1:
        priv.SetPower(priv.GetPower() + 1);
        break;
    case 2:
        priv.SetIntellect(priv.GetIntellect() + 1);
        break;
    case 3:
        priv.SetStaminar(priv.GetStaminar() + 1);
        break;
    case 4:
        priv.SetDexterity(priv.GetDexterity() + 1);
        break;
    case 5:
        priv.SetPlyometric(priv.GetPlyometric() + 1);
        break;
    default:
        priv.SetKI(priv.GetKI() + 1);
        break;
    }
    priv.SetParamPoint(static_cast<short>(priv.GetParamPoint() - 1));
    Self->UpdateDerived();
    Send(Notification<SC_INC_PARAMETER>(parameter, priv.GetParamPoint()));
}

} // namespace Kesra
