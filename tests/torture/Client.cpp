#include "tests/torture/Client.h"

#include <cstdio>

namespace Torture
{

void CountingStub::SC_Chat(short&, CFixCharString<200>& text)
{
    unsigned connection = 0;
    unsigned line = 0;
    if (std::sscanf(text, "%u %u", &connection, &line) != 2)
        return Blame(Findings, "a pushed line is \"%.30s\"", static_cast<const char*>(text));
    const bool isNew = connection > Connection;
    const unsigned expected = isNew ? 1 : Heard + 1;
    if (connection < Connection || line != expected)
        Blame(Findings, "push %u of connection %u came behind push %u of connection %u", line, connection,
              Heard.load(), Connection.load());
    Connection = connection;
    Heard = line;
    ++Findings.Pushes;
}

CountingClient::CountingClient(Outcome& outcome) : Stub(outcome)
{
    Attach(&Stub);
    Attach(&Requests);
    Startup();
}

void CountingClient::ProcessDisconnection()
{
    Again wanted = Again::Wanted;
    const bool connects = AtEnd.compare_exchange_strong(wanted, Again::Connecting);
    ++Ended;
    if (!connects)
        return;
    ConnectAgain();
    AtEnd = Again::Done;
}

} // namespace Torture
