#include "record.h"

#include <curl/curl.h>

#include <algorithm>
#include <iterator>
#include <memory>

namespace standin {
namespace {

constexpr const char* kWords[] = {
    "SEARCHING",    "WAITING",  "DOWNLOADING", "PAUSED", "COMPLETE", "INSUFFICIENTDISKSPACE",
    "DISCONNECTED", "NOTFOUND", "FORBIDDEN",
};
static_assert(std::size(kWords) == static_cast<size_t>(Status::Forbidden) + 1);

Status statusOf(const std::string& word) {
    const auto* const found = std::ranges::find(kWords, word);
    if (found == std::end(kWords)) throw BadRequest("There is no status " + word + ".");
    return static_cast<Status>(found - kWords);
}

std::string parameter(const char* name, const std::string& text) {
    const std::unique_ptr<char, decltype(&curl_free)> escaped(
        curl_easy_escape(nullptr, text.data(), static_cast<int>(text.size())), curl_free);
    return text.empty() ? "" : std::string("&") + name + "=" + escaped.get();
}

std::string parameter(const char* name, int64_t number) {
    return parameter(name, std::to_string(number));
}

}  // namespace

Order orderIn(const Query& query) {
    Order order{.url = query.required("url"),
                .path = query.text("path"),
                .cookies = query.text("cookiestring"),
                .queryAuth = query.text("queryauth"),
                .basicAuth = query.text("basicauth"),
                .speed = query.number("targetspeed"),
                .delay = query.number("delayhttp")};
    const bool isFile = order.path.starts_with('/') && !order.path.ends_with('/');
    if (query.has("path") && !isFile) throw BadRequest("The path is no absolute path of a file.");
    return order;
}

const char* wordOf(Status status) { return kWords[static_cast<size_t>(status)]; }

bool Record::isActive() const {
    return status == Status::Searching || status == Status::Downloading ||
           status == Status::Disconnected;
}

int64_t Record::percent() const {
    if (status == Status::Complete) return 100;
    // A hundredth of the size, not a hundred times what came: that could overflow.
    if (size < 100) return size == 0 ? 0 : received * 100 / size;
    return std::min<int64_t>(received / (size / 100), 100);
}

std::string lineOf(const Record& record) {
    const Order& order = record.order;
    return std::string("?status=") + wordOf(record.status) + parameter("size", record.size) +
           parameter("received", record.received) + parameter("error", record.failure.error) +
           parameter("suberror", record.failure.subError) +
           parameter("errorstring", record.failure.text) + parameter("url", order.url) +
           parameter("path", order.path) + parameter("cookiestring", order.cookies) +
           parameter("queryauth", order.queryAuth) + parameter("basicauth", order.basicAuth) +
           parameter("targetspeed", order.speed) + parameter("delayhttp", order.delay);
}

Record recordIn(const std::string& line) {
    const Query query(line);
    return {.order = orderIn(query),
            .status = statusOf(query.text("status")),
            .size = query.number("size"),
            .received = query.number("received"),
            .failure = {.error = query.number("error"),
                        .subError = query.number("suberror"),
                        .text = query.text("errorstring")}};
}

}  // namespace standin
