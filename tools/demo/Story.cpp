// How the story is told: frames, expectations, measurements.
#include "tools/demo/Story.h"

#include "tools/demo/English.h"

#include "server/messages/ResultCodes.h"

#include <algorithm>
#include <cstdio>
#include <thread>

namespace
{

constexpr std::chrono::milliseconds FramePause{10};
constexpr int Patience = 500; // frames

/// What the user of this program can do about a refusal.
std::string WayOut(unsigned long result)
{
    if (result == static_cast<unsigned long>(Kesra::Result::WrongPassword))
        return ".\nGive the account's own password with --password.";
    if (result == static_cast<unsigned long>(Kesra::Result::AccountInUse))
        return ".\nEnd the program that uses it, or name another account with --account.";
    return "";
}

std::string TrafficLine(const Player& player)
{
    const Traffic sent = player.Connection.Sent();
    const Traffic received = player.Connection.Received();
    const auto text = [](const Traffic& traffic) {
        return Words(Count(traffic.Total(), "packet"), " (", traffic.Bytes, " bytes, ",
                     traffic.Packets.size(), " kinds)");
    };
    return "sent " + text(sent) + ", received " + text(received);
}

} // namespace

Story::Story(const StoryOptions& options)
    : Options(options), Mina(Book, "Mina" + options.Suffix), Joon(Book, "Joon" + options.Suffix)
{
}

void Story::Play()
{
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
    else
        Book.Heading("Mina is no game master here: those scenes are left out (--account names one)");
    Travel();
    SayGoodbye();
    Summarize();
}

void Story::Frame()
{
    // The story's time is counted in frames, so that a machine that stutters tells the same story, only
    // later.
    Mina.Frame(FrameTime);
    Joon.Frame(FrameTime);
    std::this_thread::sleep_for(FramePause);
}

void Story::Require(const std::string& otherwise, bool isSo)
{
    if (!isSo)
        throw StoryEnded(otherwise);
}

void Story::Expect(const std::string& what, const std::function<bool()>& condition)
{
    for (int frame = 0; frame < Patience; ++frame) {
        Frame();
        if (condition())
            return;
    }
    std::string refusals;
    for (const Player* player : {&Mina, &Joon})
        if (player->LastRefusal != 0)
            refusals +=
                Words(". The server last refused ", player->Name, " because ", Meaning(player->LastRefusal));
    throw StoryEnded("something that should have happened has not: " + what + refusals);
}

void Story::Await(Player& player, unsigned short number)
{
    Expect(
        Words(player.Name, " receives message ", number, " (docs/protocol.md)"),
        [&] { return player.Take(number); });
}

void Story::Ask(Player& player, const std::string& name,
                const std::function<GS_RESULT(unsigned long&)>& request)
{
    unsigned long result = 0;
    const double begun = Book.Seconds();
    const GS_RESULT reply = request(result);
    const double passed = (Book.Seconds() - begun) * 1000;
    if (reply != GS_OK)
        throw StoryEnded(Words("the program at ", Options.Address, ":", Options.Port, " has not answered ",
                               player.Name, "'s ", name, ". Is a kesra-server listening there?"));
    if (result != 0)
        throw StoryEnded(
            Words("the server refuses ", player.Name, "'s ", name, ": ", Meaning(result), WayOut(result)));
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
