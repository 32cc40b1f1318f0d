#include "server/ValueReader.h"

#include "server/Texts.h"

#include <cmath>
#include <cstdlib>
#include <stdexcept>

namespace Kesra
{
namespace
{

[[noreturn]] void Fail(const std::string& what)
{
    throw std::runtime_error(what);
}

bool IsBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r';
}

/// Some setters of records do not take every number.
void RequireKept(short given, short kept)
{
    if (given != kept)
        Fail("no number of this field: " + std::to_string(given));
}

} // namespace

void ValueReader::SkipBlanks()
{
    while (!Rest.empty() && IsBlank(Rest.front()))
        Rest.remove_prefix(1);
}

void ValueReader::FailExpecting(const std::string& what) const
{
    Fail("expected " + what + (Rest.empty() ? " at the end of the line" : " before: " + std::string(Rest)));
}

bool ValueReader::Accept(char token)
{
    SkipBlanks();
    if (Rest.empty() || Rest.front() != token)
        return false;
    Rest.remove_prefix(1);
    return true;
}

void ValueReader::Expect(char token)
{
    if (!Accept(token))
        FailExpecting(std::string(1, token));
}

bool ValueReader::HasNext(std::size_t elements)
{
    if (Accept(']'))
        return false;
    if (Rest.empty())
        FailExpecting("]");
    if (elements == std::numeric_limits<short>::max())
        Fail("the list is longer than " + std::to_string(elements) + " elements");
    return true;
}

void ValueReader::Finish()
{
    SkipBlanks();
    if (!Rest.empty())
        Fail("more than the message holds: " + std::string(Rest));
}

std::string_view ValueReader::TakeWord()
{
    SkipBlanks();
    std::size_t length = 0;
    while (length < Rest.size() && !IsBlank(Rest[length]) &&
           std::string_view("[]()\"").find(Rest[length]) == std::string_view::npos)
        ++length;
    const std::string_view word = Rest.substr(0, length);
    Rest.remove_prefix(length);
    if (word.empty())
        FailExpecting("a number");
    return word;
}

long long ValueReader::TakeInteger(long long lowest, long long highest)
{
    const std::string word(TakeWord());
    if (word.front() == '@')
        return TakeObjectID(word.substr(1), highest);
    // Zeros in front of a decimal number do not make it octal.
    const std::size_t digits = word.find_first_not_of("+-");
    const bool hexadecimal =
        digits < word.size() && (word.compare(digits, 2, "0x") == 0 || word.compare(digits, 2, "0X") == 0);
    char* end = nullptr;
    const long long value = std::strtoll(word.c_str(), &end, hexadecimal ? 16 : 10);
    if (*end != '\0' || value < lowest || value > highest)
        Fail("no number of this field: " + word);
    return value;
}

long long ValueReader::TakeObjectID(const std::string& name, long long highest) const
{
    if (name.empty())
        Fail("expected a name behind @");
    // Which ID it is shows when the message is sent; an avatar's needs 16 bits.
    if (highest < std::numeric_limits<short>::max())
        Fail("no object ID fits this field: @" + name);
    return static_cast<long long>(Resolve(name));
}

std::string ValueReader::TakeText(std::size_t limit)
{
    Expect('"');
    std::string text;
    while (!Rest.empty() && Rest.front() != '"') {
        if (Rest.front() == '\\' && Rest.size() > 1)
            Rest.remove_prefix(1);
        text += Rest.front();
        Rest.remove_prefix(1);
    }
    Expect('"');
    const std::string wire = WireText(text);
    if (wire.size() > limit)
        Fail("the text is longer than " + std::to_string(limit) + " bytes: " + text);
    return wire;
}

void ValueReader::Take(std::string& text)
{
    constexpr std::size_t unlimited = 4000;
    text = TakeText(unlimited);
}

void ValueReader::Take(CString& text)
{
    text = Get<std::string>().c_str();
}

void ValueReader::Take(float& number)
{
    const std::string word(TakeWord());
    char* end = nullptr;
    number = std::strtof(word.c_str(), &end);
    if (*end != '\0' || !std::isfinite(number))
        Fail("no number of this field: " + word);
}

