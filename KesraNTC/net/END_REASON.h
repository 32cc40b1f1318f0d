#pragma once

/// Why a connection ended, as CNTBaseClient::GetEndReason tells it. The first reason counts.
enum END_REASON {
    END_NONE = 0,              ///< it has not ended, or there has been none
    END_SERVER_CLOSED = 1,     ///< the server closed it in order
    END_CLOSED_HERE = 2,       ///< Disconnect, Close, a new ConnectToServer or the destructor
    END_RESET = 3,             ///< the network or the server broke it; GetEndError has the Winsock code
    END_MALFORMED = 4,         ///< what the server sent cannot be a packet
    END_OUTBOX_FULL = 5,       ///< a packet did not fit into what waits to be sent
    END_SILENT_PEER = 6,       ///< the server neither acknowledged nor answered for the silence limit
    END_REQUEST_TIMED_OUT = 7, ///< a waiting request got no reply
    END_NO_MEMORY = 8          ///< memory ran out on the receive thread
};
