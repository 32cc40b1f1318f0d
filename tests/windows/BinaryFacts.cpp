// What a game compiled against the DLL relies on: sizes, and the order and place of members. All of it is
// checked while compiling; there is nothing here to run.
#include "KesraNTC/KesraNTC.h"
#include "KesraNTC/platform/Platform.h"

#include <cstddef>
#include <type_traits>

namespace
{
// Are members (offset, size and alignment of each) laid out one after the other from `next` on?
constexpr bool FollowFrom(std::size_t next, std::initializer_list<std::size_t> facts)
{
    for (auto fact = facts.begin(); fact != facts.end(); fact += 3) {
        const std::size_t offset = fact[0], size = fact[1], alignment = fact[2];
        if (offset != (next + alignment - 1) / alignment * alignment)
            return false;
        next = offset + size;
    }
    return true;
}

// The arguments of an explicit instantiation may name private members, too.
template <std::size_t First, std::size_t... Facts> struct MembersFollowFrom {
    static_assert(FollowFrom(First, {Facts...}), "a member is not where the game expects it");
};
#define MEMBER(type, name) offsetof(type, name), sizeof(type::name), alignof(decltype(type::name))

constexpr std::size_t TableOfVirtuals = sizeof(void*);
} // namespace

static_assert(sizeof(long) == 4 && sizeof(void*) == 4 && sizeof(SOCKET) == 4);

static_assert(sizeof(CNTPacket) == 4100);
template struct MembersFollowFrom<0, MEMBER(CNTPacket, Buffer), MEMBER(CNTPacket, BufSize),
                                  MEMBER(CNTPacket, BufPoint)>;

static_assert(std::is_base_of_v<OVERLAPPED, OVERLAPPED_PLUS>);
template struct MembersFollowFrom<sizeof(OVERLAPPED), MEMBER(OVERLAPPED_PLUS, Client),
                                  MEMBER(OVERLAPPED_PLUS, IoType)>;

template struct MembersFollowFrom<
    TableOfVirtuals, MEMBER(CNetIO, OverlappedIN), MEMBER(CNetIO, OverlappedOUT), MEMBER(CNetIO, Lock),
    MEMBER(CNetIO, Buf), MEMBER(CNetIO, RecvSize), MEMBER(CNetIO, RemainSize), MEMBER(CNetIO, RecvStage),
    MEMBER(CNetIO, PacketSize), MEMBER(CNetIO, Socket), MEMBER(CNetIO, SendBytes), MEMBER(CNetIO, RecvBytes)>;

// The socket part comes first; behind it, with a table of its own, the part through which the proxy sends.
constexpr std::size_t SecondBase = sizeof(CNetClientIO);
template struct MembersFollowFrom<SecondBase + TableOfVirtuals, MEMBER(CNTBaseClient, MachineID),
                                  MEMBER(CNTBaseClient, ProcessOnRecvThread), MEMBER(CNTBaseClient, Proxy),
                                  MEMBER(CNTBaseClient, Stub), MEMBER(CNTBaseClient, ServerPort),
                                  MEMBER(CNTBaseClient, ServerAddr), MEMBER(CNTBaseClient, NetTime),
                                  MEMBER(CNTBaseClient, ServerTime), MEMBER(CNTBaseClient, Latency),
                                  MEMBER(CNTBaseClient, ConnectTime), MEMBER(CNTBaseClient, TrafficTime)>;
static_assert(offsetof(CNTBaseClient, OverlappedIN) == offsetof(CNetIO, OverlappedIN));
static_assert(sizeof(CNTMainClient) == sizeof(CNTBaseClient), "the dispatcher adds no members");

static_assert(sizeof(CString) == sizeof(char*));
static_assert(sizeof(CStringData) == 12);
template struct MembersFollowFrom<0, MEMBER(CStringData, RefCount), MEMBER(CStringData, DataLength),
                                  MEMBER(CStringData, AllocLength)>;

static_assert(sizeof(sGS) == 4 && sizeof(sAttackResult) == 8);
template struct MembersFollowFrom<0, MEMBER(sGS, Value1), MEMBER(sGS, Value2)>;
template struct MembersFollowFrom<0, MEMBER(sAttackResult, Value1), MEMBER(sAttackResult, Value2),
                                  MEMBER(sAttackResult, Value3)>;

template struct MembersFollowFrom<0, MEMBER(CNestedReply, Serial), MEMBER(CNestedReply, Event),
                                  MEMBER(CNestedReply, Reply)>;

static_assert(sizeof(COLEVariant) == 16 && std::is_standard_layout_v<COLEVariant>);
static_assert(std::is_base_of_v<VARIANT, COLEVariant>);
