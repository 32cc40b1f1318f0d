#pragma once

#include "KesraNTC/KesraNTC.h"
#include "KesraNTC/rpc/CNTStub_Quiet.h"
#include "tests/torture/Outcome.h"

#include <atomic>
#include <functional>

namespace Torture
{

/// Checks the numbers of pushed lines: per connection from 1 without gap or repeat.
class CountingStub : public CNTStub_Quiet
{
public:
    explicit CountingStub(Outcome& outcome) : Findings(outcome) {}

    void SC_Chat(short& speaker, CFixCharString<200>& text) override;

    /// The line heard last, and the connection as the server numbers it.
    std::atomic<unsigned> Heard{0};
    std::atomic<unsigned> Connection{0};

private:
    Outcome& Findings;
};

/// A game's client that keeps account of what it is told.
class CountingClient : public CNTMainClient
{
public:
    enum class Again { No, Wanted, Connecting, Done };

    explicit CountingClient(Outcome& outcome);
    ~CountingClient() override { StopReceiving(); }

    void ProcessDisconnection() override;

    bool IsAlive() const { return Begun > Ended; }

    CountingStub Stub;
    CNTProxy_CLToGS Requests;
    std::function<void()> ConnectAgain; ///< on the receive thread, at the end that comes while Wanted
    std::atomic<Again> AtEnd{Again::No};
    std::atomic<int> Begun{0}; ///< connections of which ConnectToServer said true
    std::atomic<int> Ended{0}; ///< calls of ProcessDisconnection
};

} // namespace Torture
