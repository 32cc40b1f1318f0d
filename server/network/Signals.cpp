#include "server/network/Signals.h"

#include <asio.hpp>

#include <csignal>

namespace Kesra
{

void WaitForEndSignal()
{
    asio::io_context context{1};
    asio::signal_set signals(context, SIGINT, SIGTERM);
    signals.async_wait([](asio::error_code, int) {});
    context.run();
}

void IgnoreBrokenPipes()
{
#ifdef SIGPIPE
    std::signal(SIGPIPE, SIG_IGN);
#endif
}

} // namespace Kesra
