#pragma once

#include "tests/conformance/Fields.h"

#include "KesraNTC/rpc/MessageNumbers.h"

#include <condition_variable>
#include <filesystem>
#include <map>
#include <mutex>
#include <string>

namespace Kesra
{

/// What the library's side of a session saw, as the lines of values.jsonl. Any thread.
class Recording
{
public:
    /// A request leaves: the arguments, behind the serial of a waiting one.
    void Sent(MessageNumber number, const Fields& fields) { Add("c2s", number, fields); }
    /// A handler, or the clock, received a message.
    template <class... Values> void Got(MessageNumber number, Values&... values)
    {
        Add("s2c", number, Fields(values...));
    }
    /// A waiting request returned: the serial, then its out-parameters.
    void Replied(MessageNumber request, const Fields& fields) { Add("reply", request, fields); }

    /// The library wrote a packet for the game; forms as in docs/protocol.md, separated by commas.
    void Own(unsigned short number, const std::string& forms, const Fields& fields);

    /// Blocks until so many messages of that number were pushed; false when `seconds` pass first.
    bool WaitForPushed(MessageNumber number, unsigned count, unsigned seconds);

    void Write(const std::filesystem::path& file) const;

private:
    void Add(const std::string& direction, unsigned short number, const Fields& fields,
             const std::string& more = "");

    mutable std::mutex Mutex;
    std::condition_variable Changed;
    std::string Lines;
    std::map<MessageNumber, unsigned> PushedCount;
};

} // namespace Kesra
