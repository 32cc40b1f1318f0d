#pragma once

#include "server/Scenario.h"

#include "KesraNTC/base/CFixCharString.h"
#include "KesraNTC/base/CString.h"
#include "KesraNTC/world/CDRVector.h"
#include "KesraNTC/world/TItem.h"
#include "KesraNTC/world/TPrivData.h"
#include "KesraNTC/world/TSkill.h"
#include "KesraNTC/world/WorldObjects.h"
#include "KesraNTC/world/sGS.h"

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace Kesra
{

/// Reads the values of a scenario line: numbers, "texts", @names, [ lists ] and ( records ). Every Take
/// throws std::runtime_error when something else stands there.
class ValueReader
{
public:
    ValueReader(std::string_view text, const NameResolver& resolve) : Rest(text), Resolve(resolve) {}

    void Take(std::string& text);
    void Take(float& number);
    void Take(bool& flag);
    void Take(CString& text);
    void Take(CNTVector& vector);
    void Take(CDRVector& movement);
    void Take(TAvatar& avatar);
    void Take(TMonster& monster);
    void Take(TNPC& npc);
    void Take(TWorldItem& item);
    void Take(TItem& item);
    void Take(TSkill& skill);
    void Take(TPrivData& data);
    void Take(sGS& server);

    template <int Capacity> void Take(CFixCharString<Capacity>& text) { text = TakeText(Capacity).c_str(); }

    /// Fields of 32 bits take signed and unsigned numbers, as the wire does.
    template <class T> std::enable_if_t<std::is_integral_v<T>> Take(T& number)
    {
        constexpr bool wide = sizeof(T) >= 4;
        using Limits = std::numeric_limits<T>;
        constexpr long long lowest = wide ? INT32_MIN : static_cast<long long>(Limits::min());
        constexpr long long highest = wide ? UINT32_MAX : static_cast<long long>(Limits::max());
        number = static_cast<T>(TakeInteger(lowest, highest));
    }

    template <class T> void Take(std::vector<T>& list)
    {
        Expect('[');
        while (HasNext(list.size()))
            Take(list.emplace_back());
    }

    /// Nothing may follow the last value.
    void Finish();

private:
    template <class T> T Get()
    {
        T value{};
        Take(value);
        return value;
    }
    long long TakeInteger(long long lowest, long long highest);
    long long TakeObjectID(const std::string& name, long long highest) const;
    std::string TakeText(std::size_t limit);
    std::string_view TakeWord();
    void SkipBlanks();
    bool Accept(char token);
    void Expect(char token);
    /// Whether another element follows so many of a list.
    bool HasNext(std::size_t elements);
    [[noreturn]] void FailExpecting(const std::string& what) const;

    std::string_view Rest;
    const NameResolver& Resolve;
};

} // namespace Kesra
