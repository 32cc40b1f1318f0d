// What happens in the story.
#include "tools/demo/English.h"
#include "tools/demo/Story.h"

#include "server/messages/ResultCodes.h"
#include "server/messages/Texts.h"
#include "server/world/Catalogue.h"

#include "KesraNTC/rpc/MessageNumbers.h"

#include <algorithm>
#include <cmath>

using namespace Kesra;

namespace
{

// What the server's catalogue calls these.
constexpr long Hat = 20001;
constexpr long Sword = 110001;
constexpr long Potion = 70001;
constexpr long Stone = 80001;
constexpr long Jewel = 90001;
constexpr long Fireball = 102;
constexpr long Frost = 201;
constexpr short HatPlace = 1;
constexpr short Agreed = 1;

CFixCharString<200> Line(const char* utf8)
{
    return CFixCharString<200>(WireText(utf8).c_str());
}

CString Text(const std::string& utf8)
{
    return CString(WireText(utf8).c_str());
}

/// How far one is from where the other shows it.
double Apart(Player& seeing, const Player& seen)
{
    const CNTVector shown = seeing.ShownPlace(seen);
    const CNTVector real = seen.Own.GetPos();
    return std::hypot(shown[0] - real[0], shown[2] - real[2]);
}

} // namespace

short Story::IndexOf(Player& player, long kind)
{
    Expect(Words(player.Name, " has an item ", kind), [&] { return player.FindItem(kind) != nullptr; });
    return player.FindItem(kind)->GetItemIndex();
}

unsigned long Story::NewestOnGround(Player& player)
{
    Expect("something lies on the ground", [&] { return !player.Ground.empty(); });
    return player.Ground.rbegin()->first;
}

void Story::LogOn()
{
    Book.Heading("Mina and Joon log on");
    LogOn(Mina, Options.MasterAccount, Options.MasterPassword);
    LogOn(Joon, "joon" + Options.Suffix, "friendship");
    Enter(Mina);
    Enter(Joon);
    Await(Mina, SC_AVATAR);
    Expect("they see each other",
           [&] { return Mina.Avatars.count(Joon.ID) == 1 && Joon.Avatars.count(Mina.ID) == 1; });
    Await(Mina, SC_SET_NET_TIME);
}

void Story::LogOn(Player& player, const std::string& account, const std::string& password)
{
    player.Tell(Words("connects to ", Options.Address, ":", Options.Port, " and logs on as ", account));
    Require(Words("no game server answers at ", Options.Address, ":", Options.Port,
                  ". Start one there with: kesra-server --listen ", Options.Address, ":", Options.Port,
                  "\nOr leave out --server, and the demo brings its own."),
            player.Connect(Options.Address, Options.Port));
    CString name = Text(account);
    CString secret = Text(password);
    unsigned short user = 0;
    std::vector<TAvatar> avatars;
    std::vector<TPrivData> data;
    Ask(player, "CS_Logon", [&](unsigned long& result) {
        return player.Proxy.CS_Logon(name, secret, user, avatars, data, result);
    });
    Await(player, SC_GS_LIST);
    Require(Words("the account ", account, " has all its ", AvatarsPerAccount,
                  " avatars already. Name another one with --account, or start the server anew."),
            avatars.size() < AvatarsPerAccount);
    player.Index = static_cast<short>(avatars.size());
    CString nickname = Text(player.Name);
    Ask(player, "CS_CreateAvatar", [&](unsigned long& result) {
        return player.Proxy.CS_CreateAvatar(player.Index, nickname, 1, result);
    });
}

void Story::Enter(Player& player)
{
    Ask(player, "CS_TryOnSession", [&](unsigned long& result) {
        return player.Proxy.CS_TryOnSession(player.Index, 1, player.Items, player.Skills, result);
    });
    player.Tell(Words("carries ",
                      Count(static_cast<long long>(player.Items.size()), "kind of thing", "kinds of things"),
                      " and knows ", Count(static_cast<long long>(player.Skills.size()), "skill")));
    player.Proxy.CS_EnterSession();
    Await(player, SC_EVENT29001);
    Await(player, SC_PRIV_DATA);
    Await(player, SC_AVATAR_LIST);
    Await(player, SC_WORLD_OBJECT_LISTS);
}

