#include "KesraNTC/net/CNTPacket.h"

#include "KesraNTC/base/CString.h"
#include "KesraNTC/base/Trace.h"
#include "KesraNTC/base/private/Korean.h"

#include <algorithm>

using namespace Kesra;

void CNTPacket::CopyFrom(const CNTPacket& other) noexcept
{
    if (this == &other)
        return;
    BufSize = other.BufSize;
    BufPoint = other.BufPoint;
    std::memcpy(Buffer, other.Buffer, std::min(BufSize, Capacity));
}

void CNTPacket::Concrete(unsigned char* data, unsigned short n)
{
    for (unsigned i = 0; i < n; i += 4)
        data[i] ^= Key;
}

bool CNTPacket::Write(const void* data, unsigned short n)
{
    if (BufPoint + n > Capacity) {
        TRACE("버퍼 크기를 넘어서 더 이상 쓸 수가 없다\n"_949);
        return false;
    }
    unsigned char* target = Buffer + BufPoint;
    if (n != 0)
        std::memcpy(target, data, n);
    if (ScramblesWrites())
        Concrete(target, n);
    Advance(n);
    return true;
}

unsigned CNTPacket::Available(unsigned n) const
{
    const unsigned valid = std::min(BufSize, Capacity);
    const unsigned end = std::min(valid, BufPoint + n);
    return end > BufPoint ? end - BufPoint : 0;
}

int CNTPacket::Read(void* data, unsigned short n)
{
    const unsigned count = Available(n);
    if (count == 0) {
        TRACE("경고!!! 패킷 읽기중 EOF발생. BufSize : %d  BufPoint : %d  wSize : %d\n"_949, BufSize, BufPoint,
              0);
        return 0;
    }
    unsigned char* source = Buffer + BufPoint;
    if (ScramblesReads())
        Concrete(source, static_cast<unsigned short>(count));
    std::memcpy(data, source, count);
    BufPoint = static_cast<unsigned short>(BufPoint + count);
    return static_cast<int>(count);
}

int CNTPacket::SkipRead(unsigned short n)
{
    const unsigned count = Available(n);
    BufPoint = static_cast<unsigned short>(BufPoint + count);
    return static_cast<int>(count);
}

void CNTPacket::WriteString(const char* text)
{
    const unsigned short n = text ? static_cast<unsigned short>(std::strlen(text)) : 0;
    *this << n;
    if (n != 0)
        Write(text, n);
}

void CNTPacket::ReadString(CString& text)
{
    unsigned short n = 0;
    *this >> n;
    if (n == 0)
        return;
    const unsigned room = Available(n);
    char* characters = text.GetBuffer(static_cast<int>(room) + 1);
    const int count = room > 0 ? Read(characters, static_cast<unsigned short>(room)) : 0;
    characters[count] = '\0';
    text.ReleaseBuffer(count);
}

CNTPacket& CNTPacket::operator<<(_SYSTEMTIME value)
{
    Write(&value, sizeof value);
    return *this;
}

CNTPacket& CNTPacket::operator>>(_SYSTEMTIME& value)
{
    Read(&value, sizeof value);
    return *this;
}

CNTPacket& operator<<(CNTPacket& packet, const char* text)
{
    packet.WriteString(text);
    return packet;
}

CNTPacket& operator>>(CNTPacket& packet, CString& text)
{
    packet.ReadString(text);
    return packet;
}

CNTPacket& operator<<(CNTPacket& packet, const std::string& text)
{
    packet.WriteString(text.c_str());
    return packet;
}

CNTPacket& operator>>(CNTPacket& packet, std::string& text)
{
    CString read;
    packet.ReadString(read);
    text = static_cast<const char*>(read);
    return packet;
}
