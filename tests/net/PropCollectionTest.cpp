#include "KesraNTC/net/CPropCollection.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <new>
#include <string>

namespace
{

/// How many allocations of this thread still succeed; any number while it is negative.
thread_local long AllocationsLeft = -1;
/// Blocks that this thread has allocated less those that it has freed.
thread_local long LiveBlocks = 0;

} // namespace

// What the whole program allocates with, so that a test can let any allocation fail. Inlined, one of them
// without the other, they would look to GCC like malloc and delete, or new and free.
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    void* const block = AllocationsLeft == 0 ? nullptr : std::malloc(size > 0 ? size : 1);
    if (block == nullptr)
        return nullptr;
    if (AllocationsLeft > 0)
        --AllocationsLeft;
    ++LiveBlocks;
    return block;
}

[[gnu::noinline]] void* operator new(std::size_t size)
{
    if (void* const block = operator new(size, std::nothrow))
        return block;
    throw std::bad_alloc();
}

[[gnu::noinline]] void operator delete(void* block) noexcept
{
    LiveBlocks -= block != nullptr ? 1 : 0;
    std::free(block);
}

[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept
{
    operator delete(block);
}

namespace
{

using Bytes = std::vector<unsigned char>;

Bytes BytesOf(const CPropCollection& properties)
{
    return properties;
}

CPropCollection FromBytes(const Bytes& image)
{
    CPropCollection properties;
    properties.SetProperty("old", 1L);
    properties = image;
    return properties;
}

std::string NameAt(int index)
{
    return "Name" + std::to_string(index);
}

/// Pairs of all types that travel.
CPropCollection Numbered(int count)
{
    CPropCollection properties;
    for (int i = 0; i < count; ++i) {
        const std::string name = NameAt(i);
        switch (i % 4) {
        case 0:
            properties.SetProperty(name.c_str(), static_cast<long>(i));
            break;
        case 1:
            properties.SetProperty(name.c_str(), i / 8.0);
            break;
        case 2:
            properties.SetProperty(name.c_str(), OLESTR("text"));
            break;
        default:
            properties.SetProperty(name.c_str(), i % 8 == 3);
        }
    }
    return properties;
}

/// Pairs as short as they come, of which one packet holds almost 700.
CPropCollection Small(int count)
{
    VARIANT null;
    VariantInit(&null);
    null.vt = VT_NULL;
    CPropCollection properties;
    for (int i = 0; i < count; ++i) {
        const char name[] = {static_cast<char>(0x80 + i / 64 % 64), static_cast<char>(0x80 + i % 64), 0};
        properties.SetProperty(i < 64 ? name + 1 : name, _variant_t(null));
    }
    return properties;
}

long LongAt(const CPropCollection& properties, const char* name)
{
    const _variant_t value = properties.GetProperty(name);
    EXPECT_EQ(VT_I4, value.vt) << name;
    return value.lVal;
}

TEST(PropCollection, NamesIgnoreTheCaseOfAsciiLetters)
{
    CPropCollection properties;
    properties.SetProperty("hp", 1L);
    properties.SetProperty("HP", 2L);
    EXPECT_EQ(2, LongAt(properties, "Hp"));
    CNTPacket packet;
    packet << properties;
    unsigned int count = 0;
    CString name;
    packet.SetBufPoint(0);
    packet >> count >> name;
    EXPECT_STREQ("hp", name);

    EXPECT_EQ(VT_EMPTY, properties.GetProperty("mp").vt);
    EXPECT_EQ(VT_EMPTY, properties.GetProperty(nullptr).vt);
    properties.EraseProperty("mp");
    properties.EraseProperty("hP");
    EXPECT_EQ(VT_EMPTY, properties.GetProperty("hp").vt);

    // Only A to Z fold: neither the bytes beside them nor those of double-byte characters.
    for (const char* each : {"@", "`", "[", "{", "\xB0\xC1", "\xB0\xE1"})
        properties.SetProperty(each,
                               static_cast<long>(static_cast<unsigned char>(each[std::strlen(each) - 1])));
    EXPECT_EQ('@', LongAt(properties, "@"));
    EXPECT_EQ('[', LongAt(properties, "["));
    EXPECT_EQ(0xC1, LongAt(properties, "\xB0\xC1"));
}

TEST(PropCollection, OwnsCopies)
{
    CPropCollection properties;
    _variant_t text(OLESTR("one"));
    properties.SetProperty("text", text);
    text.bstrVal[0] = 'X';
    _variant_t read = properties.GetProperty("text");
    EXPECT_EQ('o', read.bstrVal[0]);
    read.bstrVal[0] = 'X';
    CPropCollection copy(properties);
    properties.SetProperty("text", 5L);
    EXPECT_EQ('o', copy.GetProperty("TEXT").bstrVal[0]);
    copy = properties;
    EXPECT_EQ(5, LongAt(copy, "text"));
}

TEST(PropCollection, TravelsInAscendingOrder)
{
    CPropCollection properties;
    properties.SetProperty("b", 1L);
    properties.SetProperty("A", 2L);
    properties.SetProperty("_", 3L);
    properties.SetProperty("", 4L);
    CNTPacket packet;
    packet << static_cast<unsigned short>(1002) << static_cast<unsigned short>(0) << properties;
    packet.SetBufPoint(4);
    int count = 0;
    packet >> count;
    EXPECT_EQ(4, count);
    for (const char* expected : {"", "_", "A", "b"}) {
        CString name;
        _variant_t value;
        packet >> name >> value;
        EXPECT_STREQ(expected, name);
    }
    EXPECT_EQ(packet.GetBufSize(), packet.GetBufPoint());

    CPropCollection read;
    read.SetProperty("old", 1L);
    packet.SetBufPoint(4);
    CNTPacket again;
    again << static_cast<unsigned short>(1002) << static_cast<unsigned short>(0) << properties;
    again.SetBufPoint(4);
    again >> read;
    EXPECT_EQ(BytesOf(properties), BytesOf(read));
}

TEST(PropCollection, TheFirstOfTwoEqualNamesWins)
{
    CNTPacket packet;
    packet << static_cast<unsigned short>(1002) << static_cast<unsigned short>(0) << 3;
    packet << "b" << _variant_t(1L) << "A" << _variant_t(2L) << "B" << _variant_t(3L);
    packet.SetBufPoint(4);
    CPropCollection read;
    packet >> read;
    EXPECT_EQ(1, LongAt(read, "b"));
    EXPECT_EQ(2, LongAt(read, "a"));

    // An empty name reads as the one before it.
    packet = CNTPacket();
    packet << static_cast<unsigned short>(1002) << static_cast<unsigned short>(0) << 2;
    packet << "b" << _variant_t(1L) << "" << _variant_t(2L);
    packet.SetBufPoint(4);
    packet >> read;
    EXPECT_EQ(VT_EMPTY, read.GetProperty("").vt);
    EXPECT_EQ(1, LongAt(read, "b"));
}

TEST(PropCollection, PromisedPairsThatAreNotThere)
{
    for (const int count : {INT_MAX, 1000, 2, 0, -1, INT_MIN}) {
        CNTPacket packet;
        packet << static_cast<unsigned short>(1002) << static_cast<unsigned short>(0) << count;
        packet << "a" << _variant_t(1L);
        packet.SetBufPoint(4);
        CPropCollection read;
        read.SetProperty("old", 1L);
        packet >> read;
        EXPECT_EQ(VT_EMPTY, read.GetProperty("old").vt);
        EXPECT_EQ(count > 0 ? VT_I4 : VT_EMPTY, read.GetProperty("a").vt);
    }

    // Of pairs that are not there at all, the first has no name and no value and the others are the same.
    CPropCollection nameless;
    nameless.SetProperty("", _variant_t());
    for (const int count : {1, 2, INT_MAX, 0, -1}) {
        CNTPacket packet;
        packet << static_cast<unsigned short>(1002) << static_cast<unsigned short>(0) << count;
        packet.SetBufPoint(4);
        CPropCollection read;
        packet >> read;
        EXPECT_EQ(BytesOf(count > 0 ? nameless : CPropCollection()), BytesOf(read)) << count;
    }
    EXPECT_EQ(BytesOf(nameless), BytesOf(FromBytes({9})));
    CNTPacket whole;
    whole << Numbered(20);
    for (unsigned short size = 0; size <= whole.GetBufSize(); ++size) {
        CNTPacket packet(whole);
        packet.SetBufSize(size);
        packet.SetBufPoint(0);
        CPropCollection read;
        packet >> read;
        EXPECT_LE(packet.GetBufPoint(), size);
    }
    CNTPacket broken(whole);
    broken.SetBufSize(0xFFFF);
    broken.SetBufPoint(4);
    CPropCollection read;
    broken >> read;
    EXPECT_LE(broken.GetBufPoint(), CNTPacket::Capacity);
}

TEST(PropCollection, TheImageOfOnePacketIsThatPacket)
{
    for (const int count : {0, 1, 50, 200}) {
        const CPropCollection properties = Numbered(count);
        CNTPacket packet;
        packet << properties;
        EXPECT_EQ(Bytes(packet.GetBuf(), packet.GetBuf() + packet.GetBufSize()), BytesOf(properties));
    }
    EXPECT_EQ((Bytes{0, 0, 4, 0}), BytesOf(CPropCollection()));
    EXPECT_EQ((Bytes{0, 0, 4, 0}), BytesOf(FromBytes({})));
}

TEST(PropCollection, ImagesOfAnyCountComeBack)
{
    for (const int count : {0, 1, 2, 257, 485, 486, 487, 507, 508, 509, 600, 690, 747, 748}) {
        const Bytes image = BytesOf(Small(count));
        EXPECT_EQ(count <= 690, image.size() <= CNTPacket::Capacity) << count;
        const CPropCollection read = FromBytes(image);
        EXPECT_EQ(image, BytesOf(read)) << count;
        EXPECT_EQ(count > 0 ? VT_NULL : VT_EMPTY, read.GetProperty("\x80").vt) << count;
    }
    for (const int count : {1, 300, 486, 508, 747, 1000, 1999, 2000, 66'000}) {
        const CPropCollection properties = Numbered(count);
        const CPropCollection read = FromBytes(BytesOf(properties));
        EXPECT_EQ(BytesOf(properties), BytesOf(read)) << count;
        EXPECT_EQ(0, LongAt(read, "name0"));
        const int last = (count - 1) / 4 * 4;
        EXPECT_EQ(last, LongAt(read, NameAt(last).c_str()));
        EXPECT_EQ(VT_EMPTY, read.GetProperty(NameAt(count).c_str()).vt);
    }
}

TEST(PropCollection, NamesAndTextsOfAnyLengthComeBack)
{
    for (const std::size_t length : {0U, 1U, 4000U, 4086U, 4087U, 5000U, 65'535U, 65'536U, 70'000U}) {
        CPropCollection properties;
        const std::string name(length, 'n');
        const std::basic_string<OLECHAR> text(length, 't');
        properties.SetProperty(name.c_str(), 7L);
        properties.SetProperty("~", text.c_str());
        properties.SetProperty("", true);
        const CPropCollection read = FromBytes(BytesOf(properties));
        EXPECT_EQ(BytesOf(properties), BytesOf(read)) << length;
        EXPECT_TRUE(length == 0 || LongAt(read, name.c_str()) == 7) << length;
        const _variant_t value = read.GetProperty("~");
        ASSERT_EQ(VT_BSTR, value.vt);
        EXPECT_EQ(length, SysStringLen(value.bstrVal));
        EXPECT_EQ(VT_BOOL, read.GetProperty("").vt);
    }
}

TEST(PropCollection, LongImagesKeepEveryTypeThatTravels)
{
    CPropCollection properties;
    properties.SetProperty("fill", std::basic_string<OLECHAR>(5000, 'x').c_str());
    properties.SetProperty("hangul", OLESTR("\uD55C\uAE00"));
    properties.SetProperty("single", 0.1F);
    properties.SetProperty("date", _variant_t(-1.25, VT_DATE));
    properties.SetProperty("currency", CY{});
    VARIANT decimal;
    VariantInit(&decimal);
    decimal.decVal.Hi32 = 5;
    decimal.vt = VT_DECIMAL;
    properties.SetProperty("decimal", decimal);
    LONG number = 9;
    VARIANT reference;
    VariantInit(&reference);
    reference.vt = VT_I4 | VT_BYREF;
    reference.plVal = &number;
    properties.SetProperty("reference", reference);

    const CPropCollection read = FromBytes(BytesOf(properties));
    EXPECT_EQ(0, std::memcmp(read.GetProperty("hangul").bstrVal, OLESTR("\uD55C\uAE00"), 6));
    EXPECT_EQ(0.1F, read.GetProperty("single").fltVal);
    EXPECT_EQ(VT_DATE, read.GetProperty("date").vt);
    EXPECT_EQ(VT_EMPTY, read.GetProperty("currency").vt);
    EXPECT_EQ(5U, read.GetProperty("decimal").decVal.Hi32);
    EXPECT_EQ(9, LongAt(read, "reference"));
}

TEST(PropCollection, TravelsInAVariant)
{
    for (const int count : {0, 3, 508, 2000}) {
        const CPropCollection properties = Numbered(count);
        _variant_t image = properties;
        ASSERT_EQ(VT_ARRAY | VT_UI1, image.vt);
        EXPECT_EQ(BytesOf(properties), BytesOf(CPropCollection(image)));
        VARIANT reference;
        VariantInit(&reference);
        reference.vt = VT_ARRAY | VT_UI1 | VT_BYREF;
        reference.pparray = &image.parray;
        EXPECT_EQ(BytesOf(properties), BytesOf(CPropCollection(reference)));
    }
    SAFEARRAYBOUND bounds[] = {{2, 0}, {2, 0}};
    VARIANT matrix;
    VariantInit(&matrix);
    matrix.vt = VT_ARRAY | VT_UI1;
    matrix.parray = SafeArrayCreate(VT_UI1, 2, bounds);
    VARIANT null;
    VariantInit(&null);
    null.vt = VT_NULL;
    for (const _variant_t& other : {_variant_t(), _variant_t(null), _variant_t(5L), _variant_t(OLESTR("a")),
                                    _variant_t(matrix, false)}) {
        CPropCollection properties = Numbered(3);
        properties = other;
        EXPECT_EQ(BytesOf(CPropCollection()), BytesOf(properties)) << other.vt;
    }
}

TEST(PropCollection, BytesThatAreNoImage)
{
    for (const int count : {20, 2000}) {
        const Bytes whole = BytesOf(Numbered(count));
        for (std::size_t size = 0; size < 60; ++size)
            BytesOf(FromBytes(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size))));
        Bytes broken = whole;
        for (std::size_t i = 0; i < 60; ++i) {
            broken[i] = 0xFF;
            BytesOf(FromBytes(broken));
        }
    }
    const Bytes promise{0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x7F, 'a'};
    EXPECT_EQ(VT_EMPTY, FromBytes(promise).GetProperty("old").vt);

    // One pair whose value is half a tag, and that of a text.
    const Bytes half{0, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 'a', 1, 0, 0, 0, VT_BSTR};
    EXPECT_NO_THROW(BytesOf(FromBytes(half)));
}

/// Lets so many allocations of this thread succeed while it lives.
class MemoryFor
{
public:
    explicit MemoryFor(long allocations) { AllocationsLeft = allocations; }
    MemoryFor(const MemoryFor&) = delete;
    MemoryFor& operator=(const MemoryFor&) = delete;
    ~MemoryFor() { AllocationsLeft = -1; }
};

HRESULT CodeOf(const _com_error& error)
{
    return error.Error();
}

HRESULT CodeOf(const std::bad_alloc&)
{
    return E_OUTOFMEMORY;
}

/// Lets the first, then the second and so on of the allocations of some work fail until it succeeds, and
/// counts the failures, of which each must be of the expected kind and lose nothing.
template <class Failure> int FailuresOf(const std::function<void()>& work)
{
    for (int successes = 0;; ++successes) {
        const long before = LiveBlocks;
        bool failed = false;
        try {
            const MemoryFor some(successes);
            work();
        } catch (const Failure& failure) {
            failed = true;
            EXPECT_EQ(E_OUTOFMEMORY, CodeOf(failure));
        }
        if (!failed)
            return successes;
        EXPECT_EQ(before, LiveBlocks) << "after " << successes << " allocations";
    }
}

TEST(PropCollection, MemoryThatRunsOutIsAnErrorAndLosesNothing)
{
    const CPropCollection small = Numbered(20);
    const CPropCollection large = Numbered(2000);
    const Bytes smallImage = BytesOf(small);
    const Bytes largeImage = BytesOf(Numbered(400));
    ASSERT_GT(largeImage.size(), CNTPacket::Capacity);
    const _variant_t variantImage = small;
    CNTPacket sent;
    sent << small;

    CPropCollection kept = Numbered(2);
    const Bytes before = BytesOf(kept);
    EXPECT_LT(0, FailuresOf<_com_error>([&] {
                  CPropCollection properties;
                  properties.SetProperty("name", 1L);
              }));
    const auto putWithoutMemory = [&kept](const char* name) {
        const MemoryFor none(0);
        kept.SetProperty(name, 0L);
    };
    EXPECT_THROW(putWithoutMemory("another"), _com_error);
    EXPECT_NO_THROW(putWithoutMemory("NAME0"));
    EXPECT_EQ(before, BytesOf(kept));

    EXPECT_LT(19, FailuresOf<_com_error>([&] {
                  CNTPacket packet(sent);
                  packet.SetBufPoint(0);
                  CPropCollection read;
                  packet >> read;
              }));
    EXPECT_LT(19, FailuresOf<_com_error>([&] { CPropCollection().CopyFrom(smallImage); }));
    EXPECT_LT(399, FailuresOf<_com_error>([&] { CPropCollection().CopyFrom(largeImage); }));
    EXPECT_LT(19, FailuresOf<_com_error>([&] { CPropCollection().CopyFrom(variantImage); }));
    EXPECT_LT(0, FailuresOf<_com_error>([&] { BytesOf(small); }));
    EXPECT_LT(0, FailuresOf<_com_error>([&] { BytesOf(large); }));
    EXPECT_LT(0, FailuresOf<_com_error>([&] { const _variant_t image = large; }));
    EXPECT_LT(19, FailuresOf<std::bad_alloc>([&] { const CPropCollection copy(small); }));
}

} // namespace
