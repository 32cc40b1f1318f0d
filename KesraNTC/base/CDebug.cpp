#include "KesraNTC/base/CDebug.h"

#include "KesraNTC/base/private/TraceHook.h"

#include "KesraNTC/base/private/BoundedFormat.h"
#include "KesraNTC/base/private/Korean.h"
#include "KesraNTC/base/private/Mutex.h"
#include "KesraNTC/platform/Platform.h"

#include <atomic>
#include <condition_variable>
#include <cstdarg>
#include <cstring>
#include <ctime>
#include <thread>

using namespace Kesra;

namespace
{

constexpr std::size_t MessageRoom = 1024;
constexpr std::size_t FileNameRoom = 256;
// The line of a message of nothing but newlines.
constexpr std::size_t LongestLine = 2 * MessageRoom;
constexpr unsigned long long UsualLogLimit = 64ULL << 20;

/// Formats a message; false when memory does not suffice, which is all that formatting throws for.
bool Format(char (&message)[MessageRoom], const char* format, std::va_list arguments)
{
    try {
        BoundedFormat(message, format, arguments);
        return true;
    } catch (...) {
        return false;
    }
}

/// A message as it stands in the file: the bytes that a text-mode stream of Windows makes of a line, the same
/// on every platform.
class FileLine
{
public:
    explicit FileLine(const char* message)
    {
        for (; *message != '\0' && Length < LongestLine - 2; ++message)
            Put(*message);
        Put('\n');
    }

    std::size_t Size() const { return Length; }
    void WriteTo(std::FILE* file) const { std::fwrite(Bytes, 1, Length, file); }

    bool IsAtEndOf(const char* fileName) const
    {
        std::FILE* const file = std::fopen(fileName, "rb");
        if (file == nullptr)
            return false;
        char end[LongestLine];
        const bool found = fseeko64(file, -static_cast<long long>(Length), SEEK_END) == 0 &&
                           std::fread(end, 1, Length, file) == Length && std::memcmp(end, Bytes, Length) == 0;
        std::fclose(file);
        return found;
    }

private:
    void Put(char ch)
    {
        if (ch == '\n')
            Bytes[Length++] = '\r';
        Bytes[Length++] = ch;
    }

    char Bytes[LongestLine];
    std::size_t Length = 0;
};

// Guards the file and what stands here; besides, appends of two streams at once may overwrite each other on
// Windows.
Mutex DiskFileLock;
unsigned long long LogLimit KESRANTC_LOCKING(guarded_by(DiskFileLock)) = UsualLogLimit;
// The second in which the log was last found full. Nobody waits for the disk to learn that it still is.
std::time_t LogFullAt KESRANTC_LOCKING(guarded_by(DiskFileLock)) = -1;

void NameFile(char (&name)[FileNameRoom], std::time_t now)
{
    std::tm today{};
    localtime_s(&today, &now);
    std::snprintf(name, sizeof name, "KESRA_NETWORK_LOG/%d월%d일.log"_949, today.tm_mon + 1, today.tm_mday);
}

std::FILE* OpenToAppend(const char* name)
{
    if (std::FILE* const file = std::fopen(name, "ab"))
        return file;
    // Whatever was amiss, the second attempt tells.
    static_cast<void>(_mkdir("KESRA_NETWORK_LOG"));
    return std::fopen(name, "ab");
}

/// Whether the log, whose end the file stands at, takes the line; if not, says so at its end, once.
bool HasRoomFor(const FileLine& line, std::FILE* file, const char* name)
    KESRANTC_LOCKING(requires_capability(DiskFileLock))
{
    const auto size = static_cast<unsigned long long>(ftello64(file));
    // So far from the limit nothing has been refused.
    if (size + LongestLine <= LogLimit)
        return true;
    char text[MessageRoom];
    std::snprintf(text, sizeof text,
                  "The log has reached its limit of %llu bytes a day; what follows today is lost.", LogLimit);
    const FileLine notice(text);
    const bool refused = notice.IsAtEndOf(name);
    if (!refused && size + line.Size() <= LogLimit)
        return true;
    if (!refused)
        notice.WriteTo(file);
    return false;
}

/// A hook as it was set, and which setting of all that was.
struct HookSetting {
    CDebug::Hook Hook = nullptr;
    void* Context = nullptr;
    CDebug::HookPlace Place = CDebug::BesideFile;
    unsigned long long Number = 0;
};

/// One of the two hooks. No lock is held while it runs; the calls that are running are listed instead, in
/// one list for both hooks, for a setter to wait for.
class HookSlot
{
public:
    /// Cheap, and true whenever a call on this thread would find a hook.
    bool IsSet() const { return Present; }

