#include "server/Connection.h"

#include <algorithm>
#include <cstring>

namespace Kesra
{
namespace
{

/// A peer that lets more than this pile up is not reading any more.
constexpr std::size_t WaitingLimit = 8 * 1024 * 1024;

/// How long an ended connection waits for its peer to close as well.
constexpr std::chrono::seconds DrainLimit{5};

/// How long a connection that is to end waits for its peer to take what is still to be written.
constexpr std::chrono::seconds ClosingLimit{20};

/// Turns a serial into one that no request carries: requests count from 1 to 10000.
constexpr unsigned char WrongSerialBit = 0x40;

unsigned short WordAt(const unsigned char* bytes)
{
    unsigned short word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

/// Changes the high byte of a reply's serial, which is not scrambled.
void SpoilSerial(std::vector<unsigned char>& packet)
{
    if (packet.size() > PacketHeaderSize + 1)
        packet[PacketHeaderSize + 1] ^= WrongSerialBit;
}

} // namespace

Connection::Connection(asio::ip::tcp::socket socket, PeerID id, const Faults& faults, ConnectionOwner& owner,
                       Recorder& recorder)
    : Socket(std::move(socket)),
      PieceTimer(Socket.get_executor()),
      EndTimer(Socket.get_executor()),
      Number(id),
      Fault(faults),
      Owner(owner),
      Record(recorder)
{
}

void Connection::Start()
{
    asio::error_code ignored;
    Socket.set_option(asio::ip::tcp::no_delay(true), ignored);
    CutToByteLimit();
    Read();
}

void Connection::Read()
{
    if (Ended || Closing || Reading || Fault.StopReading)
        return;
    Reading = true;
    const auto room = asio::buffer(Incoming.data() + IncomingSize, Incoming.size() - IncomingSize);
    Socket.async_read_some(room, [self = shared_from_this()](asio::error_code error, std::size_t bytes) {
        self->Reading = false;
        if (self->Ended) {
            self->DrainNext();
            return;
        }
        if (error) {
            self->End(error == asio::error::eof ? "closed by the peer" : error.message(), false);
            return;
        }
        self->Record.CountBytesReceived(bytes);
        self->IncomingSize += bytes;
        self->TakeIncoming();
    });
}

/// Hands over every whole packet that has arrived and reads on.
void Connection::TakeIncoming()
{
    std::size_t taken = 0;
    while (!Ended && !Closing && !Fault.StopReading) {
        const std::size_t size = TakePacket(Incoming.data() + taken, IncomingSize - taken);
        if (size == 0)
            break;
        taken += size;
    }
    IncomingSize -= taken;
    std::memmove(Incoming.data(), Incoming.data() + taken, IncomingSize);
    Read();
}

/// Hands one packet over and returns its size; 0 when it is not whole yet.
std::size_t Connection::TakePacket(const unsigned char* bytes, std::size_t available)
{
    if (available < PacketHeaderSize)
        return 0;
    const unsigned short number = WordAt(bytes);
    const unsigned short size = WordAt(bytes + sizeof number);
    if (size < PacketHeaderSize || size > PacketLimit) {
        End("malformed stream: packet " + std::to_string(number) + " of size " + std::to_string(size), true);
        return 0;
    }
    if (available < size)
        return 0;
    Record.CountReceived(number);
    Owner.OnPacket(*this, bytes, size);
    return size;
}

void Connection::Send(const unsigned char* bytes, std::size_t size)
{
    if (Ended || Closing)
        return;
    Queue(bytes, size);
    WriteNext();
}

void Connection::SendReply(const unsigned char* bytes, std::size_t size)
{
    Bytes packet(bytes, bytes + size);
    if (Fault.Replies == ReplyFault::Never)
        return;
    if (Fault.Replies == ReplyFault::Held) {
        HeldReplies.push_back(packet);
        return;
    }
    if (Fault.Replies == ReplyFault::WrongSerial)
        SpoilSerial(packet);
    if (Fault.ReplyDelay.count() > 0) {
        SendLate(packet);
        return;
    }
    Send(packet.data(), packet.size());
}

void Connection::SendLate(const Bytes& packet)
{
    auto timer = std::make_shared<asio::steady_timer>(Socket.get_executor(), Fault.ReplyDelay);
    timer->async_wait([self = shared_from_this(), timer, packet](asio::error_code) {
        self->Send(packet.data(), packet.size());
    });
}

void Connection::ReleaseReplies()
{
    for (const Bytes& packet : HeldReplies)
        Send(packet.data(), packet.size());
    HeldReplies.clear();
}

void Connection::SendBytes(const std::vector<unsigned char>& bytes)
{
    if (Ended || Closing)
        return;
    Queue(bytes.data(), bytes.size());
    WriteNext();
}

void Connection::SetFaults(const Faults& faults)
{
    Fault = faults;
    CutToByteLimit();
    TakeIncoming();
}

void Connection::Queue(const unsigned char* bytes, std::size_t size)
{
    if (!Fault.SplitAt.empty()) {
        for (const std::size_t offset : Fault.SplitAt)
            if (offset < size)
                WaitingPieces.push_back(Waiting.size() + offset);
        WaitingPieces.push_back(Waiting.size() + size);
    }
    Waiting.insert(Waiting.end(), bytes, bytes + size);
    CutToByteLimit();
    if (Waiting.size() > WaitingLimit)
        End("the peer does not read", false);
}

/// Drops what lies beyond the byte at which a fault closes the connection.
void Connection::CutToByteLimit()
{
    if (!Fault.CloseAfterBytes || Ended || Closing)
        return;
    const std::size_t limit = *Fault.CloseAfterBytes;
    const std::size_t ahead = BytesWritten + (Writing.size() - Written);
    if (ahead + Waiting.size() < limit)
        return;
    Waiting.resize(limit > ahead ? limit - ahead : 0);
    CloseWhenSent("closed after " + std::to_string(limit) + " bytes");
}

void Connection::WriteNext()
{
    if (Ended || Written < Writing.size())
        return;
    if (Waiting.empty()) {
        if (Closing)
            End(ClosingWhy, false);
        return;
    }
    Writing.swap(Waiting);
    Pieces.swap(WaitingPieces);
    Waiting.clear();
    WaitingPieces.clear();
    Written = 0;
    NextPiece = 0;
    WritePieces();
}

void Connection::WritePieces()
{
    while (NextPiece < Pieces.size() && Pieces[NextPiece] <= Written)
        ++NextPiece;
    const bool split = NextPiece < Pieces.size();
    const std::size_t end = split ? std::min(Pieces[NextPiece], Writing.size()) : Writing.size();
    asio::async_write(Socket, asio::buffer(Writing.data() + Written, end - Written),
                      [self = shared_from_this()](asio::error_code error, std::size_t bytes) {
                          if (error) {
                              self->End(error.message(), false);
                              return;
                          }
                          self->OnWritten(bytes);
                      });
}

void Connection::OnWritten(std::size_t bytes)
{
    if (Ended)
        return;
    Record.CountBytesSent(bytes);
    Written += bytes;
    BytesWritten += bytes;
    if (Written == Writing.size()) {
        WriteNext();
        return;
    }
    PieceTimer.expires_after(Fault.SplitPause);
    PieceTimer.async_wait([self = shared_from_this()](asio::error_code) {
        if (!self->Ended)
            self->WritePieces();
    });
}

void Connection::CloseWhenSent(const std::string& why)
{
    if (Ended || Closing)
        return;
    Closing = true;
    ClosingWhy = why;
    EndTimer.expires_after(ClosingLimit);
    EndTimer.async_wait([self = shared_from_this()](asio::error_code error) {
        if (!error)
            self->End(self->ClosingWhy, false);
    });
    WriteNext();
}

void Connection::Close(const std::string& why)
{
    End(why, false);
}

void Connection::Reset()
{
    if (Ended)
        return;
    asio::error_code ignored;
    Socket.set_option(asio::socket_base::linger(true, 0), ignored);
    Socket.close(ignored);
    End("reset on demand", false);
}

void Connection::End(const std::string& why, bool malformed)
{
    if (Ended)
        return;
    Ended = true;
    PieceTimer.cancel();
    EndTimer.cancel();
    Waiting = {};
    asio::error_code ignored;
    Socket.shutdown(asio::socket_base::shutdown_send, ignored);
    Drain();
    Record.Log("connection " + std::to_string(Number) + ": " + why);
    Record.CountEnded(malformed);
    asio::post(Socket.get_executor(), [self = shared_from_this()] { self->Owner.OnEnd(*self); });
}

/// Reads and forgets until the peer closes too: closing with unread bytes would reset the connection and
/// destroy what is still on its way to the peer.
void Connection::Drain()
{
    if (!Socket.is_open())
        return;
    EndTimer.expires_after(DrainLimit);
    EndTimer.async_wait([self = shared_from_this()](asio::error_code error) {
        asio::error_code ignored;
        if (!error)
            self->Socket.close(ignored);
    });
    // A read that is under way goes on to the next when it is done.
    if (!Reading)
        DrainNext();
}

void Connection::DrainNext()
{
    Socket.async_read_some(
        asio::buffer(Incoming),
        [self = shared_from_this()](asio::error_code error, std::size_t) {
            if (error) {
                self->EndTimer.cancel();
                return;
            }
            self->DrainNext();
        });
}

} // namespace Kesra
