#include "logs/log_line.h"

#include <array>
#include <cstdio>

namespace logs {
namespace {

constexpr int kCentury = 2000;
constexpr std::string_view kError = "eror";

// Nothing when there is no such day.
std::optional<Time> midnight(int year, unsigned month, unsigned day) {
    const std::chrono::year_month_day date{std::chrono::year(year), std::chrono::month(month),
                                           std::chrono::day(day)};
    if (!date.ok()) return {};
    return std::chrono::sys_days(date);
}

}  // namespace

std::string dateOf(Time time) {
    const std::chrono::year_month_day date(std::chrono::floor<std::chrono::days>(time));
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "%d-%02u-%02u", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
    return text.data();
}

std::optional<Time> timeOf(const std::string& date) {
    int year = 0;
    unsigned month = 0, day = 0;
    if (std::sscanf(date.c_str(), "%4d-%2u-%2u", &year, &month, &day) != 3) return {};
    const auto time = midnight(year, month, day);
    return time && dateOf(*time) == date ? time : std::nullopt;
}

std::optional<LogLine> parseLine(const std::string& line) {
    int year = 0;
    unsigned month = 0, day = 0, hours = 0, minutes = 0, seconds = 0;
    std::array<char, 5> level{};
    int from = 0, to = 0, message = 0;
    std::sscanf(line.c_str(), "V1001:%2d%2u%2u_%2u%2u%2u: [%4[a-z]] %*[^:]:%n%*[^(]%n(%*u): %n",
                &year, &month, &day, &hours, &minutes, &seconds, level.data(), &from, &to,
                &message);
    const auto time = midnight(kCentury + year, month, day);
    // A minute can have a leap second.
    if (message == 0 || !time || year < 0 || hours > 23 || minutes > 59 || seconds > 60) return {};
    const char* text = line.data();
    return LogLine{*time + std::chrono::hours(hours) + std::chrono::minutes(minutes) +
                       std::chrono::seconds(seconds),
                   level.data() == kError, std::string_view(text + from, text + to),
                   std::string_view(text + message, text + line.size())};
}

}  // namespace logs
