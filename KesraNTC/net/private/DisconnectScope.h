#pragma once

#include <cstdint>

namespace Kesra
{

struct IoState;

/// While it lives, what this thread does in the name of one connection touches no newer one: a receive thread
/// speaks for its own, a request for the one that it was made on.
class DisconnectScope
{
public:
    enum Kind { Thread, Request };

    DisconnectScope(const IoState* io, std::uint64_t generation, Kind kind);
    ~DisconnectScope();
    DisconnectScope(const DisconnectScope&) = delete;
    DisconnectScope& operator=(const DisconnectScope&) = delete;

    /// The innermost scope of this thread for a client, or null; `kind` narrows the search.
    static const DisconnectScope* Find(const IoState* io);
    static const DisconnectScope* Find(const IoState* io, Kind kind);
    /// This thread has begun a newer connection of the client: from now on it speaks for that one.
    static void Renew(const IoState* io, std::uint64_t generation);

    std::uint64_t GetGeneration() const { return Generation; }

private:
    static DisconnectScope*& Innermost();

    const IoState* const Io;
    std::uint64_t Generation;
    const Kind KindOfScope;
    DisconnectScope* const Outer;
};

} // namespace Kesra
