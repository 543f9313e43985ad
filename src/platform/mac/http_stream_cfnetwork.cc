// The HTTP stream on CFNetwork, which connects, sends and receives by itself. Nothing here runs an
// event loop: a stream that is scheduled nowhere is asked how far it has come.
#include <CFNetwork/CFNetwork.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstring>
#include <new>
#include <thread>
#include <utility>

#include "platform/http_stream.h"
#include "platform/mac/cf_ref.h"
#include "platform/mac/old_calls.h"
#include "platform/mac/system_proxies_sc.h"
#include "support/text.h"
#include "support/url.h"

namespace velnor::platform {

class ProxyAuthentication {
  public:
    explicit ProxyAuthentication(CfRef<CFHTTPAuthenticationRef> demand)
        : demand_(std::move(demand)) {}

    CFHTTPAuthenticationRef demand() const { return demand_.get(); }

  private:
    CfRef<CFHTTPAuthenticationRef> demand_;
};

class HttpStream {
  public:
    explicit HttpStream(bool isSecure) : mustStaySecure_(isSecure) {}
    ~HttpStream() {
        if (stream_) CFReadStreamClose(stream_.get());
    }
    HttpStream(const HttpStream&) = delete;
    HttpStream& operator=(const HttpStream&) = delete;

    bool start(const HttpRequest& request);
    StreamStatus status() const;
    bool hasBytesAvailable() const;
    int32_t read(void* buffer, uint32_t size);
    CfRef<CFHTTPMessageRef> response() const { return old::copyResponse(stream_.get()); }
    CfRef<CFErrorRef> error() const {
        return CfRef<CFErrorRef>(CFReadStreamCopyError(stream_.get()));
    }

  private:
    bool isProxyDemand() const;
    bool isWhole() const;
    bool staysSecure();

    CfRef<CFReadStreamRef> stream_;
    uint64_t received_ = 0;
    bool mustStaySecure_;  // until somebody has looked
};

namespace {

// How long the stream is left alone before it is looked at again.
constexpr std::chrono::milliseconds kBetweenLooks{2};
constexpr CFIndex kProxyAuthenticationRequired = 407;

CfRef<CFDictionaryRef> makeDictionary(const Credentials& credentials) {
    const auto user = makeString(credentials.user.get(), kCFStringEncodingUTF8);
    const auto password = makeString(credentials.password.get(), kCFStringEncodingUTF8);
    if (!user || !password) return nullptr;
    const void* keys[] = {kCFHTTPAuthenticationUsername, kCFHTTPAuthenticationPassword};
    const void* values[] = {user.get(), password.get()};
    return CfRef<CFDictionaryRef>(CFDictionaryCreate(nullptr, keys, values, 2,
                                                     &kCFTypeDictionaryKeyCallBacks,
                                                     &kCFTypeDictionaryValueCallBacks));
}

bool setHeaders(const HttpRequest& request, CFHTTPMessageRef message) {
    for (const HttpHeader& header : request.headers) {
        const auto name = makeString(header.name);
        const auto value = makeString(header.value);
        if (!name || !value) return false;
        CFHTTPMessageSetHeaderFieldValue(message, name.get(), value.get());
    }
    return true;
}

bool setBody(const HttpRequest& request, CFHTTPMessageRef message) {
    if (request.body.data() == nullptr) return true;
    const CfRef<CFDataRef> body(CFDataCreate(nullptr,
                                             reinterpret_cast<const UInt8*>(request.body.data()),
                                             static_cast<CFIndex>(request.body.size())));
    if (body) CFHTTPMessageSetBody(message, body.get());
    return body != nullptr;
}

bool applyCredentials(const HttpRequest& request, CFHTTPMessageRef message) {
    if (request.authentication == nullptr || request.credentials == nullptr) return true;
    const CfRef<CFDictionaryRef> credentials = makeDictionary(*request.credentials);
    if (!credentials) return false;
    // Without those that do not fit the demand, the proxy refuses once more, as it would with
    // wrong ones.
    CFHTTPMessageApplyCredentialDictionary(message, request.authentication->demand(),
                                           credentials.get(), nullptr);
    return true;
}

CfRef<CFHTTPMessageRef> makeMessage(const HttpRequest& request) {
    const auto method = makeString(request.method);
    const auto text = makeString(request.url);
    if (!method || !text) return nullptr;
    const CfRef<CFURLRef> url(CFURLCreateWithString(nullptr, text.get(), nullptr));
    if (!url) return nullptr;
    CfRef<CFHTTPMessageRef> message(
        CFHTTPMessageCreateRequest(nullptr, method.get(), url.get(), kCFHTTPVersion1_1));
    const bool isMade = message && setHeaders(request, message.get()) &&
                        setBody(request, message.get()) && applyCredentials(request, message.get());
    return isMade ? std::move(message) : nullptr;
}

CfRef<CFStringRef> copyHeader(CFHTTPMessageRef response, const char* name) {
    const auto text = makeString(name);
    return CfRef<CFStringRef>(text ? CFHTTPMessageCopyHeaderFieldValue(response, text.get())
                                   : nullptr);
}

// Looks every now and then until the answer is known or the time is up.
template <class Known>
void waitUntil(Known known, int milliseconds) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(milliseconds);
    while (!known()) {
        const Clock::time_point now = Clock::now();
        if (now >= deadline) return;
        std::this_thread::sleep_until(std::min(now + kBetweenLooks, deadline));
    }
}

}  // namespace

