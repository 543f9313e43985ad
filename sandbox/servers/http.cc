#include "http.h"

#include <strings.h>

#include <algorithm>

namespace sandbox {
namespace {

/// What is in front of `separator`, which is taken away together with it and the blanks behind.
std::string take(std::string_view& text, std::string_view separator) {
    const size_t end = std::min(text.find(separator), text.size());
    std::string first(text.substr(0, end));
    text.remove_prefix(std::min(end + separator.size(), text.size()));
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    return first;
}

}  // namespace

std::string Request::header(const std::string& name) const {
    for (const auto& [key, value] : headers) {
        if (strcasecmp(key.c_str(), name.c_str()) == 0) return value;
    }
    return {};
}

Request parseHead(std::string_view head) {
    const std::string first = take(head, "\r\n");
    std::string_view words = first;
    Request request;
    request.method = take(words, " ");
    request.target = take(words, " ");
    while (!head.empty()) {
        const std::string line = take(head, "\r\n");
        std::string_view value = line;
        std::string name = take(value, ":");
        if (!name.empty()) request.headers.emplace_back(std::move(name), value);
    }
    return request;
}

}  // namespace sandbox
