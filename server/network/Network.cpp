#include "server/network/Network.h"

#include "server/network/Connection.h"

#include <algorithm>
#include <future>
#include <map>
#include <stdexcept>
#include <thread>
#include <utility>

namespace Kesra
{

class Network::Implementation final : public ConnectionOwner
{
public:
    Implementation(const asio::ip::tcp::endpoint& endpoint, const ServerLimits& limits, NetworkOwner& owner,
                   Recorder& recorder)
        : Owner(owner), Record(recorder), Share{*this, recorder, limits}, Acceptor(Context, endpoint)
    {
    }

    void Accept();
    template <class Action> void ForEach(PeerID peer, Action action);

    void OnPacket(Connection& connection, const unsigned char* bytes, std::size_t size) override
    {
        Owner.OnPacket(connection.ID(), bytes, size);
    }
    void OnEnd(Connection& connection) override
    {
        Owner.OnEnded(connection.ID());
        Connections.erase(connection.ID());
    }
    void OnOverload() override;

    NetworkOwner& Owner;
    Recorder& Record;
    ConnectionShare Share; // connections die with the context
    asio::io_context Context{1};
    asio::ip::tcp::acceptor Acceptor;
    Faults NewFaults;
    PeerID LastID = Everyone;
    std::map<PeerID, std::shared_ptr<Connection>> Connections;
    std::thread Thread;

private:
    void Take(asio::ip::tcp::socket socket);
    void TurnAway();

    unsigned TurnedAway = 0; ///< since the last connection that was accepted
};

void Network::Implementation::Accept()
{
    Acceptor.async_accept([this](asio::error_code error, asio::ip::tcp::socket socket) {
        if (error == asio::error::operation_aborted)
            return;
        if (!error) {
            Take(std::move(socket));
            Accept();
            return;
        }
        // Out of descriptors, most likely: others may end meanwhile.
        Record.Log("accept: " + error.message());
        auto timer = std::make_shared<asio::steady_timer>(Context, std::chrono::milliseconds(100));
        timer->async_wait([this, timer](asio::error_code) { Accept(); });
    });
}

void Network::Implementation::Take(asio::ip::tcp::socket socket)
{
    if (Share.Open >= Share.Limits.Connections) {
        TurnAway();
        return;
    }
    if (const unsigned count = std::exchange(TurnedAway, 0))
        Record.Log(std::to_string(count) + " connections were turned away");
    const PeerID id = ++LastID;
    auto connection = std::make_shared<Connection>(std::move(socket), id, NewFaults, Share);
    Connections.emplace(id, connection);
    Owner.OnAccepted(id, *connection);
    Record.CountAccepted();
    connection->Start();
}

/// The socket closes when it goes out of use; a flood gets one line.
void Network::Implementation::TurnAway()
{
    if (++TurnedAway == 1)
        Record.Log("all " + std::to_string(Share.Limits.Connections) +
                   " connections are in use, more are turned away");
    Record.CountTurnedAway();
}

/// Who reads slowest goes first, so that nobody suffers for another.
void Network::Implementation::OnOverload()
{
    const auto less = [](const auto& one, const auto& other) {
        return one.second->Backlog() < other.second->Backlog();
    };
    while (Share.Queued > Share.Limits.QueuedBytes && !Connections.empty()) {
        Connection& slowest = *std::max_element(Connections.begin(), Connections.end(), less)->second;
        if (slowest.Backlog() == 0)
            return;
        slowest.Close(std::to_string(Share.Queued) + " bytes wait for all peers together, more than the " +
                      std::to_string(Share.Limits.QueuedBytes) + " allowed, and most of them for this one");
    }
}

template <class Action> void Network::Implementation::ForEach(PeerID peer, Action action)
{
    for (const auto& [id, connection] : Connections)
        if (peer == Everyone || peer == id)
            action(*connection);
}

Network::Network(const std::string& address, unsigned short port, const ServerLimits& limits,
                 NetworkOwner& owner, Recorder& recorder)
{
    const std::string place = address + ":" + std::to_string(port);
    asio::error_code error;
    const auto host = asio::ip::make_address_v4(address, error);
    if (error)
        throw std::runtime_error("cannot listen on " + place + ": " + address +
                                 " is no IPv4 address such as 127.0.0.1 (this machine alone) or 0.0.0.0 "
                                 "(every network it is in)");
    try {
        Inner =
            std::make_unique<Implementation>(asio::ip::tcp::endpoint(host, port), limits, owner, recorder);
    } catch (const asio::system_error& failure) {
        throw std::runtime_error("cannot listen on " + place + ": " + failure.code().message() +
                                 "; it takes an address of this machine and a port that is free, port 0 for "
                                 "any");
    }
}

Network::~Network()
{
    Stop();
}

void Network::Stop()
{
    Inner->Context.stop();
    if (Inner->Thread.joinable())
        Inner->Thread.join();
}

unsigned short Network::Port() const
{
    return Inner->Acceptor.local_endpoint().port();
}

void Network::Start()
{
    Inner->Accept();
    Inner->Thread = std::thread([this] { Inner->Context.run(); });
}

void Network::Post(std::function<void()> work)
{
    asio::post(Inner->Context, std::move(work));
}

void Network::After(std::chrono::milliseconds delay, std::function<void()> work)
{
    auto timer = std::make_shared<asio::steady_timer>(Inner->Context, delay);
    timer->async_wait([timer, work = std::move(work)](asio::error_code) { work(); });
}

void Network::Call(const std::function<void()>& work)
{
    std::promise<void> done;
    Post([&] {
        work();
        done.set_value();
    });
    done.get_future().wait();
}

void Network::SetFaults(PeerID peer, const Faults& faults)
{
    if (peer == Everyone)
        Inner->NewFaults = faults;
    Inner->ForEach(peer, [&](Connection& connection) { connection.SetFaults(faults); });
}

void Network::ReleaseReplies(PeerID peer)
{
    Inner->ForEach(
        peer, [](Connection& connection) { connection.ReleaseReplies(); });
}

void Network::Send(PeerID peer, const std::vector<unsigned char>& packet)
{
    Inner->ForEach(
        peer, [&](Connection& connection) { connection.Send(packet.data(), packet.size()); });
}

void Network::SendBytes(PeerID peer, const std::vector<unsigned char>& bytes)
{
    Inner->ForEach(
        peer, [&](Connection& connection) { connection.SendBytes(bytes); });
}

void Network::Close(PeerID peer)
{
    Inner->ForEach(
        peer, [](Connection& connection) { connection.Close("closed on demand"); });
}

void Network::Reset(PeerID peer)
{
    Inner->ForEach(
        peer, [](Connection& connection) { connection.Reset(); });
}

} // namespace Kesra
