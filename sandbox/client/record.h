// What is known of one download: what was ordered, and how far it has come.
#ifndef SANDBOX_CLIENT_RECORD_H
#define SANDBOX_CLIENT_RECORD_H

#include <cstdint>
#include <string>

#include "query.h"

namespace standin {

struct Order {
    std::string url;
    std::string path = {};  // absolute
    std::string cookies = {};
    std::string queryAuth = {};
    std::string basicAuth = {};  // in Base64
    int64_t speed = 0;           // bytes a second; 0 for as fast as it goes
    int64_t delay = 0;           // seconds

    bool operator==(const Order&) const = default;
    std::string partPath() const { return path + ".part"; }
};

/// Throws BadRequest for parameters that are not what they should be.
Order orderIn(const Query& query);

enum class Status {
    Searching,
    Waiting,
    Downloading,
    Paused,
    Complete,
    InsufficientDiskSpace,
    Disconnected,
    NotFound,
    Forbidden,
};

/// As it goes over the wire.
const char* wordOf(Status status);

/// Why a download stands still.
struct Failure {
    int64_t error = 0;     // libcurl's code
    int64_t subError = 0;  // a status of HTTP, or an errno
    std::string text = {};
};

struct Record {
    Order order;
    Status status = Status::Searching;
    int64_t size = 0;  // 0 while it is unknown
    int64_t received = 0;
    int64_t rate = 0;  // bytes a second
    Failure failure = {};

    /// Whether a thread works at it, or will after a restart.
    bool isActive() const;
    int64_t percent() const;
};

/// A record as one line, whose fields are written as a request's parameters are.
std::string lineOf(const Record& record);

/// Throws BadRequest for a line that is none of these.
Record recordIn(const std::string& line);

}  // namespace standin

#endif
