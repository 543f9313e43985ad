// Text from outside, made fit for a terminal.
#ifndef VELNOR_TOOLS_VNCTL_PRINTABLE_H
#define VELNOR_TOOLS_VNCTL_PRINTABLE_H

#include <string>

namespace vnctl {

/// `text` with "\x1b" in place of each byte that a terminal would obey or that is no part of a
/// character of the user's locale.
std::string printable(const std::string& text);

}  // namespace vnctl

#endif
