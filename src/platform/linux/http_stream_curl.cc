// The HTTP stream on libcurl's multi interface. Redirects are followed here and not by libcurl:
// each hop has its own proxy, and a hop from https to http must fail however the chain began.
#include <curl/curl.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <new>
#include <utility>

#include "platform/http_stream.h"
#include "platform/linux/curl_handle.h"
#include "platform/linux/sigpipe_guard.h"
#include "platform/linux/stream_buffer.h"
#include "platform/linux/system_proxies_libproxy.h"
#include "support/text.h"
#include "support/url.h"

namespace velnor::platform {
namespace {

constexpr int kMaxRedirects = 20;
constexpr long kReceiveSize = 128 * 1024;
constexpr int kSeeOther = 303;
constexpr int kProxyAuthenticationRequired = 407;
// How long one wait of a read lasts; a read has no limit, so it only bounds a missed wake-up.
constexpr int kReadWait = 1000;

// Whether a request that ended so may have met nobody, or a peer that hung up. Everything else is
// an answer of a kind, and will be the same the next time.
bool isSilence(CURLcode result) {
    switch (result) {
        case CURLE_COULDNT_RESOLVE_PROXY:
        case CURLE_COULDNT_RESOLVE_HOST:
        case CURLE_COULDNT_CONNECT:
        case CURLE_PROXY:
        case CURLE_GOT_NOTHING:
        case CURLE_SEND_ERROR:
        case CURLE_RECV_ERROR:
        case CURLE_OPERATION_TIMEDOUT:
            return true;
        default:
            return false;
    }
}

bool isRedirect(long code) {
    return code == 301 || code == 302 || code == kSeeOther || code == 307 || code == 308;
}

}  // namespace

class ProxyAuthentication {
  public:
    ProxyAuthentication(long schemes, Transfer transfer)
        : schemes_(schemes), transfer_(std::move(transfer)) {}

    /// The transfer that the demand came to. For Digest it has the nonce: another one would ask for
    /// a nonce of its own first, by a request without a body.
    Transfer takeTransfer() { return std::move(transfer_); }

    /// The strongest scheme that works with a name and a password. One and not the whole set: given
    /// a choice, libcurl would first ask the proxy once more without credentials.
    long scheme() const {
        for (const unsigned long scheme : {CURLAUTH_DIGEST, CURLAUTH_NTLM, CURLAUTH_BASIC}) {
            if ((static_cast<unsigned long>(schemes_) & scheme) != 0) {
                return static_cast<long>(scheme);
            }
        }
        return CURLAUTH_NONE;
    }

  private:
    long schemes_;
    Transfer transfer_;
};

class HttpStream {
  public:
    explicit HttpStream(const HttpRequest& request) : request_(request) {}
    ~HttpStream() { transfer_.close(); }
    HttpStream(const HttpStream&) = delete;
    HttpStream& operator=(const HttpStream&) = delete;

    bool start();
    StreamStatus status() const { return status_; }
    bool hasBytesAvailable() const { return !buffer_.empty() || finished_; }
    template <class Known>
    void pumpUntil(Known known, int milliseconds);
    int32_t read(void* buffer, uint32_t size);
    int32_t responseCode() const;
    const curl_header* responseHeader(const char* name) const;
    OwnedAuthentication takeProxyAuthentication();
    const char* failureText() const { return failureText_; }

  private:
    static int onConnected(void* self, char*, char*, int, int);
    static size_t onHeaderLine(char* line, size_t, size_t size, void* self);
    static size_t onBody(char* bytes, size_t, size_t size, void* self);

    CURL* easy() const { return transfer_.easy.get(); }
    CURLM* multi() const { return transfer_.multi.get(); }
    bool prepare();
    void setOptions();
    bool begin(const char* url);
    ProxyAddress::Parsed chooseProxy();
    void fail(StreamStatus status);
    void pump(int milliseconds);
    void perform();
    void finish(CURLcode result);
    bool isWhole() const;
    bool isDelivered() const;
    bool hasPartOfALine(CURLcode result) const;
    bool proxyRefusedTunnel() const;
    bool isRedirectResponse() const;
    void followRedirect(const char* target);
    void becomeGet();

