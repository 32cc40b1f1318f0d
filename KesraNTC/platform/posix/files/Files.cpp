#include "KesraNTC/platform/posix/files/Files.h"

#include "KesraNTC/platform/posix/waiting/private/KernelObject.h"
#include "KesraNTC/platform/private/DoubleByte.h"

#include <cerrno>
#include <fcntl.h>
#include <limits>
#include <new>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
constexpr mode_t NewFileMode = 0666;

class FileObject final : public Kesra::KernelObject
{
public:
    static constexpr Type ObjectKind = Type::File;

    explicit FileObject(int descriptor) : KernelObject(ObjectKind), Descriptor(descriptor) {}
    ~FileObject() override { close(Descriptor); }

    const int Descriptor;
};

DWORD ErrorOfErrno()
{
    switch (errno) {
    case ENOENT:
        return ERROR_FILE_NOT_FOUND;
    case ENOTDIR:
        return ERROR_PATH_NOT_FOUND;
    case EWOULDBLOCK:
        return ERROR_SHARING_VIOLATION;
    case EMFILE:
    case ENFILE:
        return ERROR_TOO_MANY_OPEN_FILES;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        return ERROR_DISK_FULL;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR:
    case EBADF:
        return ERROR_ACCESS_DENIED;
    default:
        return ERROR_GEN_FAILURE;
    }
}

BOOL Fail(DWORD error)
{
    SetLastError(error);
    return FALSE;
}

std::string LocalName(const char* name)
{
    std::string local = name;
    for (std::size_t at = 0; at < local.size(); ++at)
        if (Kesra::IsLeadByte(local[at]))
            ++at;
        else if (local[at] == '\\')
            local[at] = '/';
    return local;
}

// A name whose folder is missing is another error than a missing file.
DWORD OpenError(const std::string& name)
{
    const DWORD error = ErrorOfErrno();
    const std::size_t slash = name.rfind('/');
    struct stat folder;
    const bool isFolderMissing =
        slash != std::string::npos && slash > 0 && stat(name.substr(0, slash).c_str(), &folder) != 0;
    return error == ERROR_FILE_NOT_FOUND && isFolderMissing ? ERROR_PATH_NOT_FOUND : error;
}

template <typename Call> auto Retry(Call call)
{
    for (;;) {
        const auto result = call();
        if (result >= 0 || errno != EINTR)
            return result;
    }
}

int OpenFlags(DWORD access)
{
    const bool reads = (access & GENERIC_READ) != 0;
    const bool writes = (access & GENERIC_WRITE) != 0;
    return (writes ? reads ? O_RDWR : O_WRONLY : O_RDONLY) | O_CLOEXEC;
}

int Open(const std::string& name, int flags)
{
    return Retry([&] { return open(name.c_str(), flags, NewFileMode); });
}

bool IsFolder(int descriptor)
{
    struct stat entry;
    return fstat(descriptor, &entry) == 0 && S_ISDIR(entry.st_mode);
}

