#include <array>
#include <cstdio>

#include "logs/report.h"
#include "program/json_object.h"

namespace logs {
namespace {

using program::JSONObject;

void textOrNull(JSONObject& object, const char* key, const std::string& value) {
    object.text(key, value.empty() ? nullptr : value.c_str());
}

void numberOrNull(JSONObject& object, const char* key, const std::optional<uint64_t>& value) {
    if (!value) {
        object.text(key, nullptr);
    } else {
        object.number(key, static_cast<int64_t>(*value));
    }
}

std::string iso8601(Time time) {
    const auto midnight = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::hh_mm_ss clock(time - midnight);
    std::array<char, 16> text{};
    std::snprintf(
        text.data(), text.size(), "T%02d:%02d:%02dZ", static_cast<int>(clock.hours().count()),
        static_cast<int>(clock.minutes().count()), static_cast<int>(clock.seconds().count()));
    return dateOf(time) + text.data();
}

}  // namespace

void printJSON(const Installation& installation, const std::string& machine,
               const std::string& file) {
    JSONObject object;
    object.text("machine", machine.c_str())
        .text("file", file.c_str())
        .number("number", static_cast<int64_t>(installation.number))
        .text("begin", iso8601(installation.begin).c_str())
        .text("end", iso8601(installation.end).c_str())
        .text("outcome", nameOf(installation.outcome));
    textOrNull(object, "release", installation.release);
    textOrNull(object, "error", installation.error);
    textOrNull(object, "cause", installation.cause);
    textOrNull(object, "last", installation.last);
    numberOrNull(object, "seconds", installation.seconds);
    numberOrNull(object, "startSeconds", installation.startSeconds);
    object.print();
}

}  // namespace logs
