// What is known of one download: what was ordered, and how far it has come.
#ifndef SANDBOX_CLIENT_RECORD_H
#define SANDBOX_CLIENT_RECORD_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

enum class Status {
    searching,
    waiting,
    downloading,
    paused,
    complete,
    insufficientDiskSpace,
    disconnected,
    notFound,
    forbidden,
    moving,
};

/// As it goes over the wire.
const char* wordOf(Status status);
std::optional<Status> statusOf(std::string_view word);

struct Order {
    std::string url;
    std::string path = {};  // absolute
    std::string cookies = {};
    std::string queryAuth = {};
    std::string basicAuth = {};  // in Base64
    int64_t speed = 0;           // bytes a second; 0 for as fast as it goes
    int64_t delay = 0;           // seconds
    bool background = false;
    bool checksMd5 = false;

    bool operator==(const Order&) const = default;
    std::string partPath() const { return path + ".part"; }
};

/// What a server said of a file.
struct Announcement {
    int64_t size = 0;              // 0 while nobody knows
    std::string etag = {};         // a strong one, or empty
    std::string expectedMd5 = {};  // in Base64, or empty
};

/// Why a download stands still.
struct Trouble {
    int64_t error = 0;     // libcurl's code
    int64_t subError = 0;  // a status of HTTP, or an errno
    std::string text = {};
};

struct Record {
    Order order;
    Status status = Status::waiting;
    bool wanted = false;  // somebody works at it, or will after a restart
    Announcement announced = {};
    int64_t received = 0;
    int64_t rate = 0;      // bytes a second
    std::string md5 = {};  // of the whole file, in hexadecimal digits
    Trouble trouble = {};

    int64_t percent() const;
};

#endif
