#include "server/Network.h"

#include "server/Connection.h"

#include <future>
#include <map>
#include <stdexcept>
#include <thread>

namespace Kesra
{

class Network::Implementation final : public ConnectionOwner
{
public:
    Implementation(const std::string& address, unsigned short port, NetworkOwner& owner, Recorder& recorder)
        : Owner(owner),
          Record(recorder),
          Acceptor(Context, asio::ip::tcp::endpoint(asio::ip::make_address(address), port))
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

    NetworkOwner& Owner;
    Recorder& Record;
    asio::io_context Context{1};
    asio::ip::tcp::acceptor Acceptor;
    Faults NewFaults;
    PeerID LastID = Everyone;
    std::map<PeerID, std::shared_ptr<Connection>> Connections;
    std::thread Thread;

private:
    void Take(asio::ip::tcp::socket socket);
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
    const PeerID id = ++LastID;
    auto connection = std::make_shared<Connection>(std::move(socket), id, NewFaults, *this, Record);
    Connections.emplace(id, connection);
    Owner.OnAccepted(id, *connection);
    Record.CountAccepted();
    connection->Start();
}

template <class Action> void Network::Implementation::ForEach(PeerID peer, Action action)
{
    for (const auto& [id, connection] : Connections)
        if (peer == Everyone || peer == id)
            action(*connection);
}

Network::Network(const std::string& address, unsigned short port, NetworkOwner& owner, Recorder& recorder)
{
    try {
        Inner = std::make_unique<Implementation>(address, port, owner, recorder);
    } catch (const asio::system_error& error) {
        throw std::runtime_error("cannot listen on " + address + ":" + std::to_string(port) + ": " +
                                 error.code().message());
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
