// What tests of several rooms do: files as they are written, read and looked for, commands, waits,
// and the maker's signatures.
#ifndef TESTS_HARNESS_HARNESS_H
#define TESTS_HARNESS_HARNESS_H

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace harness {

inline const std::string kInstallPath = "/Applications/Velnor";

/// Where an installation puts its agent and its preference pane.
std::string agentPath();
std::string panePath();

/// Path of a file in the install directory.
inline std::string installed(const std::string& name) { return kInstallPath + "/" + name; }

/// Creates the install directory, as an installation does before its other files.
void makeInstallDirectory();

/// Makes what an installation leaves, without the client: the registry with this text, guid.ini,
/// the agent and the preference pane.
void makeInstallation(const std::string& registry);

void writeFile(const std::string& path, const std::string& content);

/// Content of the file; empty when there is none.
std::string readFile(const std::string& path);

bool exists(const std::string& path);

/// Replaces `path` by a file on a full disk: it can be opened, and what is written is lost. Not for
/// files whose mode is changed: it is the system's own device that is behind it.
void putOnFullDisk(const std::string& path);

size_t openDescriptors();
unsigned modeOf(const std::string& path);

/// Messages of installer.txt in order, each as "[level] function: message". A line that is not in
/// the log's format fails the test.
std::vector<std::string> logMessages();

struct CommandResult {
    int status;  // as the shell's $?
    std::string output;
};

/// Runs `command` in the shell and collects its standard output.
CommandResult run(const std::string& command);

/// Asks every 10 ms whether `holds`, for at least a minute.
bool eventually(const std::function<bool()>& holds);

/// Hex text of the signature over `data` by the deployment that the tests are built with.
std::string sign(const std::string& data);

/// `data` in gzip format, compressed at `level` (1 to 9).
std::string gzip(const std::string& data, int level = 9);

// Where velnor_failing_allocations is linked, for what is linked statically with it; the libraries
// beneath keep their memory.

/// From here on the `number`-th allocation (from 1) of this thread fails, alone or with all that
/// follow; 0 only watches.
void failAllocation(size_t number, bool lasts = false);

/// Ends the watch; true when the chosen allocation was reached.
bool hasFailedAllocation();

/// The bytes of all allocations under the watch together.
size_t allocatedBytes();

}  // namespace harness

#endif
