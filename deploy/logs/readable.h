// Texts of logs, which anybody may have sent, made fit to be shown and counted.
#ifndef VELNOR_DEPLOY_LOGS_READABLE_H
#define VELNOR_DEPLOY_LOGS_READABLE_H

#include <string>
#include <string_view>

namespace logs {

/// `text` as velnor::readableText makes it, NUL bytes included: valid UTF-8 without anything that a
/// terminal would obey, the middle left out when it is long. Throws std::bad_alloc.
std::string readable(std::string_view text);

/// A readable text without what differs from machine to machine, so that equal failures are counted
/// as one: of a path or URL "..." and the last part stay, and "#" stands for a number, a version,
/// and eight or more hexadecimal digits.
std::string withoutParticulars(const std::string& text);

}  // namespace logs

#endif
