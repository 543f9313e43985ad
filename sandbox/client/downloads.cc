#include "downloads.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <utility>

#include "transfer.h"

namespace standin {
namespace {

using namespace std::chrono_literals;

constexpr auto kBeforeNextAttempt = 1500ms;
constexpr int64_t kLongestDelay = 24L * 3600;

/// Until the time is over, or it is told to stop.
void pauseFor(std::chrono::milliseconds time, const std::stop_token& stop) {
    std::mutex mutex;  // guards nothing, but a wait needs a lock
    std::condition_variable_any woken;
    // cppcheck-suppress localMutex
    std::unique_lock lock(mutex);
    woken.wait_for(lock, stop, time, [] { return false; });
}

}  // namespace

Downloads::Downloads(const std::filesystem::path& folder)
    : folder_(folder), ledger_(folder / "downloads.list") {}

Downloads::~Downloads() {
    for (auto& [url, thread] : threads_) thread.request_stop();  // so that they end side by side
}

void Downloads::takeUp() {
    const std::lock_guard lock(control_);
    for (const Record& record : ledger_.all()) {
        if (record.isActive() && !threads_.contains(record.order.url)) launch(record.order);
    }
}

void Downloads::start(Order order, bool onlyList, bool anew) {
    const std::lock_guard lock(control_);
    const std::optional<Record> known = ledger_.find(order.url);
    if (known && order.path.empty()) order.path = known->order.path;
    if (order.path.empty()) {
        order.path = folder_ / "downloads" / order.url.substr(order.url.find_last_of("/?") + 1);
    }
    const bool isSame = known && known->order.path == order.path;
    if (!isSame && isTaken(order.path)) throw BadRequest("Another download has this path.");
    if (isSame && !anew) {
        if (known->status == Status::Complete && access(order.path.c_str(), F_OK) == 0) return;
        if (known->isActive() && (onlyList || known->order == order)) return;
    }
    halt(order.url);
    if (known) unlink(known->order.partPath().c_str());
    if (known && anew && known->status == Status::Complete) unlink(known->order.path.c_str());
    ledger_.put({.order = order, .status = onlyList ? Status::Waiting : Status::Searching});
    if (!onlyList) launch(order);
}

void Downloads::launch(const Order& order) {
    threads_.insert_or_assign(
        order.url, std::jthread([this, order](const std::stop_token& stop) { work(order, stop); }));
}

void Downloads::work(const Order& order, const std::stop_token& stop) {
    pauseFor(std::chrono::seconds(std::min(order.delay, kLongestDelay)), stop);
    while (!stop.stop_requested() && !attempt(order, stop)) pauseFor(kBeforeNextAttempt, stop);
}

/// False when another attempt may succeed.
bool Downloads::attempt(const Order& order, const std::stop_token& stop) {
    const auto note = [&](int64_t size, int64_t received, int64_t rate) {
        ledger_.change(order.url, [&](Record& record) {
            record.status = Status::Downloading;
            record.size = size;
            record.received = received;
            record.rate = rate;
            record.failure = {};
        });
    };
    const Outcome outcome = transfer(order, note, stop);
    if (outcome.status != Status::Complete && stop.stop_requested()) return false;
    ledger_.change(order.url, [&outcome](Record& record) {
        record.status = outcome.status;
        record.rate = 0;
        record.failure = outcome.failure;
        if (outcome.status == Status::Complete) record.size = record.received = outcome.size;
    });
    return outcome.status != Status::Disconnected;
}

void Downloads::halt(const std::string& url) { threads_.erase(url); }

PauseResult Downloads::pause(const std::string& url) {
    const std::lock_guard lock(control_);
    halt(url);
    const std::optional<Record> record = ledger_.find(url);
    if (!record) return PauseResult::Unknown;
    if (record->status == Status::Complete) return PauseResult::Complete;
    ledger_.change(url, [](Record& paused) {
        paused.status = Status::Paused;
        paused.rate = 0;
    });
    return PauseResult::Paused;
}

bool Downloads::remove(const std::string& url, bool keepsFile) {
    const std::lock_guard lock(control_);
    halt(url);
    const std::optional<Record> record = ledger_.find(url);
    if (!record) return false;
    ledger_.erase(url);
    if (keepsFile) return true;
    unlink(record->order.partPath().c_str());
    // What is at the path of an unfinished one is not ours.
    if (record->status == Status::Complete) unlink(record->order.path.c_str());
    return true;
}

bool Downloads::isTaken(const std::string& path) const {
    return std::ranges::any_of(ledger_.all(), [&path](const Record& record) {
        return record.status != Status::Complete && record.order.path == path;
    });
}

}  // namespace standin
