// Polled waits. Each wait works on the stream for the length of a poll and returns when the answer
// is known, so the counts bound the time and cost none.
#include "net/stream_polls.h"

namespace velnor {
namespace {

constexpr int kPolls = 300;
constexpr int kPollMilliseconds = 50;

}  // namespace

bool waitUntilOpen(platform::HttpStream& stream) {
    using platform::StreamStatus;
    for (int poll = 0; poll < kPolls; ++poll) {
        // The first look comes at once, the others each with a sleep behind it.
        const StreamStatus status = stream.status();
        if (status == StreamStatus::Open) return true;
        if (status == StreamStatus::Error) return false;
        if (poll > 0) stream.waitUntilOpen(kPollMilliseconds);
    }
    return false;
}

bool waitForBytes(platform::HttpStream& stream) {
    for (int poll = 1; poll <= kPolls; ++poll) {
        // Bytes that show on the last poll come too late, deliberately: the limit is 299 polls with
        // an answer, and the last one only sleeps its time out.
        if (stream.hasBytesAvailable()) return poll < kPolls;
        stream.waitForBytes(kPollMilliseconds);
    }
    return false;
}

}  // namespace velnor
