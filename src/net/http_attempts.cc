#include "net/http_attempts.h"

#include <utility>

#include "net/proxy_credentials.h"

namespace velnor {
namespace {

using platform::HttpStream;
using platform::StreamStatus;

// Each wait works on the stream for the length of a poll and returns when the answer is known, so
// the counts bound the time, about 15 s, and cost none.
constexpr int kPolls = 300;
constexpr int kPollMilliseconds = 50;
constexpr uint32_t kReadSize = 1024;
constexpr int32_t kProxyAuthenticationRequired = 407;

bool opensInTime(HttpStream& stream) {
    for (int poll = 0; poll < kPolls; ++poll) {
        // The first look comes at once, the others each with a sleep behind it.
        const StreamStatus status = statusOf(stream);
        if (status != StreamStatus::Opening) return status == StreamStatus::Open;
        if (poll > 0) waitUntilOpen(stream, kPollMilliseconds);
    }
    return false;
}

bool hasBytesInTime(HttpStream& stream) {
    for (int poll = 1; poll <= kPolls; ++poll) {
        // Bytes that show on the last poll come too late, which is fixed by the interface: the
        // limit is 299 polls with an answer, and the last one only sleeps its time out.
        if (hasBytesAvailable(stream)) return poll < kPolls;
        waitForBytes(stream, kPollMilliseconds);
    }
    return false;
}

Answer read(HttpStream& stream, Keep keep) {
    GrowingBody body;
    char unkept[kReadSize] = {};
    for (;;) {
        char* room = keep == Keep::Body ? body.room(kReadSize) : unkept;
        if (room == nullptr) return {Ending::NoMemory};
        const int32_t count = readBody(stream, room, kReadSize);
        if (count < 0) return {Ending::Failed};
        if (count == 0) break;
        if (keep == Keep::Body) body.add(static_cast<uint32_t>(count));
    }
    Answer answer{Ending::Answered, responseCode(stream)};
    if (keep == Keep::Status || answer.status != kStatusOk) return answer;
    answer.body = body.take();
    answer.isGzip = hasResponseHeader(stream, "Content-Encoding", "gzip");
    return answer.body.data ? std::move(answer) : Answer{Ending::NoMemory};
}

// The answer of a stream that has just been opened.
Answer await(HttpStream& stream, Keep keep) {
    if (!opensInTime(stream)) return {Ending::NoAnswer};
    // Headers without a body in time are an answer that breaks off.
    if (!hasBytesInTime(stream)) {
        return {responseCode(stream) == 0 ? Ending::NoAnswer : Ending::Failed};
    }
    // A failed stream ends the wait for bytes as well: a read of it need not wait.
    if (statusOf(stream) == StreamStatus::Error) return {Ending::NoAnswer};
    return read(stream, keep);
}

}  // namespace

Answer HttpAttempts::send(Way way) {
    for (;;) {
        const platform::OwnedStream stream = platform::openStream(requestFor(way));
        if (!stream) return {Ending::Failed};
        Answer answer = await(*stream, keep_);
        if (answer.status != kProxyAuthenticationRequired || authentication_) {
            if (answer.ending != Ending::Answered) copyFailureText(*stream, answer.failure);
            return answer;
        }
        if (!answerDemand(*stream)) return {Ending::Failed};
    }
}

// In direct mode credentials are looked up and never sent, so that a second 407 ends the attempt
// there too.
bool HttpAttempts::answerDemand(HttpStream& stream) {
    authentication_ = takeProxyAuthentication(stream);
    return authentication_ && requiresUserNameAndPassword(*authentication_) && proxies_ &&
           findProxyCredentials(*proxies_, request_.url, &credentials_);
}

platform::HttpRequest HttpAttempts::requestFor(Way way) const {
    platform::HttpRequest request = request_;
    if (way == Way::Direct) return request;
    request.proxies = proxies_.get();
    request.authentication = authentication_.get();
    request.credentials = authentication_ ? &credentials_ : nullptr;
    return request;
}

}  // namespace velnor
