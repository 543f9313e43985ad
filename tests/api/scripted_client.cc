// ScriptedClient on a RawServer.
#include "api/scripted_client.h"

#include <map>
#include <memory>
#include <utility>

namespace test {
namespace {

constexpr int kPort = 9421;
const std::string kFunction = "api?function=";

std::string pathOf(const std::string& head) {
    const size_t begin = head.find('/') + 1;
    return head.substr(begin, head.find(' ', begin) - begin);
}

ScriptedClient::Script inOrder(ScriptedClient::Replies replies) {
    auto next = std::make_shared<std::map<std::string, size_t>>();
    return [replies = std::move(replies), next](const std::string& path) -> std::string {
        for (const auto& [function, bodies] : replies) {
            if (!path.starts_with(kFunction + function + "&")) continue;
            size_t& index = (*next)[function];
            const std::string& body = bodies.at(index);
            if (index + 1 < bodies.size()) ++index;
            return reply(body);
        }
        return {};
    };
}

}  // namespace

std::string reply(const std::string& body) {
    return "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

ScriptedClient::ScriptedClient(Script script)
    : script_(std::move(script)),
      server_([this](int fd, const std::string& head) { converse(fd, head); }, kPort) {}

ScriptedClient::ScriptedClient(Replies replies) : ScriptedClient(inOrder(std::move(replies))) {}

std::vector<std::string> ScriptedClient::paths() const {
    const std::lock_guard lock(mutex_);
    return paths_;
}

std::string ScriptedClient::head() const {
    const std::lock_guard lock(mutex_);
    return head_;
}

size_t ScriptedClient::connections() const {
    const std::lock_guard lock(mutex_);
    return connections_;
}

void ScriptedClient::converse(int fd, std::string head) {
    if (pathOf(head) == kFunction + "ping") {
        sandbox::sendAll(fd, reply("{}"));
        return;
    }
    for (bool first = true; !head.empty(); head = sandbox::readHead(fd), first = false) {
        const std::string path = pathOf(head);
        std::string bytes;
        {
            const std::lock_guard lock(mutex_);
            connections_ += first ? 1 : 0;
            paths_.push_back(path.substr(std::min(path.size(), kFunction.size())));
            head_ = head;
            bytes = script_(path);
        }
        if (bytes.empty() || !sandbox::sendAll(fd, bytes)) return;
    }
}

}  // namespace test
