// What one log tells about one installation.
#ifndef VELNOR_DEPLOY_LOGS_INSTALLATION_H
#define VELNOR_DEPLOY_LOGS_INSTALLATION_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "logs/log_line.h"

namespace logs {

/// How an installation ended. Unfinished: its log stops, because the program was killed, the window
/// closed, or the machine switched off. Joined: an application found the client running, and there
/// was nothing to install.
enum class Outcome : uint8_t { Succeeded, Failed, Unfinished, Joined };

inline constexpr std::array<const char*, 4> kOutcomeNames{"succeeded", "failed", "unfinished",
                                                          "joined"};
inline const char* nameOf(Outcome outcome) {
    return kOutcomeNames.at(static_cast<size_t>(outcome));
}

/// Every text is valid UTF-8 without control characters, of 241 characters at most.
struct Installation {
    uint64_t number = 0;  // within its log, from 1
    Time begin;
    Time end;  // of the last line that belongs to it
    Outcome outcome = Outcome::Unfinished;
    std::string release;  // the client's file name; empty when it was not reached
    std::string error;    // of a failure, what ended it; empty when the log does not say
    std::string cause;    // the error that was told before that, if there was one
    std::string last;     // if it is unfinished, the message of its last line
    // How long all of it, and how long the client's start took; nothing unless it succeeded, or
    // where the clock was put back meanwhile.
    std::optional<uint64_t> seconds;
    std::optional<uint64_t> startSeconds;
};

}  // namespace logs

#endif
