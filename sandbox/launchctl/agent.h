// What a property list asks of the agent manager.
#ifndef SANDBOX_LAUNCHCTL_AGENT_H
#define SANDBOX_LAUNCHCTL_AGENT_H

#include <string>
#include <vector>

namespace launchctl {

struct Agent {
    std::string label;
    std::vector<std::string> arguments;
    bool runAtLoad = false;
    bool keepAlive = false;
};

/// Reads an XML property list. Throws std::runtime_error with a message for the user when the file
/// cannot be read, is no property list, or lacks a Label or ProgramArguments.
Agent readAgent(const std::string& path);

}  // namespace launchctl

#endif
