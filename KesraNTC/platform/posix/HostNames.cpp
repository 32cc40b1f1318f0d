#include "KesraNTC/platform/posix/Sockets.h"

#include <cerrno>
#include <vector>

namespace
{

struct NameLookup {
    hostent Entry;
    std::vector<char> Storage = std::vector<char>(1024);
};

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
    static thread_local NameLookup lookup;
    hostent* found = nullptr;
    int resolverError = 0;
    while (gethostbyname_r(name, &lookup.Entry, lookup.Storage.data(), lookup.Storage.size(), &found,
                           &resolverError) == ERANGE)
        lookup.Storage.resize(2 * lookup.Storage.size());
    if (found == nullptr)
        WSASetLastError(LookupError(resolverError));
    return found;
}
