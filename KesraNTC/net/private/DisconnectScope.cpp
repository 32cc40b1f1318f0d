#include "KesraNTC/net/private/DisconnectScope.h"

namespace Kesra
{

DisconnectScope::DisconnectScope(const IoState* io, std::uint64_t generation, Kind kind)
    : Io(io), Generation(generation), KindOfScope(kind), Outer(Innermost())
{
    Innermost() = this;
}

DisconnectScope::~DisconnectScope()
{
    Innermost() = Outer;
}

DisconnectScope*& DisconnectScope::Innermost()
{
    static thread_local DisconnectScope* innermost = nullptr;
    return innermost;
}

const DisconnectScope* DisconnectScope::Find(const IoState* io)
{
    const DisconnectScope* scope = Innermost();
    while (scope != nullptr && scope->Io != io)
        scope = scope->Outer;
    return scope;
}

const DisconnectScope* DisconnectScope::Find(const IoState* io, Kind kind)
{
    const DisconnectScope* scope = Innermost();
    while (scope != nullptr && (scope->Io != io || scope->KindOfScope != kind))
        scope = scope->Outer;
    return scope;
}

void DisconnectScope::Renew(const IoState* io, std::uint64_t generation)
{
    for (DisconnectScope* scope = Innermost(); scope != nullptr; scope = scope->Outer)
        if (scope->Io == io)
            scope->Generation = generation;
}

} // namespace Kesra
