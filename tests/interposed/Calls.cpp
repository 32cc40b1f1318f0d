// Functions that take the place of the system's of the same names. What a failing call would have done all
// the same, it does: a descriptor is closed, whatever close says.

#include "tests/interposed/Calls.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <ctime>
#include <dlfcn.h>
#include <fcntl.h>
#include <iconv.h>
#include <linux/futex.h>
#include <netdb.h>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

using Interposed::Call;
using Interposed::Fails;
using Interposed::FailureOf;
using Interposed::ShareOf;

namespace
{

/// The system's own function of a type and name.
template <class Function> Function* Next(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

bool IsWake(long operation)
{
    return (operation & FUTEX_CMD_MASK) == FUTEX_WAKE;
}

/// The resolver's own code for what an errno stands for here.
int ResolverError(int error)
{
    return error == EAGAIN ? TRY_AGAIN : error == ENOENT ? HOST_NOT_FOUND : NETDB_INTERNAL;
}

} // namespace

std::atomic<long> Interposed::MappedBytes{0};

extern "C" {

int socket(int family, int type, int protocol) noexcept
{
    static const auto next = Next<int(int, int, int)>("socket");
    return Fails(Call::Socket, __builtin_return_address(0)) ? -1 : next(family, type, protocol);
}

int connect(int socket, const sockaddr* address, socklen_t size)
{
    static const auto next = Next<int(int, const sockaddr*, socklen_t)>("connect");
    const int error = FailureOf(Call::Connect, __builtin_return_address(0));
    // Interrupted, the attempt goes on.
    const int result = error == 0 || error == EINTR ? next(socket, address, size) : -1;
    if (error == 0)
        return result;
    errno = error;
    return -1;
}

int setsockopt(int socket, int level, int option, const void* value, socklen_t size) noexcept
{
    static const auto next = Next<int(int, int, int, const void*, socklen_t)>("setsockopt");
    return Fails(Call::SetSocketOption, __builtin_return_address(0))
               ? -1
               : next(socket, level, option, value, size);
}

int getsockopt(int socket, int level, int option, void* value, socklen_t* size) noexcept
{
    static const auto next = Next<int(int, int, int, void*, socklen_t*)>("getsockopt");
    return Fails(Call::GetSocketOption, __builtin_return_address(0))
               ? -1
               : next(socket, level, option, value, size);
}

int shutdown(int socket, int how) noexcept
{
    static const auto next = Next<int(int, int)>("shutdown");
    return Fails(Call::Shutdown, __builtin_return_address(0)) ? -1 : next(socket, how);
}

int ioctl(int descriptor, unsigned long request, ...) noexcept
{
    static const auto next = Next<int(int, unsigned long, ...)>("ioctl");
    std::va_list arguments;
    va_start(arguments, request);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    return Fails(Call::Control, __builtin_return_address(0)) ? -1 : next(descriptor, request, argument);
}

ssize_t send(int socket, const void* data, size_t size, int flags)
{
    static const auto next = Next<ssize_t(int, const void*, size_t, int)>("send");
    const auto share = ShareOf(Call::Send, __builtin_return_address(0), size);
    return share ? next(socket, data, *share, flags) : -1;
}

ssize_t recv(int socket, void* data, size_t size, int flags)
{
    static const auto next = Next<ssize_t(int, void*, size_t, int)>("recv");
    const Call call = (flags & MSG_DONTWAIT) != 0 ? Call::Receive : Call::WaitingReceive;
    const auto share = ShareOf(call, __builtin_return_address(0), size);
    return share ? next(socket, data, *share, flags) : -1;
}

int poll(pollfd* descriptors, nfds_t count, int timeout)
{
    static const auto next = Next<int(pollfd*, nfds_t, int)>("poll");
    return Fails(Call::Poll, __builtin_return_address(0)) ? -1 : next(descriptors, count, timeout);
}

int ppoll(pollfd* descriptors, nfds_t count, const timespec* timeout, const sigset_t* signals)
{
    static const auto next = Next<int(pollfd*, nfds_t, const timespec*, const sigset_t*)>("ppoll");
    return Fails(Call::WaitingPoll, __builtin_return_address(0)) ? -1
                                                                 : next(descriptors, count, timeout, signals);
}

int eventfd(unsigned value, int flags) noexcept
{
    static const auto next = Next<int(unsigned, int)>("eventfd");
    return Fails(Call::MakeEventDescriptor, __builtin_return_address(0)) ? -1 : next(value, flags);
}

int eventfd_read(int descriptor, eventfd_t* value)
{
    static const auto next = Next<int(int, eventfd_t*)>("eventfd_read");
    return Fails(Call::ReadEventDescriptor, __builtin_return_address(0)) ? -1 : next(descriptor, value);
}

int eventfd_write(int descriptor, eventfd_t value)
{
    static const auto next = Next<int(int, eventfd_t)>("eventfd_write");
    // It only fails when the counter is full, and then whoever waits for it is awake.
    const int result = next(descriptor, value);
    return Fails(Call::WriteEventDescriptor, __builtin_return_address(0)) ? -1 : result;
}

long syscall(long number, ...) noexcept
{
    static const auto next = Next<long(long, ...)>("syscall");
    long values[6];
    std::va_list arguments;
    va_start(arguments, number);
    for (long& value : values)
        value = va_arg(arguments, long);
    va_end(arguments);
    const int error = number == SYS_futex ? FailureOf(Call::Futex, __builtin_return_address(0)) : 0;
    const bool happens = error == 0 || IsWake(values[1]);
    const long result =
        happens ? next(number, values[0], values[1], values[2], values[3], values[4], values[5]) : -1;
    if (error == 0)
        return result;
    errno = error;
    return -1;
}

int gethostbyname_r(const char* name, hostent* entry, char* storage, size_t size, hostent** found,
                    int* reason)
{
    static const auto next =
        Next<int(const char*, hostent*, char*, size_t, hostent**, int*)>("gethostbyname_r");
    const int error = FailureOf(Call::ResolveName, __builtin_return_address(0));
    if (error == 0)
        return next(name, entry, storage, size, found, reason);
    *found = nullptr;
    *reason = ResolverError(error);
    return error;
}

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                   void* argument) noexcept
{
    static const auto next =
        Next<int(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*)>("pthread_create");
    const int error = FailureOf(Call::CreateThread, __builtin_return_address(0));
    return error != 0 ? error : next(thread, attributes, start, argument);
}

int pthread_attr_init(pthread_attr_t* attributes) noexcept
{
    static const auto next = Next<int(pthread_attr_t*)>("pthread_attr_init");
    const int error = FailureOf(Call::InitAttributes, __builtin_return_address(0));
    return error != 0 ? error : next(attributes);
}

int pthread_attr_setdetachstate(pthread_attr_t* attributes, int state) noexcept
{
    static const auto next = Next<int(pthread_attr_t*, int)>("pthread_attr_setdetachstate");
    const int error = FailureOf(Call::SetDetached, __builtin_return_address(0));
    return error != 0 ? error : next(attributes, state);
}

int pthread_attr_setstacksize(pthread_attr_t* attributes, size_t size) noexcept
{
    static const auto next = Next<int(pthread_attr_t*, size_t)>("pthread_attr_setstacksize");
    const int error = FailureOf(Call::SetStackSize, __builtin_return_address(0));
    return error != 0 ? error : next(attributes, size);
}

int pthread_key_create(pthread_key_t* key, void (*leave)(void*)) noexcept
{
    static const auto next = Next<int(pthread_key_t*, void (*)(void*))>("pthread_key_create");
    const int error = FailureOf(Call::CreateKey, __builtin_return_address(0));
    return error != 0 ? error : next(key, leave);
}

int pthread_setspecific(pthread_key_t key, const void* value) noexcept
{
    static const auto next = Next<int(pthread_key_t, const void*)>("pthread_setspecific");
    const int error = FailureOf(Call::SetSpecific, __builtin_return_address(0));
    return error != 0 ? error : next(key, value);
}

int getpriority(__priority_which_t which, id_t who) noexcept
{
    static const auto next = Next<int(__priority_which_t, id_t)>("getpriority");
    return Fails(Call::GetPriority, __builtin_return_address(0)) ? -1 : next(which, who);
}

int setpriority(__priority_which_t which, id_t who, int priority) noexcept
{
    static const auto next = Next<int(__priority_which_t, id_t, int)>("setpriority");
    return Fails(Call::SetPriority, __builtin_return_address(0)) ? -1 : next(which, who, priority);
}

int nanosleep(const timespec* time, timespec* left)
{
    static const auto next = Next<int(const timespec*, timespec*)>("nanosleep");
    return Fails(Call::Rest, __builtin_return_address(0)) ? -1 : next(time, left);
}

void* mmap(void* address, size_t size, int protection, int flags, int file, off_t offset) noexcept
{
    static const auto next = Next<void*(void*, size_t, int, int, int, off_t)>("mmap");
    if (Fails(Call::MapMemory, __builtin_return_address(0)))
        return MAP_FAILED;
    void* const pages = next(address, size, protection, flags, file, offset);
    Interposed::MappedBytes += pages != MAP_FAILED ? static_cast<long>(size) : 0;
    return pages;
}

int munmap(void* address, size_t size) noexcept
{
    static const auto next = Next<int(void*, size_t)>("munmap");
    if (Fails(Call::UnmapMemory, __builtin_return_address(0)))
        return -1;
    const int result = next(address, size);
    Interposed::MappedBytes -= result == 0 ? static_cast<long>(size) : 0;
    return result;
}

int madvise(void* address, size_t size, int advice) noexcept
{
    static const auto next = Next<int(void*, size_t, int)>("madvise");
    return Fails(Call::AdviseMemory, __builtin_return_address(0)) ? -1 : next(address, size, advice);
}

int open(const char* name, int flags, ...)
{
    static const auto next = Next<int(const char*, int, ...)>("open");
    std::va_list arguments;
    va_start(arguments, flags);
    const unsigned mode = va_arg(arguments, unsigned);
    va_end(arguments);
    return Fails(Call::Open, __builtin_return_address(0)) ? -1 : next(name, flags, mode);
}

int close(int descriptor)
{
    static const auto next = Next<int(int)>("close");
    const int result = next(descriptor);
    return Fails(Call::Close, __builtin_return_address(0)) ? -1 : result;
}

ssize_t read(int descriptor, void* data, size_t size)
{
    static const auto next = Next<ssize_t(int, void*, size_t)>("read");
    const auto share = ShareOf(Call::Read, __builtin_return_address(0), size);
    return share ? next(descriptor, data, *share) : -1;
}

ssize_t write(int descriptor, const void* data, size_t size)
{
    static const auto next = Next<ssize_t(int, const void*, size_t)>("write");
    const auto share = ShareOf(Call::Write, __builtin_return_address(0), size);
    return share ? next(descriptor, data, *share) : -1;
}

off_t lseek(int descriptor, off_t offset, int from) noexcept
{
    static const auto next = Next<off_t(int, off_t, int)>("lseek");
    return Fails(Call::Seek, __builtin_return_address(0)) ? -1 : next(descriptor, offset, from);
}

int fstat(int descriptor, struct stat* entry) noexcept
{
    static const auto next = Next<int(int, struct stat*)>("fstat");
    return Fails(Call::Status, __builtin_return_address(0)) ? -1 : next(descriptor, entry);
}

int stat(const char* name, struct stat* entry) noexcept
{
    static const auto next = Next<int(const char*, struct stat*)>("stat");
    return Fails(Call::Status, __builtin_return_address(0)) ? -1 : next(name, entry);
}

int flock(int descriptor, int operation) noexcept
{
    static const auto next = Next<int(int, int)>("flock");
    return Fails(Call::Lock, __builtin_return_address(0)) ? -1 : next(descriptor, operation);
}

int unlink(const char* name) noexcept
{
    static const auto next = Next<int(const char*)>("unlink");
    return Fails(Call::Unlink, __builtin_return_address(0)) ? -1 : next(name);
}

int mkdir(const char* name, mode_t mode) noexcept
{
    static const auto next = Next<int(const char*, mode_t)>("mkdir");
    return Fails(Call::MakeDirectory, __builtin_return_address(0)) ? -1 : next(name, mode);
}

FILE* fopen(const char* name, const char* mode)
{
    static const auto next = Next<FILE*(const char*, const char*)>("fopen");
    return Fails(Call::OpenStream, __builtin_return_address(0)) ? nullptr : next(name, mode);
}

int fclose(FILE* file)
{
    static const auto next = Next<int(FILE*)>("fclose");
    const int result = next(file);
    return Fails(Call::CloseStream, __builtin_return_address(0)) ? EOF : result;
}

size_t fread(void* data, size_t size, size_t count, FILE* file)
{
    static const auto next = Next<size_t(void*, size_t, size_t, FILE*)>("fread");
    return Fails(Call::ReadStream, __builtin_return_address(0)) ? 0 : next(data, size, count, file);
}

size_t fwrite(const void* data, size_t size, size_t count, FILE* file)
{
    static const auto next = Next<size_t(const void*, size_t, size_t, FILE*)>("fwrite");
    return Fails(Call::WriteStream, __builtin_return_address(0)) ? 0 : next(data, size, count, file);
}

int fseeko64(FILE* file, off64_t offset, int from)
{
    static const auto next = Next<int(FILE*, off64_t, int)>("fseeko64");
    return Fails(Call::SeekStream, __builtin_return_address(0)) ? -1 : next(file, offset, from);
}

off64_t ftello64(FILE* file)
{
    static const auto next = Next<off64_t(FILE*)>("ftello64");
    return Fails(Call::TellStream, __builtin_return_address(0)) ? -1 : next(file);
}

int setvbuf(FILE* file, char* buffer, int mode, size_t size) noexcept
{
    static const auto next = Next<int(FILE*, char*, int, size_t)>("setvbuf");
    return Fails(Call::BufferStream, __builtin_return_address(0)) ? -1 : next(file, buffer, mode, size);
}

tm* localtime_r(const time_t* moment, tm* date) noexcept
{
    static const auto next = Next<tm*(const time_t*, tm*)>("localtime_r");
    return Fails(Call::LocalTime, __builtin_return_address(0)) ? nullptr : next(moment, date);
}

iconv_t iconv_open(const char* to, const char* from)
{
    static const auto next = Next<iconv_t(const char*, const char*)>("iconv_open");
    return Fails(Call::OpenConverter, __builtin_return_address(0)) ? reinterpret_cast<iconv_t>(-1)
                                                                   : next(to, from);
}
}
