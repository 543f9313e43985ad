#include <cstdlib>
#include <cstring>
#include <utility>

#include "platform/linux/curl_handle.h"
#include "platform/linux/system_proxies_libproxy.h"
#include "support/text.h"

namespace velnor::platform {
namespace {

// The port under which the keychain knows a proxy whose address names none.
constexpr char kDefaultPort[] = "80";

// Stores a copy of one part. What the URL does not have stays null.
CURLUcode copyPart(CURLU* url, CURLUPart part, unsigned flags, OwnedText* copy) {
    char* text = nullptr;
    const CURLUcode got = curl_url_get(url, part, &text, flags);
    if (got == CURLUE_NO_USER || got == CURLUE_NO_PASSWORD || got == CURLUE_NO_PORT) {
        return CURLUE_OK;
    }
    if (got != CURLUE_OK) return got;
    *copy = copyText(text);
    curl_free(text);
    return *copy ? CURLUE_OK : CURLUE_OUT_OF_MEMORY;
}

// Leaves scheme, host and port.
bool strip(CURLU* url) {
    for (const CURLUPart part : {CURLUPART_USER, CURLUPART_PASSWORD, CURLUPART_OPTIONS,
                                 CURLUPART_QUERY, CURLUPART_FRAGMENT}) {
        if (curl_url_set(url, part, nullptr, 0) != CURLUE_OK) return false;
    }
    return curl_url_set(url, CURLUPART_PATH, "/", 0) == CURLUE_OK;
}

OwnedText withoutBrackets(OwnedText host) {
    const size_t length = host ? std::strlen(host.get()) : 0;
    if (length < 2 || *host.get() != '[') return host;
    return copyText({host.get() + 1, length - 2});
}

CURLUcode read(const char* text, ProxyAddress* proxy) {
    // The flags with which libcurl itself reads what it is given as a proxy.
    constexpr unsigned kFlags = CURLU_NON_SUPPORT_SCHEME | CURLU_GUESS_SCHEME;
    const std::unique_ptr<CURLU, UrlDeleter> owner(curl_url());
    CURLU* parts = owner.get();
    if (parts == nullptr) return CURLUE_OUT_OF_MEMORY;
    OwnedText number;
    CURLUcode done = curl_url_set(parts, CURLUPART_URL, text, kFlags);
    const struct {
        CURLUPart part;
        unsigned flags;
        OwnedText* copy;
    } copies[] = {
        {CURLUPART_USER, CURLU_URLDECODE, &proxy->account.user},
        {CURLUPART_PASSWORD, CURLU_URLDECODE, &proxy->account.password},
        {CURLUPART_HOST, 0, &proxy->host},
        {CURLUPART_PORT, 0, &number},
    };
    for (const auto& [part, flags, copy] : copies) {
        if (done == CURLUE_OK) done = copyPart(parts, part, flags, copy);
    }
    if (done != CURLUE_OK) return done;
    proxy->host = withoutBrackets(std::move(proxy->host));
    proxy->port = std::atoi(number ? number.get() : kDefaultPort);
    if (!number) done = curl_url_set(parts, CURLUPART_PORT, kDefaultPort, 0);
    if (done != CURLUE_OK || !proxy->host || !strip(parts)) return CURLUE_OUT_OF_MEMORY;
    return copyPart(parts, CURLUPART_URL, CURLU_NON_SUPPORT_SCHEME, &proxy->url);
}

}  // namespace

ProxyAddress::Parsed ProxyAddress::parse(const char* text) {
    switch (read(text, this)) {
        case CURLUE_OK:
            return Parsed::Done;
        case CURLUE_OUT_OF_MEMORY:
            return Parsed::NoMemory;
        default:
            return Parsed::Refused;
    }
}

OwnedText originOf(const char* url) {
    const std::unique_ptr<CURLU, UrlDeleter> parts(curl_url());
    if (!parts || curl_url_set(parts.get(), CURLUPART_URL, url, 0) != CURLUE_OK ||
        !strip(parts.get())) {
        return {};
    }
    OwnedText origin;
    copyPart(parts.get(), CURLUPART_URL, 0, &origin);
    return origin;
}

}  // namespace velnor::platform
