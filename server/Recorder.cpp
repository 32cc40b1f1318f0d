#include "server/Recorder.h"

#include <utility>

namespace Kesra
{
namespace
{

constexpr std::size_t LogLinesKept = 1000;

unsigned CountOf(const std::map<unsigned short, unsigned>& counts, unsigned short number)
{
    const auto found = counts.find(number);
    return found == counts.end() ? 0 : found->second;
}

} // namespace

unsigned ServerCounters::ReceivedOf(unsigned short number) const
{
    return CountOf(Received, number);
}

unsigned ServerCounters::SentOf(unsigned short number) const
{
    return CountOf(Sent, number);
}

Recorder::Recorder(std::size_t keepReceived, std::function<void(const std::string&)> log)
    : KeepLimit(keepReceived), LogSink(std::move(log))
{
}

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

void Recorder::CountSent(unsigned short number)
{
    Update([&] { ++Current.Sent[number]; });
}

void Recorder::KeepReceived(PeerID peer, unsigned short number, const unsigned char* bytes, std::size_t size)
{
    Update([&] {
        ++Current.PacketsReceived;
        ++Current.Received[number];
        if (KeepLimit == 0)
            return;
        if (Kept.size() == KeepLimit)
            Kept.pop_front();
        Kept.push_back({peer, number, {bytes, bytes + size}});
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

std::vector<ReceivedPacket> Recorder::Received() const
{
    const std::lock_guard lock(Mutex);
    return {Kept.begin(), Kept.end()};
}

std::vector<std::string> Recorder::LogLines() const
{
    const std::lock_guard lock(Mutex);
    return {Lines.begin(), Lines.end()};
}

} // namespace Kesra
