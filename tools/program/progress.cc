#include "program/progress.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>

#include "program/help.h"

namespace program {
namespace {

constexpr size_t kWidestBar = 50;
// Details give way to a narrower bar.
constexpr size_t kNarrowestBar = 10;
// What a line holds besides the bar: "[", "] 100%" and a last column that stays free, because some
// terminals begin a new line as soon as it is used.
constexpr size_t kBesidesBar = 8;

// The details that fit into `room` columns.
std::string fittingText(const std::vector<std::string>& details, size_t room) {
    std::string text;
    for (const std::string& detail : details) {
        if (text.size() + 2 + detail.size() > room) break;
        text += "  " + detail;
    }
    return text;
}

std::string bar(size_t width, unsigned percentage) {
    const size_t filled = width * percentage / 100;
    const std::string number = std::to_string(percentage);
    return "[" + std::string(filled, '#') + std::string(width - filled, ' ') + "] " +
           std::string(3 - number.size(), ' ') + number + "%";
}

}  // namespace

Progress::Progress() : isTerminal_(isatty(STDERR_FILENO) == 1) {}

void Progress::show(unsigned percentage, const std::vector<std::string>& details) {
    percentage = std::min(percentage, 100U);
    if (isTerminal_) return redraw(percentage, details);
    std::string line = std::to_string(percentage) + '%';
    for (const std::string& detail : details) line += ", " + detail;
    std::cerr << line + '\n';
}

void Progress::end() {
    if (isLineOpen_) std::cerr << '\n';
    isLineOpen_ = false;
    lineSize_ = 0;
    widestDetails_ = 0;
}

void Progress::redraw(unsigned percentage, const std::vector<std::string>& details) {
    const size_t columns = terminalColumns(STDERR_FILENO);
    const size_t room = columns - std::min(columns, kBesidesBar);
    const size_t forDetails = room - std::min(room, kNarrowestBar);
    const std::string text = fittingText(details, forDetails);
    // A bar that grew again whenever a number gets shorter would not look like one that fills.
    widestDetails_ = std::min(std::max(widestDetails_, text.size()), forDetails);
    const std::string line = bar(std::min(kWidestBar, room - widestDetails_), percentage) + text;
    // What a longer line has left behind is wiped out, but not beyond the terminal's edge.
    const size_t left = std::min(lineSize_, columns - 1);
    std::cerr << '\r' + line + std::string(left - std::min(left, line.size()), ' ');
    lineSize_ = line.size();
    isLineOpen_ = true;
}

}  // namespace program
