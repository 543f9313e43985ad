// Drawing progress.
#include "vnctl/progress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <string>

namespace vnctl {
namespace {

constexpr unsigned kWidestBar = 50;
// What a line holds besides the bar: "[", "] 100%" and a last column that stays free, because some
// terminals begin a new line as soon as it is used.
constexpr unsigned kBesidesBar = 8;

unsigned barWidth() {
    winsize size{};
    const bool known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0;
    const unsigned columns = known ? size.ws_col : kWidestBar + kBesidesBar;
    return std::min(kWidestBar, columns > kBesidesBar ? columns - kBesidesBar : 0);
}

}  // namespace

Progress::Progress() : isTerminal_(isatty(STDOUT_FILENO) == 1) {}

void Progress::show(unsigned percentage) {
    percentage = std::min(percentage, 100U);
    if (isTerminal_) {
        redraw(percentage);
        isLineOpen_ = true;
    } else {
        std::cout << percentage << '%' << std::endl;
    }
}

void Progress::end() {
    if (isLineOpen_) std::cout << std::endl;
    isLineOpen_ = false;
}

void Progress::redraw(unsigned percentage) const {
    const unsigned width = barWidth();
    const unsigned filled = width * percentage / 100;
    const std::string number = std::to_string(percentage);
    std::cout << "\r[" << std::string(filled, '#') << std::string(width - filled, ' ') << "] "
              << std::string(3 - number.size(), ' ') << number << '%' << std::flush;
}

}  // namespace vnctl
