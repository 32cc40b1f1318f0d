#pragma once

#include "KesraNTC/KesraNTC.h"
#include "KesraNTC/base/private/Korean.h"

#include <algorithm>
#include <concepts>
#include <cstdint>
#include <limits>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

namespace Kesra
{

/// Fills values of every type that travels, the same ones in every run. Round 0 is all zero and empty, round
/// 1 small, round 2 at the limits with Korean texts, round 3 full texts and long lists.
class Variety
{
public:
    static constexpr unsigned Rounds = 4;

    explicit Variety(unsigned round) : Round(round) {}

    template <class... Values> std::tuple<Values...> Make()
    {
        std::tuple<Values...> values;
        std::apply([&](auto&... value) { (Fill(value), ...); }, values);
        return values;
    }

    void Fill(bool& value) { value = Round != 0 && Next() % 2 == 0; }

    template <std::integral Integer> void Fill(Integer& value)
    {
        // Longs hold 32-bit values, however wide they are in memory.
        using Wire =
            std::conditional_t<sizeof(Integer) <= 4, Integer,
                               std::conditional_t<std::is_signed_v<Integer>, std::int32_t, std::uint32_t>>;
        using Limits = std::numeric_limits<Wire>;
        const Wire small = static_cast<Wire>(Next() * 37 % 101 + 1);
        const Wire edges[] = {Limits::max(), Limits::min(), static_cast<Wire>(-1), 0x3C,
                              static_cast<Wire>(Limits::max() / 3)};
        value = Round == 0 ? Wire{} : Round == 1 ? small : edges[Next() % std::size(edges)];
    }

    void Fill(float& value)
    {
        using Limits = std::numeric_limits<float>;
        const float edges[] = {-0.0F,
                               Limits::max(),
                               Limits::lowest(),
                               Limits::denorm_min(),
                               Limits::infinity(),
                               Limits::quiet_NaN(),
                               0.1F};
        value = Round == 0   ? 0.0F
                : Round == 1 ? static_cast<float>(Next()) * -1.25F
                             : edges[Next() % std::size(edges)];
    }

    void Fill(COLEDateTime& date)
    {
        const double edges[] = {-657434.0, 2958465.0, -1.25, 36585.5};
        date = Round == 0 ? 0.0 : edges[Next() % std::size(edges)];
    }

    void Fill(CString& text) { text = Text(300).c_str(); }
    template <int Capacity> void Fill(CFixCharString<Capacity>& text) { text = Text(Capacity).c_str(); }

    void Fill(CNTVector& vector)
    {
        Fill(vector.x);
        Fill(vector.z);
    }
    void Fill(CDRVector& movement)
    {
        CNTVector position;
        Fill(position);
        movement.SetPos(position);
        movement.SetAY(Made<float>());
        movement.SetSpeed(Made<float>());
    }

    void Fill(TAvatar& avatar)
    {
        FillObject(avatar);
        avatar.SetJoinedSessionID(Made<short>());
        avatar.SetAvatarIndex(Made<short>());
        avatar.SetAvatarTemplateID(Made<short>());
        avatar.SetAniID(Made<short>());
        CString name = Text(20).c_str();
        avatar.SetNickname(name);
        avatar.SetTransparentFlag(Made<bool>());
        Fill(avatar.GetAppearance(), 12);
    }
    void Fill(TMonster& monster)
    {
        FillObject(monster);
        monster.SetMonsterTemplateID(Made<short>());
        monster.SetAniID(Made<short>());
        monster.SetMonHP(Made<float>());
    }
    void Fill(TNPC&) {}
    void Fill(TWorldItem& item)
    {
        FillObject(item);
        item.SetWorldItemID(Made<int>());
        item.SetWorldItemExp(Made<long>());
        short option = Made<short>();
        item.SetWorldItemOptionID(option);
    }
    void Fill(TItem& item)
    {
        item.SetAvatarIndex(Made<short>());
        item.SetItemIndex(Made<short>());
        item.SetItemID(Made<long>());
        item.SetItemOptionID(Made<short>());
        item.SetTempUUID(Made<short>());
        item.SetItemCount(Made<long>());
    }
    void Fill(TSkill& skill)
    {
        skill.SetSkillIndex(Made<short>());
        skill.SetSkillID(Made<long>());
        skill.SetSkillExp(Made<long>());
        skill.SetTempUUID(Made<short>());
    }
    void Fill(TPrivData& data)
    {
        data.SetParamPoint(Made<short>());
        data.SetPower(Made<float>());
        data.SetIntellect(Made<float>());
        data.SetStaminar(Made<float>());
        data.SetDexterity(Made<float>());
        data.SetPlyometric(Made<float>());
        data.SetKI(Made<float>());
        data.SetAtkReDivision(Made<short>());
        data.SetDefReDivision(Made<short>());
        data.SetIntellectReDivision(Made<short>());
        data.SetHP(Made<float>());
        data.SetMP(Made<float>());
        data.SetSP(Made<float>());
        data.SetLevel(Made<short>());
        data.SetExp(Made<int>());
        data.SetGold(Made<long>());
        data.SetUseWeaponIndex(Made<short>());
        data.SetMaxInventorySlot(Made<short>());
        data.SetDeleteAvatarDate(Made<COLEDateTime>());
        for (short group = 1; group <= 4; ++group)
            data.SetSelectSkillIndex(group, static_cast<short>(Round == 0 ? 0 : 100 + Next() % 901));
    }
    void Fill(sGS& server)
    {
        Fill(server.Value1);
        Fill(server.Value2);
    }

    template <class Element> void Fill(std::vector<Element>& list)
    {
        // Three lists of the longest kind still fit into one packet.
        const std::size_t longest = std::is_arithmetic_v<Element>   ? 300
                                    : std::is_same_v<Element, TNPC> ? 1000
                                                                    : 20;
        Fill(list, longest);
    }

private:
    template <class Value> Value Made()
    {
        Value value{};
        Fill(value);
        return value;
    }

    template <class Element> void Fill(std::vector<Element>& list, std::size_t longest)
    {
        const std::size_t sizes[] = {0, 1, 3, longest};
        list.resize(sizes[Round]);
        for (Element& element : list)
            Fill(element);
    }

    void FillObject(TObject& object)
    {
        object.SetID(Made<unsigned long>());
        object.SetCurZoneID(Made<short>());
        Fill(*object.GetDRVector());
    }

    std::string Text(std::size_t longest)
    {
        const std::string korean = "이상한 메시지"_949;
        const std::string texts[] = {"", "hello", korean,
                                     std::string(longest, static_cast<char>('a' + Next() % 26))};
        return texts[Round].substr(0, longest);
    }

    unsigned Next() { return Count++; }

    unsigned Round;
    unsigned Count = 0;
};

} // namespace Kesra
