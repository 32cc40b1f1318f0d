#pragma once

#include "KesraNTC/KesraNTC.h"

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace Kesra
{

/// Takes the values of packets apart into their scalars and texts, in wire order. Records are taken through
/// their accessors, the way a game sees them. The sink says what becomes of each: TakeBool, TakeInteger,
/// TakeBits (the IEEE bits of a floating-point value and their number of bytes) and TakeText; and it limits
/// how many elements of a list it wants with MostElements.
template <class Sink> class FlatValues : public Sink
{
public:
    void Add(bool value) { this->TakeBool(value); }
    template <std::integral Integer> void Add(Integer value) { this->TakeInteger(value); }
    void Add(float value) { this->TakeBits(BitsOf<std::uint32_t>(value), 4); }
    void Add(double value) { this->TakeBits(BitsOf<std::uint64_t>(value), 8); }
    void Add(const char* text) { this->TakeText(text); }
    void Add(const CString& text) { this->TakeText(text); }
    template <int Capacity> void Add(const CFixCharString<Capacity>& text) { this->TakeText(text); }

    void Add(COLEDateTime& date) { Add(static_cast<double>(date)); }
    void Add(const CNTVector& vector) { AddAll(vector.x, vector.z); }
    void Add(const CDRVector& movement) { AddAll(movement.GetPos(), movement.GetAY(), movement.GetSpeed()); }

    void Add(TAvatar& avatar)
    {
        AddAll(avatar.GetJoinedSessionID(), avatar.GetID(), avatar.GetCurZoneID(), avatar.GetAvatarIndex(),
               avatar.GetAvatarTemplateID(), *avatar.GetDRVector(), avatar.GetAniID(), avatar.GetNickname(),
               avatar.IsTransparent(), avatar.GetAppearance());
    }
    void Add(TMonster& monster)
    {
        AddAll(monster.GetID(), monster.GetCurZoneID(), monster.GetMonsterTemplateID(),
               *monster.GetDRVector(), monster.GetAniID(), monster.GetMonHP());
    }
    void Add(TNPC&) {}
    void Add(TWorldItem& item)
    {
        AddAll(item.GetID(), item.GetCurZoneID(), *item.GetDRVector(), item.GetWorldItemID(),
               item.GetWorldItemExp(), item.GetWorldItemOptionID());
    }
    void Add(const TItem& item)
    {
        AddAll(item.GetAvatarIndex(), item.GetItemIndex(), item.GetItemID(), item.GetItemOptionID(),
               item.GetTempUUID(), item.GetItemCount());
    }
    void Add(const TSkill& skill)
    {
        AddAll(skill.GetSkillIndex(), skill.GetSkillID(), skill.GetSkillExp(), skill.GetTempUUID());
    }
    void Add(TPrivData& data)
    {
        AddAll(data.GetParamPoint(), data.GetPower(), data.GetIntellect(), data.GetStaminar(),
               data.GetDexterity(), data.GetPlyometric(), data.GetKI(), data.GetAtkReDivision(),
               data.GetDefReDivision(), data.GetIntellectReDivision(), data.GetHP(), data.GetMP(),
               data.GetSP(), data.GetLevel(), data.GetExp(), data.GetGold(), data.GetUseWeaponIndex(),
               data.GetMaxInventorySlot(), static_cast<double>(data.GetDeleteAvatarDate()));
        for (short group = 1; group <= 4; ++group)
            Add(data.GetSelectSkillIndex(group));
    }
    void Add(const sGS& server) { AddAll(server.Value1, server.Value2); }
    void Add(const sAttackResult& result) { AddAll(result.Value1, result.Value2, result.Value3); }
    void Add(const CPartyMember& member)
    {
        AddAll(member.Value1, member.Text1, member.Text2, member.Value3, member.Value4);
    }

    template <class Element> void Add(std::vector<Element>& list)
    {
        Add(list.size());
        for (std::size_t i = 0; i < std::min(list.size(), Sink::MostElements); ++i)
            Add(list[i]);
    }

    template <class... Values> void AddAll(Values&&... values) { (Add(values), ...); }

private:
    template <class Bits, class Value> static Bits BitsOf(Value value)
    {
        static_assert(sizeof(Bits) == sizeof(Value), "bits and value have one width");
        Bits bits;
        std::memcpy(&bits, &value, sizeof bits);
        return bits;
    }
};

/// Writes values as the elements of a JSON array; README.md tells how each form is stated.
class JsonSink
{
public:
    static constexpr std::size_t MostElements = SIZE_MAX;

    std::string Json() const { return "[" + Text + "]"; }

    void TakeBool(bool value) { Append(value ? "true" : "false"); }
    template <std::integral Integer> void TakeInteger(Integer value) { Append(std::to_string(value)); }
    void TakeBits(std::uint64_t bits, int bytes) { Append("\"0x" + Hex(bits, 2 * bytes) + "\""); }
    void TakeText(const char* text)
    {
        std::string digits;
        for (; *text != '\0'; ++text)
            digits += Hex(static_cast<unsigned char>(*text), 2);
        Append("\"" + digits + "\"");
    }

    void Append(const std::string& value)
    {
        if (!Text.empty())
            Text += ", ";
        Text += value;
    }

protected:
    static std::string Hex(std::uint64_t value, int digits)
    {
        char text[17];
        std::snprintf(text, sizeof text, "%0*llx", digits, static_cast<unsigned long long>(value));
        return text;
    }

private:
    std::string Text;
};

/// The values of one packet as a JSON array.
class Fields : public FlatValues<JsonSink>
{
public:
    /// An integer known only within limits, both included.
    struct Limits {
        unsigned long Least;
        unsigned long Most;
    };

    /// A reading of the millisecond clock, not earlier than the given one and at most ten minutes later.
    static Limits Reading(unsigned long earliest)
    {
        return {static_cast<std::uint32_t>(earliest), static_cast<std::uint32_t>(earliest + 600'000)};
    }

    Fields() = default;
    template <class... Values>
    requires(sizeof...(Values) > 0 && !(std::is_same_v<std::remove_cvref_t<Values>, Fields> ||
                                        ...)) explicit Fields(Values&&... values)
    {
        (Put(values), ...);
    }

private:
    template <class Value> void Put(Value& value) { Add(value); }
    void Put(const Limits& limits)
    {
        Append(R"({"min": )" + std::to_string(limits.Least) + R"(, "max": )" + std::to_string(limits.Most) +
               "}");
    }
    void Put(Limits& limits) { Put(std::as_const(limits)); }
    void Put(DECIMAL& decimal)
    {
        unsigned char bytes[sizeof decimal];
        std::memcpy(bytes, &decimal, sizeof decimal);
        std::string digits;
        for (unsigned char byte : bytes)
            digits += Hex(byte, 2);
        Append("\"" + digits + "\"");
    }
    void Put(_SYSTEMTIME& time)
    {
        std::string list;
        for (unsigned short field : {time.wYear, time.wMonth, time.wDayOfWeek, time.wDay, time.wHour,
                                     time.wMinute, time.wSecond, time.wMilliseconds})
            list += (list.empty() ? "[" : ", ") + std::to_string(field);
        Append(list + "]");
    }
};

} // namespace Kesra
