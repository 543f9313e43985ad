// A client on port 9421 whose replies a test chooses one by one.
#ifndef TESTS_API_SCRIPTED_CLIENT_H
#define TESTS_API_SCRIPTED_CLIENT_H

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "sandbox/servers/raw_server.h"

namespace test {

inline const char* const kUrl = "http://a.example/b c";
inline const char* const kNull = R"({"http://a.example/b c" : null})";

/// A client's error text for kUrl.
inline std::string textReply(const std::string& text) {
    return R"({"http:\/\/a.example/b c":")" + text + "\"}";
}

/// The whole of a reply with a body that is announced.
std::string reply(const std::string& body);

class ScriptedClient {
  public:
    /// Gives the bytes to send for a path, "api?function=..."; none closes the connection.
    using Script = std::function<std::string(const std::string& path)>;

    /// What was already replied, by function; a list's last entry is for all further requests.
    using Replies = std::vector<std::pair<std::string, std::vector<std::string>>>;

    /// Answers pings by itself.
    explicit ScriptedClient(Script script);

    /// Replies to each function with its bodies in their order.
    explicit ScriptedClient(Replies replies);

    /// Paths of all requests but pings, behind "api?function=".
    std::vector<std::string> paths() const;

    /// The last request's whole head, unless that was a ping.
    std::string head() const;

    /// All that were accepted, for pings too.
    size_t connections() const { return server_.connections(); }

  private:
    void converse(int fd, std::string head);

    const Script script_;
    mutable std::mutex mutex_;
    std::vector<std::string> paths_;
    std::string head_;
    sandbox::RawServer server_;  // the last member: it ends before what it uses
};

}  // namespace test

#endif