    // For the stream's whole life, and gone last: closing a TLS connection writes to it, too.
    SigpipeGuard sigpipeGuard_;
    HttpRequest request_;
    Slist headers_;
    Slist proxyHeaders_;
    Transfer transfer_;
    OwnedText url_;
    OwnedText firstProxy_;
    char failureText_[CURL_ERROR_SIZE] = "";
    StreamBuffer buffer_;
    StreamStatus status_ = StreamStatus::Opening;
    bool paused_ = false;
    bool finished_ = false;
    bool failed_ = false;
    bool headersBegan_ = false;
    bool headersEnded_ = false;
    bool hasBody_ = false;
    int redirects_ = 0;
};

bool HttpStream::start() { return prepare() && begin(request_.url); }

bool HttpStream::prepare() {
    ProxyAuthentication* demanded = request_.authentication;
    transfer_ = demanded != nullptr ? demanded->takeTransfer() : makeTransfer();
    headers_ = makeHeaderList(request_);
    proxyHeaders_ = makeProxyHeaderList();
    if (!easy() || !multi() || !headers_ || !proxyHeaders_ || !isUrl(request_.url)) return false;
    setOptions();
    if (demanded != nullptr) curl_easy_setopt(easy(), CURLOPT_PROXYAUTH, demanded->scheme());
    return true;
}

void HttpStream::setOptions() {
    CURL* easy = this->easy();
    curl_easy_setopt(easy, CURLOPT_CUSTOMREQUEST, request_.method);
    curl_easy_setopt(easy, CURLOPT_HTTPHEADER, headers_.get());
    curl_easy_setopt(easy, CURLOPT_PROXYHEADER, proxyHeaders_.get());
    curl_easy_setopt(easy, CURLOPT_BUFFERSIZE, kReceiveSize);
    curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, failureText_);
    curl_easy_setopt(easy, CURLOPT_PREREQFUNCTION, onConnected);
    curl_easy_setopt(easy, CURLOPT_PREREQDATA, this);
    curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, onHeaderLine);
    curl_easy_setopt(easy, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, onBody);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, this);
    if (request_.body.data() != nullptr) {
        // Given as a form's fields, which libcurl can send once more when a proxy asks who we are.
        const auto size = static_cast<curl_off_t>(request_.body.size());
        curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE, size);
        curl_easy_setopt(easy, CURLOPT_POSTFIELDS, request_.body.data());
        hasBody_ = size > 0;
    }
}

// Starts the transfer of one hop. A proxy whose address is none is one that is not there.
bool HttpStream::begin(const char* url) {
    headersBegan_ = false;
    *transfer_.received = false;
    url_ = copyText(url);
    if (!url_ || curl_easy_setopt(easy(), CURLOPT_URL, url_.get()) != CURLE_OK) return false;
    const ProxyAddress::Parsed proxy = chooseProxy();
    if (proxy == ProxyAddress::Parsed::Refused) fail(StreamStatus::Error);
    return proxy == ProxyAddress::Parsed::Refused ||
           (proxy == ProxyAddress::Parsed::Done &&
            curl_multi_add_handle(multi(), easy()) == CURLM_OK);
}

// The credentials belong to the proxy of the first hop and go to no other. They come in place of an
// account that the proxy's own address names.
ProxyAddress::Parsed HttpStream::chooseProxy() {
    using Parsed = ProxyAddress::Parsed;
    ProxyAddress proxy;
    if (request_.proxies != nullptr) {
        const Parsed parsed = request_.proxies->proxyFor(url_.get(), &proxy);
        if (parsed != Parsed::Done) return parsed;
    }
    const bool isFirst = redirects_ == 0;
    const bool isSame =
        proxy.url && firstProxy_ && std::strcmp(proxy.url.get(), firstProxy_.get()) == 0;
    const bool isTheirs = proxy.url && (isFirst || isSame);
    const bool set = setProxy(easy(), proxy, isTheirs ? request_.credentials : nullptr);
    if (isFirst) firstProxy_ = std::move(proxy.url);
    return set ? Parsed::Done : Parsed::NoMemory;
}

// `status` is Open where there is something of an answer.
void HttpStream::fail(StreamStatus status) {
    finished_ = failed_ = true;
    status_ = status;
}

int32_t HttpStream::read(void* buffer, uint32_t size) {
    while (!hasBytesAvailable()) pump(kReadWait);
    const uint32_t taken = buffer_.take(buffer, size);
    if (taken > 0) return static_cast<int32_t>(taken);
    return failed_ ? -1 : 0;
}

