#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace Kesra
{

/// Number of a connection, counted from 1 in the order of their arrival.
using PeerID = unsigned;

/// What the server has seen since it started.
struct ServerCounters {
    unsigned Accepted = 0;
    unsigned Ended = 0;      ///< connections that are gone, for whatever reason
    unsigned TurnedAway = 0; ///< connections beyond the limit, which were closed at once
    unsigned Malformed = 0;  ///< of these, the ones dropped for a malformed stream
    unsigned Ignored = 0;    ///< packets that were not carried out: unknown number, malformed payload
    unsigned Refused = 0;    ///< requests that were answered with another code than done
    std::uint64_t BytesReceived = 0;
    std::uint64_t BytesSent = 0;
    std::uint64_t PacketsReceived = 0;
    std::map<unsigned short, unsigned> Received; ///< packets by message number

    unsigned ReceivedOf(unsigned short number) const;
};

/// Counts and keeps what happens on the server's thread for others to wait on and look at.
class Recorder
{
public:
    explicit Recorder(std::function<void(const std::string&)> log);

    void CountAccepted();
    void CountTurnedAway();
    void CountEnded(bool malformed);
    void CountIgnored();
    void CountRefused();
    void CountBytesReceived(std::size_t bytes);
    void CountBytesSent(std::size_t bytes);
    void CountReceived(unsigned short number);
    /// Keeps and passes on a line, with the time in front.
    void Log(const std::string& text);

    /// Blocks until the predicate holds; false when `limit` passes first.
    bool WaitFor(const std::function<bool(const ServerCounters&)>& predicate,
                 std::chrono::milliseconds limit);
    ServerCounters Counters() const;
    std::vector<std::string> LogLines() const;

private:
    template <class Change> void Update(Change change);

    const std::function<void(const std::string&)> LogSink;
    mutable std::mutex Mutex;
    std::condition_variable Changed;
    ServerCounters Current;
    std::deque<std::string> Lines;
};

} // namespace Kesra
