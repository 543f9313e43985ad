#include "logs/readable.h"

#include <algorithm>
#include <new>

#include "app/failure_message.h"

namespace logs {
namespace {

constexpr std::string_view kDecimal = "0123456789";
constexpr std::string_view kVersion = "0123456789.";
constexpr std::string_view kHexadecimal = "0123456789abcdefABCDEF";
constexpr size_t kFewestHexDigits = 8;

// How many bytes at the start of `word` are one number; 0 when it does not begin with one.
size_t numberLength(std::string_view word) {
    const size_t hex = std::min(word.find_first_not_of(kHexadecimal), word.size());
    const bool isHex = hex >= kFewestHexDigits &&
                       word.substr(0, hex).find_first_of(kDecimal) != std::string_view::npos;
    if (isHex) return hex;
    if (word.empty() || kDecimal.find(word.front()) == std::string_view::npos) return 0;
    size_t length = std::min(word.find_first_not_of(kVersion), word.size());
    while (word[length - 1] == '.') --length;
    return length;
}

void appendWord(std::string& result, std::string_view word) {
    const size_t slash = word.rfind('/');
    if (slash != std::string_view::npos) {
        result += "...";
        word.remove_prefix(slash);
    }
    while (!word.empty()) {
        const size_t length = numberLength(word);
        result += length > 0 ? '#' : word.front();
        word.remove_prefix(std::max<size_t>(length, 1));
    }
}

}  // namespace

std::string readable(std::string_view text) {
    std::string whole(text);
    std::ranges::replace(whole, '\0', '\x1');
    const velnor::OwnedText result = velnor::readableText(whole.c_str());
    if (!result) throw std::bad_alloc();
    return result.get();
}

std::string withoutParticulars(const std::string& text) {
    std::string result;
    for (size_t begin = 0; begin < text.size();) {
        const size_t end = std::min(text.find(' ', begin), text.size());
        appendWord(result, std::string_view(text).substr(begin, end - begin));
        if (end < text.size()) result += ' ';
        begin = end + 1;
    }
    return result;
}

}  // namespace logs
