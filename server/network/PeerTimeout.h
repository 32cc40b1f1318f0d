#pragma once

#include <asio.hpp>

#include <chrono>

namespace Kesra
{

/// Lets the system break the connection off when the peer neither acknowledges nor answers for that long.
void SetPeerTimeout(asio::ip::tcp::socket& socket, std::chrono::milliseconds limit, asio::error_code& error);

} // namespace Kesra
