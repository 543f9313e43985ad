// Downloads started, stopped and forgotten.
#include "downloads.h"

#include <unistd.h>

#include <algorithm>
#include <utility>

#include "files.h"
#include "query.h"
#include "url.h"
#include "worker.h"

namespace fs = std::filesystem;

namespace {

bool exists(const std::string& path) {
    std::error_code none;
    return fs::exists(path, none);
}

}  // namespace

Downloads::Downloads(const fs::path& folder)
    : folder_(folder), ledger_((folder / "downloads.json").string()) {
    const std::lock_guard lock(control_);
    for (const Record& record : ledger_.all())
        if (record.wanted) launch(record, false);
}

void Downloads::start(Order order, bool onlyList, bool anew) {
    const std::lock_guard lock(control_);
    const std::optional<Record> known = ledger_.find(order.url);
    if (known && order.path.empty()) order.path = known->order.path;
    if (order.path.empty()) order.path = freePath(order.url);
    const bool hasGone = known && known->status == Status::complete && !exists(order.path);
    const bool isOther = !known || known->order.path != order.path;
    if (isOther && isTaken(order.path)) throw BadRequest("Another download has this path.");
    if (anew && known && known->status == Status::complete) unlink(known->order.path.c_str());
    if (isOther || anew || hasGone)
        begin(std::move(order), onlyList);
    else if (known->status != Status::complete)
        resume(*known, order, onlyList);
}

void Downloads::begin(Order order, bool onlyList) {
    halt(order.url);
    if (const auto earlier = ledger_.find(order.url)) unlink(earlier->order.partPath().c_str());
    unlink(order.partPath().c_str());
    launch({.order = std::move(order)}, onlyList);
}

void Downloads::resume(const Record& known, const Order& order, bool onlyList) {
    const bool runs = known.wanted && threads_.contains(order.url);
    if (runs && (onlyList || known.order == order)) return;
    halt(order.url);
    // It may have got further before it stopped, even to its end.
    Record record = ledger_.find(order.url).value_or(known);
    if (record.status == Status::complete) return;
    record.order = order;
    launch(std::move(record), onlyList);
}

void Downloads::launch(Record record, bool onlyList) {
    record.wanted = !onlyList;
    record.status = onlyList ? Status::waiting : Status::searching;
    record.trouble = {};
    Record& listed = ledger_.put(std::move(record));
    if (onlyList) return;
    threads_.insert_or_assign(listed.order.url,
                              std::jthread([this, &listed](const std::stop_token& stop) {
                                  work(ledger_, listed, stop);
                              }));
}

void Downloads::halt(const std::string& url) { threads_.erase(url); }

PauseResult Downloads::pause(const std::string& url) {
    const std::lock_guard lock(control_);
    halt(url);
    std::optional<Record> record = ledger_.find(url);
    if (!record) return PauseResult::unknown;
    if (record->status == Status::complete) return PauseResult::complete;
    record->status = Status::paused;
    record->wanted = false;
    record->rate = 0;
    ledger_.put(std::move(*record));
    return PauseResult::paused;
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
    if (record->status == Status::complete) unlink(record->order.path.c_str());
    return true;
}

bool Downloads::isTaken(const std::string& path) const {
    return std::ranges::any_of(ledger_.all(), [&path](const Record& record) {
        return record.status != Status::complete && record.order.path == path;
    });
}

std::string Downloads::freePath(const std::string& url) const {
    const std::string wish = (folder_ / "downloads" / fileNameOf(url)).string();
    std::string path = wish;
    for (int number = 2; exists(path) || isTaken(path); ++number)
        path = wish + "-" + std::to_string(number);
    return path;
}
