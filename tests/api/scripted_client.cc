#include "api/scripted_client.h"

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
    return [replies = std::move(replies)](const std::string& path) mutable -> std::string {
        for (auto& [function, bodies] : replies) {
            if (!path.starts_with(kFunction + function + "&")) continue;
            const std::string body = bodies.at(0);
            if (bodies.size() > 1) bodies.erase(bodies.begin());
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

void ScriptedClient::converse(int fd, std::string head) {
    for (; !head.empty(); head = sandbox::readHead(fd)) {
        const std::string path = pathOf(head);
        std::string bytes = reply("pong");
        if (!path.starts_with(kFunction + "ping")) {
            const std::lock_guard lock(mutex_);
            head_ = head;
            paths_.push_back(path.substr(std::min(path.size(), kFunction.size())));
            bytes = script_(path);
        }
        if (bytes.empty() || !sandbox::sendAll(fd, bytes)) return;
    }
}

}  // namespace test
