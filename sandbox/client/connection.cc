// Requests read and replies sent.
#include "connection.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <system_error>
#include <thread>

#include "mode.h"

namespace {

constexpr size_t kLargestHead = 64 * 1024;
constexpr timeval kPatience{5, 0};
// An application may keep its connection for as long as it likes.
constexpr timeval kNoLimit{0, 0};
constexpr char kBlankLine[] = "\r\n\r\n";

void limitWaits(int connection, const timeval& limit) {
    setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    setsockopt(connection, SOL_SOCKET, SO_SNDTIMEO, &kPatience, sizeof kPatience);
}

/// The first head in `input`, for which more is received as long as needed; it is taken away. Empty
/// when none comes, or too large a one.
std::string takeHead(int connection, std::string& input) {
    char block[4096];
    size_t end = 0;
    while ((end = input.find(kBlankLine)) == std::string::npos) {
        const ssize_t got = recv(connection, block, sizeof block, 0);
        if (got <= 0 || input.size() + static_cast<size_t>(got) > kLargestHead) return {};
        limitWaits(connection, kPatience);
        input.append(block, static_cast<size_t>(got));
    }
    std::string head = input.substr(0, end + 2);
    input.erase(0, end + sizeof kBlankLine - 1);
    return head;
}

bool sendAll(int connection, const std::string& text) {
    for (size_t sent = 0; sent < text.size();) {
        const ssize_t now = send(connection, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
        if (now <= 0) return false;
        sent += static_cast<size_t>(now);
    }
    return true;
}

void staySilent(int connection) {
    limitWaits(connection, kNoLimit);
    char rest = 0;
    while (recv(connection, &rest, 1, 0) > 0) continue;
}

/// False when the connection is to be closed.
bool exchange(int connection, std::string& input, const Responder& responder) {
    const std::string head = takeHead(connection, input);
    if (currentMode().word == "mute") {
        staySilent(connection);
        return false;
    }
    if (head.empty()) return false;
    const Answer answer = responder(head);
    return sendAll(connection, answer.bytes) && answer.keepsOpen;
}

}  // namespace

void Connections::talk(int connection) {
    limitWaits(connection, kPatience);
    std::string input;
    while (exchange(connection, input, responder_)) limitWaits(connection, kNoLimit);
    const std::lock_guard lock(mutex_);
    open_.erase(connection);
    close(connection);
    ended_.notify_all();
}

void Connections::add(int connection) {
    const std::lock_guard lock(mutex_);
    try {
        open_.insert(connection);
        std::thread([this, connection] { talk(connection); }).detach();
    } catch (const std::system_error&) {
        // No thread to be had: this caller goes unanswered.
        open_.erase(connection);
        close(connection);
    }
}

Connections::~Connections() {
    std::unique_lock lock(mutex_);
    for (const int connection : open_) shutdown(connection, SHUT_RDWR);
    ended_.wait(lock, [this] { return open_.empty(); });
}
