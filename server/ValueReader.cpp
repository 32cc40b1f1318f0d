#include "server/ValueReader.h"

#include "server/Texts.h"

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

} // namespace

void ValueReader::SkipBlanks()
{
    while (!Rest.empty() && IsBlank(Rest.front())) {
        Rest.remove_prefix(1);
    }
}

bool ValueReader::Accept(char token)
{
    SkipBlanks();
    if (Rest.empty()) {
        Fail("a value is missing");
    }
    if (Rest.front() != token) {
        return false;
    }
    Rest.remove_prefix(1);
    return true;
}

void ValueReader::Expect(char token)
{
    if (!Accept(token)) {
        Fail(std::string("expected ") + token + " before: " + std::string(Rest));
    }
}

void ValueReader::Finish()
{
    SkipBlanks();
    if (!Rest.empty()) {
        Fail("more than the message holds: " + std::string(Rest));
    }
}

std::string_view ValueReader::TakeWord()
{
    SkipBlanks();
    std::size_t length = 0;
    while (length < Rest.size() && !IsBlank(Rest[length]) &&
           std::string_view("[]()\"").find(Rest[length]) == std::string_view::npos) {
        ++length;
    }
    const std::string_view word = Rest.substr(0, length);
    Rest.remove_prefix(length);
    if (word.empty()) {
        Fail("expected a number before: " + std::string(Rest));
    }
    return word;
}

long long ValueReader::TakeInteger(long long lowest, long long highest)
{
    const std::string word(TakeWord());
    if (word.front() == '@') {
        return static_cast<long long>(Resolve(word.substr(1)));
    }
    char* end = nullptr;
    const long long value = std::strtoll(word.c_str(), &end, 0);
    if (*end != '\0' || value < lowest || value > highest) {
        Fail("no number of this field: " + word);
    }
    return value;
}

std::string ValueReader::TakeText(std::size_t limit)
{
    Expect('"');
    std::string text;
    while (!Rest.empty() && Rest.front() != '"') {
        if (Rest.front() == '\\' && Rest.size() > 1) {
            Rest.remove_prefix(1);
        }
        text += Rest.front();
        Rest.remove_prefix(1);
    }
    Expect('"');
    text = WireText(text);
    if (text.size() > limit) {
        Fail("the text is longer than " + std::to_string(limit) + " bytes: " + text);
    }
    return text;
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
    if (*end != '\0') {
        Fail("no number: " + word);
    }
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
    data.SetMaxInventorySlot(Get<short>());
    for (short group = 1; group <= 4; ++group) {
        data.SetSelectSkillIndex(group, Get<short>());
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