int32_t HttpStream::responseCode() const {
    if (proxyRefusedTunnel()) return kProxyAuthenticationRequired;
    long code = 0;
    curl_easy_getinfo(easy(), CURLINFO_RESPONSE_CODE, &code);
    return static_cast<int32_t>(code);
}

OwnedAuthentication HttpStream::takeProxyAuthentication() {
    long schemes = CURLAUTH_NONE;
    curl_easy_getinfo(easy(), CURLINFO_PROXYAUTH_AVAIL, &schemes);
    if (schemes == CURLAUTH_NONE) return nullptr;
    transfer_.stop();
    curl_easy_setopt(easy(), CURLOPT_ERRORBUFFER, nullptr);
    return OwnedAuthentication(new (std::nothrow)
                                   ProxyAuthentication(schemes, std::move(transfer_)));
}

// Called when the connection stands and the request goes out next.
int HttpStream::onConnected(void* self, char*, char*, int, int) {
    static_cast<HttpStream*>(self)->status_ = StreamStatus::Open;
    return CURL_PREREQFUNC_OK;
}

// Called for every header line, the empty one that ends a header block, and trailers behind a body.
size_t HttpStream::onHeaderLine(char* line, size_t, size_t size, void* self) {
    auto* stream = static_cast<HttpStream*>(self);
    stream->headersBegan_ = true;
    if (*line == '\r' || *line == '\n') stream->headersEnded_ = true;
    if (size > 5 && std::memcmp(line, "HTTP/", 5) == 0) stream->headersEnded_ = false;
    return size;
}

size_t HttpStream::onBody(char* bytes, size_t, size_t size, void* self) {
    auto* stream = static_cast<HttpStream*>(self);
    if (stream->isRedirectResponse()) return size;  // nobody reads a redirect's text
    if (stream->buffer_.full()) {
        stream->paused_ = true;
        return CURL_WRITEFUNC_PAUSE;
    }
    return stream->buffer_.append(bytes, static_cast<uint32_t>(size)) ? size : 0;
}

// Pumps until the answer is known or the time is up, however often the sockets stir meanwhile.
template <class Known>
void HttpStream::pumpUntil(Known known, int milliseconds) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(milliseconds);
    perform();
    while (!known()) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        if (left.count() <= 0) return;
        pump(static_cast<int>(left.count()));
    }
}

// Waits up to `milliseconds` for something to do, and does it.
void HttpStream::pump(int milliseconds) {
    if (!paused_) curl_multi_poll(multi(), nullptr, 0, milliseconds, nullptr);
    perform();
}

// Lets libcurl do what it can do without waiting.
void HttpStream::perform() {
    if (paused_ && !buffer_.full()) {
        paused_ = false;
        curl_easy_pause(easy(), CURLPAUSE_CONT);
    }
    int count = 0;
    if (curl_multi_perform(multi(), &count) != CURLM_OK) fail(StreamStatus::Open);
    while (const CURLMsg* message = curl_multi_info_read(multi(), &count)) {
        if (message->msg == CURLMSG_DONE) finish(message->data.result);
    }
}

void HttpStream::finish(CURLcode result) {
    char* target = nullptr;
    curl_easy_getinfo(easy(), CURLINFO_REDIRECT_URL, &target);
    if (result == CURLE_OK && isWhole() && isRedirectResponse() && target != nullptr) {
        followRedirect(target);
        return;
    }
    finished_ = true;
    failed_ = !proxyRefusedTunnel() && (result != CURLE_OK || !isWhole() || !isDelivered());
    // Open until it has been read to its end, or to where it breaks off.
    const bool began = !failed_ || headersBegan_ || !isSilence(result) || hasPartOfALine(result);
    status_ = began ? StreamStatus::Open : StreamStatus::Error;
}

// Whether a connection that libcurl calls empty broke off within the first line of an answer.
// (Under TLS, what came may be no more than the handshake.)
bool HttpStream::hasPartOfALine(CURLcode result) const {
    const bool brokeOff = result == CURLE_GOT_NOTHING || result == CURLE_RECV_ERROR;
    return brokeOff && hasHttpScheme(url_.get()) && *transfer_.received;
}

