#include "server/Recorder.h"

#include <utility>

namespace Kesra
{
namespace
{

constexpr std::size_t LogLinesKept = 1000;

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

void Recorder::Log(const std::string& line)
{
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
