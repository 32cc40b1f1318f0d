// How the story is told: frames, expectations, measurements.
#include "tools/demo/Story.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <stdexcept>
#include <thread>

namespace
{

constexpr std::chrono::milliseconds FrameTime{10};
constexpr double Patience = 5;

/// Something expected did not happen.
class Disappointment : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

std::string TrafficLine(const Player& player)
{
    const Traffic sent = player.Connection.Sent();
    const Traffic received = player.Connection.Received();
    return Words("sent ", sent.Total(), " packets (", sent.Bytes, " bytes, ", sent.Packets.size(),
                 " kinds), received ", received.Total(), " packets (", received.Bytes, " bytes, ",
                 received.Packets.size(), " kinds)");
}

} // namespace

Story::Story(const StoryOptions& options)
    : Options(options), Mina(Book, "Mina" + options.Suffix), Joon(Book, "Joon" + options.Suffix)
{
}

bool Story::Play()
{
    try {
        LogOn();
        Talk();
        WalkAround();
        HandleItems();
        HandleSkills();
        GrowStronger();
        MakeParty();
        Trade();
        Fight();
        if (Options.Master)
            CommandAsMaster();
        Travel();
        SayGoodbye();
        Summarize();
        return true;
    } catch (const Disappointment& missing) {
        Book.Line("", Words("MISSING: ", missing.what()));
        return false;
    }
}

void Story::Frame()
{
    const double now = Book.Seconds();
    const auto seconds = static_cast<float>(now - LastFrame);
    LastFrame = now;
    Mina.Frame(seconds);
    Joon.Frame(seconds);
    std::this_thread::sleep_for(FrameTime);
}

void Story::Require(const std::string& what, bool isSo)
{
    if (!isSo)
        throw Disappointment(what);
}

void Story::Expect(const std::string& what, const std::function<bool()>& condition)
{
    const double until = Book.Seconds() + Patience;
    do {
        Frame();
        if (condition())
            return;
    } while (Book.Seconds() < until);
    Require(what, false);
}

void Story::Await(Player& player, unsigned short number)
{
    Expect(
        Words(player.Name, " receives message ", number), [&] { return player.Take(number); });
}

void Story::Ask(Player& player, const std::string& name,
                const std::function<GS_RESULT(unsigned long&)>& request)
{
    unsigned long result = 0;
    const double begun = Book.Seconds();
    const GS_RESULT reply = request(result);
    const double passed = (Book.Seconds() - begun) * 1000;
    if (reply != GS_OK || result != 0)
        throw Disappointment(Words(name, " answers ", reply, " with the result ", result));
    RoundTrips.push_back(passed);
    char milliseconds[32];
    std::snprintf(milliseconds, sizeof milliseconds, "%.2f", passed);
    player.Tell(Words(name, " is answered after ", milliseconds, " ms"));
}

void Story::Summarize()
{
    Book.Heading("In the end");
    Mina.Tell(TrafficLine(Mina));
    Joon.Tell(TrafficLine(Joon));
    std::map<unsigned short, unsigned> requests = Mina.Connection.Sent().Packets;
    requests.merge(Joon.Connection.Sent().Packets);
    std::map<unsigned short, unsigned> messages = Mina.Connection.Received().Packets;
    messages.merge(Joon.Connection.Received().Packets);
    std::sort(RoundTrips.begin(), RoundTrips.end());
    char line[160];
    std::snprintf(line, sizeof line, "%zu kinds of requests, %zu kinds of replies and messages",
                  requests.size(), messages.size());
    Book.Line("", line);
    std::snprintf(line, sizeof line,
                  "%zu waiting requests, round trip %.2f ms at best, %.2f in the middle, %.2f at worst",
                  RoundTrips.size(), RoundTrips.front(), RoundTrips[RoundTrips.size() / 2],
                  RoundTrips.back());
    Book.Line("", line);
}