// False for what libcurl lets pass: a connection that ended within the headers, and a length that
// it could not read and therefore did not check.
bool HttpStream::isWhole() const {
    curl_off_t length = -1;
    curl_easy_getinfo(easy(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
    const bool hasUnknownLength = responseHeader("Content-Length") != nullptr && length < 0;
    return headersEnded_ && (!hasUnknownLength || responseHeader("Transfer-Encoding") != nullptr);
}

// False when an answer other than a refusal came to a request whose body had not gone out whole: a
// server may not wait for it, and some schemes begin with a request without one that is only meant
// to be refused, but a proxy may let it pass.
bool HttpStream::isDelivered() const {
    if (!hasBody_) return true;
    curl_off_t sent = 0;
    long code = 0;
    curl_easy_getinfo(easy(), CURLINFO_SIZE_UPLOAD_T, &sent);
    curl_easy_getinfo(easy(), CURLINFO_RESPONSE_CODE, &code);
    return sent >= static_cast<curl_off_t>(request_.body.size()) || code >= 300;
}

// A 407 to the CONNECT of an https URL is a response like any other; libcurl calls it a failure.
bool HttpStream::proxyRefusedTunnel() const {
    long code = 0;
    curl_easy_getinfo(easy(), CURLINFO_HTTP_CONNECTCODE, &code);
    return code == kProxyAuthenticationRequired;
}

const curl_header* HttpStream::responseHeader(const char* name) const {
    curl_header* header = nullptr;
    const CURLHcode found = curl_easy_header(easy(), name, 0, CURLH_HEADER, -1, &header);
    return found == CURLHE_OK ? header : nullptr;
}

bool HttpStream::isRedirectResponse() const {
    long code = 0;
    curl_easy_getinfo(easy(), CURLINFO_RESPONSE_CODE, &code);
    return isRedirect(code) && responseHeader("Location") != nullptr;
}

void HttpStream::followRedirect(const char* target) {
    const bool allowed =
        hasHttpsScheme(target) || (hasHttpScheme(target) && !hasHttpsScheme(url_.get()));
    const OwnedText next = encodeBlanks(target);
    if (responseCode() == kSeeOther) becomeGet();
    transfer_.stop();
    if (allowed && next && ++redirects_ <= kMaxRedirects && begin(next.get())) return;
    fail(StreamStatus::Open);
}

void HttpStream::becomeGet() {
    hasBody_ = false;
    curl_easy_setopt(easy(), CURLOPT_HTTPGET, 1L);
    curl_easy_setopt(easy(), CURLOPT_CUSTOMREQUEST, "GET");
}

void ProxyAuthenticationDeleter::operator()(ProxyAuthentication* authentication) const {
    delete authentication;
}

bool requiresUserNameAndPassword(const ProxyAuthentication& authentication) {
    return authentication.scheme() != CURLAUTH_NONE;
}

void HttpStreamDeleter::operator()(HttpStream* stream) const { delete stream; }

OwnedStream openStream(const HttpRequest& request) {
    OwnedStream stream(new (std::nothrow) HttpStream(request));
    if (!stream || !stream->start()) return nullptr;
    return stream;
}

StreamStatus statusOf(const HttpStream& stream) { return stream.status(); }

bool hasBytesAvailable(const HttpStream& stream) { return stream.hasBytesAvailable(); }

void waitUntilOpen(HttpStream& stream, int milliseconds) {
    stream.pumpUntil([&] { return stream.status() != StreamStatus::Opening; }, milliseconds);
}

void waitForBytes(HttpStream& stream, int milliseconds) {
    stream.pumpUntil([&] { return stream.hasBytesAvailable(); }, milliseconds);
}

int32_t readBody(HttpStream& stream, void* buffer, uint32_t size) {
    return stream.read(buffer, size);
}

int32_t responseCode(const HttpStream& stream) { return stream.responseCode(); }

void copyFailureText(const HttpStream& stream, std::span<char> text) {
    std::snprintf(text.data(), text.size(), "%s", stream.failureText());
}

bool hasResponseHeader(const HttpStream& stream, const char* name, const char* value) {
    const curl_header* header = stream.responseHeader(name);
    return header != nullptr && std::strcmp(header->value, value) == 0;
}

OwnedAuthentication takeProxyAuthentication(HttpStream& stream) {
    return stream.takeProxyAuthentication();
}

}  // namespace velnor::platform
