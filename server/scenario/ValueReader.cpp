#include "server/scenario/ValueReader.h"

#include "server/messages/Texts.h"

#include <cmath>
#include <cstdlib>
#include <stdexcept>

namespace Kesra
{
namespace
{

/// The longest part of a line that a message repeats.
constexpr std::size_t FoundLimit = 60;

bool IsBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r';
}

/// As much of a text as a message repeats; no character of UTF-8 is cut.
std::string Beginning(std::string_view text)
{
    if (text.size() <= FoundLimit)
        return std::string(text);
    std::size_t end = FoundLimit;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
        --end;
    return std::string(text.substr(0, end)) + "...";
}

} // namespace

void ValueReader::SkipBlanks()
{
    while (!Rest.empty() && IsBlank(Rest.front()))
        Rest.remove_prefix(1);
}

void ValueReader::Fail(const std::string& fitting) const
{
    Fail(fitting, Rest.empty() ? std::string_view("the end of the line") : Rest);
}

void ValueReader::Fail(const std::string& fitting, std::string_view found) const
{
    std::string what;
    for (const std::string& part : Path)
        what += (what.empty() ? "" : ", ") + part;
    throw std::runtime_error(what + ": expected " + fitting + ", found " + Beginning(found));
}

bool ValueReader::Accept(char token)
{
    SkipBlanks();
    if (Rest.empty() || Rest.front() != token)
        return false;
    Rest.remove_prefix(1);
    return true;
}

void ValueReader::Expect(char token, const std::string& fitting)
{
    if (!Accept(token))
        Fail(fitting);
}

void ValueReader::OpenRecord(const char* fields)
{
    Expect('(', std::string("a record (") + fields + ")");
}

void ValueReader::CloseRecord()
{
    Expect(')', ") behind the last field");
}

bool ValueReader::HasNext(std::size_t elements)
{
    if (Accept(']'))
        return false;
    if (Rest.empty())
        Fail("] at the end of the list");
    if (elements == std::numeric_limits<short>::max())
        Fail("] behind " + std::to_string(elements) + " elements, the longest list");
    return true;
}

void ValueReader::Finish()
{
    SkipBlanks();
    if (!Rest.empty())
        Fail("the end of the line behind " + std::to_string(Values) + (Values == 1 ? " value" : " values"));
}

std::string_view ValueReader::TakeWord(const std::string& fitting)
{
    SkipBlanks();
    std::size_t length = 0;
    while (length < Rest.size() && !IsBlank(Rest[length]) &&
           std::string_view("[]()\"").find(Rest[length]) == std::string_view::npos)
        ++length;
    if (length == 0)
        Fail(fitting);
    const std::string_view word = Rest.substr(0, length);
    Rest.remove_prefix(length);
    return word;
}

long long ValueReader::TakeInteger(long long lowest, long long highest)
{
    // Which ID a name stands for shows when the message is sent; an avatar's needs 16 bits.
    const bool takesNames = highest >= std::numeric_limits<short>::max();
    const std::string fitting = "a number from " + std::to_string(lowest) + " to " + std::to_string(highest) +
                                (takesNames ? " or @name" : "");
    const std::string word(TakeWord(fitting));
    if (takesNames && word.size() > 1 && word.front() == '@')
        return static_cast<long long>(Resolve(word.substr(1)));
    return ParseNumber(word, lowest, highest, fitting);
}

long long ValueReader::TakeNumber(long long lowest, long long highest)
{
    const std::string fitting = "a number from " + std::to_string(lowest) + " to " + std::to_string(highest);
    ++Values;
    return ParseNumber(std::string(TakeWord(fitting)), lowest, highest, fitting);
}

long long ValueReader::ParseNumber(const std::string& word, long long lowest, long long highest,
                                   const std::string& fitting) const
{
    // Zeros in front of a decimal number do not make it octal.
    const std::size_t digits = word.find_first_not_of("+-");
    const bool hexadecimal =
        digits < word.size() && (word.compare(digits, 2, "0x") == 0 || word.compare(digits, 2, "0X") == 0);
    char* end = nullptr;
    const long long value = std::strtoll(word.c_str(), &end, hexadecimal ? 16 : 10);
    if (*end != '\0' || value < lowest || value > highest)
        Fail(fitting, word);
    return value;
}

std::string ValueReader::TakeText(std::size_t limit)
{
    const std::string fitting = "a \"text\" of at most " + std::to_string(limit) + " bytes";
    Expect('"', fitting);
    std::string text;
    while (!Rest.empty() && Rest.front() != '"') {
        if (Rest.front() == '\\' && Rest.size() > 1)
            Rest.remove_prefix(1);
        text += Rest.front();
        Rest.remove_prefix(1);
    }
    Expect('"', "\" at the end of the text");
    const std::string wire = WireText(text);
    if (wire.size() > limit)
        Fail(fitting, std::to_string(wire.size()) + " bytes: " + text);
    return wire;
}

void ValueReader::Take(std::string& text)
{
    constexpr std::size_t unlimited = 4000;
    text = TakeText(unlimited);
}

void ValueReader::Take(CString& text)
{
    std::string characters;
    Take(characters);
    text = characters.c_str();
}

void ValueReader::Take(float& number)
{
    const std::string fitting = "a number such as 1.5";
    const std::string word(TakeWord(fitting));
    char* end = nullptr;
    number = std::strtof(word.c_str(), &end);
    if (*end != '\0' || !std::isfinite(number))
        Fail(fitting, word);
}

void ValueReader::Take(bool& flag)
{
    flag = TakeInteger(0, 1) != 0;
}

void ValueReader::Take(CNTVector& vector)
{
    OpenRecord("x z");
    Field("x", vector[0]);
    Field("z", vector[2]);
    CloseRecord();
}

