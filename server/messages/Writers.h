#pragma once

#include "server/messages/ResultCodes.h"

#include "KesraNTC/base/CFixCharString.h"
#include "KesraNTC/base/CString.h"
#include "KesraNTC/net/CNTPacket.h"
#include "KesraNTC/rpc/MessageNumbers.h"
#include "KesraNTC/world/CDRVector.h"
#include "KesraNTC/world/TItem.h"
#include "KesraNTC/world/TPrivData.h"
#include "KesraNTC/world/TSkill.h"
#include "KesraNTC/world/WorldObjects.h"
#include "KesraNTC/world/sGS.h"

#include <string>
#include <type_traits>
#include <vector>

namespace Kesra
{

/// Begins a message: the header stands, the payload follows. FinishMessage must end it.
CNTPacket BeginMessage(MessageNumber number);
void FinishMessage(CNTPacket& packet, MessageNumber number);

// Put writes one field of a payload in its wire form. First what the library itself only reads; records
// whose getters are not const come as copies.
void Put(CNTPacket& packet, TAvatar avatar);
void Put(CNTPacket& packet, TMonster monster);
void Put(CNTPacket& packet, const TNPC& npc);
void Put(CNTPacket& packet, TWorldItem item);
void Put(CNTPacket& packet, const TPrivData& data);
void Put(CNTPacket& packet, Result result);
void Put(CNTPacket& packet, const CString& text);
void Put(CNTPacket& packet, const std::string& text);

template <int Capacity> void Put(CNTPacket& packet, const CFixCharString<Capacity>& text)
{
    packet.WriteString(text);
}

/// Whatever the library itself writes: numbers, items, skills, vectors, dates, game servers.
template <class T> void Put(CNTPacket& packet, const T& value)
{
    packet << value;
}

/// A list: its count, then its elements.
template <class T> void Put(CNTPacket& packet, const std::vector<T>& list)
{
    packet << static_cast<short>(list.size());
    for (const T& element : list)
        Put(packet, element);
}

/// Builds a message from fields that have their wire types already.
template <class... Fields> CNTPacket MessageOf(MessageNumber number, const Fields&... fields)
{
    CNTPacket packet = BeginMessage(number);
    (Put(packet, fields), ...);
    FinishMessage(packet, number);
    return packet;
}

} // namespace Kesra
