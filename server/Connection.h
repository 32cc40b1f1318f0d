#pragma once

#include "server/Faults.h"
#include "server/Link.h"
#include "server/Recorder.h"

#include <asio.hpp>

#include <array>
#include <memory>
#include <string>
#include <vector>

namespace Kesra
{

class Connection;

/// Whom a connection tells what happened to it. Called on the server's thread.
class ConnectionOwner
{
public:
    virtual ~ConnectionOwner() = default;
    virtual void OnPacket(Connection& connection, const unsigned char* bytes, std::size_t size) = 0;
    /// The connection is gone. Called once, never from inside a call into the connection.
    virtual void OnEnd(Connection& connection) = 0;
};

/// One accepted socket: cuts the incoming stream into packets, queues and writes the outgoing ones, and
/// misbehaves as its faults say. Used on the server's thread only.
class Connection final : public Link, public std::enable_shared_from_this<Connection>
{
public:
    Connection(asio::ip::tcp::socket socket, PeerID id, const Faults& faults, ConnectionOwner& owner,
               Recorder& recorder);

    void Start();

    void Send(const unsigned char* bytes, std::size_t size) override;
    void SendReply(const unsigned char* bytes, std::size_t size) override;
    void CloseWhenSent(const std::string& why) override;

    void SendBytes(const std::vector<unsigned char>& bytes);
    void SetFaults(const Faults& faults);
    void ReleaseReplies();
    /// Ends the connection at once: in an orderly way, or abortively so that the peer sees a reset.
    void Close(const std::string& why);
    void Reset();

    PeerID ID() const { return Number; }

private:
    using Bytes = std::vector<unsigned char>;

    void Read();
    void TakeIncoming();
    std::size_t TakePacket(const unsigned char* bytes, std::size_t available);
    void Queue(const unsigned char* bytes, std::size_t size);
    void SendLate(const Bytes& packet);
    void WriteNext();
    void WritePieces();
    void OnWritten(std::size_t bytes);
    void CutToByteLimit();
    void End(const std::string& why, bool malformed);
    void Drain();
    void DrainNext();

    asio::ip::tcp::socket Socket;
    asio::steady_timer PieceTimer;
    asio::steady_timer EndTimer;
    const PeerID Number;
    Faults Fault;
    ConnectionOwner& Owner;
    Recorder& Record;

    std::array<unsigned char, 16 * 1024> Incoming{};
    std::size_t IncomingSize = 0;
    bool Reading = false;

    /// What is being written now, and what waits for it to be done. Pieces are the ends of the parts into
    /// which a fault splits Writing.
    Bytes Writing;
    Bytes Waiting;
    std::vector<std::size_t> WaitingPieces;
    std::vector<std::size_t> Pieces;
    std::size_t NextPiece = 0;
    std::size_t Written = 0;
    std::size_t BytesWritten = 0;

    std::vector<Bytes> HeldReplies;
    bool Ended = false;
    bool Closing = false;
    std::string ClosingWhy;
};

} // namespace Kesra
