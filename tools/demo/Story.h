#pragma once

#include "tools/demo/Player.h"

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

/// Something that had to happen did not; says what, and the way out where there is one.
class StoryEnded : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

struct StoryOptions {
    std::string Address;
    unsigned short Port = 0;
    /// Mina's account; a game master's lets her play the last scenes.
    std::string MasterAccount;
    std::string MasterPassword;
    /// Whether the account is known to be a game master's: if not, those scenes are left out.
    bool Master = true;
    /// Appended to the names, so that they are new to a server that knows others.
    std::string Suffix;
};

/// Two players, Mina and Joon, and what they do together. Every step waits for what must follow from it; the
/// first thing that does not happen ends the story.
class Story
{
public:
    explicit Story(const StoryOptions& options);

    /// Throws StoryEnded when something does not happen.
    void Play();

private:
    // The scenes, in order.
    void LogOn();
    void Talk();
    void WalkAround();
    void Trade();
    void HandleItems();
    void HandleSkills();
    void GrowStronger();
    void MakeParty();
    void Fight();
    void CommandAsMaster();
    void Travel();
    void SayGoodbye();

    /// Both walk for so many frames and show where they are, and where the other sees them.
    void WalkOn(int frames);
    void LogOn(Player& player, const std::string& account, const std::string& password);
    void Enter(Player& player);
    short IndexOf(Player& player, long kind);
    unsigned long NewestOnGround(Player& player);
    /// Ends the story with these words when something is not so.
    static void Require(const std::string& otherwise, bool isSo);
    /// Frames pass until the condition holds; the story ends when it does not in time.
    void Expect(const std::string& what, const std::function<bool()>& condition);
    /// Frames pass until the player has received one more message of that number.
    void Await(Player& player, unsigned short number);
    /// Measures a waiting request, and ends the story when it fails.
    void Ask(Player& player, const std::string& name,
             const std::function<GS_RESULT(unsigned long&)>& request);
    void Frame();
    void Summarize();

    /// Seconds of the story's own time, the step that everybody moves by.
    static constexpr float FrameTime = 0.01F;

    const StoryOptions Options;
    Narrator Book;
    Player Mina;
    Player Joon;
    std::vector<double> RoundTrips; ///< milliseconds, of the waiting requests
};
