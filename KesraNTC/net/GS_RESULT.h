#pragma once

/// What a request method returns. It says whether the request was handed over or answered; the server's own
/// verdict is the result code that a waiting request fills in.
enum GS_RESULT {
    GS_OK = 0,          ///< sent; a waiting request: answered and decoded
    GS_REPLY_ERROR = 3, ///< a waiting request obtained no reply
};