bool HttpStream::start(const HttpRequest& request) {
    const CfRef<CFHTTPMessageRef> message = makeMessage(request);
    if (!message) return false;
    stream_ = old::makeStream(message.get());
    if (!stream_) return false;
    const bool isSet =
        request.proxies == nullptr || old::setProxies(stream_.get(), request.proxies->settings());
    if (!isSet || !old::followRedirects(stream_.get())) return false;
    CFReadStreamOpen(stream_.get());  // when it cannot, the status says so
    return true;
}

StreamStatus HttpStream::status() const {
    switch (CFReadStreamGetStatus(stream_.get())) {
        case kCFStreamStatusOpen:
        case kCFStreamStatusReading:
        case kCFStreamStatusAtEnd:
            return StreamStatus::Open;
        case kCFStreamStatusError:
            return response() ? StreamStatus::Open : StreamStatus::Error;
        default:
            return StreamStatus::Opening;
    }
}

// CFNetwork means bytes of a body by it, and would let an empty one be waited for.
bool HttpStream::hasBytesAvailable() const {
    const CFStreamStatus status = CFReadStreamGetStatus(stream_.get());
    return status == kCFStreamStatusAtEnd || status == kCFStreamStatusError ||
           CFReadStreamHasBytesAvailable(stream_.get()) != 0;
}

int32_t HttpStream::read(void* buffer, uint32_t size) {
    const CFIndex count = CFReadStreamRead(stream_.get(), static_cast<UInt8*>(buffer), size);
    if (count < 0 || !staysSecure()) return -1;
    received_ += static_cast<uint64_t>(count);
    return count > 0 || isWhole() ? static_cast<int32_t>(count) : -1;
}

bool HttpStream::isProxyDemand() const {
    const CfRef<CFHTTPMessageRef> head = response();
    return head && CFHTTPMessageGetResponseStatusCode(head.get()) == kProxyAuthenticationRequired;
}

// Nothing promises that CFNetwork takes no redirect from https to http. Where it does not say where
// it ended, it may have; but a proxy that refuses the way there has led nowhere.
bool HttpStream::staysSecure() {
    if (!mustStaySecure_ || isProxyDemand()) return true;
    const CfRef<CFStringRef> scheme = old::copyFinalScheme(stream_.get());
    char text[sizeof "https"];
    if (!scheme ||
        CFStringGetCString(scheme.get(), text, sizeof text, kCFStringEncodingASCII) == 0) {
        return false;
    }
    // What is so at the first bytes remains so.
    mustStaySecure_ = !equalIgnoringCase(text, "https");
    return !mustStaySecure_;
}

