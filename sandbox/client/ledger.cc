#include "ledger.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>

namespace standin {

Ledger::Ledger(const std::filesystem::path& file) : file_(file) {
    std::ifstream stream(file);
    for (std::string line; std::getline(stream, line);) {
        try {
            const Record record = recordIn(line);
            records_.emplace(record.order.url, record);
        } catch (const BadRequest& error) {
            std::fprintf(stderr, "standin_client: %s: %s\n", file.c_str(), error.what());
        }
    }
}

std::vector<Record> Ledger::all() const {
    const std::lock_guard lock(mutex_);
    std::vector<Record> copies;
    for (const auto& [url, record] : records_) copies.push_back(record);
    return copies;
}

std::optional<Record> Ledger::find(const std::string& url) const {
    const std::lock_guard lock(mutex_);
    const auto found = records_.find(url);
    if (found == records_.end()) return std::nullopt;
    return found->second;
}

void Ledger::put(const Record& record) {
    const std::lock_guard lock(mutex_);
    records_.insert_or_assign(record.order.url, record);
    save();
}

void Ledger::erase(const std::string& url) {
    const std::lock_guard lock(mutex_);
    records_.erase(url);
    save();
}

void Ledger::change(const std::string& url, const std::function<void(Record&)>& change) {
    const std::lock_guard lock(mutex_);
    Record& record = records_.at(url);
    const Status before = record.status;
    change(record);
    if (record.status != before) save();
}

void Ledger::save() const {
    std::string text;
    for (const auto& [url, record] : records_) text += lineOf(record) + '\n';
    const std::filesystem::path fresh = file_.string() + ".new";
    std::error_code error;
    std::filesystem::create_directories(file_.parent_path(), error);
    // For its owner alone, because of the passwords.
    const int fd = open(fresh.c_str(), O_CREAT | O_TRUNC | O_WRONLY | O_CLOEXEC, 0600);
    const ssize_t written = fd < 0 ? -1 : write(fd, text.data(), text.size());
    if (fd >= 0) close(fd);
    if (written == static_cast<ssize_t>(text.size())) {
        std::filesystem::rename(fresh, file_, error);
    } else {
        std::perror("standin_client: the list of downloads");
    }
}

}  // namespace standin
