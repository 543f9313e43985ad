// What a result code says to the person at the terminal.
#ifndef VELNOR_TOOLS_VNCTL_RESULT_TEXT_H
#define VELNOR_TOOLS_VNCTL_RESULT_TEXT_H

#include <cstdint>
#include <string>

namespace vnctl {

/// The text of `code` with `detail` in the place that it leaves for one. Characters of the detail
/// that a terminal would obey or could not show appear as "\x1b": it may come from a server.
std::string resultText(uint32_t code, const char* detail);

}  // namespace vnctl

#endif
