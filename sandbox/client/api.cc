// The functions of the control interface.
#include "api.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <numeric>

#include "http.h"
#include "json.h"
#include "url.h"

namespace fs = std::filesystem;

namespace {

constexpr std::chrono::milliseconds kTellingServers{1500};
constexpr std::chrono::seconds kBetweenPeriodic{5};
constexpr char kNotFound[] = "File not found.";
constexpr char kInvalid[] = "Invalid URL.";

/// Flushed, because whoever has the reply looks for the line next.
void note(const std::string& agent, const std::string& target, const std::string& body) {
    std::printf("%s\t%s\t%s\n", agent.empty() ? "-" : agent.c_str(), target.c_str(), body.c_str());
    std::fflush(stdout);
}

Order orderIn(const Query& query) {
    Order order{.url = query.required("url"),
                .path = query.text("path"),
                .cookies = query.line("cookiestring"),
                .queryAuth = query.line("queryauth"),
                .basicAuth = query.line("basicauth"),
                .speed = query.number("targetspeed"),
                .delay = query.number("delayhttp"),
                .background = query.flag("backgroundDownload"),
                .checksMd5 = query.has("checkcontentmd5")};
    const bool isFile = order.path.starts_with('/') && !order.path.ends_with('/') &&
                        order.path.find('\0') == std::string::npos;
    if (query.has("path") && !isFile) throw BadRequest("The path is no absolute path of a file.");
    return order;
}

void putText(json::Writer& out, const char* name, const std::string& text) {
    if (text.empty()) return;
    out.Key(name);
    json::put(out, text);
}

void putNumber(json::Writer& out, const char* name, int64_t number) {
    out.Key(name);
    out.Int64(number);
}

void putBool(json::Writer& out, const char* name, bool value) {
    out.Key(name);
    out.Bool(value);
}

std::string attributesOf(const Record& record, bool demandsReset) {
    return json::object([&](json::Writer& out) {
        putText(out, "status", wordOf(record.status));
        putText(out, "path", record.order.path);
        putNumber(out, "size", record.announced.size);
        putNumber(out, "uniquerecv", record.received);
        putNumber(out, "progress", record.percent());
        putNumber(out, "downloadrate", record.rate);
        putText(out, "errorstring", record.trouble.text);
        putNumber(out, "error", record.trouble.error);
        putNumber(out, "suberror", record.trouble.subError);
        putText(out, "verifiedcontentmd5", record.md5);
        if (demandsReset) putBool(out, "resetdownload", true);
    });
}

}  // namespace

Api::Function Api::functionNamed(const std::string& name) {
    static constexpr std::pair<const char*, Function> kFunctions[] = {
        {"ping", &Api::ping},
        {"uninstall", &Api::uninstall},
        {"getClientAttributes", &Api::clientAttributes},
        {"downloadFile", &Api::downloadFile},
        {"getFileAttributes", &Api::fileAttributes},
        {"pauseFile", &Api::pauseFile},
        {"deleteFile", &Api::deleteFile},
        {"runPeriodicTasks", &Api::periodicTasks},
    };
    for (const auto& [known, function] : kFunctions)
        if (name == known) return function;
    return nullptr;
}

std::string Api::ping(const Query&) { return json::pair("result", "pong"); }

std::string Api::uninstall(const Query&) {
    serversKnow_ = Clock::now() + kTellingServers;
    return json::success("result");
}

std::string Api::clientAttributes(const Query&) {
    const std::vector<Record> all = downloads_.all();
    const bool sent = Clock::now() >= serversKnow_.load() && currentMode().word != "unacknowledged";
    const bool online = std::ranges::none_of(
        all, [](const Record& record) { return record.status == Status::disconnected; });
    const auto add = [](int64_t sum, const Record& record) { return sum + record.rate; };
    std::error_code none;
    const bool accepted = fs::exists(folder_ / "accepteula.txt", none) ||
                          fs::exists("/Applications/Velnor/accepteula.txt", none);
    return json::object([&](json::Writer& out) {
        putNumber(out, "version", 10605);
        putText(out, "executableversion", "1.6.5");
        putText(out, "configurationversion", "1");
        putBool(out, "uninstallMsgSent", sent);
        putBool(out, "isonline", online);
        putNumber(out, "sharerate", 0);
        putNumber(out, "downloadrate", std::accumulate(all.begin(), all.end(), int64_t{0}, add));
        putBool(out, "acceptedeula", accepted);
    });
}

