#include "server/network/PeerTimeout.h"

#include <algorithm>
#include <netinet/tcp.h>

namespace Kesra
{
namespace
{

template <int Name> using TcpOption = asio::detail::socket_option::integer<IPPROTO_TCP, Name>;

} // namespace

void SetPeerTimeout(asio::ip::tcp::socket& socket, std::chrono::milliseconds limit, asio::error_code& error)
{
    // Probes need not add up to the limit: with a user timeout set, that decides, and it alone counts while
    // bytes are on their way.
    const int seconds = static_cast<int>(limit / std::chrono::seconds(1));
    const int untilProbing = std::max(1, seconds / 2);
    const int betweenProbes = std::max(1, seconds / 6);
    socket.set_option(asio::socket_base::keep_alive(true), error);
    if (!error)
        socket.set_option(TcpOption<TCP_KEEPIDLE>(untilProbing), error);
    if (!error)
        socket.set_option(TcpOption<TCP_KEEPINTVL>(betweenProbes), error);
    if (!error)
        socket.set_option(TcpOption<TCP_USER_TIMEOUT>(static_cast<int>(limit.count())), error);
}

} // namespace Kesra
