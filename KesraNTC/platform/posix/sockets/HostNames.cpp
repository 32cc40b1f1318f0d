#include "KesraNTC/platform/posix/sockets/Sockets.h"

#include "KesraNTC/platform/posix/waiting/private/ThreadKey.h"

#include <cerrno>
#include <memory>
#include <new>

namespace
{

constexpr std::size_t FirstSize = 1024;
// No answer of a resolver needs more.
constexpr std::size_t LargestSize = std::size_t{64} * 1024;

/// An entry and the memory behind it.
class NameLookup
{
public:
    /// False when there is no memory, or the resolver never has enough.
    bool Reserve(std::size_t size)
    {
        if (size > LargestSize)
            return false;
        Storage.reset(new (std::nothrow) char[size]);
        Size = Storage != nullptr ? size : 0;
        return Storage != nullptr;
    }

    /// The resolver's own result: ERANGE when it wants more memory.
    int Ask(const char* name, hostent*& found, int& resolverError)
    {
        return gethostbyname_r(name, &Entry, Storage.get(), Size, &found, &resolverError);
    }

    std::size_t GetSize() const { return Size; }

private:
    hostent Entry{};
    std::unique_ptr<char[]> Storage;
    std::size_t Size = 0;
};

/// The calling thread's own, freed with it; null when there is no memory.
NameLookup* CurrentLookup()
{
    static Kesra::ThreadKey key([](void* lookup) { delete static_cast<NameLookup*>(lookup); });
    if (void* known = key.Get(); known != nullptr)
        return static_cast<NameLookup*>(known);
    std::unique_ptr<NameLookup> made(new (std::nothrow) NameLookup);
    return made != nullptr && key.Set(made.get()) ? made.release() : nullptr;
}

hostent* Fail(int error)
{
    WSASetLastError(error);
    return nullptr;
}

int LookupError(int resolverError)
{
    switch (resolverError) {
    case HOST_NOT_FOUND:
        return WSAHOST_NOT_FOUND;
    case TRY_AGAIN:
        return WSATRY_AGAIN;
    case NO_DATA:
        return WSANO_DATA;
    default:
        return WSANO_RECOVERY;
    }
}

} // namespace

// The system's own function of this name returns one entry for the whole process; inside the library this one
// takes its place, whose entry is the calling thread's and valid until its next call.
hostent* gethostbyname(const char* name)
{
    NameLookup* lookup = CurrentLookup();
    if (lookup == nullptr || (lookup->GetSize() == 0 && !lookup->Reserve(FirstSize)))
        return Fail(WSANO_RECOVERY);
    hostent* found = nullptr;
    int resolverError = 0;
    while (lookup->Ask(name, found, resolverError) == ERANGE)
        if (!lookup->Reserve(2 * lookup->GetSize()))
            return Fail(WSANO_RECOVERY);
    return found != nullptr ? found : Fail(LookupError(resolverError));
}
