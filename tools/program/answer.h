// How a host answered, in words.
#ifndef VELNOR_TOOLS_PROGRAM_ANSWER_H
#define VELNOR_TOOLS_PROGRAM_ANSWER_H

#include <string>

#include "net/http_attempts.h"

namespace program {

/// What is to be said behind the name of `host` (HOST or HOST:PORT), which gave this answer to an
/// https request: that it answers, or that it has no address, does not answer, or cannot be used.
/// Throws std::bad_alloc for an answer that there was no memory for.
std::string answerText(const velnor::Answer& answer, const std::string& host);

}  // namespace program

#endif
