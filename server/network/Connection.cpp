#include "server/network/Connection.h"

#include "server/network/PeerTimeout.h"

#include <algorithm>
#include <cstring>

namespace Kesra
{
namespace
{

/// A peer that lets more than this pile up is not reading any more.
constexpr std::size_t WaitingLimit = 8 * 1024 * 1024;

/// What a buffer may keep of the room it once needed.
constexpr std::size_t RoomKept = 64 * 1024;

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

/// Gives the storage back too, which assigning an empty list does not.
void Release(std::vector<unsigned char>& bytes)
{
    std::vector<unsigned char>().swap(bytes);
}

std::string TitleOf(const asio::ip::tcp::socket& socket, PeerID number)
{
    asio::error_code error;
    const auto peer = socket.remote_endpoint(error);
    return "connection " + std::to_string(number) + " (" +
           (error ? "gone" : peer.address().to_string() + ":" + std::to_string(peer.port())) + ")";
}

std::string InSeconds(std::chrono::milliseconds time)
{
    return std::to_string(time / std::chrono::seconds(1)) + " s";
}

} // namespace

Connection::Connection(asio::ip::tcp::socket socket, PeerID id, const Faults& faults, ConnectionShare& share)
    : Socket(std::move(socket)),
      PieceTimer(Socket.get_executor()),
      EndTimer(Socket.get_executor()),
      LogonTimer(Socket.get_executor()),
      Number(id),
      Title(TitleOf(Socket, id)),
      Fault(faults),
      Share(share)
{
    ++Share.Open;
}

Connection::~Connection()
{
    Share.Queued -= Counted;
    --Share.Open;
}

void Connection::Start()
{
    Share.Record.Log(Title + ": accepted");
    asio::error_code ignored;
    asio::error_code error;
    Socket.set_option(asio::ip::tcp::no_delay(true), ignored);
    if (Share.Limits.PeerTimeout.count() > 0)
        SetPeerTimeout(Socket, Share.Limits.PeerTimeout, error);
    if (error)
        Share.Record.Log(Title + ": the system does not watch whether it is alive: " + error.message());
    if (Share.Limits.LogonTime.count() > 0)
        AwaitLogon();
    CutToByteLimit();
    Read();
}

void Connection::AwaitLogon()
{
    LogonTimer.expires_after(Share.Limits.LogonTime);
    LogonTimer.async_wait([self = shared_from_this()](asio::error_code error) {
        if (!error)
            self->End("no logon within " + InSeconds(self->Share.Limits.LogonTime), false);
    });
}

void Connection::Admit()
{
    LogonTimer.cancel();
}

std::string Connection::ReasonOf(const asio::error_code& error) const
{
    if (error == asio::error::eof)
        return "closed by the peer";
    if (error == asio::error::timed_out)
        return "the peer has not answered for " + InSeconds(Share.Limits.PeerTimeout);
    return error.message();
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
            self->DrainOn(error);
            return;
        }
        if (error) {
            self->End(self->ReasonOf(error), false);
            return;
        }
        self->Share.Record.CountBytesReceived(bytes);
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
    Share.Record.CountReceived(number);
    Share.Owner.OnPacket(*this, bytes, size);
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
    CountBacklog();
    if (Waiting.size() > WaitingLimit)
        End("the peer does not read: " + std::to_string(Counted) + " bytes wait for it", false);
    else if (Share.Queued > Share.Limits.QueuedBytes)
        Share.Owner.OnOverload();
}

void Connection::CountBacklog()
{
    const std::size_t backlog = Ended ? 0 : Waiting.size() + Writing.size() - Written;
    Share.Queued = Share.Queued - Counted + backlog;
    Counted = backlog;
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
        if (Waiting.capacity() + Writing.capacity() > RoomKept) {
            Release(Waiting);
            Release(Writing);
            Written = 0;
        }
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
                              self->End(self->ReasonOf(error), false);
                              Release(self->Writing);
                              return;
                          }
                          self->OnWritten(bytes);
                      });
}

void Connection::OnWritten(std::size_t bytes)
{
    if (Ended)
        return;
    Share.Record.CountBytesSent(bytes);
    Written += bytes;
    BytesWritten += bytes;
    CountBacklog();
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
    LogonTimer.cancel();
    Release(Waiting);
    CountBacklog();
    asio::error_code ignored;
    Socket.shutdown(asio::socket_base::shutdown_send, ignored);
    Drain();
    Share.Record.Log(Title + ": " + why);
    Share.Record.CountEnded(malformed);
    asio::post(Socket.get_executor(), [self = shared_from_this()] { self->Share.Owner.OnEnd(*self); });
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
        [self = shared_from_this()](asio::error_code error, std::size_t) { self->DrainOn(error); });
}

/// The end of a stream is told once: a read behind it would wait for the limit.
void Connection::DrainOn(const asio::error_code& error)
{
    if (error)
        EndTimer.cancel();
    else
        DrainNext();
}

} // namespace Kesra
