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
/// What a platform call reports as failed is thrown as _com_error, and so is memory that does not suffice
/// (E_OUTOFMEMORY); copying a whole collection may throw std::bad_alloc instead. A pair that cannot be stored
/// leaves the others as they were. A collection belongs to one thread at a time.
class KESRANTC_API CPropCollection
{
public:
    CPropCollection() = default;
    CPropCollection(const CPropCollection&) = default;
    /// See CopyFrom.
    CPropCollection(_variant_t image) { CopyFrom(image); }
    ~CPropCollection() = default;

    CPropCollection& operator=(const CPropCollection&) = default;
    /// As CopyFrom.
    CPropCollection& operator=(const std::vector<unsigned char>& image)
    {
        CopyFrom(image);
        return *this;
    }
    CPropCollection& operator=(const _variant_t& image)
    {
        CopyFrom(image);
        return *this;
    }

    /// A copy of the value, or an empty variant when the collection has no such name.
    _variant_t GetProperty(const char* name) const
    {
        const _variant_t* value = Find(name);
        return value != nullptr ? *value : _variant_t();
    }
    /// Stores a copy of the value. A name that is there already keeps the case it was first stored in.
    void SetProperty(const char* name, const _variant_t& value)
    {
        _variant_t copy(value);
        _com_util::CheckError(Put(name, copy));
    }
    /// Nothing happens when the collection has no such name.
    void EraseProperty(const char* name);

    /// Replaces the pairs by those of a byte image; an empty vector has none. Bytes that are no image yield
    /// some pairs or none, and nothing beyond the vector is read.
    void CopyFrom(const std::vector<unsigned char>& image) { _com_util::CheckError(ReadImage(image)); }
    /// Replaces the pairs by those of a byte image in a one-dimensional VT_UI1 array; any other variant has
    /// none.
    void CopyFrom(_variant_t image) { _com_util::CheckError(ReadImage(image)); }
    /// The byte image, from which CopyFrom makes the same pairs again, as far as their types travel (see the
    /// variant's operator<<) and in the ANSI code page: the packet that operator<< writes where one packet is
    /// enough, and an unscrambled image of any size otherwise.
    operator std::vector<unsigned char>() const
    {
        std::vector<unsigned char> image;
        _com_util::CheckError(WriteImage(image));
        return image;
    }
    /// The byte image as a VT_UI1 array.
    operator _variant_t() const
    {
        _variant_t image;
        _com_util::CheckError(WriteImage(image));
        return image;
    }

    /// Writes the number of pairs in 4 bytes, then name and value of each in ascending order. What the packet
    /// has no room for is left out.
    friend CNTPacket& operator<<(CNTPacket& packet, const CPropCollection& properties)
    {
        _com_util::CheckError(properties.WritePairs(packet));
        return packet;
    }
    /// Replaces the pairs by those in the packet, however many it promises. The first of two equal names
    /// wins.
    friend CNTPacket& operator>>(CNTPacket& packet, CPropCollection& properties)
    {
        _com_util::CheckError(properties.ReadPairs(packet));
        return packet;
    }

private:
    struct NameOrder {
        using is_transparent = void;
        bool operator()(const char* left, const char* right) const;
    };

    // What the public operations do, with its errors as codes, see ComResult.h.
    HRESULT Put(const char* name, _variant_t& value) noexcept;
    HRESULT ReadImage(const std::vector<unsigned char>& image) noexcept;
    HRESULT ReadImage(const VARIANT& image) noexcept;
    HRESULT WriteImage(std::vector<unsigned char>& image) const noexcept;
    HRESULT WriteImage(_variant_t& image) const noexcept;
    HRESULT ReadPairs(CNTPacket& packet) noexcept;
    HRESULT WritePairs(CNTPacket& packet) const noexcept;

    const _variant_t* Find(const char* name) const;
    bool WriteTo(CNTPacket& packet) const;
    void ReadFrom(CNTPacket& packet, int count);
    void Append(const char* name, _variant_t& value);
    void ReadPacketImage(const std::vector<unsigned char>& image);
    void ReadLongImage(const std::vector<unsigned char>& image);
    std::vector<unsigned char> Image() const;
    std::vector<unsigned char> LongImage() const;

    std::map<CString, _variant_t, NameOrder> Properties;
};
