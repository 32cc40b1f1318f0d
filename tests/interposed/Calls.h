#pragma once

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <optional>

// Functions of the same names take the place of the system's and ask here before they do their work.

namespace Interposed
{

/// The calls of the system that can be made to fail. Where a call exists in several widths or forms they
/// count as one.
enum class Call : unsigned {
    Socket,
    Connect,
    SetSocketOption,
    GetSocketOption,
    Shutdown,
    Control,
    Send,
    Receive,
    WaitingReceive, ///< one that may wait
    Poll,
    WaitingPoll, ///< ppoll
    MakeEventDescriptor,
    ReadEventDescriptor,
    WriteEventDescriptor,
    Futex,
    ResolveName,
    CreateThread,
    InitAttributes,
    SetDetached,
    SetStackSize,
    CreateKey,
    SetSpecific,
    GetPriority,
    SetPriority,
    Rest,
    MapMemory,
    UnmapMemory,
    AdviseMemory,
    Allocate,
    AllocateZeroed,
    New,
    NewWithoutThrow,
    Open,
    Close,
    Read,
    Write,
    Seek,
    Status,
    Lock,
    Unlink,
    MakeDirectory,
    OpenStream,
    CloseStream,
    ReadStream,
    WriteStream,
    SeekStream,
    TellStream,
    BufferStream,
    LocalTime,
    OpenConverter,
    Count
};

constexpr std::size_t CallCount = static_cast<std::size_t>(Call::Count);

/// Bytes of pages that have been taken from the system and not given back.
extern std::atomic<long> MappedBytes;

// The program says what becomes of each call; `caller` is where it returns to.

/// 0 when the call may happen, else the errno that it fails with.
int FailureOf(Call call, const void* caller);

/// The same, setting errno: true when the call has failed.
inline bool Fails(Call call, const void* caller)
{
    const int error = FailureOf(call, caller);
    if (error != 0)
        errno = error;
    return error != 0;
}

/// How many of so many bytes a transfer may move; nothing when it fails, with errno set.
std::optional<std::size_t> ShareOf(Call call, const void* caller, std::size_t size);

} // namespace Interposed
