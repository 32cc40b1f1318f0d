// Functions that take the place of the system's of the same names. What a failing call would have done all
// the same, it does: a descriptor is closed, whatever close says.

#include "tests/interposed/Calls.h"

#include <atomic>
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

/// The system's own function of a name, looked up at the first call. It needs no guard of a static object,
/// which ThreadSanitizer cannot serve when it makes such calls itself.
template <class Function> class Next
{
public:
    constexpr explicit Next(const char* name) : Name(name) {}

    operator Function*()
    {
        if (Function* known = Found.load(std::memory_order_relaxed); known != nullptr)
            return known;
        auto* function = reinterpret_cast<Function*>(dlsym(RTLD_NEXT, Name));
        Found.store(function, std::memory_order_relaxed);
        return function;
    }

private:
    const char* const Name;
    std::atomic<Function*> Found{nullptr};
};

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
    static constinit Next<int(int, int, int)> next("socket");
    return Fails(Call::Socket, __builtin_return_address(0)) ? -1 : next(family, type, protocol);
}

int connect(int socket, const sockaddr* address, socklen_t size)
{
    static constinit Next<int(int, const sockaddr*, socklen_t)> next("connect");
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
    static constinit Next<int(int, int, int, const void*, socklen_t)> next("setsockopt");
    return Fails(Call::SetSocketOption, __builtin_return_address(0))
               ? -1
               : next(socket, level, option, value, size);
}

int getsockopt(int socket, int level, int option, void* value, socklen_t* size) noexcept
{
    static constinit Next<int(int, int, int, void*, socklen_t*)> next("getsockopt");
    return Fails(Call::GetSocketOption, __builtin_return_address(0))
               ? -1
               : next(socket, level, option, value, size);
}

int shutdown(int socket, int how) noexcept
{
    static constinit Next<int(int, int)> next("shutdown");
    return Fails(Call::Shutdown, __builtin_return_address(0)) ? -1 : next(socket, how);
}

int ioctl(int descriptor, unsigned long request, ...) noexcept
{
    static constinit Next<int(int, unsigned long, ...)> next("ioctl");
    std::va_list arguments;
    va_start(arguments, request);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    return Fails(Call::Control, __builtin_return_address(0)) ? -1 : next(descriptor, request, argument);
}

ssize_t send(int socket, const void* data, size_t size, int flags)
{
    static constinit Next<ssize_t(int, const void*, size_t, int)> next("send");
    const auto share = ShareOf(Call::Send, __builtin_return_address(0), size);
    return share ? next(socket, data, *share, flags) : -1;
}

ssize_t recv(int socket, void* data, size_t size, int flags)
{
    static constinit Next<ssize_t(int, void*, size_t, int)> next("recv");
    const Call call = (flags & MSG_DONTWAIT) != 0 ? Call::Receive : Call::WaitingReceive;
    const auto share = ShareOf(call, __builtin_return_address(0), size);
    return share ? next(socket, data, *share, flags) : -1;
}

int poll(pollfd* descriptors, nfds_t count, int timeout)
{
    static constinit Next<int(pollfd*, nfds_t, int)> next("poll");
    return Fails(Call::Poll, __builtin_return_address(0)) ? -1 : next(descriptors, count, timeout);
}

int ppoll(pollfd* descriptors, nfds_t count, const timespec* timeout, const sigset_t* signals)
{
    static constinit Next<int(pollfd*, nfds_t, const timespec*, const sigset_t*)> next("ppoll");
    return Fails(Call::WaitingPoll, __builtin_return_address(0)) ? -1
                                                                 : next(descriptors, count, timeout, signals);
}

int eventfd(unsigned value, int flags) noexcept
{
    static constinit Next<int(unsigned, int)> next("eventfd");
    return Fails(Call::MakeEventDescriptor, __builtin_return_address(0)) ? -1 : next(value, flags);
}

int eventfd_read(int descriptor, eventfd_t* value)
{
    static constinit Next<int(int, eventfd_t*)> next("eventfd_read");
    return Fails(Call::ReadEventDescriptor, __builtin_return_address(0)) ? -1 : next(descriptor, value);
}

int eventfd_write(int descriptor, eventfd_t value)
{
    static constinit Next<int(int, eventfd_t)> next("eventfd_write");
    // It only fails when the counter is full, and then whoever waits for it is awake.
    const int result = next(descriptor, value);
    return Fails(Call::WriteEventDescriptor, __builtin_return_address(0)) ? -1 : result;
}

