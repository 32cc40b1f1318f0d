// A client that comes back: it logs on, loses its connection (it cuts it itself, as a broken line would) and
// logs on again. Stop and start the server meanwhile, and it comes back, too.
#include <KesraNTC/KesraNTC.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

namespace
{

using Milliseconds = std::chrono::milliseconds;
constexpr int Attempts = 8;
constexpr Milliseconds FirstPause{250}, LongestPause{4000};

class Client : public CNTMainClient
{
public:
    ~Client() override { StopReceiving(); } // first of all: the receive thread calls this class
    // On the receive thread: it only says so, the game's thread does the rest.
    void ProcessDisconnection() override { Lost = true; }

    std::atomic<bool> Lost{false};
};

bool LogOn(Client& client, CNTProxy_CLToGS& proxy, const char* name, const char* secret)
{
    if (!client.ConnectToServer())
        return std::puts("no server answers"), false;
    CString account(name), password(secret);
    unsigned short value = 0;
    unsigned long verdict = 0;
    std::vector<TAvatar> avatars;
    std::vector<TPrivData> data;
    if (proxy.CS_Logon(account, password, value, avatars, data, verdict) != GS_OK)
        return std::puts("the server has not answered"), false;
    if (verdict != 0) // perhaps it has not noticed yet that the old connection is gone
        return std::printf("the server refuses with code %lu\n", verdict), false;
    return std::printf("%s is logged on\n", name), true;
}

// Tries again and again, with longer and longer pauses, so that a server that comes back is not run over.
bool ComeBack(Client& client, CNTProxy_CLToGS& proxy, const char* name, const char* secret)
{
    Milliseconds pause = FirstPause;
    for (int attempt = 1; attempt <= Attempts; ++attempt) {
        client.Disconnect();
        client.WaitForReceiveThread(5000); // the end of the old connection has been told when this returns
        client.Lost = false;
        std::this_thread::sleep_for(pause);
        pause = std::min(pause * 2, LongestPause);
        std::printf("attempt %d: ", attempt);
        if (LogOn(client, proxy, name, secret))
            return true;
    }
    return std::puts("gives up"), false;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 5)
        return std::puts("usage: reconnect ADDRESS PORT ACCOUNT PASSWORD"), 2;

    CNTStub_Quiet stub;
    CNTProxy_CLToGS proxy;
    Client client;
    client.Attach(&stub);
    client.Attach(&proxy);
    client.SetServerAddr(argv[1]);
    client.SetServerPort(std::strtoul(argv[2], nullptr, 10));
    if (!client.Startup() || !LogOn(client, proxy, argv[3], argv[4]))
        return 1;

    // The frames of a game, for three seconds.
    bool wasLost = false;
    for (int frame = 0; frame < 90; ++frame) {
        if (frame == 30) {
            std::puts("cuts its connection");
            client.Disconnect();
        }
        if (client.Lost) {
            wasLost = true;
            std::puts("has lost its connection");
            if (!ComeBack(client, proxy, argv[3], argv[4]))
                return 1;
        }
        client.ProcessQueuedMessageFromServer();
        client.UpdateFrame();
        std::this_thread::sleep_for(Milliseconds(33));
    }
    std::puts(wasLost ? "It has come back." : "It has never lost its connection.");
    return wasLost ? 0 : 1;
}
