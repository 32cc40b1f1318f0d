// Two clients trade on a running kesra-server, step by step: the seller asks, the buyer agrees, both make an
// offer and sign. Every line says who sees what.
#include "../Utf8.h"

#include <KesraNTC/KesraNTC.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

namespace
{

constexpr short Agreed = 1; // of CS_ResponseBarter
constexpr short Signed = 1; // of 50004; everything else there ends the trade
constexpr long Price = 20;  // gold

class Client : public CNTMainClient
{
public:
    ~Client() override { StopReceiving(); } // first of all: the receive thread calls this class
    void ProcessDisconnection() override {}
};

// One side of the trade. Handlers run inside Frame; while a request waits for its reply they run on the
// receive thread, but nothing of this arrives before the session has been entered.
class Trader : public CNTStub_Quiet
{
public:
    explicit Trader(const char* name) : Name(name) {}

    bool Enter(const char* address, const char* port)
    {
        Connection.Attach(this);
        Connection.Attach(&Proxy);
        Connection.SetServerAddr(address);
        Connection.SetServerPort(std::strtoul(port, nullptr, 10));
        if (!Connection.Startup() || !Connection.ConnectToServer())
            return Tell("finds no server there; start one: kesra-server --listen 127.0.0.1:7001"), false;
        CString account(Name.c_str()), password("fair price");
        unsigned short value = 0;
        unsigned long verdict = 0;
        std::vector<TAvatar> avatars;
        std::vector<TPrivData> data;
        std::vector<TSkill> skills;
        const auto isDone = [&](const char* what, GS_RESULT result) {
            if (result != GS_OK || verdict != 0)
                Tell(std::string(what) + " is refused with code " + std::to_string(verdict));
            return result == GS_OK && verdict == 0;
        };
        return isDone("the logon", Proxy.CS_Logon(account, password, value, avatars, data, verdict)) &&
               (!avatars.empty() || isDone("the avatar", Proxy.CS_CreateAvatar(0, account, 1, verdict))) &&
               isDone("the session", Proxy.CS_TryOnSession(0, 1, Items, skills, verdict)) &&
               Proxy.CS_EnterSession() == GS_OK;
    }
    void Frame()
    {
        Connection.ProcessQueuedMessageFromServer();
        Connection.UpdateFrame();
    }
    void Tell(const std::string& what) const
    {
        std::printf("%s: %s\n", Utf8(Name.c_str()).c_str(), what.c_str());
    }

    // What this side is told.
    void SC_Event29001(long& id) override
    {
        ID = static_cast<unsigned long>(id);
        IsIn = true;
    }
    void SC_Barter50003(long& who) override
    {
        Tell("is asked to trade by the avatar with object ID " + std::to_string(who));
        IsAsked = true;
    }
    void SC_Barter50002(long&, short& answer) override
    {
        HasAnswer = answer == Agreed;
        Tell(HasAnswer ? "learns that the other agrees" : "learns that the other does not want to");
    }
    void SC_Dealing(unsigned long&, std::vector<TItem>& items, std::vector<TSkill>&, long& gold) override
    {
        Tell("is offered " + Goods(items, gold));
        HasOffer = true;
    }
    void SC_Barter50004(long&, short& state) override
    {
        IsSigned = state == Signed;
        IsOver = !IsSigned;
        Tell(IsSigned ? "learns that the other has signed" : "learns that nothing comes of the trade");
    }
    void SC_Barter50005(unsigned long&, std::vector<TItem>& items, std::vector<TSkill>&, long& gold) override
    {
        Tell("has received " + Goods(items, gold));
        IsDone = true;
    }
    void SC_Event16010(short& code) override
    {
        Tell("is refused with code " + std::to_string(code));
        IsOver = true;
    }

    static std::string Goods(const std::vector<TItem>& items, long gold)
    {
        std::string goods;
        for (const TItem& item : items)
            goods +=
                std::to_string(item.GetItemCount()) + " of item " + std::to_string(item.GetItemID()) + ", ";
        return goods + std::to_string(gold) + " gold";
    }

    const std::string Name;
    unsigned long ID = 0; // of the own avatar
    std::vector<TItem> Items;
    bool IsIn = false;
    bool IsAsked = false;
    bool HasAnswer = false;
    bool HasOffer = false;
    bool IsSigned = false;
    bool IsDone = false;
    bool IsOver = false;
    CNTProxy_CLToGS Proxy;
    Client Connection;
};

// Frames of both until one of them has been told something, for five seconds at most.
bool Await(Trader& one, Trader& other, const bool& told)
{
    for (int frame = 0; frame < 500 && !one.IsOver && !other.IsOver; ++frame) {
        one.Frame();
        other.Frame();
        if (told)
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

bool Trade(Trader& seller, Trader& buyer)
{
    if (seller.Items.empty())
        return seller.Tell("has nothing left to sell; choose another name"), false;
    std::vector<TItem> goods{seller.Items.back()}, noGoods;
    std::vector<TSkill> noSkills;
    goods.front().SetItemCount(1);

    seller.Tell("asks to trade");
    seller.Proxy.CS_RequestBarter(buyer.ID);
    if (!Await(seller, buyer, buyer.IsAsked))
        return false;
    buyer.Tell("agrees");
    buyer.Proxy.CS_ResponseBarter(seller.ID, Agreed);
    if (!Await(seller, buyer, seller.HasAnswer))
        return false;

    seller.Tell("offers " + Trader::Goods(goods, 0));
    seller.Proxy.CS_Dealing(buyer.ID, goods, noSkills, 0);
    if (!Await(seller, buyer, buyer.HasOffer))
        return false;
    buyer.Tell("offers " + Trader::Goods(noGoods, Price));
    buyer.Proxy.CS_Dealing(seller.ID, noGoods, noSkills, Price);
    if (!Await(seller, buyer, seller.HasOffer))
        return false;

    // A new offer takes both signatures back, so nobody signs what the other has not seen.
    seller.Tell("signs");
    seller.Proxy.CS_DealSign(buyer.ID);
    if (!Await(seller, buyer, buyer.IsSigned))
        return false;
    buyer.Tell("signs");
    buyer.Proxy.CS_DealSign(seller.ID);
    return Await(seller, buyer, seller.IsDone) && Await(seller, buyer, buyer.IsDone);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 5)
        return std::puts("usage: trade ADDRESS PORT SELLER BUYER (two names in Latin letters)"), 2;
    Trader seller(argv[3]), buyer(argv[4]);
    const bool complete = seller.Enter(argv[1], argv[2]) && buyer.Enter(argv[1], argv[2]) &&
                          Await(seller, buyer, seller.IsIn) && Await(seller, buyer, buyer.IsIn) &&
                          Trade(seller, buyer);
    std::puts(complete ? "The trade is done." : "There was no trade.");
    return complete ? 0 : 1;
}
