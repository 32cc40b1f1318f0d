#include "KesraNTC/net/CPropCollection.h"

#include "KesraNTC/net/private/ComResult.h"

namespace
{

int Folded(char ch)
{
    const auto byte = static_cast<unsigned char>(ch);
    return byte >= 'A' && byte <= 'Z' ? byte + ('a' - 'A') : byte;
}

const char* NameOf(const char* name)
{
    return name != nullptr ? name : "";
}

} // namespace

bool CPropCollection::NameOrder::operator()(const char* left, const char* right) const
{
    while (*left != '\0' && Folded(*left) == Folded(*right)) {
        ++left;
        ++right;
    }
    return Folded(*left) < Folded(*right);
}

const _variant_t* CPropCollection::Find(const char* name) const
{
    const auto found = Properties.find(NameOf(name));
    return found != Properties.end() ? &found->second : nullptr;
}

/// Takes the value over.
HRESULT CPropCollection::Put(const char* name, _variant_t& value) noexcept
{
    return Kesra::ComResult([&] {
        auto found = Properties.find(NameOf(name));
        if (found == Properties.end())
            found = Properties.try_emplace(CString(NameOf(name))).first;
        found->second.Attach(value);
    });
}

void CPropCollection::EraseProperty(const char* name)
{
    const auto found = Properties.find(NameOf(name));
    if (found != Properties.end())
        Properties.erase(found);
}

/// Takes the value over, unless the name is there already. Names arrive in ascending order as a rule.
void CPropCollection::Append(const char* name, _variant_t& value)
{
    const std::size_t before = Properties.size();
    const auto pair = Properties.try_emplace(Properties.end(), CString(name));
    if (Properties.size() == before)
        return;
    const bool isPointing = Kesra::HoldsPointer(value);
    pair->second.Attach(value);
    if (isPointing)
        value.decVal = {};
}

bool CPropCollection::WriteTo(CNTPacket& packet) const
{
    packet << static_cast<unsigned int>(Properties.size());
    bool complete = true;
    for (const auto& [name, value] : Properties) {
        const bool nameFits = Kesra::WriteText(packet, name);
        const bool valueFits = Kesra::WriteVariant(packet, value);
        complete = complete && nameFits && valueFits;
    }
    return complete;
}

void CPropCollection::ReadFrom(CNTPacket& packet, int count)
{
    CString name;
    _variant_t value;
    value.decVal = {}; // what a short value lacks
    // Past the end every further pair has the name of the one before, and is left out.
    for (int i = 0; i < count && (i == 0 || !packet.IsAtEnd()); ++i) {
        packet >> name;
        Kesra::ReadVariant(packet, value);
        Append(name, value);
    }
}

HRESULT CPropCollection::WritePairs(CNTPacket& packet) const noexcept
{
    return Kesra::ComResult([&] { WriteTo(packet); });
}

HRESULT CPropCollection::ReadPairs(CNTPacket& packet) noexcept
{
    return Kesra::ComResult([&] {
        int count = 0;
        packet >> count;
        Properties.clear();
        ReadFrom(packet, count);
    });
}
