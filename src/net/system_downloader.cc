// The two-attempt download.
#include "net/system_downloader.h"

#include <array>
#include <memory>

#include "net/gzip.h"
#include "net/proxy_credentials.h"
#include "net/response_body.h"
#include "net/stream_polls.h"
#include "net/url_text.h"
#include "platform/http_stream.h"
#include "platform/system_proxies.h"
#include "support/owned.h"

using velnor::OwnedText;
using velnor::ResponseBody;
namespace platform = velnor::platform;

namespace {

constexpr uint32_t kReadSize = 1024;
constexpr int32_t kOk = 200;
constexpr int32_t kProxyAuthenticationRequired = 407;

enum class Mode { Proxied, Direct };

enum class Outcome {
    Done,
    Repeat,    // the same attempt again, with credentials
    Failed,    // the next attempt
    NoMemory,  // no further attempt
};

// ASCII without control characters, which could end the header line and begin another.
bool isHeaderText(const char* text) {
    for (const char* c = text; *c != '\0'; ++c) {
        const auto byte = static_cast<unsigned char>(*c);
        if (byte > 0x7e || (byte < 0x20 && byte != '\t')) return false;
    }
    return true;
}

// One attempt, of one or two requests.
class Attempt {
  public:
    Attempt(Mode mode, const char* userAgent, const char* url,
            const platform::SystemProxies* proxies)
        : mode_(mode),
          url_(url),
          headers_{{{"User-Agent", userAgent}, {"Accept-Encoding", "gzip"}}},
          proxies_(proxies) {}

    // Fetches the body into `result`; `outSize` as for the download itself.
    Outcome run(OwnedText* result, uint32_t* outSize) {
        Outcome outcome = Outcome::Repeat;
        while (outcome == Outcome::Repeat) outcome = exchange(result, outSize);
        return outcome;
    }

  private:
    Outcome exchange(OwnedText* result, uint32_t* outSize) {
        const auto stream = platform::createHttpStream(request());
        if (!stream || !stream->open()) return Outcome::Failed;
        if (!velnor::waitUntilOpen(*stream) || !velnor::waitForBytes(*stream)) {
            return Outcome::Failed;
        }
        ResponseBody body;
        const Outcome received = receive(*stream, &body);
        if (received != Outcome::Done) return received;
        switch (stream->responseCode()) {
            case kOk:
                return deliver(*stream, &body, result, outSize);
            case kProxyAuthenticationRequired:
                return authenticate(*stream);
            default:
                return Outcome::Failed;
        }
    }

    platform::HttpRequest request() const {
        platform::HttpRequest request{"GET", url_, headers_};
        if (mode_ == Mode::Direct) return request;
        request.proxies = proxies_;
        request.authentication = authentication_.get();
        request.credentials = authentication_ ? &credentials_ : nullptr;
        return request;
    }

    static Outcome receive(platform::HttpStream& stream, ResponseBody* body) {
        char chunk[kReadSize];
        body->reserve(stream.announcedLength());
        for (;;) {
            const int32_t count = stream.read(chunk, sizeof chunk);
            if (count == 0) return Outcome::Done;
            if (count < 0) {
                if (stream.status() == platform::StreamStatus::Error) return Outcome::Failed;
                continue;  // no bytes and no error: there is nothing to append
            }
            if (!body->append(chunk, static_cast<uint32_t>(count))) return Outcome::NoMemory;
        }
    }

    // Prepares the answer to a 407. In direct mode credentials are looked up and never sent, so
    // that a second 407 ends the attempt there too.
    Outcome authenticate(const platform::HttpStream& stream) {
        if (authentication_) return Outcome::Failed;
        authentication_ = stream.proxyAuthentication();
        if (!authentication_ || !authentication_->requiresUserNameAndPassword()) {
            return Outcome::Failed;
        }
        return _vn_mac_get_keychain_proxy_credentials(url_, &credentials_) ? Outcome::Repeat
                                                                           : Outcome::Failed;
    }

    static Outcome deliver(const platform::HttpStream& stream, ResponseBody* body,
                           OwnedText* result, uint32_t* outSize) {
        uint32_t size = 0;
        OwnedText data = body->take(&size);
        if (!data) return Outcome::NoMemory;
        if (outSize != nullptr) *outSize = size;
        if (stream.hasResponseHeader("Content-Encoding", "gzip")) {
            // Without `outSize` the count starts at 0 and the body counts as too short,
            // deliberately: a caller that asks for no count wants text, and text is not served
            // compressed.
            uint32_t noCount = 0;
            data = inflateGzip(std::move(data), outSize != nullptr ? outSize : &noCount);
        }
        *result = std::move(data);
        return *result ? Outcome::Done : Outcome::Failed;
    }

    Mode mode_;
    const char* url_;
    std::array<platform::HttpHeader, 2> headers_;
    const platform::SystemProxies* proxies_;
    std::unique_ptr<platform::ProxyAuthentication> authentication_;
    platform::Credentials credentials_;
};

}  // namespace

char* _vn_downloadVelnorURL(const char* userAgent, const char* url, uint32_t* outSize,
                            InstallContext* /*context*/, uint32_t /*progressFrom*/,
                            uint32_t /*progressTo*/) {
    if (userAgent == nullptr || url == nullptr) return nullptr;
    if (!velnor::isUrlText(url) || !isHeaderText(userAgent)) return nullptr;
    const auto proxies = platform::copySystemProxies();
    OwnedText result;
    for (const Mode mode : {Mode::Proxied, Mode::Direct}) {
        if (Attempt(mode, userAgent, url, proxies.get()).run(&result, outSize) != Outcome::Failed) {
            break;
        }
    }
    return result.release();
}
