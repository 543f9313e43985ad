// The client's downloads: what may be done with them, and a thread for each that runs.
#ifndef SANDBOX_CLIENT_DOWNLOADS_H
#define SANDBOX_CLIENT_DOWNLOADS_H

#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "ledger.h"

namespace standin {

enum class PauseResult { Paused, Unknown, Complete };

/// All functions may be called from several threads at once.
class Downloads {
  public:
    /// The list is in `folder`.
    explicit Downloads(const std::filesystem::path& folder);
    ~Downloads();
    Downloads(const Downloads&) = delete;
    Downloads& operator=(const Downloads&) = delete;

    /// Takes up what was unfinished when the client ended.
    void takeUp();

    /// Begins the download when it does not run and is not complete. Without a path it goes into
    /// `folder`/downloads. Throws BadRequest for a path that another unfinished one has.
    void start(Order order, bool onlyList, bool anew);

    PauseResult pause(const std::string& url);

    /// Forgets it and, unless `keepsFile`, removes what is there of it. False for an unknown one.
    bool remove(const std::string& url, bool keepsFile);

    std::optional<Record> find(const std::string& url) const { return ledger_.find(url); }
    std::vector<Record> all() const { return ledger_.all(); }

  private:
    void launch(const Order& order);
    void work(const Order& order, const std::stop_token& stop);
    bool attempt(const Order& order, const std::stop_token& stop);
    void halt(const std::string& url);
    bool isTaken(const std::string& path) const;

    const std::filesystem::path folder_;
    Ledger ledger_;
    // Held by what starts and stops downloads. The ledger's lock is not, while a thread is awaited.
    std::mutex control_;
    std::map<std::string, std::jthread> threads_;
};

}  // namespace standin

#endif
