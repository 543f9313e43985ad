// Request lines taken apart and replies put together.
#include "http.h"

#include <strings.h>

#include <algorithm>

namespace {

bool isNamed(std::string_view line, std::string_view name) {
    return line.size() > name.size() && line[name.size()] == ':' &&
           strncasecmp(line.data(), name.data(), name.size()) == 0;
}

}  // namespace

std::optional<std::string> http::targetOf(std::string_view head) {
    constexpr std::string_view kMethod = "GET ";
    if (!head.starts_with(kMethod)) return std::nullopt;
    head.remove_prefix(kMethod.size());
    return std::string(head.substr(0, head.find_first_of(" \r\n")));
}

std::string http::headerOf(std::string_view head, std::string_view name) {
    for (size_t end = 0; (end = head.find("\r\n")) != std::string_view::npos;) {
        std::string_view line = head.substr(0, end);
        head.remove_prefix(end + 2);
        if (!isNamed(line, name)) continue;
        line.remove_prefix(name.size() + 1);
        return std::string(line.substr(std::min(line.find_first_not_of(" \t"), line.size())));
    }
    return {};
}

bool http::wantsMore(std::string_view head) {
    return targetOf(head) && strcasecmp(headerOf(head, "Connection").c_str(), "keep-alive") == 0;
}

std::string http::reply(std::string_view status, std::string_view body, bool keepsOpen) {
    std::string text = "HTTP/1.1 ";
    text += status;
    text += "\r\nContent-Type: application/json\r\nConnection: ";
    text += keepsOpen ? "keep-alive" : "close";
    text += "\r\nContent-Length: ";
    text += std::to_string(body.size());
    text += "\r\n\r\n";
    text += body;
    return text;
}
