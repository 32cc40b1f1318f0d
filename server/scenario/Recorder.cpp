#include "server/scenario/Recorder.h"

#include <cstdio>
#include <utility>

namespace Kesra
{
namespace
{

constexpr std::size_t LogLinesKept = 1000;

/// The time as 2024-02-29T12:34:56.789Z.
std::string TimeStamp()
{
    using namespace std::chrono;
    const auto now = floor<milliseconds>(system_clock::now());
    const auto day = floor<days>(now);
    const year_month_day date(day);
    const hh_mm_ss time(now - day);
    char text[80];
    std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02d.%03dZ", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()), static_cast<int>(time.subseconds().count()));
    return text;
}

} // namespace

unsigned ServerCounters::ReceivedOf(unsigned short number) const
{
    const auto found = Received.find(number);
    return found == Received.end() ? 0 : found->second;
}

Recorder::Recorder(std::function<void(const std::string&)> log) : LogSink(std::move(log)) {}

template <class Change> void Recorder::Update(Change change)
{
    {
        const std::lock_guard lock(Mutex);
        change();
    }
    Changed.notify_all();
}

void Recorder::CountAccepted()
{
    Update([&] { ++Current.Accepted; });
}

void Recorder::CountTurnedAway()
{
    Update([&] { ++Current.TurnedAway; });
}

void Recorder::CountEnded(bool malformed)
{
    Update([&] {
        ++Current.Ended;
        Current.Malformed += malformed ? 1 : 0;
    });
}

void Recorder::CountIgnored()
{
    Update([&] { ++Current.Ignored; });
}

void Recorder::CountRefused()
{
    Update([&] { ++Current.Refused; });
}

void Recorder::CountBytesReceived(std::size_t bytes)
{
    Update([&] { Current.BytesReceived += bytes; });
}

void Recorder::CountBytesSent(std::size_t bytes)
{
    Update([&] { Current.BytesSent += bytes; });
}

void Recorder::CountReceived(unsigned short number)
{
    Update([&] {
        ++Current.PacketsReceived;
        ++Current.Received[number];
    });
}

void Recorder::Log(const std::string& text)
{
    const std::string line = TimeStamp() + ' ' + text;
    Update([&] {
        if (Lines.size() == LogLinesKept)
            Lines.pop_front();
        Lines.push_back(line);
    });
    if (LogSink)
        LogSink(line);
}

bool Recorder::WaitFor(const std::function<bool(const ServerCounters&)>& predicate,
                       std::chrono::milliseconds limit)
{
    std::unique_lock lock(Mutex);
    return Changed.wait_for(lock, limit, [&] { return predicate(Current); });
}

ServerCounters Recorder::Counters() const
{
    const std::lock_guard lock(Mutex);
    return Current;
}

std::vector<std::string> Recorder::LogLines() const
{
    const std::lock_guard lock(Mutex);
    return {Lines.begin(), Lines.end()};
}

} // namespace Kesra
