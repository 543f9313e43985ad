// Written here and not by gnuplot: two pictures take no more lines than a child process and its
// files would, and a page can be made where gnuplot is not.
#include "logs/plots.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdarg>
#include <cstdio>

namespace logs {
namespace {

constexpr double kWidth = 720, kHeight = 270;
constexpr double kLeft = 64, kRight = 704, kTop = 34, kBottom = 222;
constexpr double kNames = kBottom + 17;  // what stands below the bottom line
constexpr int kMostDays = 30;
constexpr double kWidestBar = 36;
constexpr double kDateWidth = 44;
constexpr std::array kStacked{Outcome::Succeeded, Outcome::Failed, Outcome::Unfinished};

std::string filled(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string filled(const char* format, ...) {
    std::array<char, 512> text{};
    va_list values;
    va_start(values, format);
    std::vsnprintf(text.data(), text.size(), format, values);
    va_end(values);
    return text.data();
}

std::string label(const char* style, double x, double y, const std::string& text) {
    return filled(R"(<text class="%s" x="%.1f" y="%.1f">)", style, x, y) + text + "</text>\n";
}

std::string rectangle(const char* style, double x, double y, double width, double height) {
    return filled(R"(<rect class="%s" x="%.1f" y="%.1f" width="%.1f" height="%.1f"/>)", style, x, y,
                  width, height);
}

// Each name beside a square in the colour of its class.
using Legend = std::vector<std::pair<const char*, const char*>>;

std::string begin(const char* xAxis, const char* yAxis, const Legend& legend) {
    std::string text = filled(R"(<svg viewBox="0 0 %g %g" role="img">)", kWidth, kHeight);
    text += label("x", (kLeft + kRight) / 2, kHeight - 6, xAxis);
    text += filled(R"_(<g transform="translate(14 %g) rotate(-90)">)_", (kTop + kBottom) / 2) +
            label("x", 0, 0, yAxis) + "</g>";
    double x = kLeft;
    for (const auto& [style, name] : legend) {
        text += rectangle(style, x, 8, 12, 12) + label("", x + 17, 18, name);
        x += 190;
    }
    return text;
}

std::string gridLine(double y, const std::string& name) {
    return filled(R"(<path class="grid" d="M%g %.1fH%g"/>)", kLeft, y, kRight) +
           label("y", kLeft - 6, y + 4, name);
}

// 1, 2 or 5 with noughts, so that at most six lines reach up to `most`.
uint64_t gridStep(uint64_t most) {
    for (uint64_t power = 1;; power *= 10) {
        for (const uint64_t step : {power, 2 * power, 5 * power}) {
            if (most / step <= 6) return step;
        }
    }
}

int64_t daysBetween(Time first, Time last) {
    return std::chrono::floor<std::chrono::days>(last - first).count();
}

// One day's outcomes, the first one at the bottom.
std::string bar(const Tally::Row& day, double x, double width, double perInstallation) {
    std::string text = "<g><title>" + day.first;
    for (const Outcome outcome : kStacked) {
        text += filled(", %llu %s", static_cast<unsigned long long>(day.second.of(outcome)),
                       nameOf(outcome));
    }
    text += "</title>";
    double y = kBottom;
    for (const Outcome outcome : kStacked) {
        const double height = perInstallation * static_cast<double>(day.second.of(outcome));
        y -= height;
        text += rectangle(nameOf(outcome), x, y, width, height);
    }
    return text + "</g>\n";
}

// The axis of seconds: 0 has a place on it, and great numbers stand closer.
class Scale {
  public:
    explicit Scale(uint64_t most) : most_(static_cast<double>(most)) {}
    double at(double seconds) const {
        return kLeft + (kRight - kLeft) * std::log1p(std::min(seconds, most_)) / std::log1p(most_);
    }
    double most() const { return most_; }

  private:
    double most_;
};

double heightOf(double share) { return kBottom - (kBottom - kTop) * share; }

std::string marked(const Durations& durations, double share, const Scale& scale,
                   const char* style) {
    const uint64_t seconds = durations.quantile(share);
    const double x = scale.at(static_cast<double>(seconds)), y = heightOf(share);
    return filled(R"(<circle class="%s" cx="%.1f" cy="%.1f" r="4"/>)", style, x, y) +
           label("", x + 8, y + 14, std::to_string(seconds) + " s");
}

std::string curve(const Durations& durations, const Scale& scale, const char* style) {
    if (durations.count() == 0) return "";
    std::string path = filled("M%.1f %.1f", kLeft, kBottom);
    for (const auto& [seconds, share] : durations.shares()) {
        const double x = scale.at(static_cast<double>(seconds));
        path += filled("H%.1fV%.1f", x, heightOf(share));
        if (static_cast<double>(seconds) >= scale.most()) break;
    }
    return filled(R"(<path class="%s" d=")", style) + path + filled(R"(H%g"/>)", kRight) +
           marked(durations, 0.5, scale, style) + marked(durations, 0.95, scale, style);
}

}  // namespace

std::string plotDays(const std::vector<Tally::Row>& days) {
    const Time last = *timeOf(days.back().first);
    const Time first =
        std::max(*timeOf(days.front().first), last - std::chrono::days(kMostDays - 1));
    const double slot = (kRight - kLeft) / static_cast<double>(daysBetween(first, last) + 1);
    const double width = std::min(0.7 * slot, kWidestBar);
    uint64_t most = 1;
    for (const auto& [day, count] : days) {
        if (*timeOf(day) >= first) most = std::max(most, count.installations());
    }
    const double perInstallation = (kBottom - kTop) / static_cast<double>(most);
    Legend legend;
    for (const Outcome outcome : kStacked) legend.emplace_back(nameOf(outcome), nameOf(outcome));
    std::string text = begin("day (UTC)", "installations", legend);
    for (uint64_t line = 0; line <= most; line += gridStep(most)) {
        text +=
            gridLine(kBottom - perInstallation * static_cast<double>(line), std::to_string(line));
    }
    const auto middleOf = [&](Time day) {
        return kLeft + (static_cast<double>(daysBetween(first, day)) + 0.5) * slot;
    };
    for (const Tally::Row& row : days) {
        const Time day = *timeOf(row.first);
        if (day >= first) text += bar(row, middleOf(day) - width / 2, width, perInstallation);
    }
    const std::chrono::days pace(static_cast<int>(std::ceil(kDateWidth / slot)));
    for (Time day = first; day <= last; day += pace) {
        text += label("x", middleOf(day), kNames, dateOf(day).substr(5));
    }
    return text + "</svg>\n";
}

std::string plotDurations(const Durations& installation, const Durations& start) {
    // A few that took hours would leave no room for all the others.
    const Scale scale(std::max<uint64_t>({10, installation.quantile(0.99), start.quantile(0.99)}));
    std::string text =
        begin("seconds", "done within them",
              {{"installation", "the installation"}, {"start", "in it, the client's start"}});
    for (const int percent : {0, 25, 50, 75, 100}) {
        text += gridLine(heightOf(percent / 100.0), std::to_string(percent) + " %");
    }
    text += label("x", kLeft, kNames, "0");
    const bool hasRoom = scale.most() < 2000;
    for (uint64_t power = 1; static_cast<double>(power) <= scale.most(); power *= 10) {
        for (const uint64_t seconds : {power, 2 * power, 5 * power}) {
            const double x = scale.at(static_cast<double>(seconds));
            const bool fits = static_cast<double>(seconds) <= scale.most();
            if (fits && (hasRoom || seconds == power)) {
                text += label("x", x, kNames, std::to_string(seconds));
            }
        }
    }
    text += curve(installation, scale, "installation") + curve(start, scale, "start");
    return text + "</svg>\n";
}

}  // namespace logs
