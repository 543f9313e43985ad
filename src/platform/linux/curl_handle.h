// A libcurl transfer and what it holds on to, set up as every exchange of this system needs it.
#ifndef VELNOR_PLATFORM_LINUX_CURL_HANDLE_H
#define VELNOR_PLATFORM_LINUX_CURL_HANDLE_H

#include <curl/curl.h>

#include <memory>
#include <utility>

#include "platform/http_stream.h"
#include "platform/linux/sigpipe_guard.h"
#include "platform/linux/system_proxies_libproxy.h"

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

/// True when libcurl can take `text` apart as a URL; false also without memory.
bool isUrl(const char* text);

/// `text` as a URL in which every blank is encoded; null when it is none, or without memory.
OwnedText encodeBlanks(const char* text);

/// Headers of a CONNECT request: none of libcurl's own. Null without memory.
Slist makeProxyHeaderList();

/// A transfer with its connections. What libcurl learns from a reply, such as a proxy's nonce,
/// stays with it.
struct Transfer {
    Multi multi;
    Easy easy;
    /// Set when a connection closes on which something had been received, in libcurl's eyes an
    /// answer or not.
    std::unique_ptr<bool> received;

    Transfer() = default;
    Transfer(Transfer&&) noexcept = default;
    Transfer& operator=(Transfer&& other) noexcept {
        std::swap(multi, other.multi);
        std::swap(easy, other.easy);
        std::swap(received, other.received);
        return *this;
    }
    ~Transfer() { close(); }

    /// Takes the transfer off its connections. Does nothing when there is none.
    void stop() const {
        if (multi && easy) curl_multi_remove_handle(multi.get(), easy.get());
    }

    void close() {
        if (!multi && !easy) return;
        const SigpipeGuard guard;  // closing a TLS connection writes to it
        stop();
        easy.reset();
        multi.reset();
    }
};

/// A transfer with the options that hold for every request: HTTP/1.1, verified TLS, no signals, no
/// inherited sockets, no redirects of libcurl's own. Without memory, `easy` or `multi` is null.
Transfer makeTransfer();

/// Sets the proxy for the next request, and the account to use with it in place of one that its
/// address names; null for none.
bool setProxy(CURL* easy, const ProxyAddress& proxy, const Credentials* credentials);

}  // namespace velnor::platform

#endif
