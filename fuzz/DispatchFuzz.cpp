// Arbitrary bytes as the server's stream: collected, queued, dispatched. The first bytes say into which
// pieces the stream is cut; cutting must not change what the handlers see. The stream also serves as the
// fields of a reply.

#include "fuzz/StreamClient.h"

#include <cstddef>
#include <cstdint>
#include <span>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr std::size_t Pieces = 4;
    if (size < Pieces)
        return 0;
    const std::span pieces(data, Pieces);
    const std::span stream(data + Pieces, size - Pieces);

    Kesra::StreamClient whole;
    Kesra::StreamClient cut;
    const bool good = whole.Deliver(stream, {});
    Kesra::HandlerHash::Check(cut.Deliver(stream, pieces) == good);
    Kesra::HandlerHash::Check(cut.Handled.Seen.Hash == whole.Handled.Seen.Hash);
    Kesra::HandlerHash::Check(cut.Handled.Messages == whole.Handled.Messages);

    Kesra::AskSomething(whole, data[0], stream);
    return 0;
}