void ValueReader::Take(CDRVector& movement)
{
    OpenRecord("x z heading speed");
    CNTVector position;
    Field("x", position[0]);
    Field("z", position[2]);
    movement.SetPos(position);
    movement.SetAY(Get<float>("heading"));
    movement.SetSpeed(Get<float>("speed"));
    CloseRecord();
}

void ValueReader::Take(TAvatar& avatar)
{
    OpenRecord("JoinedSessionID ID CurZoneID AvatarIndex AvatarTemplateID DRVector AniID Nickname "
               "TransparentFlag Appearance");
    avatar.SetJoinedSessionID(Get<short>("JoinedSessionID"));
    avatar.SetID(Get<unsigned long>("ID"));
    avatar.SetCurZoneID(Get<short>("CurZoneID"));
    avatar.SetAvatarIndex(Get<short>("AvatarIndex"));
    avatar.SetAvatarTemplateID(Get<short>("AvatarTemplateID"));
    Field("DRVector", *avatar.GetDRVector());
    avatar.SetAniID(Get<short>("AniID"));
    Field("Nickname", avatar.GetNickname());
    avatar.SetTransparentFlag(Get<bool>("TransparentFlag"));
    Field("Appearance", avatar.GetAppearance());
    CloseRecord();
}

void ValueReader::Take(TMonster& monster)
{
    OpenRecord("ID CurZoneID MonsterTemplateID DRVector AniID MonHP");
    monster.Init();
    monster.SetID(Get<unsigned long>("ID"));
    monster.SetCurZoneID(Get<short>("CurZoneID"));
    monster.SetMonsterTemplateID(Get<short>("MonsterTemplateID"));
    Field("DRVector", *monster.GetDRVector());
    monster.SetAniID(Get<short>("AniID"));
    monster.SetMonHP(Get<float>("MonHP"));
    CloseRecord();
}

void ValueReader::Take(TNPC&)
{
    OpenRecord("");
    CloseRecord();
}

void ValueReader::Take(TWorldItem& item)
{
    OpenRecord("ID CurZoneID DRVector WorldItemID WorldItemExp WorldItemOptionID");
    item.SetID(Get<unsigned long>("ID"));
    item.SetCurZoneID(Get<short>("CurZoneID"));
    Field("DRVector", *item.GetDRVector());
    item.SetWorldItemID(Get<int>("WorldItemID"));
    item.SetWorldItemExp(Get<long>("WorldItemExp"));
    short option = Get<short>("WorldItemOptionID");
    item.SetWorldItemOptionID(option);
    CloseRecord();
}

void ValueReader::Take(TItem& item)
{
    OpenRecord("AvatarIndex ItemIndex ItemID ItemOptionID TempUUID ItemCount");
    item.SetAvatarIndex(Get<short>("AvatarIndex"));
    item.SetItemIndex(Get<short>("ItemIndex"));
    item.SetItemID(Get<long>("ItemID"));
    item.SetItemOptionID(Get<short>("ItemOptionID"));
    item.SetTempUUID(Get<short>("TempUUID"));
    item.SetItemCount(Get<long>("ItemCount"));
    CloseRecord();
}

void ValueReader::Take(TSkill& skill)
{
    OpenRecord("SkillIndex SkillID SkillExp TempUUID");
    skill.SetSkillIndex(Get<short>("SkillIndex"));
    skill.SetSkillID(Get<long>("SkillID"));
    skill.SetSkillExp(Get<long>("SkillExp"));
    skill.SetTempUUID(Get<short>("TempUUID"));
    CloseRecord();
}

void ValueReader::Take(TPrivData& data)
{
    OpenRecord("ParamPoint Power Intellect Staminar Dexterity Plyometric KI AtkReDivision DefReDivision "
               "IntellectReDivision HP MP SP Level Exp Gold UseWeaponIndex MaxInventorySlot "
               "SelectSkillIndex1 SelectSkillIndex2 SelectSkillIndex3 SelectSkillIndex4");
    data.SetParamPoint(Get<short>("ParamPoint"));
    data.SetPower(Get<float>("Power"));
    data.SetIntellect(Get<float>("Intellect"));
    data.SetStaminar(Get<float>("Staminar"));
    data.SetDexterity(Get<float>("Dexterity"));
    data.SetPlyometric(Get<float>("Plyometric"));
    data.SetKI(Get<float>("KI"));
    data.SetAtkReDivision(Get<short>("AtkReDivision"));
    data.SetDefReDivision(Get<short>("DefReDivision"));
    data.SetIntellectReDivision(Get<short>("IntellectReDivision"));
    data.SetHP(Get<float>("HP"));
    data.SetMP(Get<float>("MP"));
    data.SetSP(Get<float>("SP"));
    data.SetLevel(Get<short>("Level"));
    data.SetExp(Get<int>("Exp"));
    data.SetGold(Get<long>("Gold"));
    data.SetUseWeaponIndex(Get<short>("UseWeaponIndex"));
    TakeKept(
        "MaxInventorySlot", "a number up to 4", [&](short bags) { data.SetMaxInventorySlot(bags); },
        [&] { return data.GetMaxInventorySlot(); });
    short group = 0;
    for (const char* name :
         {"SelectSkillIndex1", "SelectSkillIndex2", "SelectSkillIndex3", "SelectSkillIndex4"}) {
        ++group;
        TakeKept(
            name, "0 or a number from 100 to 1000",
            [&](short index) { data.SetSelectSkillIndex(group, index); },
            [&] { return data.GetSelectSkillIndex(group); });
    }
    CloseRecord();
}

void ValueReader::Take(sGS& server)
{
    OpenRecord("Value1 Value2");
    Field("Value1", server.Value1);
    Field("Value2", server.Value2);
    CloseRecord();
}

} // namespace Kesra
