// Faults that a rehearsal orders of a running stand-in client.
#ifndef SANDBOX_CLIENT_FAULTS_H
#define SANDBOX_CLIENT_FAULTS_H

#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>

namespace standin {

/// The first line of /tmp/standin_client.mode: a word, which sandbox/README.md explains, and what
/// follows it behind one space. Both are empty for normal.
struct Mode {
    std::string word;
    std::string argument;

    bool operator==(const Mode&) const = default;
};

/// Read anew each time, so that it can change while the client runs.
Mode currentMode();

/// The faults that must remember what they have done already: challenges, files in use, and resets.
/// Begins from the start whenever the mode is another. May be used from several threads at once.
class FaultInjection {
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

}  // namespace standin

#endif
