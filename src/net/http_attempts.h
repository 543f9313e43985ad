// One request through the system's HTTP stack, in as many attempts as its policy allows: the first
// through the system's proxies, with a password of the user's keychain when a proxy wants one, the
// others directly.
#ifndef VELNOR_NET_HTTP_ATTEMPTS_H
#define VELNOR_NET_HTTP_ATTEMPTS_H

#include "net/response_body.h"
#include "platform/http_stream.h"

namespace velnor {

/// What follows an attempt that has failed.
enum class Next {
    GiveUp,
    DirectOnce,   // the direct attempt, unless this was it
    DirectAgain,  // a direct attempt in any case, however many there were
};

/// What an attempt can fail of, and what follows then. Want of memory for the body always ends the
/// request.
struct AttemptPolicy {
    Next noStream;       // it could not even start
    Next noAnswer;       // no connection or no first byte within the time, or a failure before it
    Next brokenAnswer;   // the connection failed within the answer
    Next noCredentials;  // a proxy wants a password, and there is none
    Next refusal;        // any status but 200, a refused password, an answer that was not accepted
    bool asksProxyOnce;  // a 407 is answered once in all attempts together, not once in each
};

enum class Verdict { Accepted, Refused, NoMemory };

/// Takes the answers with status 200.
class AnswerReader {
  public:
    virtual ~AnswerReader() = default;
    virtual Verdict accept(const platform::HttpStream& stream, ResponseBody* body) = 0;
};

/// Sends `request` (its proxies and credentials are filled in here). True when an answer with
/// status 200 came and the reader accepted it; without a reader, bodies are thrown away.
///
/// An attempt waits about 15 s for the connection and 15 s for the first bytes, and without limit
/// for the rest. Between repeated direct attempts there is a pause of 50 ms to 1 s, growing.
bool sendInAttempts(const platform::HttpRequest& request, const AttemptPolicy& policy,
                    AnswerReader* reader);

}  // namespace velnor

#endif
