// URLs by libcurl's own parser, so that nothing passes here that it would read differently.
#include "url.h"

#include <curl/curl.h>

#include <memory>
#include <string_view>

#include "query.h"

namespace {

constexpr size_t kLongestName = 200;

class Url {
  public:
    explicit Url(const std::string& text) {
        if (curl_url_set(handle_.get(), CURLUPART_URL, text.c_str(), 0) != CURLUE_OK)
            handle_.reset();
    }

    bool isGood() const { return handle_ != nullptr; }

    void appendQuery(const std::string& query) {
        curl_url_set(handle_.get(), CURLUPART_QUERY, query.c_str(), CURLU_APPENDQUERY);
    }

    std::string part(CURLUPart which, unsigned flags = 0) const {
        char* text = nullptr;
        if (curl_url_get(handle_.get(), which, &text, flags) != CURLUE_OK) return {};
        const std::unique_ptr<char, decltype(&curl_free)> owner(text, curl_free);
        return text;
    }

  private:
    std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> handle_{curl_url(), curl_url_cleanup};
};

}  // namespace

bool isFetchable(const std::string& url) {
    if (hasControls(url)) return false;
    const Url parsed(url);
    if (!parsed.isGood()) return false;
    const std::string scheme = parsed.part(CURLUPART_SCHEME);
    // libcurl takes the host from behind any number of slashes.
    const std::string_view rest = std::string_view(url).substr(scheme.size());
    return (scheme == "http" || scheme == "https") && rest.starts_with("://") && rest[3] != '/';
}

std::string fileNameOf(const std::string& url) {
    const Url parsed(url);
    const std::string path = parsed.part(CURLUPART_PATH, CURLU_URLDECODE);
    std::string name = path.substr(path.rfind('/') + 1, kLongestName);
    if (name.empty() || name == "." || name == ".." || hasControls(name)) name = "download";
    return name;
}

std::string withQuery(const std::string& url, std::string query) {
    query.erase(0, query.find_first_not_of("?&"));
    if (query.empty()) return url;
    Url parsed(url);
    parsed.appendQuery(query);
    return parsed.part(CURLUPART_URL);
}
