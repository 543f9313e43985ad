#include "net/system_downloader.h"

#include <array>
#include <utility>

#include "support/url.h"

namespace velnor {
namespace {

// ASCII without control characters, which could end the header line and begin another.
bool isHeaderText(const char* text) {
    for (const char* c = text; *c != '\0'; ++c) {
        const auto byte = static_cast<unsigned char>(*c);
        if (byte > 0x7e || (byte < 0x20 && byte != '\t')) return false;
    }
    return true;
}

// The body as it was before it was sent; null data and size 0 when it cannot be inflated.
Body decode(Answer& answer, bool isCounted) {
    Body body = std::move(answer.body);
    if (!answer.isGzip) return body;
    // Without a count it counts as too short, which is fixed by the interface: a caller that asks
    // for no count wants text, and text is not served compressed.
    if (!isCounted) body.size = 0;
    return inflateGzip(std::move(body));
}

char* download(const platform::HttpRequest& request, uint32_t* outSize, Answer* last) {
    HttpAttempts attempts(request, Keep::Body);
    for (const Way way : {Way::Proxied, Way::Direct}) {
        attempts.forgetProxyDemand();
        Answer answer = attempts.send(way);
        Body body;
        if (answer.status == kStatusOk) {
            body = decode(answer, outSize != nullptr);
            if (outSize != nullptr) *outSize = body.size;
        }
        // An answer by way of the proxy tells more than that there is no other way.
        if (answer.ending != Ending::NoAnswer || last->ending != Ending::Answered) {
            *last = std::move(answer);
        }
        if (last->ending == Ending::NoMemory) return nullptr;
        if (body.data) return body.data.release();
    }
    return nullptr;
}

}  // namespace

char* downloadWebUrl(const char* userAgent, const char* url, uint32_t* outSize, Answer* last) {
    if (userAgent == nullptr || url == nullptr) return nullptr;
    if (!isWebUrl(url) || !isHeaderText(userAgent)) return nullptr;
    const std::array<platform::HttpHeader, 2> headers{
        {{"User-Agent", userAgent}, {"Accept-Encoding", "gzip"}}};
    return download({"GET", url, headers}, outSize, last);
}

}  // namespace velnor

char* _vn_downloadVelnorURL(const char* userAgent, const char* url, uint32_t* outSize,
                            InstallContext* /*context*/, uint32_t /*progressFrom*/,
                            uint32_t /*progressTo*/) {
    velnor::Answer last{velnor::Ending::Failed};
    return velnor::downloadWebUrl(userAgent, url, outSize, &last);
}
