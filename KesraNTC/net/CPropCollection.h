#pragma once

#include "KesraNTC/base/CString.h"
#include "KesraNTC/net/CNTPacket.h"
#include "KesraNTC/net/VariantEncoding.h"
#include "KesraNTC/platform/Export.h"
#include "KesraNTC/platform/Platform.h"

#include <map>
#include <vector>

/// A set of named variants. A name is found whatever the case of its letters A to Z, in logarithmic time, and
/// names come in ascending order in this sense. A null name counts as the empty one. The collection owns its
/// names and values; copying it copies every pair.
///
/// What a platform call reports as failed is thrown as _com_error. A collection belongs to one thread at a
/// time.
class KESRANTC_API CPropCollection
{
public:
    CPropCollection() = default;
    CPropCollection(const CPropCollection&) = default;
    /// See CopyFrom.
    CPropCollection(_variant_t image);
    ~CPropCollection() = default;

    CPropCollection& operator=(const CPropCollection&) = default;
    CPropCollection& operator=(const std::vector<unsigned char>& image);
    CPropCollection& operator=(const _variant_t& image);

    /// A copy of the value, or an empty variant when the collection has no such name.
    _variant_t GetProperty(const char* name) const;
    /// Stores a copy of the value. A name that is there already keeps the case it was first stored in.
    void SetProperty(const char* name, const _variant_t& value);
    /// Nothing happens when the collection has no such name.
    void EraseProperty(const char* name);

    /// Replaces the pairs by those of a byte image; an empty vector has none. Bytes that are no image yield
    /// some pairs or none, and nothing beyond the vector is read.
    void CopyFrom(const std::vector<unsigned char>& image);
    /// Replaces the pairs by those of a byte image in a one-dimensional VT_UI1 array; any other variant has
    /// none.
    void CopyFrom(_variant_t image);
    /// The byte image, from which CopyFrom makes the same pairs again, as far as their types travel (see the
    /// variant's operator<<) and in the ANSI code page: the packet that operator<< writes where one packet is
    /// enough, and an unscrambled image of any size otherwise.
    operator std::vector<unsigned char>() const;
    /// The byte image as a VT_UI1 array.
    operator _variant_t() const;

private:
    friend KESRANTC_API CNTPacket& operator<<(CNTPacket& packet, const CPropCollection& properties);
    friend KESRANTC_API CNTPacket& operator>>(CNTPacket& packet, CPropCollection& properties);

    struct NameOrder {
        using is_transparent = void;
        bool operator()(const char* left, const char* right) const;
    };

    bool WriteTo(CNTPacket& packet) const;
    void ReadPairs(CNTPacket& packet, int count);
    void Append(const char* name, _variant_t& value);
    void ReadPacketImage(const std::vector<unsigned char>& image);
    void ReadLongImage(const std::vector<unsigned char>& image);
    std::vector<unsigned char> LongImage() const;

    std::map<CString, _variant_t, NameOrder> Properties;
};

/// Writes the number of pairs in 4 bytes, then name and value of each in ascending order. What the packet has
/// no room for is left out.
KESRANTC_API CNTPacket& operator<<(CNTPacket& packet, const CPropCollection& properties);
/// Replaces the pairs by those in the packet, however many it promises. The first of two equal names wins.
KESRANTC_API CNTPacket& operator>>(CNTPacket& packet, CPropCollection& properties);