// Whether there is a response and all of the length that it announces, which nothing promises
// either when a connection breaks off. A length that is no number cannot have come. A proxy's
// demand is whole in any case: the text of one that refuses a tunnel may be left out.
bool HttpStream::isWhole() const {
    const CfRef<CFHTTPMessageRef> head = response();
    if (!head) return false;
    if (isProxyDemand()) return true;
    const CfRef<CFStringRef> length = copyHeader(head.get(), "Content-Length");
    if (!length || copyHeader(head.get(), "Transfer-Encoding")) return true;
    char text[24];
    if (CFStringGetCString(length.get(), text, sizeof text, kCFStringEncodingASCII) == 0) {
        return false;
    }
    uint64_t announced = 0;
    const char* end = text + std::strlen(text);
    const auto [behind, failure] = std::from_chars(text, end, announced);
    return failure == std::errc() && behind == end && received_ >= announced;
}

void ProxyAuthenticationDeleter::operator()(ProxyAuthentication* authentication) const {
    delete authentication;
}

bool requiresUserNameAndPassword(const ProxyAuthentication& authentication) {
    return CFHTTPAuthenticationRequiresUserNameAndPassword(authentication.demand()) != 0;
}

void HttpStreamDeleter::operator()(HttpStream* stream) const { delete stream; }

OwnedStream openStream(const HttpRequest& request) {
    OwnedStream stream(new (std::nothrow) HttpStream(hasHttpsScheme(request.url)));
    if (!stream || !stream->start(request)) return nullptr;
    return stream;
}

StreamStatus statusOf(const HttpStream& stream) { return stream.status(); }

bool hasBytesAvailable(const HttpStream& stream) { return stream.hasBytesAvailable(); }

void waitUntilOpen(HttpStream& stream, int milliseconds) {
    waitUntil([&] { return stream.status() != StreamStatus::Opening; }, milliseconds);
}

void waitForBytes(HttpStream& stream, int milliseconds) {
    waitUntil([&] { return stream.hasBytesAvailable(); }, milliseconds);
}

int32_t readBody(HttpStream& stream, void* buffer, uint32_t size) {
    return stream.read(buffer, size);
}

int32_t responseCode(const HttpStream& stream) {
    const CfRef<CFHTTPMessageRef> head = stream.response();
    return head ? static_cast<int32_t>(CFHTTPMessageGetResponseStatusCode(head.get())) : 0;
}

void copyFailureText(const HttpStream& stream, std::span<char> text) {
    const CfRef<CFErrorRef> error = stream.error();
    const CfRef<CFStringRef> said(error ? CFErrorCopyDescription(error.get()) : nullptr);
    const bool isCopied =
        said && CFStringGetCString(said.get(), text.data(), static_cast<CFIndex>(text.size()),
                                   kCFStringEncodingUTF8) != 0;
    if (!isCopied) text.front() = '\0';
}

bool hasResponseHeader(const HttpStream& stream, const char* name, const char* value) {
    const CfRef<CFHTTPMessageRef> head = stream.response();
    const CfRef<CFStringRef> expected = makeString(value);
    const CfRef<CFStringRef> found = head ? copyHeader(head.get(), name) : nullptr;
    return found && expected &&
           CFStringCompare(found.get(), expected.get(), 0) == kCFCompareEqualTo;
}

OwnedAuthentication takeProxyAuthentication(HttpStream& stream) {
    const CfRef<CFHTTPMessageRef> head = stream.response();
    if (!head) return nullptr;
    CfRef<CFHTTPAuthenticationRef> demand(
        CFHTTPAuthenticationCreateFromResponse(nullptr, head.get()));
    if (!demand) return nullptr;
    return OwnedAuthentication(new (std::nothrow) ProxyAuthentication(std::move(demand)));
}

}  // namespace velnor::platform