void ValueReader::Take(bool& flag)
{
    flag = TakeInteger(0, 1) != 0;
}

void ValueReader::Take(CNTVector& vector)
{
    Expect('(');
    Take(vector[0]);
    Take(vector[2]);
    Expect(')');
}

void ValueReader::Take(CDRVector& movement)
{
    Expect('(');
    CNTVector position;
    Take(position[0]);
    Take(position[2]);
    movement.SetPos(position);
    movement.SetAY(Get<float>());
    movement.SetSpeed(Get<float>());
    Expect(')');
}

void ValueReader::Take(TAvatar& avatar)
{
    Expect('(');
    avatar.SetJoinedSessionID(Get<short>());
    avatar.SetID(Get<unsigned long>());
    avatar.SetCurZoneID(Get<short>());
    avatar.SetAvatarIndex(Get<short>());
    avatar.SetAvatarTemplateID(Get<short>());
    Take(*avatar.GetDRVector());
    avatar.SetAniID(Get<short>());
    Take(avatar.GetNickname());
    avatar.SetTransparentFlag(Get<bool>());
    Take(avatar.GetAppearance());
    Expect(')');
}

void ValueReader::Take(TMonster& monster)
{
    Expect('(');
    monster.Init();
    monster.SetID(Get<unsigned long>());
    monster.SetCurZoneID(Get<short>());
    monster.SetMonsterTemplateID(Get<short>());
    Take(*monster.GetDRVector());
    monster.SetAniID(Get<short>());
    monster.SetMonHP(Get<float>());
    Expect(')');
}

void ValueReader::Take(TNPC&)
{
    Expect('(');
    Expect(')');
}

void ValueReader::Take(TWorldItem& item)
{
    Expect('(');
    item.SetID(Get<unsigned long>());
    item.SetCurZoneID(Get<short>());
    Take(*item.GetDRVector());
    item.SetWorldItemID(Get<int>());
    item.SetWorldItemExp(Get<long>());
    short option = Get<short>();
    item.SetWorldItemOptionID(option);
    Expect(')');
}

void ValueReader::Take(TItem& item)
{
    Expect('(');
    item.SetAvatarIndex(Get<short>());
    item.SetItemIndex(Get<short>());
    item.SetItemID(Get<long>());
    item.SetItemOptionID(Get<short>());
    item.SetTempUUID(Get<short>());
    item.SetItemCount(Get<long>());
    Expect(')');
}

void ValueReader::Take(TSkill& skill)
{
    Expect('(');
    skill.SetSkillIndex(Get<short>());
    skill.SetSkillID(Get<long>());
    skill.SetSkillExp(Get<long>());
    skill.SetTempUUID(Get<short>());
    Expect(')');
}

void ValueReader::Take(TPrivData& data)
{
    Expect('(');
    data.SetParamPoint(Get<short>());
    data.SetPower(Get<float>());
    data.SetIntellect(Get<float>());
    data.SetStaminar(Get<float>());
    data.SetDexterity(Get<float>());
    data.SetPlyometric(Get<float>());
    data.SetKI(Get<float>());
    data.SetAtkReDivision(Get<short>());
    data.SetDefReDivision(Get<short>());
    data.SetIntellectReDivision(Get<short>());
    data.SetHP(Get<float>());
    data.SetMP(Get<float>());
    data.SetSP(Get<float>());
    data.SetLevel(Get<short>());
    data.SetExp(Get<int>());
    data.SetGold(Get<long>());
    data.SetUseWeaponIndex(Get<short>());
    const short bags = Get<short>();
    data.SetMaxInventorySlot(bags);
    RequireKept(bags, data.GetMaxInventorySlot());
    for (short group = 1; group <= 4; ++group) {
        const short skill = Get<short>();
        data.SetSelectSkillIndex(group, skill);
        RequireKept(skill, data.GetSelectSkillIndex(group));
    }
    Expect(')');
}

void ValueReader::Take(sGS& server)
{
    Expect('(');
    Take(server.Value1);
    Take(server.Value2);
    Expect(')');
}

} // namespace Kesra
