#include "program/text.h"

#include <algorithm>
#include <array>
#include <clocale>
#include <cstdio>
#include <cwchar>
#include <cwctype>

namespace program {
namespace {

constexpr double kUnit = 1024;
// What is shown with one decimal as the next unit's 1024.0 is that unit's 1.0.
constexpr double kAlmostNextUnit = 1023.95;

std::string twoDigits(int64_t number) { return (number < 10 ? "0" : "") + std::to_string(number); }

std::string escaped(char byte) {
    std::array<char, 5> text{};
    std::snprintf(text.data(), text.size(), "\\x%02x",
                  static_cast<unsigned>(static_cast<unsigned char>(byte)));
    return text.data();
}

// Length in bytes of the character at `position` when the user's locale can print it, else 0.
size_t printableLength(const std::string& text, size_t position) {
    std::mbstate_t state{};
    wchar_t character = 0;
    const size_t length =
        std::mbrtowc(&character, text.data() + position, text.size() - position, &state);
    const bool isCharacter = length > 0 && length <= text.size() - position;
    return isCharacter && std::iswprint(static_cast<wint_t>(character)) ? length : 0;
}

}  // namespace

std::string printable(const std::string& text) {
    std::setlocale(LC_CTYPE, "");
    std::string result;
    for (size_t position = 0; position < text.size();) {
        const size_t length = printableLength(text, position);
        result += length > 0 ? text.substr(position, length) : escaped(text[position]);
        position += length > 0 ? length : 1;
    }
    return result;
}

std::string humanSize(int64_t bytes) {
    static constexpr std::array kUnits{"KiB", "MiB", "GiB", "TiB", "PiB", "EiB"};
    const auto size = static_cast<double>(std::max<int64_t>(bytes, 0));
    if (size < kUnit) return std::to_string(std::max<int64_t>(bytes, 0)) + " B";
    size_t unit = 0;
    double number = size / kUnit;
    for (; number >= kAlmostNextUnit && unit + 1 < kUnits.size(); ++unit) number /= kUnit;
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.1f %s", number, kUnits[unit]);
    return text.data();
}

std::string humanRate(int64_t bytesPerSecond) { return humanSize(bytesPerSecond) + "/s"; }

std::string humanDuration(int64_t seconds) {
    const int64_t minutes = seconds / 60;
    const std::string end = ":" + twoDigits(seconds % 60);
    if (minutes < 60) return std::to_string(minutes) + end;
    return std::to_string(minutes / 60) + ":" + twoDigits(minutes % 60) + end;
}

}  // namespace program
