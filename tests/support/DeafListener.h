#pragma once

#include <asio.hpp>

#include <vector>

namespace Test
{

/// An address whose connection attempts stay unanswered: its line of waiting connections is full.
class DeafListener
{
public:
    DeafListener() : Acceptor(Context)
    {
        Acceptor.open(asio::ip::tcp::v4());
        Acceptor.bind({asio::ip::address_v4::loopback(), 0});
        Acceptor.listen(0);
        for (int i = 0; i < 4; ++i) {
            Waiting.emplace_back(Context, asio::ip::tcp::v4());
            Waiting.back().async_connect(Acceptor.local_endpoint(), [](const asio::error_code&) {});
        }
    }

    unsigned short Port() const { return Acceptor.local_endpoint().port(); }

private:
    asio::io_context Context;
    asio::ip::tcp::acceptor Acceptor;
    std::vector<asio::ip::tcp::socket> Waiting;
};

} // namespace Test
