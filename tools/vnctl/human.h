// Sizes and times as people read them.
#ifndef VELNOR_TOOLS_VNCTL_HUMAN_H
#define VELNOR_TOOLS_VNCTL_HUMAN_H

#include <cstdint>
#include <string>

namespace vnctl {

/// "999 B", "1.5 KiB", "12.0 MiB"; 0 for less than that.
std::string humanSize(int64_t bytes);

/// "1.5 MiB/s".
std::string humanRate(int64_t bytesPerSecond);

/// "0:07", "12:34", "1:02:03".
std::string humanDuration(int64_t seconds);

}  // namespace vnctl

#endif
