// One attempt to fetch a file, by libcurl.
#ifndef SANDBOX_CLIENT_TRANSFER_H
#define SANDBOX_CLIENT_TRANSFER_H

#include <cstdint>
#include <functional>
#include <stop_token>

#include "record.h"

namespace standin {

/// Told of the transfer on the thread that it runs on, as soon as bytes have come. `size` is 0
/// while it is unknown.
using Progress = std::function<void(int64_t size, int64_t received, int64_t rate)>;

struct Outcome {
    Status status;  // Complete, or what keeps it from that
    int64_t size = 0;
    Failure failure = {};
};

/// Whether libcurl reads it as an http or https URL.
bool isFetchable(const std::string& url);

/// Fetches the whole file to the order's path; until it is complete it is at partPath(). When it is
/// told to stop, that takes a second at most, and the outcome does not count.
Outcome transfer(const Order& order, const Progress& progress, const std::stop_token& stop);

}  // namespace standin

#endif
