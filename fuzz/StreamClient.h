#pragma once

#include "tests/conformance/Fields.h"
#include "tests/conformance/WatchingStub.h"

#include "KesraNTC/KesraNTC.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <span>

namespace Kesra
{

/// Mixes values into one number.
class HashSink
{
public:
    /// A count may state thousands of elements for which there are no bytes.
    static constexpr std::size_t MostElements = 50;

    void TakeBool(bool value) { Mix(value); }
    template <class Integer> void TakeInteger(Integer value) { Mix(static_cast<std::uint64_t>(value)); }
    void TakeBits(std::uint64_t bits, int) { Mix(bits); }
    void TakeText(const char* text)
    {
        for (; *text != '\0'; ++text)
            Mix(static_cast<unsigned char>(*text));
        Mix(256);
    }

    std::uint64_t Hash = 1469598103934665603ULL;

private:
    void Mix(std::uint64_t value) { Hash = (Hash ^ value) * 1099511628211ULL; }
};

/// Touches every value that handlers receive.
class HandlerHash
{
public:
    template <class... Values> void Got(MessageNumber number, Values&... values)
    {
        Check(number != 0);
        Seen.Add(static_cast<unsigned short>(number));
        (Seen.Add(values), ...);
        ++Messages;
    }

    static void Check(bool holds)
    {
        if (!holds)
            std::abort();
    }

    FlatValues<HashSink> Seen;
    std::size_t Messages = 0;
};

/// A client that takes its stream from memory, the way the receive thread takes it from the socket, and
/// dispatches each packet at once. Its requests are answered from memory too.
class StreamClient : public CNTMainClient
{
public:
    StreamClient() : Stub(Handled)
    {
        Attach(static_cast<CNTStub*>(&Stub));
        Attach(&Requests);
    }

    void ProcessDisconnection() override {}

    /// Nothing is ever sent.
    unsigned long SendToServer(CNTPacket&) override { return SendStarted; }

    /// Takes in the stream in pieces of at most the given sizes, used in turn; false when it is malformed.
    bool Deliver(std::span<const std::uint8_t> stream, std::span<const std::uint8_t> pieces)
    {
        std::size_t piece = 0;
        while (!stream.empty()) {
            HandlerHash::Check(RemainSize >= 1 && RecvSize + RemainSize <= CNTPacket::Capacity);
            std::size_t n = std::min<std::size_t>(RemainSize, stream.size());
            if (!pieces.empty())
                n = std::min<std::size_t>(n, 1U + pieces[piece++ % pieces.size()]);
            std::memcpy(GetBuf() + RecvSize, stream.data(), n);
            stream = stream.subspan(n);
            const unsigned long result = CollectPacket(n);
            if (result == PacketMalformed)
                return false;
            if (result == PacketComplete)
                Complete();
        }
        return true;
    }

    HandlerHash Handled;

private:
    void Complete()
    {
        const std::size_t size = PacketSize;
        CNTPacket packet;
        HandlerHash::Check(MakeCompletePacket(packet) && PacketQueue.size() == 1);
        HandlerHash::Check(PacketQueue[0].GetBufSize() == size && PacketQueue[0].GetBufPoint() == 0);
        ProcessQueuedMessageFromServer();
    }

    WatchingStub<HandlerHash> Stub;
    CNTProxy_CLToGS Requests;
};

/// Answers each waiting request, within its Send, with a reply whose fields are arbitrary bytes.
class AnsweringProxy : public CNTProxy_CLToGS
{
public:
    AnsweringProxy(CNTMainClient& client, std::span<const std::uint8_t> fields) : Owner(client), Reply(fields)
    {
        client.Attach(this);
    }

    bool Send(CNTPacket& request) override
    {
        const unsigned short number = 10002;
        const auto size = static_cast<std::uint16_t>(std::min<std::size_t>(Reply.size(), 4090));
        request.SetBufPoint(SerialOffset);
        unsigned short serial = 0;
        request >> serial;

        CNTPacket reply;
        reply << number << static_cast<unsigned short>(0) << serial;
        std::memcpy(reply.GetBuf() + reply.GetBufSize(), Reply.data(), size);
        reply.SetBufSize(static_cast<unsigned short>(reply.GetBufSize() + size));
        reply.SetBufPoint(0);
        Owner.ProcessPacketFromServer(reply);
        return true;
    }

    unsigned short SerialOffset = CNTPacket::HeaderSize;

private:
    CNTMainClient& Owner;
    std::span<const std::uint8_t> Reply;
};

/// Makes one of the twelve waiting requests, answers it with the given fields and touches what they filled.
void AskSomething(CNTMainClient& client, unsigned choice, std::span<const std::uint8_t> fields);

} // namespace Kesra
