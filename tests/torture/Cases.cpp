#include "tests/torture/Cases.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <random>
#include <set>
#include <stdexcept>

namespace Torture
{
namespace
{

struct Form {
    Call Which;
    const char* Name;
    std::vector<int> Harmful;
    std::vector<int> HarmlessOnce = {}; ///< a session goes on as if nothing had happened
    std::vector<int> Harmless = {};     ///< the same when it happens again and again
};

const Form Forms[] = {
    {Call::Socket, "socket", {EMFILE, ENFILE, ENOBUFS, ENOMEM, EACCES, EAFNOSUPPORT}},
    {Call::Connect,
     "connect",
     {EAGAIN, ECONNREFUSED, ETIMEDOUT, ENETUNREACH, EHOSTUNREACH, EADDRNOTAVAIL, EACCES, EALREADY},
     {},
     {EINTR}},
    {Call::SetSocketOption, "setsockopt", {}, {}, {ENOPROTOOPT, ENOMEM, EINVAL, ENOBUFS}},
    {Call::GetSocketOption, "getsockopt", {ENOBUFS, ENOPROTOOPT, ECONNRESET}},
    {Call::Shutdown, "shutdown", {}, {}, {ENOTCONN, ENOBUFS}},
    {Call::Control, "ioctl", {EINVAL, ENOMEM, ENOTTY}},
    {Call::Send, "send", {EPIPE, ECONNRESET, ENOBUFS, ENOMEM, ETIMEDOUT, EHOSTUNREACH}, {EAGAIN}, {EINTR}},
    {Call::Receive,
     "recv",
     {ECONNRESET, ETIMEDOUT, ENOMEM, ENOBUFS, EHOSTUNREACH, ENETDOWN},
     {EAGAIN},
     {EINTR}},
    {Call::WaitingReceive, "recv-waiting", {ECONNRESET}, {EINTR}},
    {Call::Poll, "poll", {}, {ENOMEM, EINVAL}, {EINTR}},
    {Call::WaitingPoll, "ppoll", {}, {}, {EINTR, ENOMEM, EINVAL}},
    {Call::MakeEventDescriptor, "eventfd", {}, {}, {EMFILE, ENFILE, ENOMEM}},
    {Call::ReadEventDescriptor, "eventfd_read", {}, {}, {EAGAIN, EINTR}},
    {Call::WriteEventDescriptor, "eventfd_write", {}, {}, {EAGAIN, EINTR}},
    {Call::Futex, "futex", {}, {}, {EINTR, EAGAIN}},
    {Call::ResolveName, "gethostbyname_r", {ENOMEM, EAGAIN, ENOENT}, {ERANGE}},
    {Call::CreateThread, "pthread_create", {EAGAIN, ENOMEM, EPERM}},
    {Call::InitAttributes, "pthread_attr_init", {ENOMEM}},
    {Call::SetDetached, "pthread_attr_setdetachstate", {EINVAL}},
    {Call::SetStackSize, "pthread_attr_setstacksize", {EINVAL}},
    {Call::CreateKey, "pthread_key_create", {EAGAIN, ENOMEM}},
    {Call::SetSpecific, "pthread_setspecific", {ENOMEM, EINVAL}},
    {Call::GetPriority, "getpriority", {}, {}, {ESRCH}},
    {Call::SetPriority, "setpriority", {}, {}, {EACCES, EPERM}},
    {Call::Rest, "nanosleep", {}, {}, {EINTR}},
    {Call::MapMemory, "mmap", {ENOMEM, EAGAIN, EPERM}},
    {Call::UnmapMemory, "munmap", {}, {}, {ENOMEM, EINVAL}},
    {Call::AdviseMemory, "madvise", {}, {}, {EINVAL, EAGAIN}},
    {Call::Allocate, "malloc", {ENOMEM}},
    {Call::AllocateZeroed, "calloc", {ENOMEM}},
    {Call::New, "new", {ENOMEM}},
    {Call::NewWithoutThrow, "new-nothrow", {ENOMEM}},
    {Call::Open, "open", {}, {}, {EINTR, EMFILE, EACCES, ENOENT, ENOSPC}},
    {Call::Close, "close", {}, {}, {EINTR, EIO}},
    {Call::Read, "read", {}, {}, {EINTR, EIO}},
    {Call::Write, "write", {}, {}, {EINTR, ENOSPC, EIO}},
    {Call::Seek, "lseek", {}, {}, {EINVAL}},
    {Call::Status, "stat", {}, {}, {EACCES, ENOMEM}},
    {Call::Lock, "flock", {}, {}, {EAGAIN, ENOLCK, EINTR}},
    {Call::Unlink, "unlink", {}, {}, {EACCES, EBUSY}},
    {Call::MakeDirectory, "mkdir", {}, {}, {ENOSPC, EACCES}},
    {Call::OpenStream, "fopen", {}, {}, {EMFILE, ENOMEM, EACCES, ENOSPC}},
    {Call::CloseStream, "fclose", {}, {}, {ENOSPC, EIO}},
    {Call::ReadStream, "fread", {}, {}, {EIO}},
    {Call::WriteStream, "fwrite", {}, {}, {ENOSPC, EIO}},
    {Call::SeekStream, "fseeko64", {}, {}, {ESPIPE}},
    {Call::TellStream, "ftello64", {}, {}, {EOVERFLOW}},
    {Call::BufferStream, "setvbuf", {}, {}, {ENOMEM}},
    {Call::LocalTime, "localtime_r", {}, {}, {EOVERFLOW}},
    {Call::OpenConverter, "iconv_open", {EMFILE, ENOMEM}},
};
static_assert(std::size(Forms) == CallCount);

bool IsOneOf(int error, const std::vector<int>& errors)
{
    return std::find(errors.begin(), errors.end(), error) != errors.end();
}

std::vector<int> ErrorsOf(const Form& form)
{
    std::vector<int> all = form.Harmful;
    for (const auto* more : {&form.HarmlessOnce, &form.Harmless})
        all.insert(all.end(), more->begin(), more->end());
    return all;
}

const Form& FormOf(Call call)
{
    return Forms[static_cast<std::size_t>(call)];
}

/// The first few, then one out of each of as many equal parts as are left.
std::set<unsigned> Places(unsigned calls, unsigned most, std::mt19937_64& random)
{
    constexpr unsigned FirstFew = 3;
    std::set<unsigned> places;
    for (unsigned place = 1; place <= std::min(calls, most < FirstFew ? most : FirstFew); ++place)
        places.insert(place);
    const auto parts = most - static_cast<unsigned>(places.size());
    for (unsigned part = 0; part < parts && calls > FirstFew; ++part) {
        const unsigned begin = FirstFew + 1 + (calls - FirstFew) * part / parts;
        const unsigned end = FirstFew + 1 + (calls - FirstFew) * (part + 1) / parts;
        if (begin < end)
            places.insert(begin + static_cast<unsigned>(random() % (end - begin)));
    }
    return places;
}

void AddCases(std::vector<Case>& cases, const Form& form, bool isOnwards, unsigned calls, unsigned most,
              std::mt19937_64& random)
{
    for (const int error : ErrorsOf(form))
        for (const unsigned place : Places(calls, most, random))
            cases.push_back({Plan{form.Which, error, place, isOnwards}});
}

std::vector<std::string> Parts(const std::string& text)
{
    std::vector<std::string> parts(1);
    for (const char character : text)
        if (character == ':')
            parts.emplace_back();
        else
            parts.back() += character;
    return parts;
}

} // namespace

std::string Case::Name() const
{
    if (!Failing)
        return "cut:" + std::to_string(Seed);
    return std::string(NameOf(Failing->Which)) + ":" + strerrorname_np(Failing->Error) + ":" +
           std::to_string(Failing->First) + (Failing->Onwards ? ":onwards" : ":once");
}

Demand Case::Wanted() const
{
    if (!Failing)
        return Demand::Exact;
    const Form& form = FormOf(Failing->Which);
    const bool isHarmless = IsOneOf(Failing->Error, form.Harmless) ||
                            (!Failing->Onwards && IsOneOf(Failing->Error, form.HarmlessOnce));
    return isHarmless ? Demand::Exact : Demand::Survival;
}

bool Case::IsMemoryShort() const
{
    constexpr Call Memory[] = {Call::New, Call::NewWithoutThrow, Call::Allocate, Call::AllocateZeroed,
                               Call::MapMemory};
    return Failing && std::find(std::begin(Memory), std::end(Memory), Failing->Which) != std::end(Memory);
}

const char* NameOf(Call call)
{
    return FormOf(call).Name;
}

Case CaseNamed(const std::string& name)
{
    const std::vector<std::string> parts = Parts(name);
    if (parts.size() == 2 && parts[0] == "cut")
        return {std::nullopt, std::stoull(parts[1])};
    for (const Form& form : Forms)
        for (const int error : ErrorsOf(form))
            if (parts.size() == 4 && parts[0] == form.Name && parts[1] == strerrorname_np(error))
                return {Plan{form.Which, error, static_cast<unsigned>(std::stoul(parts[2])),
                             parts[3] == "onwards"}};
    throw std::runtime_error("no case has the name " + name);
}

std::vector<Case> MakeCases(const std::array<unsigned, CallCount>& callsOfASession, unsigned most,
                            unsigned cuts, std::uint64_t seed)
{
    std::mt19937_64 random(seed);
    std::vector<Case> cases;
    for (const Form& form : Forms) {
        const unsigned calls = callsOfASession[static_cast<std::size_t>(form.Which)];
        AddCases(cases, form, false, calls, most, random);
        AddCases(cases, form, true, calls, most, random);
    }
    for (unsigned i = 0; i < cuts; ++i)
        cases.push_back({std::nullopt, random()});
    std::shuffle(cases.begin(), cases.end(), random);
    return cases;
}

} // namespace Torture
