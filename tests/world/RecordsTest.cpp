#include "Wire.h"

#include "KesraNTC/world/CPartyMember.h"
#include "KesraNTC/world/TItem.h"
#include "KesraNTC/world/TSkill.h"
#include "KesraNTC/world/sAttackResult.h"
#include "KesraNTC/world/sGS.h"

#include <gtest/gtest.h>

namespace
{

TItem SampleItem()
{
    TItem item;
    item.SetUserIndex(9);
    item.SetAvatarIndex(1);
    item.SetItemUUID("uuid");
    item.SetTempUUID(12);
    item.SetItemIndex(2005);
    item.SetItemID(70001);
    item.SetItemOptionID(3);
    item.SetItemCount(5);
    return item;
}

TEST(Item, InitKeepsOwnerAndTemporaryIdentifier)
{
    TItem item;
    EXPECT_EQ(0, item.GetUserIndex() + item.GetAvatarIndex() + item.GetTempUUID() + item.GetItemIndex() +
                     item.GetItemID() + item.GetItemOptionID() + item.GetItemCount());
    EXPECT_STREQ("", item.GetItemUUID());
    item = SampleItem();
    item.Init();
    EXPECT_EQ(9, item.GetUserIndex());
    EXPECT_EQ(12, item.GetTempUUID());
    EXPECT_EQ(0, item.GetAvatarIndex() + item.GetItemIndex() + item.GetItemID() + item.GetItemOptionID() +
                     item.GetItemCount());
    EXPECT_STREQ("", item.GetItemUUID());
}

TEST(Item, SlotsAreThousands)
{
    const short slots[][2] = {{2005, 2}, {3000, 3}, {3999, 3}, {999, 0}, {-1500, -1}, {-3000, -3}, {0, 0}};
    for (const auto& [index, slot] : slots) {
        TItem item;
        item.SetItemIndex(index);
        EXPECT_EQ(slot, item.GetItemSlotIndex()) << index;
    }
}

TEST(Item, WireForm)
{
    const Bytes image = {0x01, 0, 0xD5, 0x07, 0x71, 0x11, 0x01, 0, 0x03, 0, 0x0C, 0, 0x05, 0, 0, 0};
    EXPECT_EQ(image, WireForm(SampleItem()));

    CNTPacket sent = Begun();
    sent << SampleItem() << 'x';
    CNTPacket packet = Received(sent);
    TItem item;
    item.SetUserIndex(77);
    item.SetItemUUID("kept");
    packet >> item;
    EXPECT_EQ(16, BytesRead(packet));
    EXPECT_EQ(image, WireForm(item));
    EXPECT_EQ(77, item.GetUserIndex());
    EXPECT_STREQ("kept", item.GetItemUUID());

    CNTPacket cut = Received(sent, 9);
    TItem partly;
    partly.SetItemOptionID(0x0707);
    partly.SetItemCount(8);
    cut >> partly;
    EXPECT_EQ(70001, partly.GetItemID());
    EXPECT_EQ(0x0703, partly.GetItemOptionID());
    EXPECT_EQ(8, partly.GetItemCount());
}

TEST(Item, CopiesEveryField)
{
    const TItem copy(SampleItem());
    EXPECT_EQ(9, copy.GetUserIndex());
    EXPECT_STREQ("uuid", copy.GetItemUUID());
    EXPECT_EQ(WireForm(SampleItem()), WireForm(copy));
}

TSkill SampleSkill()
{
    TSkill skill;
    skill.SetUserIndex(9);
    skill.SetAvatarIndex(8);
    skill.SetSkillUUID("uuid");
    skill.SetTempUUID(-2);
    skill.SetSkillIndex(150);
    skill.SetSkillID(-3);
    skill.SetSkillExp(0x01020304);
    return skill;
}

TEST(Skill, WireFormAndInit)
{
    const Bytes image = {0x96, 0, 0xFD, 0xFF, 0xFF, 0xFF, 0x04, 0x03, 0x02, 0x01, 0xFE, 0xFF};
    EXPECT_EQ(image, WireForm(SampleSkill()));

    CNTPacket sent = Begun();
    sent << SampleSkill() << 'x';
    CNTPacket packet = Received(sent);
    TSkill skill;
    skill.SetUserIndex(1);
    skill.SetAvatarIndex(2);
    skill.SetSkillUUID("kept");
    packet >> skill;
    EXPECT_EQ(12, BytesRead(packet));
    EXPECT_EQ(image, WireForm(skill));
    EXPECT_EQ(1, skill.GetUserIndex());
    EXPECT_EQ(2, skill.GetAvatarIndex());
    EXPECT_STREQ("kept", skill.GetSkillUUID());

    skill = SampleSkill();
    EXPECT_EQ(9, skill.GetUserIndex());
    EXPECT_STREQ("uuid", skill.GetSkillUUID());
    skill.Init();
    EXPECT_EQ((Bytes{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFE, 0xFF}), WireForm(skill));
    EXPECT_EQ(0, skill.GetUserIndex() + skill.GetAvatarIndex());
    EXPECT_STREQ("", skill.GetSkillUUID());
}

TEST(PartyMember, WireForm)
{
    CPartyMember member;
    EXPECT_EQ((Bytes(9)), WireForm(member));
    member.Value1 = 0x0102;
    member.Value2 = 99;
    member.Text1 = "four";
    member.Text2 = "sixsix";
    member.Value3 = -1;
    member.Value4 = 0xC8;
    EXPECT_EQ(
        (Bytes{0x02, 0x01, 4, 0, 'f', 'o', 'u', 'r', 6, 0, 's', 'i', 'x', 's', 'i', 'x', 0xFF, 0xFF, 0xC8}),
        WireForm(member));

    CNTPacket sent = Begun();
    sent << member;
    CNTPacket packet = Received(sent);
    CPartyMember read;
    read.Value2 = 5;
    packet >> read;
    EXPECT_EQ(19, BytesRead(packet));
    EXPECT_EQ(5, read.Value2);
    EXPECT_EQ(WireForm(member), WireForm(read));

    // Texts that arrive empty keep what the record holds.
    sent = Begun();
    sent << CPartyMember();
    packet = Received(sent);
    packet >> read;
    EXPECT_EQ(0, read.Value1);
    EXPECT_STREQ("four", read.Text1);
    EXPECT_STREQ("sixsix", read.Text2);

    const CPartyMember copy(member);
    EXPECT_EQ(99, copy.Value2);
    EXPECT_EQ(WireForm(member), WireForm(copy));
}

TEST(SmallRecords, WireForms)
{
    EXPECT_EQ((Bytes{0x02, 0x01, 0xFF, 0xFF}), WireForm(sGS{0x0102, -1}));
    EXPECT_EQ((Bytes{0x04, 0x03, 0x02, 0x01, 0xFE, 0xFF, 0xC8}),
              WireForm(sAttackResult{0x01020304, -2, 0xC8}));

    CNTPacket sent = Begun();
    sent << sGS{7, -8} << sAttackResult{-9, 10, 0xC8};
    CNTPacket packet = Received(sent);
    sGS server;
    sAttackResult result;
    packet >> server >> result;
    EXPECT_EQ(11, BytesRead(packet));
    EXPECT_EQ(7, server.Value1);
    EXPECT_EQ(-8, server.Value2);
    EXPECT_EQ(-9, result.Value1);
    EXPECT_EQ(10, result.Value2);
    EXPECT_EQ(0xC8, result.Value3);
}

} // namespace
