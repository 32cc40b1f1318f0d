#pragma once

#include <atomic>

namespace Kesra
{

/// How long a waiting request waits for its reply, in milliseconds. Tests shorten it.
extern std::atomic<unsigned> ReplyTimeLimit;

} // namespace Kesra
