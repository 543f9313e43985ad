// Loads a library and makes one exchange with the client, in a process that has loaded nothing yet,
// and prints how many seconds that took.
//   velnor_bench_api_start velnor LIBRARY | libcurl LIBRARY
#include <curl/curl.h>
#include <dlfcn.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <string>

#include "api_reply.h"
#include "velnor/capi.h"

namespace {

template <class Function>
Function* find(void* library, const char* name) {
    return reinterpret_cast<Function*>(dlsym(library, name));
}

bool talkByVelnor(void* library) {
    ApiHandle* handle = nullptr;
    FileAttributes file{};
    return find<decltype(vn_initialize)>(library, "vn_initialize")("bench", &handle) == 0 &&
           find<decltype(vn_getFileAttributes)>(library, "vn_getFileAttributes")(
               handle, 0, bench::kApiUrl, &file, 0) == 0 &&
           file.size == bench::kApiSize;
}

size_t keep(char* bytes, size_t, size_t size, void* text) {
    static_cast<std::string*>(text)->append(bytes, size);
    return size;
}

bool talkByCurl(void* library) {
    CURL* easy = find<decltype(curl_easy_init)>(library, "curl_easy_init")();
    auto* set = find<decltype(curl_easy_setopt)>(library, "curl_easy_setopt");
    auto* perform = find<decltype(curl_easy_perform)>(library, "curl_easy_perform");
    const std::string base = "http://127.0.0.1:9421/api?function=";
    const std::string ask =
        base + "getFileAttributes&cid=0&apiversion=capi_1.6.5&url=" + bench::kApiUrlEncoded +
        "&complete";
    std::string body;
    set(easy, CURLOPT_WRITEFUNCTION, keep);
    set(easy, CURLOPT_WRITEDATA, &body);
    for (const std::string& url : {base + "ping", ask}) {
        body.clear();
        set(easy, CURLOPT_URL, url.c_str());
        if (perform(easy) != CURLE_OK) return false;
    }
    return body == bench::kApiReply;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    using Clock = std::chrono::steady_clock;
    const Clock::time_point begin = Clock::now();
    void* library = dlopen(argv[2], RTLD_LAZY | RTLD_LOCAL);
    if (library == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    const bool isOurs = std::strcmp(argv[1], "velnor") == 0;
    const bool done = isOurs ? talkByVelnor(library) : talkByCurl(library);
    std::printf("%.9f\n", std::chrono::duration<double>(Clock::now() - begin).count());
    return done ? 0 : 1;
}
