// Request lines taken apart and replies put together.
#include "http.h"

std::optional<std::string> http::targetOf(std::string_view head) {
    constexpr std::string_view kMethod = "GET ";
    if (!head.starts_with(kMethod)) return std::nullopt;
    head.remove_prefix(kMethod.size());
    return std::string(head.substr(0, head.find_first_of(" \r\n")));
}

bool http::hasParameter(std::string_view target, std::string_view parameter) {
    const size_t question = target.find('?');
    if (question == std::string_view::npos) return false;
    for (std::string_view rest = target.substr(question + 1);;) {
        const size_t end = rest.find('&');
        if (rest.substr(0, end) == parameter) return true;
        if (end == std::string_view::npos) return false;
        rest.remove_prefix(end + 1);
    }
}

std::string http::reply(std::string_view status, std::string_view body) {
    std::string text = "HTTP/1.1 ";
    text += status;
    text += "\r\nContent-Type: application/json\r\nConnection: close\r\nContent-Length: ";
    text += std::to_string(body.size());
    text += "\r\n\r\n";
    text += body;
    return text;
}
