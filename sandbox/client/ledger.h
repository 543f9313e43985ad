// The records of all downloads under one lock, kept in a file so that they survive the client.
#ifndef SANDBOX_CLIENT_LEDGER_H
#define SANDBOX_CLIENT_LEDGER_H

#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "record.h"

namespace standin {

class Ledger {
  public:
    /// With what the file holds.
    explicit Ledger(const std::filesystem::path& file);

    std::vector<Record> all() const;
    std::optional<Record> find(const std::string& url) const;

    /// An earlier one of this URL is replaced.
    void put(const Record& record);
    void erase(const std::string& url);

    /// Changes a record of the list. Figures alone are not worth writing the file: a restart learns
    /// them anew.
    void change(const std::string& url, const std::function<void(Record&)>& change);

  private:
    void save() const;  // with the lock

    const std::filesystem::path file_;
    mutable std::mutex mutex_;
    std::map<std::string, Record> records_;
};

}  // namespace standin

#endif
