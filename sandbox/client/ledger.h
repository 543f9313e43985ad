// The records of all downloads under one lock, kept in a file.
#ifndef SANDBOX_CLIENT_LEDGER_H
#define SANDBOX_CLIENT_LEDGER_H

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "record.h"

class Ledger {
  public:
    /// With what the file holds.
    explicit Ledger(std::string file);

    std::vector<Record> all() const;
    std::optional<Record> find(const std::string& url) const;

    /// The reference is good until the record is erased. An earlier one of this URL is replaced.
    Record& put(Record record);
    void erase(const std::string& url);

    /// Changes a record of this ledger and writes the file.
    void change(Record& record, const std::function<void(Record&)>& change);

    /// The figures alone, which a restart learns anew.
    void note(Record& record, int64_t received, int64_t rate);

    bool foregroundRuns() const;

    /// Until no foreground download runs, or it is told to stop.
    void awaitBackground(const std::stop_token& stop);

    /// For so long, or until it is told to stop.
    void rest(const std::stop_token& stop, std::chrono::milliseconds time);

  private:
    void save() const;  // with the lock

    std::string file_;
    mutable std::mutex mutex_;
    std::condition_variable_any woken_;
    std::map<std::string, std::unique_ptr<Record>> records_;
};

#endif
