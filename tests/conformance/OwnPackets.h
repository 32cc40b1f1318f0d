#pragma once

#include "tests/conformance/Recording.h"

#include "KesraNTC/net/CPropCollection.h"
#include "KesraNTC/net/VariantEncoding.h"

#include <filesystem>
#include <string>

namespace Kesra
{

/// Packets as a game would write them for itself, with the forms that no request or message carries.
class OwnPackets
{
public:
    explicit OwnPackets(Recording& recording) : Record(recording) {}

    void WriteAll();
    /// Writes own.bin.
    void Save(const std::filesystem::path& directory) const;

private:
    void WriteVariants();
    void WriteCollection();

    /// One packet of values that the recording states as they are.
    template <class... Values> void Write(unsigned short number, const std::string& forms, Values... values)
    {
        Append(number, values...);
        Record.Own(number, forms, Fields(values...));
    }

    /// One packet that holds a variant, which the recording states as a tag and perhaps a value.
    template <class... Value> void WriteVariant(const _variant_t& variant, unsigned short tag, Value... value)
    {
        Append(VariantNumber, variant);
        Record.Own(VariantNumber, "variant", Fields(tag, value...));
    }

    template <class... Values> void Append(unsigned short number, const Values&... values)
    {
        CNTPacket packet;
        packet << number << static_cast<unsigned short>(0);
        (packet << ... << values);
        Bytes.append(reinterpret_cast<const char*>(packet.GetBuf()), packet.GetBufSize());
    }

    static constexpr unsigned short VariantNumber = 710;
    static constexpr unsigned short CollectionNumber = 711;

    Recording& Record;
    std::string Bytes;
};

} // namespace Kesra
