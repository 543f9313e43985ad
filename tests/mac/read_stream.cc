// A request's exchange on libcurl. It goes on whenever it is asked for something, waits in a read
// alone, and follows redirects when it is told to, but then from https to http as well.
#include "mac/objects.h"
#include "platform/linux/curl_handle.h"
#include "platform/linux/stream_buffer.h"
#include "support/url.h"

namespace platform = velnor::platform;

namespace {

constexpr int kMaxRedirects = 20;
constexpr int kRefused = 407;
constexpr char kAuthorization[] = "Proxy-Authorization";

// How a failure shows: in the status, or, when what came is no HTTP, to whoever reads.
enum class Failure { None, InStatus, WhenRead };

}  // namespace

struct __CFReadStream : mac::Object {
    explicit __CFReadStream(const __CFHTTPMessage& message)
        : method(message.method), url(message.url), fields(message.fields), body(message.body) {}
    ~__CFReadStream() override {
        if (isOpen) mac::complain("a stream goes that has not been closed");
        if (proxies != nullptr) CFRelease(proxies);
    }

    void begin();
    bool setProxy();
    void work(int milliseconds);
    void finish(CURLcode result);
    void redirect(const char* target);
    void end(Failure how) { isOver = true, failure = how; }

    long info(CURLINFO what) const {
        long value = 0;
        curl_easy_getinfo(easy, what, &value);
        return value;
    }
    // A tunnel that is refused is an answer like others.
    bool isRefused() const { return info(CURLINFO_HTTP_CONNECTCODE) == kRefused; }
    long code() const { return isRefused() ? kRefused : info(CURLINFO_RESPONSE_CODE); }
    mac::Fields head() const;
    bool isRedirect() const;

    platform::SigpipeGuard guard;
    platform::Slist headers, proxyHeaders;
    platform::Transfer transfer = platform::makeTransfer();
    CURL* easy = transfer.easy.get();
    std::string method, url;
    mac::Fields fields;
    std::optional<std::string> body;
    CFDictionaryRef proxies = nullptr;
    bool follows = false;
    int redirects = 0;
    bool isOpen = false, isConnected = false, hasHead = false, isOver = false;
    Failure failure = Failure::None;
    platform::StreamBuffer received;
};

namespace {

int onConnected(void* stream, char*, char*, int, int) {
    static_cast<__CFReadStream*>(stream)->isConnected = true;
    return CURL_PREREQFUNC_OK;
}

// One call a line; of several heads the last one counts.
size_t onHead(char* line, size_t, size_t size, void* stream) {
    bool& hasHead = static_cast<__CFReadStream*>(stream)->hasHead;
    if (*line == '\r' || *line == '\n') hasHead = true;
    if (std::string_view(line, size).starts_with("HTTP/")) hasHead = false;
    return size;
}

size_t onBody(char* bytes, size_t, size_t size, void* self) {
    auto* stream = static_cast<__CFReadStream*>(self);
    if (!stream->isRedirect()) stream->received.append(bytes, static_cast<uint32_t>(size));
    return size;
}

}  // namespace

void __CFReadStream::begin() {
    hasHead = false;
    curl_easy_setopt(easy, CURLOPT_SUPPRESS_CONNECT_HEADERS, 0L);
    curl_easy_setopt(easy, CURLOPT_PREREQFUNCTION, onConnected);
    curl_easy_setopt(easy, CURLOPT_PREREQDATA, this);
    curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, onHead);
    curl_easy_setopt(easy, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, onBody);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, this);
    curl_easy_setopt(easy, CURLOPT_URL, url.c_str());
    if (body) {
        curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body->size()));
        curl_easy_setopt(easy, CURLOPT_POSTFIELDS, body->data());
    }
    curl_easy_setopt(easy, CURLOPT_CUSTOMREQUEST, method.c_str());
    if (!setProxy()) return end(Failure::InStatus);
    curl_multi_add_handle(transfer.multi.get(), easy);
}

// A proxy's password goes to the first proxy; without proxies it is a header like others.
bool __CFReadStream::setProxy() {
    platform::ProxyAddress proxy;
    if (proxies != nullptr &&
        proxies->proxies->proxyFor(url.c_str(), &proxy) != platform::ProxyAddress::Parsed::Done) {
        return false;
    }
    proxyHeaders = platform::makeProxyHeaderList();
    std::vector<platform::HttpHeader> own;
    for (const auto& [name, value] : fields) {
        if (name != kAuthorization || proxies == nullptr) {
            own.push_back({name.c_str(), value.c_str()});
        } else if (redirects == 0 && proxy.url) {
            proxy.account = {};
            const std::string line = name + ": " + value;
            static_cast<void>(curl_slist_append(proxyHeaders.get(), line.c_str()));
        }
    }
    headers = platform::makeHeaderList({.method = "", .url = "", .headers = own});
    curl_easy_setopt(easy, CURLOPT_HTTPHEADER, headers.get());
    curl_easy_setopt(easy, CURLOPT_PROXYHEADER, proxyHeaders.get());
    return platform::setProxy(easy, proxy, nullptr);
}

mac::Fields __CFReadStream::head() const {
    const unsigned origin = isRefused() ? CURLH_CONNECT : CURLH_HEADER;
    mac::Fields all;
    for (curl_header* field = nullptr;
         (field = curl_easy_nextheader(easy, origin, -1, field)) != nullptr;) {
        all.emplace_back(field->name, field->value);
    }
    return all;
}

