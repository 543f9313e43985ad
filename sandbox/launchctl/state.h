// What every invocation of launchctl and every supervisor share: the folder /run/launchd.
#ifndef SANDBOX_LAUNCHCTL_STATE_H
#define SANDBOX_LAUNCHCTL_STATE_H

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace launchctl::state {

/// Makes the folder if it is not there yet.
void prepare();

/// The file `name` in the folder.
std::string path(const std::string& name);

/// Appends one line of blank-separated words to the file `calls`.
void recordCall(const std::vector<std::string>& words);

/// The word in the file `mode`, by which a test changes how launchctl behaves; empty for normal.
std::string mode();

/// Held by whoever changes which agents are loaded. Not inherited by programs started meanwhile.
class Lock {
  public:
    Lock();
    ~Lock();
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

  private:
    int fd_;
};

/// Marks `label` as loaded for as long as this process lives. False when another process has done
/// so.
bool claim(const std::string& label);

/// The process that has claimed `label`, or nothing when the agent is not loaded.
std::optional<pid_t> supervisor(const std::string& label);

/// The agent's program while it runs, in the file LABEL.pid.
void putPid(const std::string& label, pid_t program);
std::optional<pid_t> pid(const std::string& label);

/// Removes the file LABEL.WHAT.
void remove(const std::string& label, const std::string& what);

}  // namespace launchctl::state

#endif