    void Set(CDebug::Hook hook, void* context, CDebug::HookPlace place)
    {
        const LockGuard setting(Lock);
        const unsigned long long number = ++LastNumber;
        Current = {hook, context, place, number};
        Present = hook != nullptr;
        // Two hooks that set each other would wait for each other, and a hook for itself.
        if (IsCalling(nullptr))
            return;
        while (IsCalledSinceBefore(number))
            Lock.Wait(CallEnded);
    }

    /// Passes a message to the hook, unless the thread is inside it. Tells whether that was all to be done.
    bool Call(const char* text)
    {
        if (!IsSet())
            return false;
        const Running call(*this);
        if (call.Setting.Hook == nullptr)
            return false;
        call.Setting.Hook(call.Setting.Context, text);
        return call.Setting.Place == CDebug::InsteadOfFile;
    }

private:
    /// A call, listed while it lives; its setting is empty when there is nothing to call.
    struct Running {
        explicit Running(const HookSlot& slot) : Slot(&slot) { Begin(); }
        Running(const Running&) = delete;
        Running& operator=(const Running&) = delete;
        ~Running()
        {
            End();
            CallEnded.notify_all();
        }

        void Begin()
        {
            const LockGuard beginning(Lock);
            if (!HookSlot::IsCalling(Slot))
                Setting = Slot->Current;
            Next = First;
            First = this;
        }
        void End()
        {
            const LockGuard ending(Lock);
            Running** link = &First;
            while (*link != this)
                link = &(*link)->Next;
            *link = Next;
        }

        const HookSlot* Slot;
        std::thread::id Thread = std::this_thread::get_id();
        HookSetting Setting;
        Running* Next = nullptr;
    };

    /// Whether this thread is inside the hook of a slot, or inside any.
    static bool IsCalling(const HookSlot* slot) KESRANTC_LOCKING(requires_capability(Lock))
    {
        for (const Running* call = First; call != nullptr; call = call->Next)
            if (call->Thread == std::this_thread::get_id() && (slot == nullptr || call->Slot == slot))
                return true;
        return false;
    }

    bool IsCalledSinceBefore(unsigned long long number) const KESRANTC_LOCKING(requires_capability(Lock))
    {
        for (const Running* call = First; call != nullptr; call = call->Next)
            if (call->Slot == this && call->Setting.Hook != nullptr && call->Setting.Number < number)
                return true;
        return false;
    }

    static Mutex Lock;
    static std::condition_variable CallEnded;
    static Running* First KESRANTC_LOCKING(guarded_by(Lock));
    static unsigned long long LastNumber KESRANTC_LOCKING(guarded_by(Lock));

    std::atomic<bool> Present{false};
    HookSetting Current KESRANTC_LOCKING(guarded_by(Lock));
};

Mutex HookSlot::Lock;
std::condition_variable HookSlot::CallEnded;
HookSlot::Running* HookSlot::First = nullptr;
unsigned long long HookSlot::LastNumber = 0;

constinit HookSlot LogHook;
constinit HookSlot TraceHook;

} // namespace

std::FILE* CDebug::DiskFile = nullptr;

CDebug::CDebug() = default;
CDebug::CDebug(const CDebug&) = default;
CDebug& CDebug::operator=(const CDebug&) = default;
CDebug::~CDebug() = default;

void CDebug::InitDebugMsg() {}

void CDebug::AppendDebugMsg(const char* format, ...)
{
    char message[MessageRoom];
    std::va_list arguments;
    va_start(arguments, format);
    const bool formatted = Format(message, format, arguments);
    va_end(arguments);
    if (formatted && !LogHook.Call(message))
        AppendLine(message);
}

void Kesra::PassToTraceHook(const char* format, std::va_list arguments)
{
    char message[MessageRoom];
    if (TraceHook.IsSet() && Format(message, format, arguments))
        TraceHook.Call(message);
}

void CDebug::SetLogLimit(unsigned long long bytes)
{
    const LockGuard setting(DiskFileLock);
    LogLimit = bytes;
    LogFullAt = -1;
}

void CDebug::SetLogHook(Hook hook, void* context, HookPlace place)
{
    LogHook.Set(hook, context, place);
}

void CDebug::SetTraceHook(Hook hook, void* context)
{
    TraceHook.Set(hook, context, InsteadOfFile);
}

void CDebug::AppendLine(const char* message)
{
    const FileLine line(message);
    const LockGuard writing(DiskFileLock);
    const std::time_t now = std::time(nullptr);
    if (now == LogFullAt)
        return;
    char name[FileNameRoom];
    NameFile(name, now);
    DiskFile = OpenToAppend(name);
    if (DiskFile == nullptr)
        return;
    // Spares an allocation, and a question about the file's blocks.
    char buffer[LongestLine];
    std::setvbuf(DiskFile, buffer, _IOFBF, sizeof buffer);
    fseeko64(DiskFile, 0, SEEK_END);
    if (LogLimit == 0 || HasRoomFor(line, DiskFile, name))
        line.WriteTo(DiskFile);
    else
        LogFullAt = now;
    std::fclose(DiskFile);
}
