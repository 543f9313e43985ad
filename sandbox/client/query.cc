// Queries taken apart.
#include "query.h"

#include <algorithm>
#include <charconv>

namespace {

std::string decoded(std::string_view text) {
    std::string plain;
    for (size_t i = 0; i < text.size(); ++i) {
        unsigned char byte = 0;
        const char* digits = text.data() + i + 1;
        if (text[i] == '%' && i + 2 < text.size() &&
            std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2) {
            plain += static_cast<char>(byte);
            i += 2;
        } else {
            plain += text[i];
        }
    }
    return plain;
}

}  // namespace

bool hasControls(std::string_view text) {
    return std::ranges::any_of(
        text, [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f'; });
}

Query::Query(std::string_view target) {
    const size_t question = target.find('?');
    std::string_view rest;
    if (question != std::string_view::npos) rest = target.substr(question + 1);
    while (!rest.empty()) {
        const std::string_view one = rest.substr(0, rest.find('&'));
        const size_t name = std::min(one.find('='), one.size());
        const size_t value = std::min(name + 1, one.size());
        values_.try_emplace(decoded(one.substr(0, name)), decoded(one.substr(value)));
        rest.remove_prefix(std::min(one.size() + 1, rest.size()));
    }
}

std::string Query::text(const std::string& name) const {
    const auto found = values_.find(name);
    return found == values_.end() ? std::string() : found->second;
}

std::string Query::required(const std::string& name) const {
    if (!has(name)) throw BadRequest("The parameter " + name + " is missing.");
    return text(name);
}

int64_t Query::number(const std::string& name) const {
    if (!has(name)) return 0;
    const std::string digits = text(name);
    const char* end = digits.data() + digits.size();
    int64_t number = 0;
    const auto [stop, error] = std::from_chars(digits.data(), end, number);
    if (error != std::errc() || stop != end || number < 0)
        throw BadRequest("The parameter " + name + " is no number of 0 or more.");
    return number;
}

bool Query::flag(const std::string& name) const {
    return has(name) && text(name) != "0" && text(name) != "false";
}

std::string Query::line(const std::string& name) const {
    std::string value = text(name);
    if (hasControls(value)) throw BadRequest("The parameter " + name + " has a control character.");
    return value;
}
