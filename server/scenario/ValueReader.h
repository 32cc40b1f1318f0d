#pragma once

#include "server/scenario/Scenario.h"

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

/// Reads the values of a scenario line: numbers, "texts", @names, [ lists ] and ( records ). Each throws
/// std::runtime_error when something else stands there, which names the value, what would fit and what was
/// found.
class ValueReader
{
public:
    /// Both arguments must outlive the reader; `subject` is what its messages begin with.
    ValueReader(std::string_view text, const NameResolver& resolve, const std::string& subject)
        : Rest(text), Resolve(resolve), Path{subject}
    {
    }

    /// The next value of the message.
    template <class T> void TakeValue(T& value)
    {
        const Scope scope(*this, "value " + std::to_string(++Values));
        Take(value);
    }
    /// A number that no @name can stand for.
    long long TakeNumber(long long lowest, long long highest);
    /// Nothing may follow the last value.
    void Finish();
    [[noreturn]] void Fail(const std::string& fitting, std::string_view found) const;

private:
    /// Names what is being read, for as long as it is being read.
    class Scope
    {
    public:
        Scope(ValueReader& reader, const std::string& name) : Reader(reader) { Reader.Path.push_back(name); }
        ~Scope() { Reader.Path.pop_back(); }
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        ValueReader& Reader;
    };

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
        Expect('[', "a list in [ ]");
        while (HasNext(list.size())) {
            const Scope scope(*this, "element " + std::to_string(list.size() + 1));
            Take(list.emplace_back());
        }
    }

    /// A field of a record.
    template <class T> void Field(const char* name, T& value)
    {
        const Scope scope(*this, name);
        Take(value);
    }
    template <class T> T Get(const char* name)
    {
        T value{};
        Field(name, value);
        return value;
    }
    /// A field whose setter takes some numbers only: those that `kept` answers back.
    template <class Set, class Kept> void TakeKept(const char* name, const char* fitting, Set set, Kept kept)
    {
        const Scope scope(*this, name);
        short given = 0;
        Take(given);
        set(given);
        if (kept() != given)
            Fail(fitting, std::to_string(given));
    }
    long long TakeInteger(long long lowest, long long highest);
    long long ParseNumber(const std::string& word, long long lowest, long long highest,
                          const std::string& fitting) const;
    std::string TakeText(std::size_t limit);
    std::string_view TakeWord(const std::string& fitting);
    void SkipBlanks();
    bool Accept(char token);
    void Expect(char token, const std::string& fitting);
    void OpenRecord(const char* fields);
    void CloseRecord();
    /// Whether another element follows so many of a list.
    bool HasNext(std::size_t elements);
    /// What follows does not fit.
    [[noreturn]] void Fail(const std::string& fitting) const;

    std::string_view Rest;
    const NameResolver& Resolve;
    std::vector<std::string> Path; ///< what is being read: the value, and where in it
    int Values = 0;
};

} // namespace Kesra
