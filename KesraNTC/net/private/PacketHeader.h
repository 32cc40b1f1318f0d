#pragma once

#include "KesraNTC/net/CNTPacket.h"

namespace Kesra
{

// Packets with other numbers are taken, too, but logged.
constexpr unsigned LowestUsualNumber = 101;
constexpr unsigned HighestUsualNumber = 62000;

constexpr bool IsUsualNumber(unsigned number)
{
    return number >= LowestUsualNumber && number <= HighestUsualNumber;
}
constexpr bool IsPossibleSize(unsigned size)
{
    return size >= CNTPacket::HeaderSize && size <= CNTPacket::Capacity;
}
constexpr bool IsUsualHeader(unsigned number, unsigned size)
{
    return IsUsualNumber(number) && IsPossibleSize(size);
}

} // namespace Kesra
