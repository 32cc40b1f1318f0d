#pragma once

/// What a connection has carried since it began, and what is on its way. Bytes are those of whole packets'
/// streams, headers included; times are milliseconds.
struct CNTStatistics {
    unsigned long long BytesSent; ///< that the system has taken
    unsigned long long BytesReceived;
    unsigned long long PacketsSent; ///< that were accepted for sending
    unsigned long long PacketsReceived;
    unsigned long QueuedPackets;    ///< received and not yet dispatched, of all connections of the client
    unsigned long QueuedBytes;      ///< their bytes
    unsigned long UnsentBytes;      ///< waiting in the outbox
    unsigned long RequestsInFlight; ///< waiting requests of the attached proxy without a reply yet
    unsigned long long Replies;     ///< replies that reached their request
    double LastReplyTime;           ///< from the request's registration to its reply
    double LongestReplyTime;
    double AverageReplyTime;
};
