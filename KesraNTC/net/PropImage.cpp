#include "KesraNTC/net/CPropCollection.h"
#include "KesraNTC/net/private/AnsiText.h"
#include "KesraNTC/net/private/ComResult.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

// A collection that fits one packet has that packet's image: count (16 bits), size (16 bits), pairs. The
// count stands where a packet has its number, and some numbers turn the scrambling off; the count's upper
// half, which the size overwrites, is always 0.
//
// A larger collection has a long image: 4 zero bytes, which no packet begins with, the count (32 bits), and
// for each pair two blocks, name and value, each after its size (32 bits). A value is the variant's packet
// form, unscrambled; a text goes on to the end of its block instead of having a size of its own.

namespace
{

using Bytes = std::vector<unsigned char>;

constexpr std::size_t MarkSize = 4;

bool IsLong(const Bytes& image)
{
    return image.size() >= MarkSize &&
           std::all_of(
               image.begin(), image.begin() + MarkSize, [](unsigned char byte) { return byte == 0; });
}

void PutSize(Bytes& image, std::size_t size)
{
    const auto value = static_cast<std::uint32_t>(size);
    const std::size_t end = image.size();
    image.resize(end + sizeof value);
    std::memcpy(image.data() + end, &value, sizeof value);
}

void PutBlock(Bytes& image, std::string_view block)
{
    PutSize(image, block.size());
    image.insert(image.end(), block.begin(), block.end());
}

std::string_view CharactersOf(const unsigned char* bytes, std::size_t size)
{
    return {reinterpret_cast<const char*>(bytes), size};
}

/// Reads an image from front to back and never past its end.
class ImageReader
{
public:
    explicit ImageReader(const Bytes& image) : Rest(CharactersOf(image.data(), image.size())) {}

    bool AtEnd() const { return Rest.empty(); }
    std::string_view Take(std::size_t size)
    {
        const std::string_view taken = Rest.substr(0, size);
        Rest.remove_prefix(taken.size());
        return taken;
    }
    std::uint32_t TakeSize()
    {
        std::uint32_t size = 0;
        const std::string_view bytes = Take(sizeof size);
        std::memcpy(&size, bytes.data(), bytes.size());
        return size;
    }
    std::string_view TakeBlock() { return Take(TakeSize()); }

private:
    std::string_view Rest;
};

bool IsText(const _variant_t& value)
{
    return (value.vt & ~VT_BYREF) == VT_BSTR;
}

void PutText(Bytes& image, const _variant_t& value)
{
    constexpr unsigned short tag = VT_BSTR;
    _variant_t plain;
    plain.ChangeType(VT_BSTR, &value);
    std::string block(sizeof tag, '\0');
    std::memcpy(block.data(), &tag, sizeof tag);
    PutBlock(image, block + Kesra::AnsiFromBstr(plain.bstrVal));
}

void PutValue(Bytes& image, const _variant_t& value)
{
    CNTPacket packet(CNTPacket::Unzeroed{});
    packet << CNTPacket::PlainWrite1 << static_cast<unsigned short>(0);
    Kesra::WriteVariant(packet, value);
    const unsigned short start = CNTPacket::HeaderSize;
    PutBlock(image, CharactersOf(packet.GetBuf() + start, packet.GetBufSize() - std::size_t{start}));
}

void ReadText(std::string_view characters, _variant_t& value)
{
    value.Clear();
    value.bstrVal = Kesra::BstrFromAnsi(characters.substr(0, characters.find('\0')));
    value.vt = VT_BSTR;
}

/// The bytes in a variant: none unless it holds a one-dimensional VT_UI1 array, or refers to one.
Bytes BytesOf(const VARIANT& variant)
{
    if ((variant.vt & ~VT_BYREF) != (VT_ARRAY | VT_UI1) || variant.byref == nullptr)
        return {};
    SAFEARRAY* const array = (variant.vt & VT_BYREF) != 0 ? *variant.pparray : variant.parray;
    LONG lower = 0;
    LONG upper = 0;
    if (SafeArrayGetDim(array) != 1 || FAILED(SafeArrayGetLBound(array, 1, &lower)) ||
        FAILED(SafeArrayGetUBound(array, 1, &upper)))
        return {};
    Bytes bytes(static_cast<ULONG>(upper) - static_cast<ULONG>(lower) + 1U);
    void* data = nullptr;
    _com_util::CheckError(SafeArrayAccessData(array, &data));
    std::copy_n(static_cast<const unsigned char*>(data), bytes.size(), bytes.begin());
    _com_util::CheckError(SafeArrayUnaccessData(array));
    return bytes;
}

/// Makes a packet of a number and payload bytes as they are, ready to read the payload.
void Load(CNTPacket& packet, unsigned short number, std::string_view payload)
{
    constexpr std::size_t room = CNTPacket::Capacity - CNTPacket::HeaderSize;
    const std::size_t size = std::min(payload.size(), room);
    std::memcpy(packet.GetBuf(), &number, sizeof number);
    std::copy_n(payload.begin(), size, packet.GetBuf() + CNTPacket::HeaderSize);
    packet.SetBufSize(static_cast<unsigned short>(CNTPacket::HeaderSize + size));
    packet.SetBufPoint(CNTPacket::HeaderSize);
}

void ReadValue(std::string_view block, _variant_t& value)
{
    unsigned short tag = VT_EMPTY;
    std::memcpy(&tag, block.data(), std::min(sizeof tag, block.size()));
    if (tag == VT_BSTR && block.size() >= sizeof tag) {
        ReadText(block.substr(sizeof tag), value);
        return;
    }
    CNTPacket packet(CNTPacket::Unzeroed{});
    Load(packet, CNTPacket::PlainRead, block);
    Kesra::ReadVariant(packet, value);
}

void PutArray(VARIANT& variant, const Bytes& bytes)
{
    variant.parray = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size()));
    if (variant.parray == nullptr)
        _com_issue_error(E_OUTOFMEMORY);
    variant.vt = VT_ARRAY | VT_UI1;
    void* data = nullptr;
    _com_util::CheckError(SafeArrayAccessData(variant.parray, &data));
    std::copy(bytes.begin(), bytes.end(), static_cast<unsigned char*>(data));
    _com_util::CheckError(SafeArrayUnaccessData(variant.parray));
}

} // namespace

