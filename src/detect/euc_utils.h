// Is the client there? Asks the launch daemon for the client's agent and pings the client's port.
#ifndef VELNOR_DETECT_EUC_UTILS_H
#define VELNOR_DETECT_EUC_UTILS_H

#include <cstdint>
#include <string>

// The message of each check says, for a person, why it failed; it is left untouched on success.
namespace EUCUtils {

/// Sets `message` to `text`, followed by the text of errno when `withErrno` is set; closes `fd`
/// unless it is -1; returns false. Every failure of the checks goes through it.
bool findClientFailed(std::string& message, std::string text, bool withErrno, int fd);

/// True when the client's launch agent is loaded for this user.
bool isClientRunning(std::string& message);

/// True when the agent is loaded and the client answers a ping on 127.0.0.1, TCP port 9421. Waits
/// 1 second for the reply, and 1 second for each of up to 100 rounds of connecting; after a signal
/// during such a wait it waits on. Throws std::bad_alloc when there is no memory for a message.
bool isClientListening(std::string& message);

}  // namespace EUCUtils

/// 1 when the client answers, else 0.
int32_t pingClient();

#endif
