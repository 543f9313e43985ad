#include "query.h"

#include <curl/curl.h>

#include <algorithm>
#include <charconv>
#include <memory>

namespace standin {
namespace {

std::string decoded(std::string_view text) {
    if (text.empty()) return {};  // libcurl would count the bytes itself
    int size = 0;
    const std::unique_ptr<char, decltype(&curl_free)> plain(
        curl_easy_unescape(nullptr, text.data(), static_cast<int>(text.size()), &size), curl_free);
    return {plain.get(), static_cast<size_t>(size)};
}

}  // namespace

Query::Query(std::string_view target) {
    const size_t question = std::min(target.find('?'), target.size());
    std::string_view rest = target.substr(std::min(question + 1, target.size()));
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
    if (error != std::errc() || stop != end || number < 0) {
        throw BadRequest("The parameter " + name + " is no number of 0 or more.");
    }
    return number;
}

bool Query::flag(const std::string& name) const {
    return has(name) && text(name) != "0" && text(name) != "false";
}

}  // namespace standin
