#include "platform/linux/curl_handle.h"

#include <linux/tcp.h>
#include <netinet/in.h>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <new>

#include "support/text.h"

namespace velnor::platform {
namespace {

// Trusts what OpenSSL's own programs trust under SSL_CERT_FILE and SSL_CERT_DIR
// (SSL_CTX_set_default_verify_paths(3)); libcurl itself looks at neither.
CURLcode loadVerifyPaths(CURL*, void* context, void*) {
    auto* tls = static_cast<SSL_CTX*>(context);
    const bool done = SSL_CTX_set_default_verify_paths(tls) == 1;
    ERR_clear_error();
    return done ? CURLE_OK : CURLE_SSL_CACERT_BADFILE;
}

void trustEnvironment(CURL* easy) {
    for (const CURLoption store :
         {CURLOPT_CAINFO, CURLOPT_CAPATH, CURLOPT_PROXY_CAINFO, CURLOPT_PROXY_CAPATH}) {
        curl_easy_setopt(easy, store, nullptr);
    }
    curl_easy_setopt(easy, CURLOPT_SSL_CTX_FUNCTION, loadVerifyPaths);
}

// Close-on-exec, so that a client that is started meanwhile does not inherit the connection.
curl_socket_t openSocket(void*, curlsocktype, curl_sockaddr* address) {
    return socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
}

int closeSocket(void* received, curl_socket_t fd) {
    tcp_info info{};
    socklen_t size = sizeof info;
    // The end of the stream counts as a byte.
    if (getsockopt(fd, IPPROTO_TCP, TCP_INFO, &info, &size) == 0 && info.tcpi_bytes_received > 1) {
        *static_cast<bool*>(received) = true;
    }
    return close(fd);
}

bool append(Slist& list, const char* line) {
    curl_slist* longer = curl_slist_append(list.get(), line);
    if (longer == nullptr) return false;
    static_cast<void>(list.release());
    list.reset(longer);
    return true;
}

bool initializeOnce() {
    static const CURLcode result = curl_global_init(CURL_GLOBAL_DEFAULT);
    return result == CURLE_OK;
}

}  // namespace

Slist makeHeaderList(const HttpRequest& request) {
    Slist list;
    for (const HttpHeader& header : request.headers) {
        OwnedText line;
        // libcurl takes a header that ends in a colon as one to leave out, and wants this one so.
        const char* separator = *header.value != '\0' ? ": " : ";";
        if (_vn_snprintf(line.out(), 0, "%s%s%s", header.name, separator, header.value) == 0) {
            return nullptr;
        }
        if (!append(list, line.get())) return nullptr;
    }
    for (const char* own : {"Accept:", "Proxy-Connection:", "Content-Type:", "Expect:"}) {
        if (!append(list, own)) return nullptr;
    }
    return list;
}

bool isUrl(const char* text) {
    const std::unique_ptr<CURLU, UrlDeleter> url(curl_url());
    return url && curl_url_set(url.get(), CURLUPART_URL, text, 0) == CURLUE_OK;
}

OwnedText encodeBlanks(const char* text) {
    const std::unique_ptr<CURLU, UrlDeleter> url(curl_url());
    constexpr unsigned kFlags = CURLU_URLENCODE | CURLU_NON_SUPPORT_SCHEME;
    char* encoded = nullptr;
    if (!url || curl_url_set(url.get(), CURLUPART_URL, text, kFlags) != CURLUE_OK ||
        curl_url_get(url.get(), CURLUPART_URL, &encoded, CURLU_NON_SUPPORT_SCHEME) != CURLUE_OK) {
        return {};
    }
    OwnedText copy = copyText(encoded);
    curl_free(encoded);
    return copy;
}

Slist makeProxyHeaderList() {
    Slist list;
    if (!append(list, "Proxy-Connection:")) return nullptr;
    return list;
}

Transfer makeTransfer() {
    Transfer transfer;
    if (!initializeOnce()) return transfer;
    transfer.received.reset(new (std::nothrow) bool(false));
    if (!transfer.received) return transfer;
    transfer.multi.reset(curl_multi_init());
    transfer.easy.reset(curl_easy_init());
    CURL* easy = transfer.easy.get();
    if (easy == nullptr) return transfer;
    curl_easy_setopt(easy, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 0L);
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(easy, CURLOPT_TCP_KEEPALIVE, 1L);
    curl_easy_setopt(easy, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    curl_easy_setopt(easy, CURLOPT_HEADEROPT, static_cast<long>(CURLHEADER_SEPARATE));
    curl_easy_setopt(easy, CURLOPT_OPENSOCKETFUNCTION, openSocket);
    curl_easy_setopt(easy, CURLOPT_CLOSESOCKETFUNCTION, closeSocket);
    curl_easy_setopt(easy, CURLOPT_CLOSESOCKETDATA, transfer.received.get());
    // Without it, giving up on a name that no server resolves would wait for the resolver.
    curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L);
    if (std::getenv("SSL_CERT_FILE") != nullptr || std::getenv("SSL_CERT_DIR") != nullptr) {
        trustEnvironment(easy);
    }
    return transfer;
}

bool setProxy(CURL* easy, const ProxyAddress& proxy, const Credentials* credentials) {
    // Everything is set in every case, else libcurl would read the environment by rules of its own,
    // or carry an account from one proxy to the next.
    const Credentials& account = credentials != nullptr ? *credentials : proxy.account;
    const char* url = proxy.url ? proxy.url.get() : "";
    const char* except = proxy.except ? proxy.except.get() : "";
    return curl_easy_setopt(easy, CURLOPT_PROXY, url) == CURLE_OK &&
           curl_easy_setopt(easy, CURLOPT_NOPROXY, except) == CURLE_OK &&
           curl_easy_setopt(easy, CURLOPT_PROXYUSERNAME, account.user.get()) == CURLE_OK &&
           curl_easy_setopt(easy, CURLOPT_PROXYPASSWORD, account.password.get()) == CURLE_OK;
}

}  // namespace velnor::platform