void Story::Talk()
{
    Book.Heading("They talk");
    CFixCharString<200> korean = Line("안녕, 준! 반가워요.");
    Mina.Proxy.CS_Chat(korean);
    Await(Joon, SC_CHAT);
    Expect("Joon heard Mina", [&] { return Joon.LastHeard == static_cast<const char*>(korean); });
    CFixCharString<200> english = Line("Hello Mina, nice to meet you.");
    Joon.Proxy.CS_Chat(english);
    Await(Mina, SC_CHAT);
    Expect("Mina heard Joon", [&] { return Mina.LastHeard == static_cast<const char*>(english); });
    CFixCharString<200> secret = Line("같이 걸을까?");
    Mina.Proxy.CS_Wisper_Chat(Joon.ID, secret);
    Await(Joon, SC_WISPER_CHAT);
    CFixCharString<20> name(Text(Mina.Name));
    CFixCharString<200> answer = Line("Gladly!");
    Joon.Proxy.CS_Wisper_Chat_Wide(name, answer);
    Await(Mina, SC_WISPER_CHAT_WIDE);
    Expect("Mina heard the whisper", [&] { return Mina.LastHeard == static_cast<const char*>(answer); });
}

void Story::WalkAround()
{
    // Centimetres a second: 3 of them per frame. Move takes a step of less than 1 for an arrival.
    constexpr float speed = 300;
    constexpr float closeBy = speed * FrameTime * 1.5F;
    constexpr int legs = 3;
    constexpr int framesPerLeg = 100;
    Book.Heading("They walk for three seconds");
    Mina.Walk(90, speed);
    Joon.Walk(0, speed);
    for (int leg = 1; leg <= legs; ++leg) {
        WalkOn(framesPerLeg / 2);
        WalkOn(framesPerLeg / 2);
        if (leg < legs) {
            Mina.Turn(30);
            Joon.Turn(-45);
        }
    }
    Mina.Walk(Mina.Own.GetAY(), 0);
    Joon.Walk(Joon.Own.GetAY(), 0);
    Expect(
        "Joon sees Mina where she stands", [&] { return Apart(Joon, Mina) < closeBy; });
    Expect("Mina sees Joon where he stands", [&] { return Apart(Mina, Joon) < closeBy; });
    for (Player* player : {&Mina, &Joon})
        player->Tell(Words("has walked to ", Place(player->Own.GetPos()), " with ",
                           Count(player->Reports, "movement report")));
}

void Story::WalkOn(int frames)
{
    double worst = 0;
    for (int frame = 0; frame < frames; ++frame) {
        Frame();
        worst = std::max({worst, Apart(Mina, Joon), Apart(Joon, Mina)});
    }
    Mina.Tell(Words("is at ", Place(Mina.Own.GetPos()), ", Joon sees her at ", Place(Joon.ShownPlace(Mina))));
    Joon.Tell(Words("is at ", Place(Joon.Own.GetPos()), ", Mina sees him at ", Place(Mina.ShownPlace(Joon)),
                    "; never more than ", std::lround(std::ceil(worst)), " cm off"));
}

void Story::HandleItems()
{
    Book.Heading("They shop, dress and share");
    CNTProxy_CLToGS& mina = Mina.Proxy;
    mina.CS_BuyItem(Hat, 0, 1);
    Await(Mina, SC_EVENT16007);
    const short hat = IndexOf(Mina, Hat);
    mina.CS_PutonItem(HatPlace, hat);
    Await(Joon, SC_PUTON_ITEM);
    mina.CS_PutonItem(WeaponPlace, IndexOf(Mina, Sword));
    Await(Joon, SC_PUTON_ITEM);
    mina.CS_ChooseWeapon(11);
    Await(Mina, SC_EVENT16014);
    mina.CS_TakeoffItem(HatPlace, hat);
    Await(Joon, SC_TAKEOFF_ITEM);
    mina.CS_ReLocateItemInInventory(hat, static_cast<short>(hat + 10));
    Await(Mina, SC_EVENT17003);
    mina.CS_SellItem(static_cast<short>(hat + 10));
    Await(Mina, SC_EVENT16008);
    mina.CS_RepairItem(WeaponPlace);
    Await(Mina, SC_PRIV13010);

    mina.CS_BuyItems(Stone, 1);
    Await(Mina, SC_EVENT16007);
    std::vector<short> stones{IndexOf(Mina, Stone)};
    long option = 0;
    Ask(Mina, "CS_Request_ItemUpgrade", [&](unsigned long& result) {
        return mina.CS_Request_ItemUpgrade(WeaponPlace, Sword, stones, 0, 0, option, result);
    });
    Mina.Tell(Words("has a sword of option ", option, " now"));
    Await(Mina, SC_PRIV13008);

    const short potions = IndexOf(Joon, Potion);
    Joon.Proxy.CS_Use_Item(potions);
    Await(Joon, SC_EVENT16025);
    Joon.Proxy.CS_DropItem(potions);
    Await(Joon, SC_EVENT16006);
    Await(Mina, SC_EVENT20001);
    mina.CS_PickupItem(NewestOnGround(Mina));
    Await(Mina, SC_EVENT16009);
    Await(Joon, SC_EVENT16026);
}

