// The misbehaviour that must remember what it has done already.
#ifndef SANDBOX_CLIENT_MISCHIEF_H
#define SANDBOX_CLIENT_MISCHIEF_H

#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>

#include "mode.h"

/// Begins from the start whenever the mode is another. May be used from several threads at once.
class Mischief {
  public:
    /// What a request to do `function` with a download is answered at first instead of being done;
    /// nothing when it may be done.
    std::optional<std::string> objection(const Mode& mode, const std::string& function,
                                         const std::string& url, const std::string& path);

    void noteReset(const Mode& mode, const std::string& url);
    bool demandsReset(const Mode& mode, const std::string& url);

  private:
    void enter(const Mode& mode);
    bool isMet(const std::string& challenge, const std::string& key, const std::string& path);
    bool isInUse(const std::string& times, const std::string& url);

    std::mutex mutex_;
    Mode mode_;
    std::set<std::string> challenged_;
    std::map<std::string, long> refusals_;
    std::set<std::string> reset_;
};

#endif
