// A download as a request in two attempts.
#include "net/system_downloader.h"

#include <array>
#include <utility>

#include "net/gzip.h"
#include "net/http_attempts.h"
#include "net/url_text.h"
#include "support/owned.h"

using velnor::AttemptPolicy;
using velnor::Next;
using velnor::OwnedText;
using velnor::Verdict;

namespace {

constexpr AttemptPolicy kPolicy{
    .noStream = Next::DirectOnce,
    .noAnswer = Next::DirectOnce,
    .brokenAnswer = Next::DirectOnce,
    .noCredentials = Next::DirectOnce,
    .refusal = Next::DirectOnce,
    .asksProxyOnce = false,
};

// ASCII without control characters, which could end the header line and begin another.
bool isHeaderText(const char* text) {
    for (const char* c = text; *c != '\0'; ++c) {
        const auto byte = static_cast<unsigned char>(*c);
        if (byte > 0x7e || (byte < 0x20 && byte != '\t')) return false;
    }
    return true;
}

// Keeps the body, inflated when it came compressed.
class Download final : public velnor::AnswerReader {
  public:
    explicit Download(uint32_t* outSize) : outSize_(outSize) {}

    Verdict accept(const velnor::platform::HttpStream& stream,
                   velnor::ResponseBody* body) override {
        uint32_t size = 0;
        OwnedText data = body->take(&size);
        if (!data) return Verdict::NoMemory;
        if (outSize_ != nullptr) *outSize_ = size;
        if (stream.hasResponseHeader("Content-Encoding", "gzip")) {
            // Without `outSize` the count starts at 0 and the body counts as too short,
            // deliberately: a caller that asks for no count wants text, and text is not served
            // compressed.
            uint32_t noCount = 0;
            data = inflateGzip(std::move(data), outSize_ != nullptr ? outSize_ : &noCount);
        }
        result_ = std::move(data);
        return result_ ? Verdict::Accepted : Verdict::Refused;
    }

    char* release() { return result_.release(); }

  private:
    uint32_t* outSize_;
    OwnedText result_;
};

}  // namespace

char* _vn_downloadVelnorURL(const char* userAgent, const char* url, uint32_t* outSize,
                            InstallContext* /*context*/, uint32_t /*progressFrom*/,
                            uint32_t /*progressTo*/) {
    if (userAgent == nullptr || url == nullptr) return nullptr;
    if (!velnor::isUrlText(url) || !isHeaderText(userAgent)) return nullptr;
    const std::array<velnor::platform::HttpHeader, 2> headers{
        {{"User-Agent", userAgent}, {"Accept-Encoding", "gzip"}}};
    Download download(outSize);
    velnor::sendInAttempts({"GET", url, headers}, kPolicy, &download);
    return download.release();
}