HRESULT CPropCollection::WriteImage(std::vector<unsigned char>& image) const noexcept
{
    return Kesra::ComResult([&] { image = Image(); });
}

HRESULT CPropCollection::WriteImage(_variant_t& image) const noexcept
{
    return Kesra::ComResult([&] { PutArray(image, Image()); });
}

HRESULT CPropCollection::ReadImage(const VARIANT& image) noexcept
{
    return Kesra::ComResult([&] { _com_util::CheckError(ReadImage(BytesOf(image))); });
}

HRESULT CPropCollection::ReadImage(const std::vector<unsigned char>& image) noexcept
{
    return Kesra::ComResult([&] {
        Properties.clear();
        if (IsLong(image))
            ReadLongImage(image);
        else if (!image.empty())
            ReadPacketImage(image);
    });
}

std::vector<unsigned char> CPropCollection::Image() const
{
    CNTPacket packet;
    if (!WriteTo(packet))
        return LongImage();
    return Bytes(packet.GetBuf(), packet.GetBuf() + packet.GetBufSize());
}

std::vector<unsigned char> CPropCollection::LongImage() const
{
    Bytes image;
    PutSize(image, 0);
    PutSize(image, Properties.size());
    for (const auto& [name, value] : Properties) {
        PutBlock(image, static_cast<const char*>(name));
        if (IsText(value))
            PutText(image, value);
        else
            PutValue(image, value);
    }
    return image;
}

void CPropCollection::ReadPacketImage(const std::vector<unsigned char>& image)
{
    ImageReader reader(image);
    const std::string_view header = reader.Take(CNTPacket::HeaderSize);
    unsigned short count = 0;
    std::memcpy(&count, header.data(), std::min(sizeof count, header.size()));

    // Reading would go by rules of its own for the packet's number; those of writing count.
    const bool plain = count == CNTPacket::PlainWrite1 || count == CNTPacket::PlainWrite2;
    CNTPacket packet(CNTPacket::Unzeroed{});
    Load(packet, plain ? CNTPacket::PlainRead : 0, reader.Take(CNTPacket::Capacity));
    ReadFrom(packet, count);
}

void CPropCollection::ReadLongImage(const std::vector<unsigned char>& image)
{
    ImageReader reader(image);
    reader.Take(MarkSize);
    _variant_t value;
    value.decVal = {}; // what a short value lacks
    for (std::uint32_t count = reader.TakeSize(); count > 0 && !reader.AtEnd(); --count) {
        const std::string name(reader.TakeBlock());
        ReadValue(reader.TakeBlock(), value);
        Append(name.c_str(), value);
    }
}
