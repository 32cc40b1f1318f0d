#pragma once

#include "KesraNTC/net/CNTPacket.h"
#include "KesraNTC/platform/Export.h"
#include "KesraNTC/platform/Platform.h"

/// One waiting request. It belongs to the thread that made the request; while registered in the proxy's table
/// the dispatcher may fill its reply.
class KESRANTC_API CNestedReply
{
public:
    /// An unsignalled manual-reset event and an empty reply. The event is null when the system refuses one.
    CNestedReply();
    ~CNestedReply();
    CNestedReply(const CNestedReply&) = delete;
    CNestedReply& operator=(const CNestedReply&) = delete;

    short Serial;    ///< 1 to 10000; the key in the proxy's table, travels with request and reply
    HANDLE Event;    ///< set once the reply is stored
    CNTPacket Reply; ///< the reply as received, its position behind the serial
    bool Delivered;  ///< the reply is stored and the event set or about to be; under the proxy's lock

    unsigned long long Generation; ///< of the connection on which the request was made
    unsigned long long Began;      ///< when it was registered, in microseconds
};