long syscall(long number, ...) noexcept
{
    static constinit Next<long(long, ...)> next("syscall");
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
    static constinit Next<int(const char*, hostent*, char*, size_t, hostent**, int*)> next("gethostbyname_r");
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
    static constinit Next<int(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*)> next(
        "pthread_create");
    const int error = FailureOf(Call::CreateThread, __builtin_return_address(0));
    return error != 0 ? error : next(thread, attributes, start, argument);
}

int pthread_attr_init(pthread_attr_t* attributes) noexcept
{
    static constinit Next<int(pthread_attr_t*)> next("pthread_attr_init");
    const int error = FailureOf(Call::InitAttributes, __builtin_return_address(0));
    return error != 0 ? error : next(attributes);
}

int pthread_attr_setdetachstate(pthread_attr_t* attributes, int state) noexcept
{
    static constinit Next<int(pthread_attr_t*, int)> next("pthread_attr_setdetachstate");
    const int error = FailureOf(Call::SetDetached, __builtin_return_address(0));
    return error != 0 ? error : next(attributes, state);
}

int pthread_attr_setstacksize(pthread_attr_t* attributes, size_t size) noexcept
{
    static constinit Next<int(pthread_attr_t*, size_t)> next("pthread_attr_setstacksize");
    const int error = FailureOf(Call::SetStackSize, __builtin_return_address(0));
    return error != 0 ? error : next(attributes, size);
}

int pthread_key_create(pthread_key_t* key, void (*leave)(void*)) noexcept
{
    static constinit Next<int(pthread_key_t*, void (*)(void*))> next("pthread_key_create");
    const int error = FailureOf(Call::CreateKey, __builtin_return_address(0));
    return error != 0 ? error : next(key, leave);
}

int pthread_setspecific(pthread_key_t key, const void* value) noexcept
{
    static constinit Next<int(pthread_key_t, const void*)> next("pthread_setspecific");
    const int error = FailureOf(Call::SetSpecific, __builtin_return_address(0));
    return error != 0 ? error : next(key, value);
}

int getpriority(__priority_which_t which, id_t who) noexcept
{
    static constinit Next<int(__priority_which_t, id_t)> next("getpriority");
    return Fails(Call::GetPriority, __builtin_return_address(0)) ? -1 : next(which, who);
}

int setpriority(__priority_which_t which, id_t who, int priority) noexcept
{
    static constinit Next<int(__priority_which_t, id_t, int)> next("setpriority");
    return Fails(Call::SetPriority, __builtin_return_address(0)) ? -1 : next(which, who, priority);
}

int nanosleep(const timespec* time, timespec* left)
{
    static constinit Next<int(const timespec*, timespec*)> next("nanosleep");
    return Fails(Call::Rest, __builtin_return_address(0)) ? -1 : next(time, left);
}

void* mmap(void* address, size_t size, int protection, int flags, int file, off_t offset) noexcept
{
    static constinit Next<void*(void*, size_t, int, int, int, off_t)> next("mmap");
    if (Fails(Call::MapMemory, __builtin_return_address(0)))
        return MAP_FAILED;
    void* const pages = next(address, size, protection, flags, file, offset);
    Interposed::MappedBytes += pages != MAP_FAILED ? static_cast<long>(size) : 0;
    return pages;
}

int munmap(void* address, size_t size) noexcept
{
    static constinit Next<int(void*, size_t)> next("munmap");
    if (Fails(Call::UnmapMemory, __builtin_return_address(0)))
        return -1;
    const int result = next(address, size);
    Interposed::MappedBytes -= result == 0 ? static_cast<long>(size) : 0;
    return result;
}

int madvise(void* address, size_t size, int advice) noexcept
{
    static constinit Next<int(void*, size_t, int)> next("madvise");
    return Fails(Call::AdviseMemory, __builtin_return_address(0)) ? -1 : next(address, size, advice);
}

int open(const char* name, int flags, ...)
{
    static constinit Next<int(const char*, int, ...)> next("open");
    std::va_list arguments;
    va_start(arguments, flags);
    const unsigned mode = va_arg(arguments, unsigned);
    va_end(arguments);
    return Fails(Call::Open, __builtin_return_address(0)) ? -1 : next(name, flags, mode);
}

int close(int descriptor)
{
    static constinit Next<int(int)> next("close");
    const int result = next(descriptor);
    return Fails(Call::Close, __builtin_return_address(0)) ? -1 : result;
}

