// A plain libcurl download into a block that grows with realloc, as libcurl's own examples do it.
#include "curl_peer.h"

#include <curl/curl.h>

#include <cstdlib>
#include <cstring>

namespace bench {
namespace {

struct Block {
    char* bytes = nullptr;
    size_t size = 0;
};

size_t append(char* bytes, size_t, size_t size, void* target) {
    auto* block = static_cast<Block*>(target);
    auto* grown = static_cast<char*>(std::realloc(block->bytes, block->size + size + 1));
    if (grown == nullptr) return 0;
    block->bytes = grown;
    std::memcpy(block->bytes + block->size, bytes, size);
    block->size += size;
    block->bytes[block->size] = '\0';
    return size;
}

}  // namespace

size_t fetchWithCurl(const char* url, bool gzip) {
    CURL* easy = curl_easy_init();
    Block block;
    curl_easy_setopt(easy, CURLOPT_URL, url);
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, append);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, &block);
    curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 1L);
    if (gzip) curl_easy_setopt(easy, CURLOPT_ACCEPT_ENCODING, "gzip");
    const CURLcode result = curl_easy_perform(easy);
    curl_easy_cleanup(easy);
    std::free(block.bytes);
    return result == CURLE_OK ? block.size : 0;
}

}  // namespace bench
