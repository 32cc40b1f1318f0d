#include "server/scenario/Scenario.h"

#include "server/messages/Notifications.h"
#include "server/scenario/ValueReader.h"

#include <map>
#include <stdexcept>

namespace Kesra
{
namespace
{

constexpr char Blanks[] = " \t\r";

using Builder = CNTPacket (*)(ValueReader&);

template <class T> std::size_t WireSize(const T& value)
{
    CNTPacket packet = BeginMessage(SC_CHAT);
    Put(packet, value);
    return packet.GetBufSize() - CNTPacket::HeaderSize;
}

template <class T> std::size_t WireSize(const std::vector<T>& list);

/// The appearance may not find room in a packet.
std::size_t WireSize(TAvatar avatar)
{
    const std::vector<long> appearance = std::exchange(avatar.GetAppearance(), {});
    return WireSize<TAvatar>(avatar) + appearance.size() * WireSize(0L);
}

template <class T> std::size_t WireSize(const std::vector<T>& list)
{
    std::size_t size = WireSize(short{0});
    for (const T& element : list)
        size += WireSize(element);
    return size;
}

/// Reads the values of one message as its handler's parameters have them.
template <class Row> CNTPacket BuildMessage(ValueReader& reader)
{
    PayloadOfRow<Row> values;
    std::apply([&](auto&... value) { (reader.TakeValue(value), ...); }, values);
    reader.Finish();
    const std::size_t size = std::apply(
        [](const auto&... value) { return (std::size_t{CNTPacket::HeaderSize} + ... + WireSize(value)); },
        values);
    if (size > CNTPacket::Capacity)
        reader.Fail("at most " + std::to_string(CNTPacket::Capacity) + " bytes", std::to_string(size));
    return std::apply([](const auto&... value) { return MessageOf(Row::Number, value...); }, values);
}

CNTPacket BuildClock(ValueReader& reader)
{
    unsigned long serverTime = 0;
    unsigned long latency = 0;
    reader.TakeValue(serverTime);
    reader.TakeValue(latency);
    reader.Finish();
    return MessageOf(SC_SET_NET_TIME, serverTime, latency);
}

struct KnownMessage {
    const char* Name = nullptr;
    MessageNumber Number{};
    Builder Build = nullptr;
};

/// The messages by the names of their handlers and by their numbers.
std::map<std::string, KnownMessage, std::less<>> MakeDirectory()
{
    std::map<std::string, KnownMessage, std::less<>> directory;
    const auto add = [&](const char* name, MessageNumber number, Builder build) {
        directory[name] = {name, number, build};
        directory[std::to_string(static_cast<int>(number))] = {name, number, build};
    };
    std::apply(
        [&](const auto&... rows) {
            (add(rows.Name, rows.Number, &BuildMessage<std::decay_t<decltype(rows)>>), ...);
        },
        Notifications);
    add("SC_SetNetTime", SC_SET_NET_TIME, &BuildClock);
    return directory;
}

const KnownMessage* FindMessage(const std::string& name)
{
    static const auto directory = MakeDirectory();
    const auto found = directory.find(name);
    return found == directory.end() ? nullptr : &found->second;
}

/// A word in quotes may hold blanks, and is always a name.
struct Word {
    std::string Text;
    bool IsQuoted = false;
};

/// Takes the first word off a line.
Word TakeWord(std::string_view& line)
{
    line.remove_prefix(std::min(line.find_first_not_of(Blanks), line.size()));
    Word word;
    word.IsQuoted = !line.empty() && line.front() == '"';
    if (word.IsQuoted)
        line.remove_prefix(1);
    const std::size_t length =
        word.IsQuoted ? line.find('"') : std::min(line.find_first_of(Blanks), line.size());
    if (length == line.npos)
        throw std::runtime_error("expected \" at the end of the name, found the end of the line");
    word.Text = line.substr(0, length);
    line.remove_prefix(std::min(length + 1, line.size()));
    return word;
}

std::chrono::milliseconds ParseWait(std::string_view line)
{
    constexpr int longest = 3'600'000;
    const NameResolver nobody;
    ValueReader reader(line, nobody, "wait");
    const std::chrono::milliseconds wait(reader.TakeNumber(0, longest));
    reader.Finish();
    return wait;
}

ScenarioStep ParseStep(const std::string& target, std::string_view line)
{
    ScenarioStep step;
    step.Target = target;
    const std::string name = TakeWord(line).Text;
    const KnownMessage* message = FindMessage(name);
    if (message == nullptr)
        throw std::runtime_error("expected a message's handler or number such as SC_Chat or 12002, found " +
                                 (name.empty() ? "the end of the line" : name));
    step.Number = message->Number;
    step.Values = line;
    step.Build([](const std::string&) { return 0UL; });
    return step;
}

/// Takes one line into the scenario; the wait in front of the next message grows with its waits.
void ParseLine(std::string_view line, int number, Scenario& scenario)
{
    const Word first = TakeWord(line);
    if (!first.IsQuoted && (first.Text.empty() || first.Text.front() == '#'))
        return;
    if (!first.IsQuoted && first.Text == "wait") {
        scenario.FinalWait += ParseWait(line);
        return;
    }
    ScenarioStep step = ParseStep(first.Text, line);
    step.Wait = std::exchange(scenario.FinalWait, std::chrono::milliseconds(0));
    step.Line = number;
    scenario.Steps.push_back(std::move(step));
}

} // namespace

CNTPacket ScenarioStep::Build(const NameResolver& resolve) const
{
    const KnownMessage* message = FindMessage(std::to_string(static_cast<int>(Number)));
    ValueReader reader(Values, resolve, message->Name);
    return message->Build(reader);
}

std::chrono::milliseconds Scenario::Length() const
{
    std::chrono::milliseconds length = FinalWait;
    for (const ScenarioStep& step : Steps)
        length += step.Wait;
    return length;
}

std::string Scenario::Place(int line) const
{
    return (Name.empty() ? "line " : Name + ":") + std::to_string(line);
}

Scenario ParseScenario(std::string_view text, const std::string& name)
{
    Scenario scenario;
    scenario.Name = name;
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (text.substr(0, byteOrderMark.size()) == byteOrderMark)
        text.remove_prefix(byteOrderMark.size());
    for (int number = 1; !text.empty(); ++number) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        line = line.substr(0, line.find_last_not_of(Blanks) + 1);
        try {
            ParseLine(line, number, scenario);
        } catch (const std::runtime_error& error) {
            throw std::runtime_error(scenario.Place(number) + ": " + error.what());
        }
    }
    return scenario;
}

} // namespace Kesra
