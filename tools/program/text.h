// Text as people read it on a terminal.
#ifndef VELNOR_TOOLS_PROGRAM_TEXT_H
#define VELNOR_TOOLS_PROGRAM_TEXT_H

#include <cstdint>
#include <string>

namespace program {

/// `text` with "\x1b" in place of each byte that a terminal would obey or that is no part of a
/// character of the user's locale.
std::string printable(const std::string& text);

/// "999 B", "1.5 KiB", "12.0 MiB"; 0 for less than that.
std::string humanSize(int64_t bytes);

/// "1.5 MiB/s".
std::string humanRate(int64_t bytesPerSecond);

/// "0:07", "12:34", "1:02:03".
std::string humanDuration(int64_t seconds);

}  // namespace program

#endif
