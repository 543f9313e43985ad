// libcurl transfers, set up.
#include "platform/linux/curl_handle.h"

#include <openssl/err.h>
#include <openssl/ssl.h>
#include <sys/socket.h>

#include <cstdlib>
#include <cstring>

#include "support/format.h"

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

// The port under which the keychain knows a proxy whose address names none.
constexpr long kDefaultProxyPort = 80;

// Close-on-exec, so that a client that is started meanwhile does not inherit the connection.
curl_socket_t openSocket(void*, curlsocktype, curl_sockaddr* address) {
    return socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
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
    // libcurl would take "http:///host/" for "http://host/"; it means no host at all.
    if (std::strstr(text, ":///") != nullptr) return false;
    const std::unique_ptr<CURLU, UrlDeleter> url(curl_url());
    return url && curl_url_set(url.get(), CURLUPART_URL, text, 0) == CURLUE_OK;
}

Slist makeProxyHeaderList() {
    Slist list;
    if (!append(list, "Proxy-Connection:")) return nullptr;
    return list;
}

Easy makeEasy() {
    if (!initializeOnce()) return nullptr;
    Easy handle(curl_easy_init());
    if (!handle) return nullptr;
    CURL* easy = handle.get();
    curl_easy_setopt(easy, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 0L);
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(easy, CURLOPT_TCP_KEEPALIVE, 1L);
    curl_easy_setopt(easy, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    curl_easy_setopt(easy, CURLOPT_HEADEROPT, static_cast<long>(CURLHEADER_SEPARATE));
    curl_easy_setopt(easy, CURLOPT_OPENSOCKETFUNCTION, openSocket);
    // Without it, giving up on a name that no server resolves would wait for the resolver.
    curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L);
    if (std::getenv("SSL_CERT_FILE") != nullptr || std::getenv("SSL_CERT_DIR") != nullptr) {
        trustEnvironment(easy);
    }
    return handle;
}

bool setProxy(CURL* easy, const char* proxy, const Credentials* credentials) {
    // Everything is set in every case, else libcurl would read the environment by rules of its own,
    // or carry an account from one proxy to the next.
    const char* user = credentials != nullptr ? credentials->user.get() : nullptr;
    const char* password = credentials != nullptr ? credentials->password.get() : nullptr;
    return curl_easy_setopt(easy, CURLOPT_PROXY, proxy != nullptr ? proxy : "") == CURLE_OK &&
           curl_easy_setopt(easy, CURLOPT_NOPROXY, "") == CURLE_OK &&
           curl_easy_setopt(easy, CURLOPT_PROXYPORT, kDefaultProxyPort) == CURLE_OK &&
           curl_easy_setopt(easy, CURLOPT_PROXYUSERNAME, user) == CURLE_OK &&
           curl_easy_setopt(easy, CURLOPT_PROXYPASSWORD, password) == CURLE_OK;
}

}  // namespace velnor::platform
