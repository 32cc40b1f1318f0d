#pragma once

#include "tests/support/Until.h"

#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <utility>

/// A socket of the test, closed with it.
class TestSocket
{
public:
    explicit TestSocket(SOCKET socket = WSASocketA(AF_INET, SOCK_STREAM, 0, nullptr, 0, WSA_FLAG_OVERLAPPED))
        : Handle(socket)
    {
    }
    TestSocket(TestSocket&& other) noexcept : Handle(std::exchange(other.Handle, INVALID_SOCKET)) {}
    TestSocket& operator=(TestSocket&& other) noexcept
    {
        Close();
        Handle = std::exchange(other.Handle, INVALID_SOCKET);
        return *this;
    }
    ~TestSocket() { Close(); }

    void Close()
    {
        if (Handle != INVALID_SOCKET)
            closesocket(std::exchange(Handle, INVALID_SOCKET));
    }
    operator SOCKET() const { return Handle; }

private:
    SOCKET Handle;
};

/// A listener on a loopback port of the system's choice.
class Listener
{
public:
    Listener()
    {
        Address.sin_family = AF_INET;
        Address.sin_addr.s_addr = inet_addr("127.0.0.1");
        int size = sizeof Address;
        EXPECT_EQ(0, bind(Socket, AddressPointer(), size));
        EXPECT_EQ(0, getsockname(Socket, AddressPointer(), &size));
        EXPECT_EQ(0, listen(Socket, 16));
    }

    int Connect(SOCKET socket) { return connect(socket, AddressPointer(), sizeof Address); }
    TestSocket Accept() { return TestSocket(accept(Socket, nullptr, nullptr)); }
    void Close() { Socket.Close(); }

private:
    sockaddr* AddressPointer() { return reinterpret_cast<sockaddr*>(&Address); }

    TestSocket Socket;
    sockaddr_in Address{};
};

/// Whether an overlapped call was accepted: its event tells how it ended.
inline bool HasBegun(int error)
{
    return error == 0 || error == WSA_IO_PENDING;
}

/// One overlapped operation with its event.
class Operation
{
public:
    explicit Operation(BOOL manualReset = FALSE)
    {
        Block.hEvent = CreateEventA(nullptr, manualReset, FALSE, nullptr);
    }
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;
    ~Operation() { CloseHandle(Block.hEvent); }

    /// 0 when it completed at once, else the error; WSA_IO_PENDING is the usual one.
    int Receive(SOCKET socket, char* data, std::size_t size)
    {
        WSABUF buffer{static_cast<ULONG>(size), data};
        DWORD flags = 0;
        return WSARecv(socket, &buffer, 1, nullptr, &flags, &Block, nullptr) == 0 ? 0 : WSAGetLastError();
    }

    int Send(SOCKET socket, const char* data, std::size_t size)
    {
        WSABUF buffer{static_cast<ULONG>(size), const_cast<char*>(data)};
        return WSASend(socket, &buffer, 1, nullptr, 0, &Block, nullptr) == 0 ? 0 : WSAGetLastError();
    }

    /// The outcome: an error, or 0 with the bytes in `Transferred`.
    int Result(SOCKET socket, BOOL wait = FALSE)
    {
        DWORD flags = 0;
        return WSAGetOverlappedResult(socket, &Block, &Transferred, wait, &flags) ? 0 : WSAGetLastError();
    }

    /// Waits for the event and then takes the outcome, as the receive thread does.
    int Harvest(SOCKET socket)
    {
        EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(Block.hEvent, ::Test::Limit))
            << "the operation has not ended";
        return Result(socket);
    }

    HANDLE Event() const { return Block.hEvent; }
    bool HasEnded() { return HasOverlappedIoCompleted(&Block); }

    DWORD Transferred = 0;

private:
    OVERLAPPED Block{};
};

class SocketTest : public testing::Test
{
protected:
    void Connect()
    {
        ASSERT_EQ(0, Server.Connect(Client));
        Peer.emplace(Server.Accept());
    }

    void PeerSends(const std::string& text)
    {
        ASSERT_EQ(static_cast<int>(text.size()), send(*Peer, text.data(), static_cast<int>(text.size()), 0));
    }

    static void LimitReceiving(SOCKET socket)
    {
        ASSERT_EQ(0, setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO,
                                reinterpret_cast<const char*>(&::Test::Limit), sizeof ::Test::Limit));
    }

    static void ReceiveAll(SOCKET socket, char* data, int size)
    {
        LimitReceiving(socket);
        for (int done = 0; done < size;) {
            const int count = recv(socket, data + done, size - done, 0);
            ASSERT_GT(count, 0) << "waited for the byte behind " << done;
            done += count;
        }
    }

    struct Winsock {
        Winsock()
        {
            WSADATA data;
            EXPECT_EQ(0, WSAStartup(0x0202, &data));
            EXPECT_EQ(0x0202, data.wVersion);
        }
        ~Winsock() { WSACleanup(); }
    } Started;
    Listener Server;
    TestSocket Client;
    std::optional<TestSocket> Peer;
};
