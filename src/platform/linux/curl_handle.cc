// libcurl transfers, set up.
#include "platform/linux/curl_handle.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>

#include "platform/linux/system_proxies_libproxy.h"
#include "support/format.h"

namespace velnor::platform {
namespace {

// A file or folder that the environment names in place of the system's trust store, as OpenSSL's
// own programs take it (SSL_CTX_set_default_verify_paths(3)): one that cannot be read counts as
// empty.
void setTrustPath(CURL* easy, CURLoption option, CURLoption proxyOption, const char* variable) {
    const char* path = std::getenv(variable);
    if (path == nullptr) return;
    if (access(path, R_OK) != 0) path = nullptr;
    curl_easy_setopt(easy, option, path);
    curl_easy_setopt(easy, proxyOption, path);
}

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
        if (_vn_snprintf(line.out(), 0, "%s: %s", header.name, header.value) == 0) return nullptr;
        if (!append(list, line.get())) return nullptr;
    }
    if (!append(list, "Accept:") || !append(list, "Proxy-Connection:")) return nullptr;
    return list;
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
    setTrustPath(easy, CURLOPT_CAINFO, CURLOPT_PROXY_CAINFO, "SSL_CERT_FILE");
    setTrustPath(easy, CURLOPT_CAPATH, CURLOPT_PROXY_CAPATH, "SSL_CERT_DIR");
    return handle;
}

bool setProxy(CURL* easy, const SystemProxies* proxies, const char* url) {
    OwnedText proxy;
    if (proxies != nullptr) proxy = static_cast<const LibproxyProxies*>(proxies)->proxyFor(url);
    // Both are set in every case, else libcurl would read the environment by rules of its own.
    return curl_easy_setopt(easy, CURLOPT_PROXY, proxy ? proxy.get() : "") == CURLE_OK &&
           curl_easy_setopt(easy, CURLOPT_NOPROXY, "") == CURLE_OK;
}

}  // namespace velnor::platform
