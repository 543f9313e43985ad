// A plain libcurl download into a block that grows with realloc, as libcurl's own examples do it.
#include "curl_peer.h"

#include <curl/curl.h>

#include <cstdlib>
#include <cstring>

namespace bench {

CurlPeer::CurlPeer(const char* url, bool gzip) : easy_(curl_easy_init()) {
    curl_easy_setopt(easy_, CURLOPT_URL, url);
    curl_easy_setopt(easy_, CURLOPT_USERAGENT, "bench");
    curl_easy_setopt(easy_, CURLOPT_WRITEFUNCTION, append);
    curl_easy_setopt(easy_, CURLOPT_WRITEDATA, this);
    curl_easy_setopt(easy_, CURLOPT_FOLLOWLOCATION, 1L);
    // As in any program with threads; it also saves system calls.
    curl_easy_setopt(easy_, CURLOPT_NOSIGNAL, 1L);
    if (gzip) curl_easy_setopt(easy_, CURLOPT_ACCEPT_ENCODING, "gzip");
}

CurlPeer::~CurlPeer() {
    curl_easy_cleanup(easy_);
    std::free(body_);
}

bool CurlPeer::fetch() {
    size_ = 0;
    return curl_easy_perform(easy_) == CURLE_OK;
}

size_t CurlPeer::append(char* bytes, size_t, size_t size, void* self) {
    auto* peer = static_cast<CurlPeer*>(self);
    auto* grown = static_cast<char*>(std::realloc(peer->body_, peer->size_ + size + 1));
    if (grown == nullptr) return 0;
    peer->body_ = grown;
    std::memcpy(grown + peer->size_, bytes, size);
    peer->size_ += size;
    grown[peer->size_] = '\0';
    return size;
}

}  // namespace bench
