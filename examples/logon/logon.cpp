// Logs an account on and prints its avatars.
#include <KesraNTC/KesraNTC.h>

#include <cstdio>
#include <cstdlib>

class Client : public CNTMainClient
{
public:
    ~Client() override { StopReceiving(); } // first of all: the receive thread calls this class
    void ProcessDisconnection() override { std::puts("The connection has ended."); }
};

int main(int argc, char** argv)
{
    if (argc != 5)
        return std::puts("usage: logon ADDRESS PORT ACCOUNT PASSWORD"), 2;

    CNTStub_Quiet stub; // its handlers do nothing; a game overrides what it cares about
    CNTProxy_CLToGS proxy;
    Client client;
    client.Attach(&stub);
    client.Attach(&proxy);
    client.SetServerAddr(argv[1]);
    client.SetServerPort(std::strtoul(argv[2], nullptr, 10));
    if (!client.Startup() || !client.ConnectToServer())
        return std::puts("No server answers there."), 1;

    CString account(argv[3]), password(argv[4]);
    unsigned short value = 0;
    unsigned long verdict = 0; // the server's own result code, 0 when it agrees
    std::vector<TAvatar> avatars;
    std::vector<TPrivData> data;
    const GS_RESULT result = proxy.CS_Logon(account, password, value, avatars, data, verdict);
    if (result != GS_OK)
        std::puts("The server has not answered.");
    else if (verdict != 0)
        std::printf("The server refuses the logon with its code %lu.\n", verdict);
    else
        std::printf("The account is logged on and has these avatars (%zu):\n", avatars.size());
    for (TAvatar& avatar : avatars)
        std::printf("%d: %s\n", avatar.GetAvatarIndex(), static_cast<const char*>(avatar.GetNickname()));

    client.Disconnect();
    client.WaitForReceiveThread(5000);
    return result == GS_OK && verdict == 0 ? 0 : 1;
}
