// A libcurl transfer and what it holds on to, set up as every exchange of this system needs it.
#ifndef VELNOR_PLATFORM_LINUX_CURL_HANDLE_H
#define VELNOR_PLATFORM_LINUX_CURL_HANDLE_H

#include <curl/curl.h>

#include <memory>

#include "platform/http_stream.h"

namespace velnor::platform {

struct EasyDeleter {
    void operator()(CURL* easy) const { curl_easy_cleanup(easy); }
};
struct MultiDeleter {
    void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
};
struct UrlDeleter {
    void operator()(CURLU* url) const { curl_url_cleanup(url); }
};
struct SlistDeleter {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};

using Easy = std::unique_ptr<CURL, EasyDeleter>;
using Multi = std::unique_ptr<CURLM, MultiDeleter>;
using Slist = std::unique_ptr<curl_slist, SlistDeleter>;

/// The request's headers, with those that libcurl would add taken away; null without memory.
Slist makeHeaderList(const HttpRequest& request);

/// True when libcurl can take `text` apart as a URL; false also for want of memory.
bool isUrl(const char* text);

/// Headers of a CONNECT request: none of libcurl's own. Null without memory.
Slist makeProxyHeaderList();

/// A transfer with the options that hold for every request: HTTP/1.1, verified TLS, no signals, no
/// inherited sockets, no redirects of libcurl's own. Null without memory.
Easy makeEasy();

/// Sets the proxy for the next transfer of `easy`, null to connect directly, and the account to use
/// with it, null for none but one that `proxy` names itself.
bool setProxy(CURL* easy, const char* proxy, const Credentials* credentials);

}  // namespace velnor::platform

#endif
