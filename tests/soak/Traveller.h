#pragma once

#include "tests/torture/Client.h"

#include <functional>
#include <string>

namespace Soak
{

using Torture::CountingClient;
using Torture::Outcome;

/// A client that goes from server to server. What does not come about throws std::runtime_error, with what it
/// waited for.
class Traveller : public CountingClient
{
public:
    explicit Traveller(Outcome& outcome);
    ~Traveller() override { StopReceiving(); }

    void ConnectTo(unsigned short port);
    /// Logs on, makes an avatar with that name if there is none, and enters the play session.
    void Enter(const std::string& name);
    /// Every request made so far has been carried out, and what was pushed meanwhile is here.
    void Settle();
    /// Says line so many of a sitting.
    void Say(unsigned sitting, unsigned line);
    /// Plays frames until it holds.
    void Until(const char* what, const std::function<bool()>& condition);
    /// The connection has ended, or ends now.
    void Leave();
    void AwaitEnd();

    std::string Name;
};

void Require(bool holds, const std::string& what);

} // namespace Soak
