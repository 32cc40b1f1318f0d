#include "server/log/LogWriter.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <ostream>
#include <thread>
#include <utility>

namespace Kesra
{

/// Shared with the thread, which may outlive the writer.
struct LogWriter::State {
    State(std::ostream& stream, std::size_t limit) : Stream(stream), Limit(limit) {}

    void Run();
    bool IsOver() const { return Ending && Lines.empty() && Lost == 0; }

    std::ostream& Stream;
    const std::size_t Limit;
    std::mutex Mutex;
    std::condition_variable Changed;
    std::deque<std::string> Lines;
    std::size_t Queued = 0; ///< bytes
    unsigned Lost = 0;      ///< since the last line that was queued
    bool Ending = false;
    bool Ended = false;
};

void LogWriter::State::Run()
{
    std::unique_lock lock(Mutex);
    for (;;) {
        Changed.wait(lock, [this] { return Ending || !Lines.empty(); });
        if (IsOver())
            break;
        std::string text;
        for (const std::string& line : std::exchange(Lines, {}))
            text += line + '\n';
        if (const unsigned lost = std::exchange(Lost, 0))
            text += std::to_string(lost) + " lines of the log are lost here: nobody took them in time\n";
        Queued = 0;
        lock.unlock();
        // A stream that failed once may work again.
        Stream.clear();
        Stream << text << std::flush;
        lock.lock();
    }
    Ended = true;
    Changed.notify_all();
}

LogWriter::LogWriter(std::ostream& stream, std::size_t queueLimit)
    : Inner(std::make_shared<State>(stream, queueLimit))
{
    std::thread([state = Inner] { state->Run(); }).detach();
}

LogWriter::~LogWriter()
{
    Finish();
}

void LogWriter::Write(const std::string& line)
{
    {
        const std::lock_guard lock(Inner->Mutex);
        // Behind lost lines nothing is queued until the place where they are missing has been written.
        if (Inner->Lost > 0 || Inner->Queued + line.size() > Inner->Limit) {
            ++Inner->Lost;
            return;
        }
        Inner->Queued += line.size();
        Inner->Lines.push_back(line);
    }
    Inner->Changed.notify_all();
}

bool LogWriter::Finish(std::chrono::milliseconds limit)
{
    std::unique_lock lock(Inner->Mutex);
    Inner->Ending = true;
    Inner->Changed.notify_all();
    return Inner->Changed.wait_for(lock, limit, [this] { return Inner->Ended; });
}

} // namespace Kesra
