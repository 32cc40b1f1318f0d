#pragma once

#include "tests/torture/Client.h"

#include <functional>
#include <string>

namespace Torture
{

/// How much has to go well.
enum class Demand {
    Exact,   ///< everything, as if nothing had failed
    Survival ///< what is promised whatever fails
};

/// Begins and ends what makes the trouble, and tells whether there is none to come anyway.
struct Switch {
    std::function<void()> Begin;
    std::function<void()> End;
    std::function<bool()> IsSpent;
};

/// What a game does with a server from the first connection to the last, and what must come of it.
class Session
{
public:
    Session(unsigned short port, Outcome& outcome, const std::string& name);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// A client that goes while it is connected, then one that plays three connections: the server closes the
    /// first and resets the second, at whose end the receive thread connects again, and the client ends the
    /// third. Behind the last fault it has no more trouble, and a new client neither.
    void Play(Demand demand, bool isMemoryShort, const Switch& faults);

private:
    enum class Farewell { Close, Reset, Disconnect };

    void Leave();
    void PlayOn(CountingClient& client, const Switch& faults);
    void Visit(CountingClient& client, const char* host, Farewell farewell);
    void Talk(CountingClient& client);
    void End(CountingClient& client, Farewell farewell);
    void AwaitEnd(CountingClient& client, int ends);
    void ConnectAgain(CountingClient& client);
    void Finish(CountingClient& client);

    bool Connect(CountingClient& client, const char* host);
    void LogOn(CountingClient& client);
    void Tell(CountingClient& client, const char* order);
    void Ask(CountingClient& client, short pushes);
    void AwaitPushes(CountingClient& client);
    void KeepFile();
    void KeepProperties();

    bool Until(CountingClient& client, const std::function<bool()>& condition, bool isPromised);
    template <class Step> void Guarded(const char* name, bool mayThrow, Step step);
    void Stage(const char* stage);
    void Require(bool holds, const char* what);

    const unsigned short Port;
    Outcome& Findings;
    CString Account;
    CString Password{"secret"};
    Demand Wanted = Demand::Exact;
    bool IsMemoryShort = false;
    unsigned Told = 0;   ///< chat lines on this connection
    unsigned Pushed = 0; ///< lines that the server has been asked for on this connection
    std::atomic<unsigned> LogLines{0};
};

} // namespace Torture
