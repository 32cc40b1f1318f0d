#pragma once

#include "KesraNTC/platform/Export.h"
#include "KesraNTC/platform/Platform.h"

#include <cstdint>
#include <cstring>
#include <string>

class CString;

/// One message of at most 4096 bytes: a 4-byte header (message number, total size, both unsigned 16-bit) and
/// the payload, in the order and form in which it travels. All numbers are little-endian.
///
/// A packet is either written (`BufPoint` equals `BufSize` and grows) or read (`BufPoint` runs towards
/// `BufSize`). Every fourth byte of each payload write is scrambled and each read unscrambles it in place, so
/// a value must be read with the width, and at the position, with which it was written. Nothing throws or
/// allocates, except that reading a string allocates the string. A packet belongs to one thread at a time.
class KESRANTC_API CNTPacket
{
public:
    static constexpr unsigned short Capacity = 4096; ///< bytes of a whole packet, header included
    static constexpr unsigned short HeaderSize = 4;  ///< bytes of the header
    static constexpr unsigned char Key = 0x3C;       ///< what scrambled bytes are XORed with

    // Packets of these numbers are written, or read, without scrambling.
    static constexpr unsigned short PlainWrite1 = 747;
    static constexpr unsigned short PlainWrite2 = 486;
    static constexpr unsigned short PlainRead = 508;

    /// Asks for a packet whose payload bytes are left as they are, for a caller that writes before it reads.
    struct Unzeroed {
    };

    /// An empty packet, all buffer bytes zero.
    CNTPacket() { InitPacket(); }
    /// The same; the argument is ignored.
    CNTPacket(char) { InitPacket(); }
    /// An empty packet of whose buffer only the header is zeroed: nearly 4096 stores cheaper.
    explicit CNTPacket(Unzeroed) noexcept : BufSize(0), BufPoint(0) { std::memset(Buffer, 0, HeaderSize); }
    /// Copies size, position and the valid bytes; bytes beyond them are not written.
    CNTPacket(const CNTPacket& other) noexcept { CopyFrom(other); }
    const CNTPacket& operator=(const CNTPacket& other) noexcept
    {
        CopyFrom(other);
        return *this;
    }

    /// Makes the packet empty and zeroes its buffer.
    void InitPacket()
    {
        ReWindBuf();
        InitBuf();
    }
    /// Zeroes all 4096 buffer bytes; size and position stay.
    void InitBuf() { std::memset(Buffer, 0, Capacity); }

    /// The first byte of the header; 4096 bytes may be accessed.
    unsigned char* GetBuf() { return Buffer; }
    const unsigned char* GetBuf() const { return Buffer; }
    /// Number of valid bytes, header included.
    unsigned short GetBufSize() const { return BufSize; }
    /// Overwrites the number of valid bytes and nothing else. Reads never pass byte 4096 whatever is set
    /// here.
    void SetBufSize(unsigned short size) { BufSize = size; }
    /// Position of the next read or write, counted from the first byte of the header.
    unsigned short GetBufPoint() const { return BufPoint; }
    /// Overwrites the position and nothing else.
    void SetBufPoint(unsigned short point) { BufPoint = point; }
    /// True while the position is 0.
    bool IsBufEmpty() const { return BufPoint == 0; }
    /// True when no valid byte is left at the position.
    bool IsAtEnd() const { return !Holds(1); }

    /// Appends n bytes at the position, scrambled if they are payload. False, and nothing changed, when they
    /// do not fit into 4096 bytes.
    bool Write(const void* data, unsigned short n);
    /// Copies up to n bytes from the position, unscrambling them in place. Returns how many were copied.
    int Read(void* data, unsigned short n);
    /// Advances the position by up to n bytes without looking at them. Returns by how many.
    int SkipRead(unsigned short n);
    /// Appends an unsigned 16-bit count and the characters before the NUL. A null pointer counts as empty.
    /// When the characters do not fit, the count stands alone.
    void WriteString(const char* text);
    /// Reads what WriteString wrote. A count of 0 leaves the text as it was; a text that the packet holds
    /// only in part ends where the packet ends.
    void ReadString(CString& text);
    /// XORs the key into bytes 0, 4, 8, ... of n bytes; doing it twice restores them. The packet is not
    /// touched.
    static void Concrete(unsigned char* data, unsigned short n);
    /// The key in the first byte of a value of 1, 2 or 4 bytes, and in bytes 0 and 4 of one of 8 bytes.
    template <class Bits> static constexpr Bits KeyOf()
    {
        return static_cast<Bits>(sizeof(Bits) == 8 ? 0x0000003C0000003C : Key);
    }

    /// Each operator is one write of the value's 1, 2, 4 or 8 bytes (`long` travels as 4), or of the 16 of a
    /// system time. A value that does not fit is left out.
    CNTPacket& operator<<(char value) { return Put(static_cast<std::uint8_t>(value)); }
    CNTPacket& operator<<(unsigned char value) { return Put(value); }
    CNTPacket& operator<<(bool value) { return Put(static_cast<std::uint8_t>(value)); }
    CNTPacket& operator<<(short value) { return Put(static_cast<std::uint16_t>(value)); }
    CNTPacket& operator<<(unsigned short value) { return Put(value); }
    CNTPacket& operator<<(int value) { return Put(static_cast<std::uint32_t>(value)); }
    CNTPacket& operator<<(unsigned int value) { return Put(value); }
    CNTPacket& operator<<(long value) { return Put(static_cast<std::uint32_t>(value)); }
    CNTPacket& operator<<(unsigned long value) { return Put(static_cast<std::uint32_t>(value)); }
    CNTPacket& operator<<(float value) { return Put(BitsOf<std::uint32_t>(value)); }
    CNTPacket& operator<<(double value) { return Put(BitsOf<std::uint64_t>(value)); }
    CNTPacket& operator<<(_SYSTEMTIME value);

