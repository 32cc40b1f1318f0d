#pragma once

#include <chrono>
#include <iosfwd>
#include <memory>
#include <string>

namespace Kesra
{

/// Writes lines to a stream from a thread of its own, so that whoever logs never waits for whoever reads.
/// What finds no room in the queue is lost, and a line in its place says how many were.
///
///     LogWriter log(std::cerr);
///     options.Log = [&log](const std::string& line) { log.Write(line); };
class LogWriter
{
public:
    /// The stream must live until Finish has returned true, or as long as the process.
    explicit LogWriter(std::ostream& stream, std::size_t queueLimit = 1024 * 1024);
    /// Finishes; a thread that the stream does not let go of is left behind.
    ~LogWriter();
    LogWriter(const LogWriter&) = delete;
    LogWriter& operator=(const LogWriter&) = delete;

    /// Queues a line, without its end. From any thread.
    void Write(const std::string& line);

    /// Waits until everything queued has been written, and ends the thread; false when that takes longer.
    bool Finish(std::chrono::milliseconds limit = std::chrono::seconds(1));

private:
    struct State;
    std::shared_ptr<State> Inner;
};

} // namespace Kesra