ssize_t read(int descriptor, void* data, size_t size)
{
    static constinit Next<ssize_t(int, void*, size_t)> next("read");
    const auto share = ShareOf(Call::Read, __builtin_return_address(0), size);
    return share ? next(descriptor, data, *share) : -1;
}

ssize_t write(int descriptor, const void* data, size_t size)
{
    static constinit Next<ssize_t(int, const void*, size_t)> next("write");
    const auto share = ShareOf(Call::Write, __builtin_return_address(0), size);
    return share ? next(descriptor, data, *share) : -1;
}

off_t lseek(int descriptor, off_t offset, int from) noexcept
{
    static constinit Next<off_t(int, off_t, int)> next("lseek");
    return Fails(Call::Seek, __builtin_return_address(0)) ? -1 : next(descriptor, offset, from);
}

int fstat(int descriptor, struct stat* entry) noexcept
{
    static constinit Next<int(int, struct stat*)> next("fstat");
    return Fails(Call::Status, __builtin_return_address(0)) ? -1 : next(descriptor, entry);
}

int stat(const char* name, struct stat* entry) noexcept
{
    static constinit Next<int(const char*, struct stat*)> next("stat");
    return Fails(Call::Status, __builtin_return_address(0)) ? -1 : next(name, entry);
}

int flock(int descriptor, int operation) noexcept
{
    static constinit Next<int(int, int)> next("flock");
    return Fails(Call::Lock, __builtin_return_address(0)) ? -1 : next(descriptor, operation);
}

int unlink(const char* name) noexcept
{
    static constinit Next<int(const char*)> next("unlink");
    return Fails(Call::Unlink, __builtin_return_address(0)) ? -1 : next(name);
}

int mkdir(const char* name, mode_t mode) noexcept
{
    static constinit Next<int(const char*, mode_t)> next("mkdir");
    return Fails(Call::MakeDirectory, __builtin_return_address(0)) ? -1 : next(name, mode);
}

FILE* fopen(const char* name, const char* mode)
{
    static constinit Next<FILE*(const char*, const char*)> next("fopen");
    return Fails(Call::OpenStream, __builtin_return_address(0)) ? nullptr : next(name, mode);
}

int fclose(FILE* file)
{
    static constinit Next<int(FILE*)> next("fclose");
    const int result = next(file);
    return Fails(Call::CloseStream, __builtin_return_address(0)) ? EOF : result;
}

size_t fread(void* data, size_t size, size_t count, FILE* file)
{
    static constinit Next<size_t(void*, size_t, size_t, FILE*)> next("fread");
    return Fails(Call::ReadStream, __builtin_return_address(0)) ? 0 : next(data, size, count, file);
}

size_t fwrite(const void* data, size_t size, size_t count, FILE* file)
{
    static constinit Next<size_t(const void*, size_t, size_t, FILE*)> next("fwrite");
    return Fails(Call::WriteStream, __builtin_return_address(0)) ? 0 : next(data, size, count, file);
}

int fseeko64(FILE* file, off64_t offset, int from)
{
    static constinit Next<int(FILE*, off64_t, int)> next("fseeko64");
    return Fails(Call::SeekStream, __builtin_return_address(0)) ? -1 : next(file, offset, from);
}

off64_t ftello64(FILE* file)
{
    static constinit Next<off64_t(FILE*)> next("ftello64");
    return Fails(Call::TellStream, __builtin_return_address(0)) ? -1 : next(file);
}

int setvbuf(FILE* file, char* buffer, int mode, size_t size) noexcept
{
    static constinit Next<int(FILE*, char*, int, size_t)> next("setvbuf");
    return Fails(Call::BufferStream, __builtin_return_address(0)) ? -1 : next(file, buffer, mode, size);
}

tm* localtime_r(const time_t* moment, tm* date) noexcept
{
    static constinit Next<tm*(const time_t*, tm*)> next("localtime_r");
    return Fails(Call::LocalTime, __builtin_return_address(0)) ? nullptr : next(moment, date);
}

iconv_t iconv_open(const char* to, const char* from)
{
    static constinit Next<iconv_t(const char*, const char*)> next("iconv_open");
    return Fails(Call::OpenConverter, __builtin_return_address(0)) ? reinterpret_cast<iconv_t>(-1)
                                                                   : next(to, from);
}
}
