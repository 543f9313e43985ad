#include "api.h"

#include <strings.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <iterator>
#include <numeric>

#include "json.h"
#include "transfer.h"

namespace standin {
namespace {

constexpr std::chrono::milliseconds kTellingServers{1500};
constexpr std::chrono::seconds kBetweenPeriodic{5};
constexpr char kNotFound[] = "File not found.";
constexpr char kInvalid[] = "Invalid URL.";

/// Whether a page in a browser sends it. Browsers name the page's origin, or, for a picture or a
/// link, say at least that it is not the user who asks (Sec-Fetch-Site, W3C Fetch Metadata). A page
/// whose own name was made to lead to this machine shows by that name.
bool isFromAWebPage(const sandbox::Request& request) {
    const std::string site = request.header("Sec-Fetch-Site");
    if (!request.header("Origin").empty() || (!site.empty() && site != "none")) return true;
    const std::string host = request.header("Host");
    const std::string name = host.substr(0, host.rfind(':'));
    return !host.empty() && name != "127.0.0.1" && strcasecmp(name.c_str(), "localhost") != 0;
}

/// Flushed, because whoever has the reply looks for the line next.
void note(const std::string& agent, const std::string& target, const std::string& body) {
    std::printf("%s\t%s\t%s\n", agent.empty() ? "-" : agent.c_str(), target.c_str(), body.c_str());
    std::fflush(stdout);
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
        putNumber(out, "size", record.size);
        putNumber(out, "uniquerecv", record.received);
        putNumber(out, "progress", record.percent());
        putNumber(out, "downloadrate", record.rate);
        putText(out, "errorstring", record.failure.text);
        putNumber(out, "error", record.failure.error);
        putNumber(out, "suberror", record.failure.subError);
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
    for (const auto& [known, function] : kFunctions) {
        if (name == known) return function;
    }
    return nullptr;
}

std::string Api::ping(const Query&) { return json::pair("result", "pong"); }

std::string Api::uninstall(const Query&) {
    serversKnow_ = Clock::now() + kTellingServers;
    return json::success("result");
}

std::string Api::clientAttributes(const Query&) {
    const std::vector<Record> all = downloads_.all();
    const bool online = std::ranges::none_of(
        all, [](const Record& record) { return record.status == Status::Disconnected; });
    const auto add = [](int64_t sum, const Record& record) { return sum + record.rate; };
    return json::object([&](json::Writer& out) {
        putNumber(out, "version", 10605);
        putText(out, "executableversion", "1.6.5");
        putText(out, "configurationversion", "1");
        putBool(out, "uninstallMsgSent", Clock::now() >= serversKnow_.load());
        putBool(out, "isonline", online);
        putNumber(out, "sharerate", 0);
        putNumber(out, "downloadrate", std::accumulate(all.begin(), all.end(), int64_t{0}, add));
        putBool(out, "acceptedeula",
                std::filesystem::exists("/Applications/Velnor/accepteula.txt"));
    });
}

std::string Api::downloadFile(const Query& query) {
    const Order order = orderIn(query);
    if (!isFetchable(order.url)) return json::pair(order.url, kInvalid);
    const Mode mode = currentMode();
    const bool anew = query.flag("resetdownload");
    if (anew) faults_.noteReset(mode, order.url);
    if (!order.path.empty()) {
        if (const auto reply = faults_.objection(mode, "downloadFile", order.url, order.path)) {
            return json::pair(order.url, *reply);
        }
    }
    downloads_.start(order, query.flag("wait"), anew);
    return json::success(order.url);
}

std::string Api::fileAttributes(const Query& query) {
    const std::string url = query.required("url");
    if (!isFetchable(url)) return json::pair(url, kInvalid);
    const auto record = downloads_.find(url);
    if (!record) return json::pair(url, kNotFound);
    return attributesOf(*record, faults_.demandsReset(currentMode(), url));
}

std::string Api::pauseFile(const Query& query) {
    const std::string url = query.required("url");
    if (!isFetchable(url)) return json::pair(url, kInvalid);
    switch (downloads_.pause(url)) {
        case PauseResult::Unknown:
            return json::pair(url, kNotFound);
        case PauseResult::Complete:
            return json::pair(url, "cannot pause file already completed");
        case PauseResult::Paused:
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
            faults_.objection(currentMode(), "deleteFile", url, record->order.path)) {
        return json::pair(url, *reply);
    }
    const bool removed = downloads_.remove(url, query.flag("keepphysicalfileondelete"));
    return removed ? json::success(url) : json::pair(url, kNotFound);
}

std::string Api::periodicTasks(const Query&) {
    const std::lock_guard lock(periodic_);
    const Clock::time_point now = Clock::now();
    if (now < nextPeriodic_ || currentMode().word == "throttle") {
        return json::pair("result", "Running of periodic tasks is throttled");
    }
    nextPeriodic_ = now + kBetweenPeriodic;
    return json::success("result");
}

std::string Api::perform(Function function, const Query& query) try {
    static_cast<void>(query.number("cid"));
    return (this->*function)(query);
} catch (const std::exception& error) {
    return json::pair("error", error.what());
}

Api::Reply Api::replyTo(const sandbox::Request& request, const std::string& target,
                        const Query& query, const Mode& mode) {
    if (isFromAWebPage(request)) return {"403 Forbidden", json::pair("error", "not for web pages")};
    if (mode.word == "garbage") return {"200 OK", "something else"};
    if (mode.word == "error") return {"200 OK", json::pair("error", "told to")};
    const Function function = functionNamed(query.text("function"));
    if (!target.starts_with("/api?") || function == nullptr) {
        return {"404 Not Found", json::pair("result", "unknown")};
    }
    return {"200 OK", perform(function, query)};
}

Answer Api::answer(const sandbox::Request& request) {
    const bool isGet = request.method == "GET";
    const std::string target = isGet ? request.target : "";
    const Query query(target);
    const Mode mode = currentMode();
    const bool isDropped = mode.word == "drop";
    const Reply reply = isDropped ? Reply{"", ""} : replyTo(request, target, query, mode);
    if (query.text("function") != "ping") note(request.header("User-Agent"), target, reply.body);
    if (isDropped) return {};
    const bool keeps = isGet && strcasecmp(request.header("Connection").c_str(), "keep-alive") == 0;
    return {"HTTP/1.1 " + std::string(reply.status) +
                "\r\nContent-Type: application/json\r\nConnection: " +
                (keeps ? "keep-alive" : "close") + "\r\nContent-Length: " +
                std::to_string(reply.body.size()) + "\r\n\r\n" + reply.body,
            keeps && mode.word != "close"};
}

}  // namespace standin