    /// Each operator is one read of the same width. When fewer bytes are left, the low bytes that exist are
    /// set and the rest of the target stays.
    CNTPacket& operator>>(char& value) { return Get<std::uint8_t>(value); }
    CNTPacket& operator>>(unsigned char& value) { return Get<std::uint8_t>(value); }
    CNTPacket& operator>>(bool& value) { return Get<std::uint8_t>(value); }
    CNTPacket& operator>>(short& value) { return Get<std::uint16_t>(value); }
    CNTPacket& operator>>(unsigned short& value) { return Get<std::uint16_t>(value); }
    CNTPacket& operator>>(int& value) { return Get<std::uint32_t>(value); }
    CNTPacket& operator>>(unsigned int& value) { return Get<std::uint32_t>(value); }
    CNTPacket& operator>>(long& value)
    {
        int low = static_cast<int>(value);
        Get<std::uint32_t>(low);
        value = low;
        return *this;
    }
    CNTPacket& operator>>(unsigned long& value) { return Get<std::uint32_t>(value); }
    CNTPacket& operator>>(float& value) { return GetBits<std::uint32_t>(value); }
    CNTPacket& operator>>(double& value) { return GetBits<std::uint64_t>(value); }
    CNTPacket& operator>>(_SYSTEMTIME& value);

private:
    template <class Bits, class T> static Bits BitsOf(T value)
    {
        static_assert(sizeof(Bits) == sizeof(T), "bits and value have one width");
        Bits bits;
        std::memcpy(&bits, &value, sizeof bits);
        return bits;
    }

    template <class Bits> Bits BitsAt(unsigned point) const
    {
        Bits bits;
        std::memcpy(&bits, Buffer + point, sizeof bits);
        return bits;
    }
    unsigned short Number() const { return BitsAt<std::uint16_t>(0); }

    bool ScramblesWrites() const
    {
        return BufPoint >= HeaderSize && Number() != PlainWrite1 && Number() != PlainWrite2;
    }
    bool ScramblesReads() const { return BufPoint >= HeaderSize && Number() != PlainRead; }

    void ReWindBuf() { BufSize = BufPoint = 0; }
    void Advance(unsigned short n)
    {
        BufSize = static_cast<unsigned short>(BufSize + n);
        BufPoint = static_cast<unsigned short>(BufPoint + n);
        std::memcpy(Buffer + 2, &BufSize, sizeof BufSize);
    }
    unsigned Available(unsigned n) const;
    bool Holds(unsigned n) const { return BufPoint + n <= BufSize && BufPoint + n <= Capacity; }
    void CopyFrom(const CNTPacket& other) noexcept;

    template <class Bits> CNTPacket& Put(Bits bits)
    {
        if (BufPoint + sizeof bits > Capacity) {
            Write(&bits, sizeof bits);
            return *this;
        }
        if (ScramblesWrites())
            bits = static_cast<Bits>(bits ^ KeyOf<Bits>());
        std::memcpy(Buffer + BufPoint, &bits, sizeof bits);
        Advance(sizeof bits);
        return *this;
    }

    /// Reads bits that are all there. The value is unscrambled in a register: reading back what was just
    /// stored would stall.
    template <class Bits> Bits TakeWhole()
    {
        Bits bits = BitsAt<Bits>(BufPoint);
        if (ScramblesReads()) {
            bits = static_cast<Bits>(bits ^ KeyOf<Bits>());
            std::memcpy(Buffer + BufPoint, &bits, sizeof bits);
        }
        BufPoint = static_cast<unsigned short>(BufPoint + sizeof bits);
        return bits;
    }

    template <class Bits, class T> CNTPacket& Get(T& value)
    {
        if (Holds(sizeof(Bits))) {
            value = static_cast<T>(TakeWhole<Bits>());
            return *this;
        }
        Bits bits = static_cast<Bits>(value);
        if (Read(&bits, sizeof bits) > 0)
            value = static_cast<T>(bits);
        return *this;
    }
    template <class Bits, class T> CNTPacket& GetBits(T& value)
    {
        Bits bits = BitsOf<Bits>(value);
        Get<Bits>(bits);
        std::memcpy(&value, &bits, sizeof value);
        return *this;
    }

    unsigned char Buffer[Capacity];
    unsigned short BufSize;
    unsigned short BufPoint;
};

static_assert(sizeof(CNTPacket) == 4100, "a packet is its buffer and two 16-bit members");

/// Writes the characters before the NUL as a length-prefixed string (CNTPacket::WriteString).
KESRANTC_API CNTPacket& operator<<(CNTPacket& packet, const char* text);
/// Reads a length-prefixed string (CNTPacket::ReadString).
KESRANTC_API CNTPacket& operator>>(CNTPacket& packet, CString& text);
/// Writes the characters before the first NUL as a length-prefixed string.
KESRANTC_API CNTPacket& operator<<(CNTPacket& packet, const std::string& text);
/// Reads a length-prefixed string; the target receives the characters before its first NUL.
KESRANTC_API CNTPacket& operator>>(CNTPacket& packet, std::string& text);
