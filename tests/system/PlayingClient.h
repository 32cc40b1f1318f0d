#pragma once

#include "KesraNTC/KesraNTC.h"
#include "server/GameServer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

/// A client of the reference server; whoever derives attaches the handlers and ends with StopReceiving.
class PlayingClient : public CNTMainClient
{
public:
    explicit PlayingClient(const Kesra::GameServer& server)
    {
        Attach(&Requests);
        Startup();
        SetServerAddr("127.0.0.1");
        SetServerPort(server.GetPort());
    }

    void ProcessDisconnection() override {}

    /// Logs on, makes an avatar with that name and enters the session.
    void Enter(const char* name)
    {
        ASSERT_TRUE(ConnectToServer());
        CString account(name);
        CString password("secret");
        CString nickname(name);
        unsigned short value = 0;
        unsigned long result = 99;
        std::vector<TAvatar> avatars;
        std::vector<TPrivData> privData;
        ASSERT_EQ(Requests.CS_Logon(account, password, value, avatars, privData, result), GS_OK);
        ASSERT_EQ(result, 0U);
        if (avatars.empty()) {
            ASSERT_EQ(Requests.CS_CreateAvatar(0, nickname, 1, result), GS_OK);
            ASSERT_EQ(result, 0U);
        }
        ASSERT_EQ(Requests.CS_TryOnSession(0, 1, Items, Skills, result), GS_OK);
        ASSERT_EQ(result, 0U);
        Requests.CS_EnterSession();
    }

    /// Plays frames until something has happened; throws, naming the caller's line, when that takes a minute.
    template <class Condition>
    void PlayUntil(Condition condition, const char* file = __builtin_FILE(), int line = __builtin_LINE())
    {
        const auto limit = std::chrono::steady_clock::now() + std::chrono::minutes(1);
        while (!condition()) {
            if (std::chrono::steady_clock::now() > limit)
                throw std::runtime_error("waited in vain at " + std::string(file) + ":" +
                                         std::to_string(line));
            ProcessQueuedMessageFromServer();
            std::this_thread::yield();
        }
    }

    CNTProxy_CLToGS Requests;
    std::vector<TItem> Items;
    std::vector<TSkill> Skills;
};
