// As much of HTTP as the stand-in client speaks.
#ifndef SANDBOX_CLIENT_HTTP_H
#define SANDBOX_CLIENT_HTTP_H

#include <optional>
#include <string>
#include <string_view>

namespace http {

/// The target of a request's first line, or nothing when it is no GET.
std::optional<std::string> targetOf(std::string_view head);

/// The value of a header, in whatever letter case its name came; empty when there is none.
std::string headerOf(std::string_view head, std::string_view name);

/// Whether it is a GET whose sender would send another one over the same connection.
bool wantsMore(std::string_view head);

/// A whole reply, which says whether the connection stays open.
std::string reply(std::string_view status, std::string_view body, bool keepsOpen);

}  // namespace http

#endif