// Where the file system knows no locks, nobody is kept away.
bool TakeForWriting(int descriptor)
{
    return flock(descriptor, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

// Moves all bytes unless an error or the end stops it; -1 when the error came before the first byte.
template <typename Transfer> std::int64_t TransferAll(DWORD size, Transfer transfer)
{
    std::int64_t done = 0;
    while (done < size) {
        const ssize_t moved = Retry(
            [&] { return transfer(static_cast<std::size_t>(done), size - static_cast<std::size_t>(done)); });
        if (moved < 0 && done == 0)
            return -1;
        if (moved <= 0)
            break;
        done += moved;
    }
    return done;
}

template <typename Transfer>
BOOL MoveBytes(HANDLE file, DWORD size, LPDWORD moved, const OVERLAPPED* overlapped, Transfer transfer)
{
    if (moved)
        *moved = 0;
    const auto* object = Kesra::FromHandle<FileObject>(file);
    if (!object)
        return Fail(ERROR_INVALID_HANDLE);
    if (overlapped)
        return Fail(ERROR_INVALID_PARAMETER);
    const std::int64_t done = TransferAll(size, [&](std::size_t offset, std::size_t count) {
        return transfer(object->Descriptor, offset, count);
    });
    if (done < 0)
        return Fail(ErrorOfErrno());
    if (moved)
        *moved = static_cast<DWORD>(done);
    return TRUE;
}
} // namespace

HANDLE CreateFileA(LPCSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES, DWORD disposition, DWORD,
                   HANDLE)
{
    const bool creates = disposition == OPEN_ALWAYS;
    if (!name || (!creates && disposition != OPEN_EXISTING)) {
        SetLastError(name ? ERROR_INVALID_PARAMETER : ERROR_PATH_NOT_FOUND);
        return INVALID_HANDLE_VALUE;
    }
    const std::string local = LocalName(name);
    int descriptor = Open(local, OpenFlags(access));
    const bool isThere = descriptor >= 0;
    if (!isThere && creates && errno == ENOENT)
        descriptor = Open(local, OpenFlags(access) | O_CREAT);
    if (descriptor < 0) {
        SetLastError(OpenError(local));
        return INVALID_HANDLE_VALUE;
    }
    const bool isExclusive = (access & GENERIC_WRITE) && !(share & FILE_SHARE_WRITE);
    if (IsFolder(descriptor) || (isExclusive && !TakeForWriting(descriptor))) {
        SetLastError(IsFolder(descriptor) ? ERROR_ACCESS_DENIED : ErrorOfErrno());
        close(descriptor);
        return INVALID_HANDLE_VALUE;
    }
    if (creates)
        SetLastError(isThere ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    auto* object = new (std::nothrow) FileObject(descriptor);
    if (object == nullptr) {
        close(descriptor);
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return INVALID_HANDLE_VALUE;
    }
    return Kesra::ToHandle(object);
}

DWORD SetFilePointer(HANDLE file, LONG distance, PLONG distanceHigh, DWORD method)
{
    const auto* object = Kesra::FromHandle<FileObject>(file);
    if (!object || distanceHigh || method > FILE_END) {
        SetLastError(object ? ERROR_INVALID_PARAMETER : ERROR_INVALID_HANDLE);
        return INVALID_SET_FILE_POINTER;
    }
    struct stat entry;
    off_t position = 0;
    if (method == FILE_CURRENT)
        position = lseek(object->Descriptor, 0, SEEK_CUR);
    else if (method == FILE_END)
        position = fstat(object->Descriptor, &entry) == 0 ? entry.st_size : 0;
    position += distance;
    if (position < 0 || position >= std::numeric_limits<DWORD>::max()) {
        SetLastError(position < 0 ? ERROR_NEGATIVE_SEEK : ERROR_INVALID_PARAMETER);
        return INVALID_SET_FILE_POINTER;
    }
    lseek(object->Descriptor, position, SEEK_SET);
    return static_cast<DWORD>(position);
}

BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD size, LPDWORD read, OVERLAPPED* overlapped)
{
    return MoveBytes(
        file, size, read, overlapped,
        [buffer](int descriptor, std::size_t offset, std::size_t count) {
            return ::read(descriptor, static_cast<char*>(buffer) + offset, count);
        });
}

BOOL WriteFile(HANDLE file, LPCVOID buffer, DWORD size, LPDWORD written, OVERLAPPED* overlapped)
{
    return MoveBytes(
        file, size, written, overlapped,
        [buffer](int descriptor, std::size_t offset, std::size_t count) {
            return ::write(descriptor, static_cast<const char*>(buffer) + offset, count);
        });
}

BOOL DeleteFileA(LPCSTR name)
{
    if (!name)
        return Fail(ERROR_PATH_NOT_FOUND);
    const std::string local = LocalName(name);
    // Without waiting for the other end of a pipe. Deleting needs no right to read.
    const int descriptor = Open(local, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0)
        return errno == EACCES && unlink(local.c_str()) == 0 ? TRUE : Fail(OpenError(local));
    DWORD error = ERROR_SUCCESS;
    if (IsFolder(descriptor))
        error = ERROR_ACCESS_DENIED;
    else if (!TakeForWriting(descriptor) || unlink(local.c_str()) != 0)
        error = ErrorOfErrno();
    close(descriptor);
    return error ? Fail(error) : TRUE;
}

int _mkdir(const char* name)
{
    return mkdir(LocalName(name).c_str(), 0777);
}