void Story::HandleSkills()
{
    Book.Heading("They learn");
    CNTProxy_CLToGS& mina = Mina.Proxy;
    long fireball = Fireball;
    long frost = Frost;
    short place = 150;
    short nextPlace = 160;
    short one = 1;
    mina.CS_BuySkill(fireball, place, one);
    Await(Mina, SC_EVENT16017);
    mina.CS_ReLocateSkill(place, nextPlace);
    Await(Mina, SC_EVENT16018);
    mina.CS_ChooseSkill(nextPlace);
    Await(Mina, SC_EVENT16019);
    mina.CS_BuySkill(frost, place, one);
    Await(Mina, SC_EVENT16017);
    mina.CS_DropSkill(place);
    Await(Joon, SC_WORLD_ITEM);
    unsigned long book = NewestOnGround(Joon);
    Joon.Proxy.CS_PickupSkill(book);
    Await(Joon, SC_EVENT16022);
    Expect("Joon knows a skill", [&] { return !Joon.Skills.empty(); });
    short first = Joon.Skills.front().GetSkillIndex();
    Joon.Proxy.CS_SellSkill(first);
    Await(Joon, SC_EVENT16023);
}

void Story::GrowStronger()
{
    Book.Heading("They grow stronger");
    Mina.Proxy.CS_IncParameter(1);
    Await(Mina, SC_INC_PARAMETER);
    Mina.Proxy.CS_UI_ResetKiSystem(2, 1, 1);
    Await(Mina, SC_EVENT17002);
}

void Story::MakeParty()
{
    Book.Heading("They make a party");
    Mina.Proxy.CS_Request_Make_Party(Joon.ID);
    Await(Joon, SC_EVENT18001);
    Joon.Proxy.CS_Response_Make_Party(Mina.ID, true);
    Await(Mina, SC_EVENT18001);
    Await(Joon, SC_EVENT18001);
    Mina.Proxy.CS_Boss_Entrust_PartyMember(Text(Joon.Name));
    Await(Mina, SC_EVENT18001);
    Mina.Proxy.CS_Breakwith_Party();
    Await(Mina, SC_EVENT18001);
}

void Story::Trade()
{
    Book.Heading("They trade");
    Mina.Proxy.CS_RequestBarter(Joon.ID);
    Await(Joon, SC_BARTER50003);
    Joon.Proxy.CS_ResponseBarter(Mina.ID, Agreed);
    Await(Mina, SC_BARTER50002);
    std::vector<TItem> items;
    std::vector<TItem> nothing;
    std::vector<TSkill> skills;
    for (TItem& item : Joon.Items)
        if (item.GetItemID() == Sword)
            items.push_back(item);
    Joon.Proxy.CS_Dealing(Mina.ID, items, skills, 0);
    Await(Mina, SC_DEALING);
    Mina.Proxy.CS_Dealing(Joon.ID, nothing, skills, 50);
    Await(Joon, SC_DEALING);
    Mina.Proxy.CS_DealSign(Joon.ID);
    Await(Joon, SC_BARTER50004);
    Joon.Proxy.CS_DealSign(Mina.ID);
    Await(Mina, SC_BARTER50005);
    Await(Joon, SC_BARTER50005);
}

void Story::Fight()
{
    Book.Heading("They fight a monster");
    Expect("there is a monster", [&] { return !Mina.Monsters.empty(); });
    const unsigned long monster = Mina.Monsters.begin()->first;
    CNTVector place = Mina.Monsters.begin()->second.GetDRVector()->GetPos();
    Mina.Proxy.CS_Avatar_SkillAttackMonster(monster);
    Await(Mina, SC_PRIV13007);
    Await(Joon, SC_EVENT12006);
    Await(Joon, SC_OBJECT_MOVE);
    Await(Mina, SC_EVENT12007);
    Await(Mina, SC_PRIV13005);
    while (Joon.Monsters.count(monster) != 0) {
        Mina.Proxy.CS_Avatar_AttackMonster(monster);
        Await(Joon, SC_EVENT12006);
    }
    Await(Joon, SC_EVENT12009);
    Await(Mina, SC_PRIV13004);
    Await(Joon, SC_EVENT20001);
    Mina.Proxy.CS_Avatar_AttackArea(place);
    Await(Mina, SC_EVENT16013);
    Await(Joon, SC_EVENT12012);
}

