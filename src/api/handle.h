// The connection to the client that runs, the requests on it, and what the client replies.
#ifndef VELNOR_API_HANDLE_H
#define VELNOR_API_HANDLE_H

#include <cstdint>
#include <optional>
#include <utility>

#include "support/owned.h"
#include "support/text_extraction.h"
#include "velnor/capi.h"

struct ApiHandle {
    char* userAgent;  // owned
    int32_t socket;   // -1 when not connected
};

/// Asks the client whether it is there. Returns 0 when it answered, else 1 with the transport's
/// codes.
int32_t _vn_ping(const char* userAgent);

/// Sends a GET request for `requestPath`, connecting first when the handle is not connected.
/// Returns the reply's body, whatever its status, owned by the caller; null on failure, and then
/// the connection is given up. A null path fails at once.
///
/// `cid` is not used: the path holds it.
///
/// Codes left: 2 when the client cannot be connected to; 4 and 5 as _vn_downloadPathFromSocket. A
/// path that is null or too long, or that could not be sent, leaves none.
char* _vn_makeAPIRequest(ApiHandle* handle, int32_t cid, const char* requestPath);

/// A challenge is a text that the client wants to find in a file before it does what it was asked:
/// when `reply` holds a text under `url` that begins with "Challenge:", writes what follows into
/// the file at `challengeFilePath`, replacing it, and sends `requestPath` once more. The request is
/// sent also when the file could not be written; the client knows what to make of that.
///
/// Takes `reply` over. Returns it, or the reply to the repeated request, owned by the caller; null
/// when there was none, or no memory.
char* _vn_answerChallenge(ApiHandle* handle, int32_t cid, const char* url, const char* requestPath,
                          char* reply, const char* challengeFilePath);

namespace velnor {

/// A reply's text, and its unescaped copy, made once for all that look into it.
struct Reply {
    explicit Reply(OwnedText received) : text(std::move(received)), json(text.get()) {}

    OwnedText text;
    JSONReply json;
};

// The two functions above for replies that are looked into. Nothing, with their codes, for null.
std::optional<Reply> ask(ApiHandle* handle, int32_t cid, const char* path);
std::optional<Reply> answerChallenge(ApiHandle* handle, int32_t cid, const char* url,
                                     const char* path, Reply first, const char* challengeFilePath);

}  // namespace velnor

#endif
