// The polled waits on an HTTP stream, with their limits: 300 polls, 50 ms apart, about 15 s each.
#ifndef VELNOR_NET_STREAM_POLLS_H
#define VELNOR_NET_STREAM_POLLS_H

#include "platform/http_stream.h"

namespace velnor {

/// Waits until the stream is open. False when it fails or the time is up.
bool waitUntilOpen(platform::HttpStream& stream);

/// Waits until a read returns without waiting. False when the time is up.
bool waitForBytes(platform::HttpStream& stream);

}  // namespace velnor

#endif
