// One line of an installer's log, taken apart, and times.
#ifndef VELNOR_DEPLOY_LOGS_LOG_LINE_H
#define VELNOR_DEPLOY_LOGS_LOG_LINE_H

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace logs {

/// UTC, as the clock of the user's machine had it.
using Time = std::chrono::sys_seconds;

/// The date in UTC, as "2026-11-22".
std::string dateOf(Time time);

/// The first second of such a date; nothing when `date` is none.
std::optional<Time> timeOf(const std::string& date);

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
