#include "server/network/PeerTimeout.h"

#include <mstcpip.h>

namespace Kesra
{
namespace
{

/// The system's own number of probes.
constexpr int Probes = 10;

} // namespace

void SetPeerTimeout(asio::ip::tcp::socket& socket, std::chrono::milliseconds limit, asio::error_code& error)
{
    tcp_keepalive values{};
    values.onoff = 1;
    values.keepalivetime = static_cast<ULONG>(limit.count() / 2);
    values.keepaliveinterval = static_cast<ULONG>(limit.count() / (2 * Probes));
    DWORD returned = 0;
    const int result = WSAIoctl(socket.native_handle(), SIO_KEEPALIVE_VALS, &values, sizeof values, nullptr,
                                0, &returned, nullptr, nullptr);
    error = result == 0 ? asio::error_code()
                        : asio::error_code(WSAGetLastError(), asio::error::get_system_category());
}

} // namespace Kesra
