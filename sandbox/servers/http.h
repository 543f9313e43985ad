// Requests as the rehearsal's servers saw them, and the replies they give.
#ifndef SANDBOX_SERVERS_HTTP_H
#define SANDBOX_SERVERS_HTTP_H

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace sandbox {

/// Names and values; a name may come more than once.
using Headers = std::vector<std::pair<std::string, std::string>>;

/// Bytes that any number of replies share without a copy.
class Body {
  public:
    Body() : Body(std::string()) {}
    Body(std::string bytes) : bytes_(std::make_shared<const std::string>(std::move(bytes))) {}
    Body(const char* text) : Body(std::string(text)) {}

    const std::string& bytes() const { return *bytes_; }

  private:
    std::shared_ptr<const std::string> bytes_;
};

/// Goes out as it is: nothing is compressed or added but Content-Length, Connection and, where the
/// headers name none, a Content-Type.
struct Reply {
    int status = 200;
    Body body = {};
    Headers headers = {};
};

struct Request {
    std::string method;
    std::string target;  // path and query, or an absolute URL, as it was sent
    Headers headers;     // in alphabetical order; for the order on the wire use a RawServer
    std::string body;
    std::string remote;  // the caller's address

    std::string path() const { return target.substr(0, target.find('?')); }

    /// The value of a header, in whatever letter case its name came; empty when there is none.
    std::string header(const std::string& name) const;
};

/// The request whose head this is, as readHead() gives it; the body and the caller are left empty.
Request parseHead(std::string_view head);

}  // namespace sandbox

#endif