std::string Api::downloadFile(const Query& query) {
    const Order order = orderIn(query);
    if (!isFetchable(order.url)) return json::pair(order.url, kInvalid);
    const Mode mode = currentMode();
    const bool anew = query.flag("resetdownload");
    if (anew) mischief_.noteReset(mode, order.url);
    if (!order.path.empty())
        if (const auto reply = mischief_.objection(mode, "downloadFile", order.url, order.path))
            return json::pair(order.url, *reply);
    downloads_.start(order, query.flag("wait"), anew);
    return json::success(order.url);
}

std::string Api::fileAttributes(const Query& query) {
    const std::string url = query.required("url");
    if (!isFetchable(url)) return json::pair(url, kInvalid);
    const auto record = downloads_.find(url);
    if (!record) return json::pair(url, kNotFound);
    return attributesOf(*record, mischief_.demandsReset(currentMode(), url));
}

std::string Api::pauseFile(const Query& query) {
    const std::string url = query.required("url");
    if (!isFetchable(url)) return json::pair(url, kInvalid);
    switch (downloads_.pause(url)) {
        case PauseResult::unknown:
            return json::pair(url, kNotFound);
        case PauseResult::complete:
            return json::pair(url, "cannot pause file already completed");
        case PauseResult::paused:
            break;
    }
    return json::success(url);
}

std::string Api::deleteFile(const Query& query) {
    const std::string url = query.required("url");
    if (!isFetchable(url)) return json::pair(url, kInvalid);
    const auto record = downloads_.find(url);
    if (!record) return json::pair(url, kNotFound);
    if (const auto reply =
            mischief_.objection(currentMode(), "deleteFile", url, record->order.path))
        return json::pair(url, *reply);
    const bool removed = downloads_.remove(url, query.flag("keepphysicalfileondelete"));
    return removed ? json::success(url) : json::pair(url, kNotFound);
}

std::string Api::periodicTasks(const Query&) {
    const std::lock_guard lock(periodic_);
    const Clock::time_point now = Clock::now();
    if (now < nextPeriodic_ || currentMode().word == "throttle")
        return json::pair("result", "Running of periodic tasks is throttled");
    nextPeriodic_ = now + kBetweenPeriodic;
    return json::success("result");
}

std::string Api::perform(Function function, const Query& query) try {
    static_cast<void>(query.number("cid"));
    return (this->*function)(query);
} catch (const std::exception& error) {
    return json::pair("error", error.what());
}

Api::Reply Api::replyTo(const std::string& target, const Mode& mode) {
    if (mode.word == "garbage") return {"200 OK", "something else"};
    if (mode.word == "error")
        return {"200 OK", json::pair("error", mode.argument.empty() ? "told to" : mode.argument)};
    const Query query(target);
    const Function function = functionNamed(query.text("function"));
    if (!target.starts_with("/api?") || function == nullptr)
        return {"404 Not Found", json::pair("result", "unknown")};
    return {"200 OK", perform(function, query)};
}

Answer Api::answer(const std::string& head) {
    const std::string target = http::targetOf(head).value_or("");
    const Mode mode = currentMode();
    const Reply reply = mode.word == "drop" ? Reply{"", ""} : replyTo(target, mode);
    if (Query(target).text("function") != "ping")
        note(http::headerOf(head, "User-Agent"), target, reply.body);
    if (mode.word == "drop") return {};
    const bool keeps = http::wantsMore(head);
    return {http::reply(reply.status, reply.body, keeps), keeps && mode.word != "close"};
}