void Story::CommandAsMaster()
{
    Book.Heading("Mina is a game master");
    CNTProxy_CLToGS& mina = Mina.Proxy;
    const CString joon = Text(Joon.Name);
    mina.CS_GM_Give_Item(joon, Jewel, 1);
    bool given = false;
    Expect("Mina gives a jewel", [&] {
        given = Joon.Take(SC_GM_GIVE_ITEM);
        return given || Mina.LastRefusal == static_cast<unsigned long>(Result::NotAllowed);
    });
    Require(Words("the account ", Options.MasterAccount,
                  " is no game master's. Start the server with --master ", Options.MasterAccount,
                  ":PASSWORD, or leave out --account."),
            given);
    Joon.Proxy.CS_UpdateJewelryCollection(IndexOf(Joon, Jewel));
    Await(Joon, SC_EVENT19001);
    mina.CS_GM_Give_Skill(joon, Frost, 10);
    Await(Joon, SC_GM_GIVE_SKILL);
    mina.CS_GM_Change_Level(joon, 20);
    Await(Joon, SC_GM_CHANGE_LEVEL);
    Await(Mina, SC_EVENT16020);
    mina.CS_GM_Transparent(true);
    Await(Joon, SC_GM_TRANSPARENT);
    mina.CS_GM_Prohibit_Avatar_Chatting(joon, 3600);
    Await(Joon, SC_GM21007);
    CFixCharString<200> line = Line("Can you hear me?");
    Joon.Proxy.CS_Chat(line);
    Await(Joon, SC_EVENT16010);
    mina.CS_GM_Call_Avatar(joon);
    Await(Joon, SC_GM_CALL_AVATAR);

    TAvatar avatar;
    TPrivData data;
    Ask(Mina, "CS_GM_Get_Avatar_Information",
        [&](unsigned long& result) { return mina.CS_GM_Get_Avatar_Information(joon, avatar, data, result); });
    Mina.Tell(Words("reads that ", Joon.Name, " has level ", data.GetLevel()));
    short session = 0;
    CNTVector position;
    Ask(
        Mina, "CS_GM_Move_To_Avatar",
        [&](unsigned long& result) { return mina.CS_GM_Move_To_Avatar(joon, session, position, result); });
    Ask(Mina, "CS_GM_Move_To_Position",
        [&](unsigned long& result) { return mina.CS_GM_Move_To_Position(2, CNTVector(10, 0, 20), result); });
    Await(Joon, SC_WORLD14013);
}

void Story::Travel()
{
    Book.Heading("They travel");
    CNTVector place(30, 0, 40);
    Joon.Proxy.CS_Warp_SessionIn_Free(3, place);
    Await(Joon, SC_EVENT60001);
    Await(Mina, SC_WORLD14013);
    short session = 2;
    short zone = 1;
    short gate = 1;
    short direction = 0;
    Ask(Joon, "CS_Warp_SessionIn", [&](unsigned long& result) {
        return Joon.Proxy.CS_Warp_SessionIn(session, zone, gate, direction, place, result);
    });
    Await(Mina, SC_WORLD14011);
    Await(Joon, SC_WORLD_ITEM_LIST);
    Await(Joon, SC_MONSTER_LIST);
    Await(Joon, SC_NPC_LIST);
    Joon.Proxy.CS_Avatar_Reload();
    Await(Joon, SC_EVENT16021);
    CFixCharString<20> nickname(Text(Joon.Name + "2"));
    Ask(Joon, "CS_Change_AvatarNickName",
        [&](unsigned long& result) { return Joon.Proxy.CS_Change_AvatarNickName(nickname, result); });
    Await(Joon, SC_EVENT16020);
}

void Story::SayGoodbye()
{
    Book.Heading("They say goodbye");
    COLEDateTime when;
    Ask(Joon, "CS_DeleteAvatar",
        [&](unsigned long& result) { return Joon.Proxy.CS_DeleteAvatar(0, when, result); });
    Joon.Tell(Words("would be deleted on ", when.GetYear(), "-", when.GetMonth(), "-", when.GetDay()));
    Ask(Joon, "CS_CancelDeleteAvatar",
        [&](unsigned long& result) { return Joon.Proxy.CS_CancelDeleteAvatar(0, result); });
    Joon.Proxy.CS_Warp_SessionOut();
    Await(Joon, SC_WORLD14012);
    Mina.Proxy.CS_LeaveSession();
    Await(Mina, SC_EVENT29002);
    for (Player* player : {&Mina, &Joon}) {
        player->Connection.Disconnect();
        Expect(player->Name + " sees the connection end", [&] { return player->Connection.HasEnded(); });
    }
}
