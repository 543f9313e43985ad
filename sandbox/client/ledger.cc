// One lock for all of it: there is little to do under it.
#include "ledger.h"

#include <algorithm>
#include <utility>

#include "files.h"
#include "store.h"
#include "url.h"

namespace {

bool runs(const Record& record) {
    return record.wanted &&
           (record.status == Status::searching || record.status == Status::downloading ||
            record.status == Status::moving);
}

bool isUsable(const Record& record) {
    return isFetchable(record.order.url) && record.order.path.starts_with('/');
}

}  // namespace

Ledger::Ledger(std::string file) : file_(std::move(file)) {
    for (Record& record : loadRecords(file_)) {
        if (!isUsable(record)) continue;
        // What was written last: the list is not saved with every byte.
        if (record.status != Status::complete) record.received = sizeOf(record.order.partPath());
        std::string url = record.order.url;
        records_[std::move(url)] = std::make_unique<Record>(std::move(record));
    }
}

std::vector<Record> Ledger::all() const {
    const std::lock_guard lock(mutex_);
    std::vector<Record> copies;
    for (const auto& [url, record] : records_) copies.push_back(*record);
    return copies;
}

std::optional<Record> Ledger::find(const std::string& url) const {
    const std::lock_guard lock(mutex_);
    const auto found = records_.find(url);
    if (found == records_.end()) return std::nullopt;
    return *found->second;
}

Record& Ledger::put(Record record) {
    const std::lock_guard lock(mutex_);
    std::unique_ptr<Record>& place = records_[record.order.url];
    place = std::make_unique<Record>(std::move(record));
    save();
    return *place;
}

void Ledger::erase(const std::string& url) {
    const std::lock_guard lock(mutex_);
    records_.erase(url);
    save();
}

void Ledger::change(Record& record, const std::function<void(Record&)>& change) {
    const std::lock_guard lock(mutex_);
    change(record);
    if (record.status != Status::downloading) record.rate = 0;
    save();
}

void Ledger::note(Record& record, int64_t received, int64_t rate) {
    const std::lock_guard lock(mutex_);
    record.received = received;
    record.rate = rate;
}

bool Ledger::foregroundRuns() const {
    const std::lock_guard lock(mutex_);
    return std::ranges::any_of(records_, [](const auto& entry) {
        return !entry.second->order.background && runs(*entry.second);
    });
}

void Ledger::awaitBackground(const std::stop_token& stop) {
    using namespace std::chrono_literals;
    while (!stop.stop_requested() && foregroundRuns()) rest(stop, 200ms);
}

void Ledger::rest(const std::stop_token& stop, std::chrono::milliseconds time) {
    std::unique_lock lock(mutex_);
    woken_.wait_for(lock, stop, time, [] { return false; });
}

void Ledger::save() const {
    std::vector<const Record*> records;
    for (const auto& [url, record] : records_) records.push_back(record.get());
    saveRecords(file_, records);
}
