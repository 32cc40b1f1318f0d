// How long a pushed message takes on a connection that is idle, the whole process on one core, beside a
// thread that is blocked in recv; and what such a message costs with many connections, beside a thread for
// each.
//
//     DelayBench CONNECTIONS

#include "bench/Figures.h"
#include "bench/GameClient.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace
{

constexpr int Rounds = 20;
constexpr int MessagesPerRound = 200;

using Clock = std::chrono::steady_clock;

/// When the last message was taken in; the sender waits for the count.
struct Arrival {
    std::atomic<Clock::rep> Time{0};
    std::atomic<unsigned> Count{0};

    void Note()
    {
        Time.store(Clock::now().time_since_epoch().count(), std::memory_order_relaxed);
        Count.fetch_add(1, std::memory_order_release);
        Count.notify_one();
    }
};

class NotingStub : public CNTStub_Quiet
{
public:
    explicit NotingStub(Arrival& arrival) : Last(arrival) {}
    void SC_ObjectMove(unsigned long&, CDRVector&, short&, long&) override { Last.Note(); }

private:
    Arrival& Last;
};

struct LibraryEnd {
    LibraryEnd(const Bench::Listener& listener, Arrival& arrival) : Stub(arrival), Client(listener, true)
    {
        Client.Attach(&Stub);
    }
    int Peer() const { return Client.Peer; }

    NotingStub Stub;
    Bench::GameClient Client;
};

struct BareEnd {
    BareEnd(const Bench::Listener& listener, Arrival& arrival)
        : Descriptor(listener.Connect()), Sender(listener.Accept()), Receiving([this, &arrival] {
              char packet[30];
              while (Bench::RecvAll(Descriptor, packet, sizeof packet))
                  arrival.Note();
          })
    {
    }
    ~BareEnd()
    {
        Bench::CloseDescriptor(Sender);
        Receiving.join();
        Bench::CloseDescriptor(Descriptor);
    }
    int Peer() const { return Sender; }

    const int Descriptor;
    const int Sender;
    std::thread Receiving;
};

/// Many ends of one kind, and what messages to them took.
template <class End> class Ends
{
public:
    Ends(const Bench::Listener& listener, int count)
    {
        for (int i = 0; i < count; ++i)
            All.push_back(std::make_unique<End>(listener, Last));
    }

    void Measure()
    {
        const CNTPacket packet = Bench::MovementMessage();
        const double cpu = Bench::ProcessSeconds() - Bench::ThreadSeconds();
        for (int i = 0; i < MessagesPerRound; ++i) {
            Next = (Next + 617) % All.size();
            const unsigned before = Last.Count;
            const auto start = Clock::now().time_since_epoch().count();
            Bench::SendAll(All[Next]->Peer(), packet.GetBuf(), packet.GetBufSize());
            Last.Count.wait(before);
            Delays.push_back(static_cast<double>(Last.Time - start));
        }
        const double used = Bench::ProcessSeconds() - Bench::ThreadSeconds() - cpu;
        Cpu.push_back(used * 1e9 / MessagesPerRound);
    }

    void Report(const std::string& name)
    {
        Bench::Figure(name + ".cpu_ns", Bench::Median(Cpu));
        Bench::Figure(name + ".delay_ns", Bench::Median(Delays));
        Bench::Figure(name + ".delay_p90_ns", Bench::Percentile(Delays, 0.9));
        Bench::Figure(name + ".delay_p99_ns", Bench::Percentile(Delays, 0.99));
    }

private:
    Arrival Last;
    std::vector<std::unique_ptr<End>> All;
    std::size_t Next = 0;
    std::vector<double> Cpu;
    std::vector<double> Delays;
};

} // namespace

int main(int argc, char** argv)
{
    const int connections = argc > 1 ? std::atoi(argv[1]) : 1;
    Bench::AllowManyDescriptors();
    Bench::PinToOneCore();
    const Bench::Listener listener;
    Ends<BareEnd> bare(listener, connections);
    Ends<LibraryEnd> library(listener, connections);
    for (int round = 0; round < Rounds; ++round) {
        bare.Measure();
        library.Measure();
    }
    const std::string prefix = "push." + std::to_string(connections);
    bare.Report(prefix + ".bare");
    library.Report(prefix + ".library");
    return 0;
}
