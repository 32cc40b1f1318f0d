#pragma once

#include "server/Faults.h"
#include "server/Limits.h"
#include "server/network/Link.h"
#include "server/scenario/Recorder.h"

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
    /// More waits to be sent than the limit of all connections together.
    virtual void OnOverload() = 0;
};

/// What the connections of one network have in common; outlives them.
struct ConnectionShare {
    ConnectionOwner& Owner;
    Recorder& Record;
    const ServerLimits Limits;
    std::size_t Open = 0;   ///< sockets in use, ended ones that wait for their peers to close included
    std::size_t Queued = 0; ///< bytes that wait to be sent, to all peers together
};

/// One accepted socket: cuts the incoming stream into packets, queues and writes the outgoing ones, and
/// misbehaves as its faults say. Used on the server's thread only.
class Connection final : public Link, public std::enable_shared_from_this<Connection>
{
public:
    Connection(asio::ip::tcp::socket socket, PeerID id, const Faults& faults, ConnectionShare& share);
    ~Connection() override;
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    void Start();

    void Send(const unsigned char* bytes, std::size_t size) override;
    void SendReply(const unsigned char* bytes, std::size_t size) override;
    const std::string& Name() const override { return Title; }
    void Admit() override;
    void CloseWhenSent(const std::string& why) override;

    void SendBytes(const std::vector<unsigned char>& bytes);
    void SetFaults(const Faults& faults);
    void ReleaseReplies();
    /// Ends the connection at once: in an orderly way, or abortively so that the peer sees a reset.
    void Close(const std::string& why);
    void Reset();

    PeerID ID() const { return Number; }
    /// Bytes that wait to be sent.
    std::size_t Backlog() const { return Counted; }

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
    void CountBacklog();
    void AwaitLogon();
    std::string ReasonOf(const asio::error_code& error) const;
    void End(const std::string& why, bool malformed);
    void Drain();
    void DrainNext();
    void DrainOn(const asio::error_code& error);

    asio::ip::tcp::socket Socket;
    asio::steady_timer PieceTimer;
    asio::steady_timer EndTimer;
    asio::steady_timer LogonTimer;
    const PeerID Number;
    const std::string Title;
    Faults Fault;
    ConnectionShare& Share;

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
    std::size_t Counted = 0; ///< what this connection has added to Share.Queued

    std::vector<Bytes> HeldReplies;
    bool Ended = false;
    bool Closing = false;
    std::string ClosingWhy;
};

} // namespace Kesra