bool __CFReadStream::isRedirect() const {
    const long status = code();
    return follows && (status / 10 == 30 && status % 10 != 4) && mac::find(head(), "Location");
}

void __CFReadStream::work(int milliseconds) {
    int count = 0;
    if (!isOpen || isOver) return;
    curl_multi_poll(transfer.multi.get(), nullptr, 0, milliseconds, nullptr);
    curl_multi_perform(transfer.multi.get(), &count);
    while (const CURLMsg* message = curl_multi_info_read(transfer.multi.get(), &count)) {
        finish(message->data.result);
    }
}

void __CFReadStream::finish(CURLcode result) {
    char* target = nullptr;
    curl_easy_getinfo(easy, CURLINFO_REDIRECT_URL, &target);
    if (result == CURLE_OK && hasHead && isRedirect() && target != nullptr) return redirect(target);
    // Nothing promises that a body which is shorter than announced does not just end.
    const bool isShort = result == CURLE_PARTIAL_FILE && mac::find(head(), "Content-Length");
    if (isRefused() || (hasHead && (result == CURLE_OK || isShort))) return end(Failure::None);
    const bool isSilence = result == CURLE_GOT_NOTHING || result == CURLE_RECV_ERROR;
    end(isConnected && code() == 0 && !isSilence ? Failure::WhenRead : Failure::InStatus);
}

void __CFReadStream::redirect(const char* target) {
    const velnor::OwnedText next = platform::encodeBlanks(target);
    if (!next || !velnor::hasWebScheme(next.get()) || ++redirects > kMaxRedirects) {
        return end(Failure::InStatus);
    }
    if (code() == 303) {
        method = "GET";
        body.reset();
        curl_easy_setopt(easy, CURLOPT_HTTPGET, 1L);
    }
    url = next.get();
    transfer.stop();
    begin();
}

extern "C" {

const CFStringRef kCFStreamPropertyHTTPResponseHeader = mac::make<__CFString>("head");
const CFStringRef kCFStreamPropertyHTTPFinalURL = mac::make<__CFString>("URL");
const CFStringRef kCFStreamPropertyHTTPProxy = mac::make<__CFString>("proxy");
const CFStringRef kCFStreamPropertyHTTPShouldAutoredirect = mac::make<__CFString>("redirect");

CFReadStreamRef CFReadStreamCreateForHTTPRequest(CFAllocatorRef, CFHTTPMessageRef request) {
    return mac::make<__CFReadStream>(*request);
}

Boolean CFReadStreamSetProperty(CFReadStreamRef stream, CFStringRef name, CFTypeRef value) {
    if (name == kCFStreamPropertyHTTPProxy) {
        stream->proxies = static_cast<CFDictionaryRef>(CFRetain(value));
    } else {
        stream->follows =
            name == kCFStreamPropertyHTTPShouldAutoredirect && value == kCFBooleanTrue;
    }
    return 1;
}

Boolean CFReadStreamOpen(CFReadStreamRef stream) {
    stream->isOpen = true;
    stream->begin();
    return 1;
}

void CFReadStreamClose(CFReadStreamRef stream) {
    stream->isOpen = false;
    stream->transfer.close();
}

CFStreamStatus CFReadStreamGetStatus(CFReadStreamRef stream) {
    stream->work(0);
    if (stream->failure == Failure::InStatus) return kCFStreamStatusError;
    const bool isAtEnd = stream->isOver && stream->failure == Failure::None;
    if (isAtEnd && stream->received.empty()) return kCFStreamStatusAtEnd;
    return stream->isConnected || stream->isOver ? kCFStreamStatusOpen : kCFStreamStatusOpening;
}

// Not so at the end, nor of a failure that the status shows.
Boolean CFReadStreamHasBytesAvailable(CFReadStreamRef stream) {
    stream->work(0);
    return !stream->received.empty() || stream->failure == Failure::WhenRead;
}

CFIndex CFReadStreamRead(CFReadStreamRef stream, UInt8* buffer, CFIndex size) {
    while (stream->received.empty() && !stream->isOver) stream->work(1000);
    const uint32_t count = stream->received.take(buffer, static_cast<uint32_t>(size));
    if (count > 0 || stream->failure == Failure::None) return count;
    stream->failure = Failure::InStatus;
    return -1;
}

CFErrorRef CFReadStreamCopyError(CFReadStreamRef stream) {
    return stream->failure == Failure::None ? nullptr : mac::make<__CFError>("failed");
}

CFStringRef CFErrorCopyDescription(CFErrorRef error) { return mac::make<__CFString>(error->text); }

CFTypeRef CFReadStreamCopyProperty(CFReadStreamRef stream, CFStringRef name) {
    if (name == kCFStreamPropertyHTTPFinalURL) return mac::make<__CFURL>(stream->url);
    const bool isFinal =
        stream->isConnected && stream->hasHead && (stream->isOver || !stream->isRedirect());
    if (!isFinal && !stream->isRefused()) return nullptr;
    auto* response = mac::make<__CFHTTPMessage>();
    response->status = stream->code();
    response->fields = stream->head();
    return response;
}

}  // extern "C"
