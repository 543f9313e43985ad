// One line of an installer's log, taken apart.
#ifndef VELNOR_DEPLOY_LOGS_LOG_LINE_H
#define VELNOR_DEPLOY_LOGS_LOG_LINE_H

#include <optional>
#include <string>
#include <string_view>

#include "logs/installation.h"

namespace logs {

/// The texts lie within the line.
struct LogLine {
    Time time;
    bool isError;
    std::string_view function;
    std::string_view message;
};

/// Takes apart what support/log_file.h writes; nothing when `line`, without its line feed, is none
/// of these. The year has two digits in a log; it counts as one of 2000 to 2099.
std::optional<LogLine> parseLine(const std::string& line);

}  // namespace logs

#endif
