#include "Wire.h"

#include "KesraNTC/world/WorldObjects.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <string>
#include <utility>
#include <vector>

namespace
{

// A movement that differs from the default in every part.
CDRVector Moving()
{
    CNTVector pos(1, 12.5F, 3);
    CNTVector target(4, 5, 6);
    CDRVector v;
    v.SetPos(pos);
    v.SetSpeed(10);
    v.SetAY(20);
    v.SetTarget(target, pos, 7, 8);
    v.SetDRState(DR_FOLLOW);
    return v;
}

void FillBase(TObject& object)
{
    CDRVector moving = Moving();
    object.SetJoinedSessionID(3);
    object.SetID(0xFEDCBA98);
    object.SetType(99);
    object.SetCurZoneID(5);
    object.SetLastZoneID(7);
    object.SetDRVector(moving);
    object.GetDRVector()->SetDRState(DR_FOLLOW);
}

void ExpectMoving(TObject& object)
{
    EXPECT_EQ(12.5F, object.GetDRVector()->GetPos().y);
    EXPECT_EQ(10, object.GetDRVector()->GetSpeed());
    EXPECT_EQ(5, object.GetDRVector()->GetTargetPos().y);
}

struct Base {
    short JoinedSessionID;
    unsigned long ID;
    unsigned long Type;
    short CurZoneID;
    short LastZoneID;
    DR_STATE State;
    bool operator==(const Base&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Base& base)
{
    return out << "session " << base.JoinedSessionID << " id " << base.ID << " type " << base.Type
               << " zones " << base.CurZoneID << ' ' << base.LastZoneID << " state " << base.State;
}

Base BaseOf(TObject& object)
{
    return {object.GetJoinedSessionID(), object.GetID(),         object.GetType(),
            object.GetCurZoneID(),       object.GetLastZoneID(), object.GetDRVector()->GetDRState()};
}

TEST(WorldObjects, DefaultsAndTypes)
{
    TObject object;
    TAvatar avatar;
    TMonster monster;
    TNPC npc;
    TWorldItem item;
    EXPECT_EQ((Base{0, 0, 0, -1, -1, DR_INIT}), BaseOf(object));
    EXPECT_EQ((Base{0, 0, 1, -1, -1, DR_INIT}), BaseOf(avatar));
    EXPECT_EQ((Base{0, 0, 3, -1, -1, DR_INIT}), BaseOf(monster));
    EXPECT_EQ((Base{0, 0, 4, -1, -1, DR_INIT}), BaseOf(npc));
    EXPECT_EQ((Base{0, 0, 2, -1, -1, DR_INIT}), BaseOf(item));
    EXPECT_EQ(0, avatar.GetUserIndex());
    EXPECT_EQ(0, avatar.GetAvatarIndex());
    EXPECT_EQ(0, avatar.GetAvatarTemplateID());
    EXPECT_EQ(0, avatar.GetAniID());
    EXPECT_STREQ("", avatar.GetNickname());
    EXPECT_TRUE(avatar.GetAppearance().empty());
    EXPECT_FALSE(avatar.IsTransparent());
    EXPECT_EQ(0, monster.GetMonHP());
    EXPECT_STREQ("", item.GetWorldItemUUID());
}

TEST(WorldObjects, InitLeavesTheMovement)
{
    TObject object;
    FillBase(object);
    object.Init();
    EXPECT_EQ((Base{0, 0, 99, -1, -1, DR_FOLLOW}), BaseOf(object));
    ExpectMoving(object);

    TMonster monster;
    FillBase(monster);
    monster.SetMonHP(4);
    monster.SetAniID(5);
    monster.SetMonsterTemplateID(6);
    monster.Init();
    EXPECT_EQ((Base{0, 0, 3, -1, -1, DR_FOLLOW}), BaseOf(monster));
    EXPECT_EQ(0, monster.GetMonHP() + monster.GetAniID() + monster.GetMonsterTemplateID());
    ExpectMoving(monster);

    TNPC npc;
    FillBase(npc);
    npc.SetNpcTemplateID(8);
    npc.Init();
    EXPECT_EQ((Base{0, 0, 4, -1, -1, DR_FOLLOW}), BaseOf(npc));
    EXPECT_EQ(8, npc.GetNpcTemplateID());
}

TEST(WorldObjects, SettersOfTheBase)
{
    TObject object;
    EXPECT_TRUE(object.SetJoinedSessionID(3));
    EXPECT_EQ(3, object.GetJoinedSessionID());

    object.GetDRVector()->SetDRState(DR_FOLLOW);
    CDRVector moving = Moving();
    moving.SetDRState(DR_STOPPING);
    object.SetDRVector(moving);
    EXPECT_EQ(DR_FOLLOW, object.GetDRVector()->GetDRState());
    ExpectMoving(object);

    TMonster monster;
    monster.SetDRVectorState(DR_NEWTARGET);
    EXPECT_EQ(DR_NEWTARGET, monster.GetDRVector()->GetDRState());
}

TEST(WorldObjects, CopyingABaseTakesAllAndAssigningAllButTheState)
{
    TObject source;
    FillBase(source);
    TObject copy(source);
    EXPECT_EQ(BaseOf(source), BaseOf(copy));
    ExpectMoving(copy);
    TObject assigned;
    assigned = source;
    EXPECT_EQ((Base{3, 0xFEDCBA98, 99, 5, 7, DR_INIT}), BaseOf(assigned));
    ExpectMoving(assigned);
}

void ExpectAvatarFields(TAvatar& avatar)
{
    EXPECT_EQ(-11, avatar.GetUserIndex());
    EXPECT_EQ(12, avatar.GetAvatarIndex());
    EXPECT_EQ(13, avatar.GetAvatarTemplateID());
    EXPECT_EQ(14, avatar.GetAniID());
    EXPECT_TRUE(avatar.IsTransparent());
    EXPECT_STREQ("Kesra", avatar.GetNickname());
    EXPECT_EQ((std::vector<long>{1, -2, 3}), avatar.GetAppearance());
    ExpectMoving(avatar);
}

TEST(Avatar, CopyRules)
{
    TAvatar source;
    FillBase(source);
    source.SetUserIndex(-11);
    source.SetAvatarIndex(12);
    source.SetAvatarTemplateID(13);
    source.SetAniID(14);
    source.SetTransparentFlag(true);
    CString name("Kesra");
    source.SetNickname(name);
    std::vector<long> appearance{1, -2, 3};
    source.SetAppearance(appearance);

    TAvatar assigned;
    assigned.SetType(50);
    assigned.SetLastZoneID(51);
    assigned.SetDRVectorState(DR_STOPPING);
    assigned = source;
    EXPECT_EQ((Base{3, 0xFEDCBA98, 50, 5, 51, DR_STOPPING}), BaseOf(assigned));
    ExpectAvatarFields(assigned);

    TAvatar copy(source);
    EXPECT_EQ((Base{3, 0xFEDCBA98, 1, 5, -1, DR_INIT}), BaseOf(copy));
    ExpectAvatarFields(copy);
    copy.GetAppearance()[0] = 9;
    EXPECT_EQ(1, source.GetAppearanceElement(1));

    TAvatar& self = copy;
    copy = self;
    EXPECT_EQ(3U, copy.GetAppearance().size());

    source.Init();
    EXPECT_EQ((Base{0, 0, 1, -1, -1, DR_FOLLOW}), BaseOf(source));
    EXPECT_STREQ("", source.GetNickname());
    EXPECT_TRUE(source.GetAppearance().empty());
    EXPECT_FALSE(source.IsTransparent());
}

TEST(Monster, CopyRules)
{
    TMonster source;
    FillBase(source);
    source.SetMonHP(1.5F);
    source.SetMonsterTemplateID(6);
    source.SetAniID(7);

    TMonster assigned;
    assigned.SetJoinedSessionID(50);
    assigned = source;
    EXPECT_EQ((Base{50, 0xFEDCBA98, 3, 5, -1, DR_INIT}), BaseOf(assigned));
    TMonster copy(source);
    EXPECT_EQ((Base{0, 0xFEDCBA98, 3, 5, -1, DR_INIT}), BaseOf(copy));
    for (TMonster* monster : {&assigned, &copy}) {
        EXPECT_EQ(1.5F, monster->GetMonHP());
        EXPECT_EQ(6, monster->GetMonsterTemplateID());
        EXPECT_EQ(7, monster->GetAniID());
        ExpectMoving(*monster);
    }
}

TEST(Npc, CopyRules)
{
    TNPC source;
    FillBase(source);
    source.SetNpcTemplateID(9);

    TNPC assigned;
    assigned.SetNpcTemplateID(40);
    assigned.SetCurZoneID(41);
    assigned = source;
    EXPECT_EQ((Base{0, 0xFEDCBA98, 4, 41, -1, DR_INIT}), BaseOf(assigned));
    EXPECT_EQ(40, assigned.GetNpcTemplateID());
    ExpectMoving(assigned);
    TNPC copy(source);
    EXPECT_EQ((Base{0, 0xFEDCBA98, 4, -1, -1, DR_INIT}), BaseOf(copy));
    ExpectMoving(copy);
}

TEST(WorldItem, CopyRules)
{
    TWorldItem source;
    FillBase(source);
    short option = -4;
    source.SetWorldItemID(-70001);
    source.SetWorldItemCount(5);
    source.SetWorldItemUUID("uuid");
    source.SetWorldItemOptionID(option);
    EXPECT_EQ(5, source.GetWorldItemExp());

    TWorldItem assigned;
    assigned.SetJoinedSessionID(50);
    assigned = source;
    EXPECT_EQ((Base{50, 0xFEDCBA98, 2, 5, -1, DR_INIT}), BaseOf(assigned));
    TWorldItem copy(source);
    EXPECT_EQ((Base{0, 0xFEDCBA98, 2, 5, -1, DR_INIT}), BaseOf(copy));
    for (TWorldItem* item : {&assigned, &copy}) {
        EXPECT_EQ(-70001, item->GetWorldItemID());
        EXPECT_EQ(5, item->GetWorldItemCount());
        EXPECT_STREQ("uuid", item->GetWorldItemUUID());
        EXPECT_EQ(-4, item->GetWorldItemOptionID());
        ExpectMoving(*item);
    }
    source.Init();
    EXPECT_STREQ("", source.GetWorldItemUUID());
    EXPECT_EQ(0, source.GetWorldItemID() + source.GetWorldItemExp() + source.GetWorldItemOptionID());
}

/// A record of which every part has been filled, after the list that holds it has grown.
template <class Record> std::vector<Record> Grown(void (*fill)(Record&))
{
    std::vector<Record> records(1);
    FillBase(records[0]);
    fill(records[0]);
    records.reserve(records.capacity() + 1);
    EXPECT_EQ((Base{3, 0xFEDCBA98, 99, 5, 7, DR_FOLLOW}), BaseOf(records[0]));
    ExpectMoving(records[0]);
    return records;
}

TEST(WorldObjects, StayWhatTheyAreWhenTheirListGrows)
{
    EXPECT_EQ(12, Grown<TAvatar>([](TAvatar& avatar) { avatar.SetAvatarIndex(12); })[0].GetAvatarIndex());
    EXPECT_EQ(1.5F, Grown<TMonster>([](TMonster& monster) { monster.SetMonHP(1.5F); })[0].GetMonHP());
    EXPECT_EQ(9, Grown<TNPC>([](TNPC& npc) { npc.SetNpcTemplateID(9); })[0].GetNpcTemplateID());
    const std::vector<TWorldItem> items =
        Grown<TWorldItem>([](TWorldItem& item) { item.SetWorldItemUUID("uuid"); });
    EXPECT_STREQ("uuid", items[0].GetWorldItemUUID());
}

/// The base of a new record to which a filled one has been assigned that nobody needs any more.
template <class Record> Base AssignedFromATemporary()
{
    Record source;
    FillBase(source);
    Record target;
    target = std::move(source);
    ExpectMoving(target);
    return BaseOf(target);
}

TEST(WorldObjects, AssigningATemporaryTakesWhatAssigningACopyTakes)
{
    EXPECT_EQ((Base{3, 0xFEDCBA98, 1, 5, -1, DR_INIT}), AssignedFromATemporary<TAvatar>());
    EXPECT_EQ((Base{0, 0xFEDCBA98, 3, 5, -1, DR_INIT}), AssignedFromATemporary<TMonster>());
    EXPECT_EQ((Base{0, 0xFEDCBA98, 4, -1, -1, DR_INIT}), AssignedFromATemporary<TNPC>());
    EXPECT_EQ((Base{0, 0xFEDCBA98, 2, 5, -1, DR_INIT}), AssignedFromATemporary<TWorldItem>());

    // What assigning leaves out stays at its place in a list from which the first is erased.
    std::vector<TNPC> npcs(2);
    npcs[0].SetNpcTemplateID(1);
    npcs[1].SetNpcTemplateID(2);
    npcs[1].SetID(7);
    npcs.erase(npcs.begin());
    EXPECT_EQ(7U, npcs[0].GetID());
    EXPECT_EQ(1, npcs[0].GetNpcTemplateID());
}

TEST(Avatar, AppearanceElementsCountFromOneAndHaveBounds)
{
    TAvatar avatar;
    EXPECT_EQ(0, avatar.GetWeaponItemKind());
    std::vector<long> appearance(11);
    avatar.SetAppearance(appearance);
    avatar.SetAppearanceElement(1, 7);
    EXPECT_EQ(7, avatar.GetAppearance()[0]);
    for (const auto& [element, kind] : {std::pair{123456L, 12}, {-123456L, -12}, {9999L, 0}}) {
        avatar.SetAppearanceElement(11, element);
        EXPECT_EQ(element, avatar.GetAppearanceElement(11));
        EXPECT_EQ(kind, avatar.GetWeaponItemKind());
    }
    const std::vector<long> before = avatar.GetAppearance();
    for (const int outside : {0, -1, 12, INT_MIN, INT_MAX}) {
        avatar.SetAppearanceElement(outside, 1);
        EXPECT_EQ(0, avatar.GetAppearanceElement(outside));
    }
    EXPECT_EQ(before, avatar.GetAppearance());
}

CNTPacket SentAvatar(const std::string& name, const std::vector<long>& appearance)
{
    CNTPacket packet = Begun();
    packet << short{21} << 0x87654321UL << short{22} << short{23} << short{-24};
    packet << 1.5F << 2.5F << 3.5F << 4.5F;
    packet << short{25} << name << true << static_cast<short>(appearance.size());
    for (const long element : appearance)
        packet << element;
    return packet;
}

TEST(Avatar, IsReadFieldByField)
{
    const CNTPacket sent = SentAvatar("Kesra", {-1, 70000, 3});
    CNTPacket packet = Received(sent);
    TAvatar avatar;
    avatar.SetLastZoneID(7);
    avatar.SetUserIndex(8);
    CDRVector moving = Moving();
    avatar.SetDRVector(moving);
    avatar.SetDRVectorState(DR_FOLLOW);
    packet >> avatar;
    EXPECT_EQ(52, BytesRead(packet));
    EXPECT_EQ((Base{21, 0x87654321, 1, 22, 7, DR_FOLLOW}), BaseOf(avatar));
    EXPECT_EQ(8, avatar.GetUserIndex());
    EXPECT_EQ(23, avatar.GetAvatarIndex());
    EXPECT_EQ(-24, avatar.GetAvatarTemplateID());
    EXPECT_EQ(1.5F, avatar.GetDRVector()->GetPos().x);
    EXPECT_EQ(12.5F, avatar.GetDRVector()->GetPos().y);
    EXPECT_EQ(2.5F, avatar.GetDRVector()->GetPos().z);
    EXPECT_EQ(3.5F, avatar.GetDRVector()->GetAY());
    EXPECT_EQ(4.5F, avatar.GetDRVector()->GetSpeed());
    EXPECT_EQ(25, avatar.GetAniID());
    EXPECT_STREQ("Kesra", avatar.GetNickname());
    EXPECT_TRUE(avatar.IsTransparent());
    EXPECT_EQ((std::vector<long>{-1, 70000, 3}), avatar.GetAppearance());
}

TEST(Avatar, TheCountDecidesTheLengthOfTheAppearance)
{
    TAvatar avatar;
    const auto read = [&avatar](const CNTPacket& sent) {
        CNTPacket packet = Received(sent);
        packet >> avatar;
        return avatar.GetAppearance();
    };
    const std::vector<long> five{1, 2, 3, 4, 5};
    EXPECT_EQ(five, read(SentAvatar("", five)));
    EXPECT_EQ((std::vector<long>{8, 9}), read(SentAvatar("", {8, 9})));
    EXPECT_EQ((std::vector<long>{1, 2, 3}), read(SentAvatar("", {1, 2, 3})));
    EXPECT_TRUE(read(SentAvatar("", {})).empty());

    // Counts that the packet does not bear out: 32767 elements, and less than none.
    CNTPacket many = SentAvatar("", {5, 6});
    many.SetBufPoint(static_cast<unsigned short>(many.GetBufSize() - 10));
    many.SetBufSize(many.GetBufPoint());
    many << short{32767} << 5L << 6L;
    std::vector<long> expected(32767);
    expected[0] = 5;
    expected[1] = 6;
    EXPECT_EQ(expected, read(many));
    CNTPacket negative = SentAvatar("", {});
    negative.SetBufPoint(static_cast<unsigned short>(negative.GetBufSize() - 2));
    negative.SetBufSize(negative.GetBufPoint());
    negative << short{-1} << 5L;
    EXPECT_TRUE(read(negative).empty());
}

TEST(Avatar, EveryTruncationKeepsWhatDidNotCome)
{
    const CNTPacket sent = SentAvatar("Kesra", {0x11111111, 0x22222222, 3});
    for (int arrived = 0; arrived <= 52; ++arrived) {
        CNTPacket packet = Received(sent, arrived);
        TAvatar avatar;
        avatar.SetID(0xAAAAAAAA);
        avatar.SetAniID(0x0707);
        std::vector<long> old{0x77777777, 0x66666666};
        avatar.SetAppearance(old);
        packet >> avatar;
        EXPECT_EQ(arrived, BytesRead(packet));
        // A field that came in part has its low bytes from the packet.
        const unsigned long ids[] = {0xAAAAAAAA, 0xAAAAAA21, 0xAAAA4321, 0xAA654321, 0x87654321};
        EXPECT_EQ(ids[std::clamp(arrived - 2, 0, 4)], avatar.GetID()) << arrived;
        const short animations[] = {0x0707, 0x0719, 25};
        EXPECT_EQ(animations[std::clamp(arrived - 28, 0, 2)], avatar.GetAniID()) << arrived;
        EXPECT_EQ(std::string("Kesra").substr(0, static_cast<std::size_t>(std::clamp(arrived - 32, 0, 5))),
                  static_cast<const char*>(avatar.GetNickname()))
            << arrived;
        EXPECT_EQ(arrived >= 38, avatar.IsTransparent()) << arrived;
        ASSERT_EQ(arrived >= 39 ? 3U : 2U, avatar.GetAppearance().size()) << arrived;
        const long elements[] = {0x77777777, 0x77777711, 0x77771111, 0x77111111, 0x11111111};
        EXPECT_EQ(elements[std::clamp(arrived - 40, 0, 4)], avatar.GetAppearanceElement(1)) << arrived;
    }
}

TEST(Monster, IsReadFieldByField)
{
    CNTPacket sent = Begun();
    sent << 0x87654321UL << short{22} << short{-23} << 1.5F << 2.5F << 3.5F << 4.5F << short{25} << 99.5F
         << 'x';
    CNTPacket packet = Received(sent);
    TMonster monster;
    monster.SetJoinedSessionID(9);
    packet >> monster;
    EXPECT_EQ(30, BytesRead(packet));
    EXPECT_EQ((Base{9, 0x87654321, 3, 22, -1, DR_INIT}), BaseOf(monster));
    EXPECT_EQ(-23, monster.GetMonsterTemplateID());
    EXPECT_EQ(2.5F, monster.GetDRVector()->GetPos().z);
    EXPECT_EQ(3.5F, monster.GetDRVector()->GetAY());
    EXPECT_EQ(25, monster.GetAniID());
    EXPECT_EQ(99.5F, monster.GetMonHP());
}

TEST(WorldItem, IsReadFieldByField)
{
    CNTPacket sent = Begun();
    sent << 0x87654321UL << short{22} << 1.5F << 2.5F << 3.5F << 4.5F << -70001 << -5L << short{-6} << 'x';
    CNTPacket packet = Received(sent);
    TWorldItem item;
    item.SetWorldItemUUID("kept");
    packet >> item;
    EXPECT_EQ(32, BytesRead(packet));
    EXPECT_EQ((Base{0, 0x87654321, 2, 22, -1, DR_INIT}), BaseOf(item));
    EXPECT_EQ(4.5F, item.GetDRVector()->GetSpeed());
    EXPECT_EQ(-70001, item.GetWorldItemID());
    EXPECT_EQ(-5, item.GetWorldItemExp());
    EXPECT_EQ(-6, item.GetWorldItemOptionID());
    EXPECT_STREQ("kept", item.GetWorldItemUUID());
}

TEST(Npc, HasAnEmptyWireForm)
{
    CNTPacket sent = Begun();
    sent << 1234;
    CNTPacket packet = Received(sent);
    TNPC npc;
    packet >> npc;
    EXPECT_EQ(0, BytesRead(packet));
}

} // namespace
