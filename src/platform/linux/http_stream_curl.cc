// The HTTP stream on libcurl's multi interface. Redirects are followed here and not by libcurl:
// each hop has its own proxy, and a hop from https to http must fail however the chain began.
#include <curl/curl.h>
#include <strings.h>

#include <chrono>
#include <cstring>
#include <new>

#include "platform/http_stream.h"
#include "platform/linux/curl_handle.h"
#include "platform/linux/sigpipe_guard.h"
#include "platform/linux/stream_buffer.h"
#include "platform/linux/system_proxies_libproxy.h"
#include "support/format.h"
#include "support/text_copy.h"

namespace velnor::platform {
namespace {

constexpr int kMaxRedirects = 20;
constexpr long kReceiveSize = 128 * 1024;
constexpr int kSeeOther = 303;
constexpr int kProxyAuthenticationRequired = 407;
// How long one wait of a read lasts; a read has no limit, so it only bounds a missed wake-up.
constexpr int kReadWait = 1000;

class CurlProxyAuthentication final : public ProxyAuthentication {
  public:
    explicit CurlProxyAuthentication(long schemes) : schemes_(schemes) {}
    bool requiresUserNameAndPassword() const override { return scheme() != CURLAUTH_NONE; }

    /// The strongest scheme that works with a name and a password. One and not the whole set: given
    /// a choice, libcurl would first ask the proxy once more without credentials. (For Digest it
    /// does so anyway, to get a nonce of its own.)
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
};

bool isRedirect(long code) {
    return code == 301 || code == 302 || code == kSeeOther || code == 307 || code == 308;
}

bool isHttps(const char* url) { return strncasecmp(url, "https:", 6) == 0; }
bool isHttp(const char* url) { return strncasecmp(url, "http:", 5) == 0; }

class CurlStream final : public HttpStream {
  public:
    explicit CurlStream(const HttpRequest& request) : request_(request) {}
    ~CurlStream() override;
    CurlStream(const CurlStream&) = delete;
    CurlStream& operator=(const CurlStream&) = delete;

    bool prepare();
    bool open() override;
    StreamStatus status() const override { return status_; }
    bool hasBytesAvailable() const override { return !buffer_.empty() || finished_; }
    void waitUntilOpen(int milliseconds) override;
    void waitForBytes(int milliseconds) override;
    int32_t read(void* buffer, uint32_t size) override;
    int32_t responseCode() const override;
    bool hasResponseHeader(const char* name, const char* value) const override;
    int64_t announcedLength() const override;
    std::unique_ptr<ProxyAuthentication> proxyAuthentication() const override;

  private:
    static int onConnected(void* self, char*, char*, int, int);
    static size_t onHeaderLine(char* line, size_t, size_t size, void* self);
    static size_t onBody(char* bytes, size_t, size_t size, void* self);

    void setOptions();
    bool begin(const char* url);
    bool chooseProxy();
    template <class Known>
    void pumpUntil(Known known, int milliseconds);
    void pump(int milliseconds);
    void perform();
    void finish(CURLcode result);
    bool isWhole() const;
    bool proxyRefusedTunnel() const;
    const curl_header* responseHeader(const char* name) const;
    bool isRedirectResponse() const;
    void followRedirect(const char* target);
    void becomeGet();

    // For the stream's whole life, and gone last: closing a TLS connection writes to it, too.
    SigpipeGuard sigpipeGuard_;
    HttpRequest request_;
    Slist headers_;
    Slist proxyHeaders_;
    Multi multi_;
    Easy easy_;
    OwnedText url_;
    OwnedText firstProxy_;
    StreamBuffer buffer_;
    StreamStatus status_ = StreamStatus::NotOpen;
    bool paused_ = false;
    bool finished_ = false;
    bool failed_ = false;
    bool headersEnded_ = false;
    int redirects_ = 0;
};

CurlStream::~CurlStream() {
    if (multi_ && easy_) curl_multi_remove_handle(multi_.get(), easy_.get());
    easy_.reset();
    multi_.reset();
}

bool CurlStream::prepare() {
    easy_ = makeEasy();
    multi_.reset(curl_multi_init());
    headers_ = makeHeaderList(request_);
    proxyHeaders_ = makeProxyHeaderList();
    if (!easy_ || !multi_ || !headers_ || !proxyHeaders_ || !isUrl(request_.url)) return false;
    setOptions();
    return true;
}

void CurlStream::setOptions() {
    CURL* easy = easy_.get();
    curl_easy_setopt(easy, CURLOPT_CUSTOMREQUEST, request_.method);
    curl_easy_setopt(easy, CURLOPT_HTTPHEADER, headers_.get());
    curl_easy_setopt(easy, CURLOPT_PROXYHEADER, proxyHeaders_.get());
    curl_easy_setopt(easy, CURLOPT_BUFFERSIZE, kReceiveSize);
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
    }
    if (request_.authentication == nullptr) return;
    const auto* demanded = static_cast<const CurlProxyAuthentication*>(request_.authentication);
    curl_easy_setopt(easy, CURLOPT_PROXYAUTH, demanded->scheme());
}

bool CurlStream::open() {
    if (!begin(request_.url)) return false;
    status_ = StreamStatus::Opening;
    return true;
}

// Starts the transfer of one hop.
bool CurlStream::begin(const char* url) {
    return _vn_snprintf(url_.out(), 0, "%s", url) != 0 &&
           curl_easy_setopt(easy_.get(), CURLOPT_URL, url_.get()) == CURLE_OK && chooseProxy() &&
           curl_multi_add_handle(multi_.get(), easy_.get()) == CURLM_OK;
}

// The credentials belong to the proxy of the first hop and go to no other. They come in place of an
// account that the proxy's own address names.
bool CurlStream::chooseProxy() {
    if (request_.proxies == nullptr) return setProxy(easy_.get(), nullptr, nullptr);
    OwnedText proxy;
    const auto* proxies = static_cast<const LibproxyProxies*>(request_.proxies);
    if (!proxies->proxyFor(url_.get(), &proxy)) return false;
    const bool isFirst = redirects_ == 0;
    const bool isSame = proxy && firstProxy_ && std::strcmp(proxy.get(), firstProxy_.get()) == 0;
    const bool isTheirs = proxy && request_.credentials != nullptr && (isFirst || isSame);
    const OwnedText bare = isTheirs ? LibproxyProxies::withoutAccount(proxy) : OwnedText();
    if (isTheirs && !bare) return false;
    const bool set = setProxy(easy_.get(), isTheirs ? bare.get() : proxy.get(),
                              isTheirs ? request_.credentials : nullptr);
    if (isFirst) firstProxy_ = std::move(proxy);
    return set;
}

void CurlStream::waitUntilOpen(int milliseconds) {
    pumpUntil([this] { return status_ != StreamStatus::Opening; }, milliseconds);
}

void CurlStream::waitForBytes(int milliseconds) {
    pumpUntil([this] { return hasBytesAvailable(); }, milliseconds);
}

int32_t CurlStream::read(void* buffer, uint32_t size) {
    while (!hasBytesAvailable()) pump(kReadWait);
    const uint32_t taken = buffer_.take(buffer, size);
    if (taken > 0) return static_cast<int32_t>(taken);
    status_ = failed_ ? StreamStatus::Error : StreamStatus::AtEnd;
    return failed_ ? -1 : 0;
}

int32_t CurlStream::responseCode() const {
    if (proxyRefusedTunnel()) return kProxyAuthenticationRequired;
    long code = 0;
    curl_easy_getinfo(easy_.get(), CURLINFO_RESPONSE_CODE, &code);
    return static_cast<int32_t>(code);
}

bool CurlStream::hasResponseHeader(const char* name, const char* value) const {
    const curl_header* header = responseHeader(name);
    return header != nullptr && std::strcmp(header->value, value) == 0;
}

int64_t CurlStream::announcedLength() const {
    curl_off_t length = -1;
    curl_easy_getinfo(easy_.get(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
    return length;
}

std::unique_ptr<ProxyAuthentication> CurlStream::proxyAuthentication() const {
    long schemes = CURLAUTH_NONE;
    curl_easy_getinfo(easy_.get(), CURLINFO_PROXYAUTH_AVAIL, &schemes);
    if (schemes == CURLAUTH_NONE) return nullptr;
    return std::unique_ptr<ProxyAuthentication>(new (std::nothrow)
                                                    CurlProxyAuthentication(schemes));
}

// Called when the connection stands and the request goes out next.
int CurlStream::onConnected(void* self, char*, char*, int, int) {
    static_cast<CurlStream*>(self)->status_ = StreamStatus::Open;
    return CURL_PREREQFUNC_OK;
}

// Called for every header line, the empty one that ends a header block, and trailers behind a body.
size_t CurlStream::onHeaderLine(char* line, size_t, size_t size, void* self) {
    auto* stream = static_cast<CurlStream*>(self);
    if (*line == '\r' || *line == '\n') stream->headersEnded_ = true;
    if (size > 5 && std::memcmp(line, "HTTP/", 5) == 0) stream->headersEnded_ = false;
    return size;
}

size_t CurlStream::onBody(char* bytes, size_t, size_t size, void* self) {
    auto* stream = static_cast<CurlStream*>(self);
    if (stream->isRedirectResponse()) return size;  // nobody reads a redirect's text
    if (stream->buffer_.full()) {
        stream->paused_ = true;
        return CURL_WRITEFUNC_PAUSE;
    }
    return stream->buffer_.append(bytes, static_cast<uint32_t>(size)) ? size : 0;
}

// Pumps until the answer is known or the time is up, however often the sockets stir meanwhile.
template <class Known>
void CurlStream::pumpUntil(Known known, int milliseconds) {
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
void CurlStream::pump(int milliseconds) {
    if (!paused_) curl_multi_poll(multi_.get(), nullptr, 0, milliseconds, nullptr);
    perform();
}

// Lets libcurl do what it can do without waiting.
void CurlStream::perform() {
    if (paused_ && !buffer_.full()) {
        paused_ = false;
        curl_easy_pause(easy_.get(), CURLPAUSE_CONT);
    }
    int count = 0;
    curl_multi_perform(multi_.get(), &count);
    while (const CURLMsg* message = curl_multi_info_read(multi_.get(), &count)) {
        if (message->msg == CURLMSG_DONE) finish(message->data.result);
    }
}

void CurlStream::finish(CURLcode result) {
    char* target = nullptr;
    curl_easy_getinfo(easy_.get(), CURLINFO_REDIRECT_URL, &target);
    if (result == CURLE_OK && isWhole() && isRedirectResponse() && target != nullptr) {
        followRedirect(target);
        return;
    }
    finished_ = true;
    failed_ = !proxyRefusedTunnel() && (result != CURLE_OK || !isWhole());
    if (!failed_) {
        status_ = StreamStatus::Open;  // until it has been read to its end
    } else if (buffer_.empty()) {
        status_ = StreamStatus::Error;
    }
}

// False for what libcurl lets pass: a connection that ended within the headers, and a length that
// it could not read and therefore did not check.
bool CurlStream::isWhole() const {
    const bool hasUnknownLength =
        responseHeader("Content-Length") != nullptr && announcedLength() < 0;
    return headersEnded_ && (!hasUnknownLength || responseHeader("Transfer-Encoding") != nullptr);
}

// A 407 to the CONNECT of an https URL is a response like any other; libcurl calls it a failure.
bool CurlStream::proxyRefusedTunnel() const {
    long code = 0;
    curl_easy_getinfo(easy_.get(), CURLINFO_HTTP_CONNECTCODE, &code);
    return code == kProxyAuthenticationRequired;
}

const curl_header* CurlStream::responseHeader(const char* name) const {
    curl_header* header = nullptr;
    const CURLHcode found = curl_easy_header(easy_.get(), name, 0, CURLH_HEADER, -1, &header);
    return found == CURLHE_OK ? header : nullptr;
}

bool CurlStream::isRedirectResponse() const {
    long code = 0;
    curl_easy_getinfo(easy_.get(), CURLINFO_RESPONSE_CODE, &code);
    return isRedirect(code) && responseHeader("Location") != nullptr;
}

void CurlStream::followRedirect(const char* target) {
    const bool allowed = isHttps(target) || (isHttp(target) && !isHttps(url_.get()));
    const OwnedText next = copyText(target);
    if (responseCode() == kSeeOther) becomeGet();
    curl_multi_remove_handle(multi_.get(), easy_.get());
    if (allowed && next && ++redirects_ <= kMaxRedirects && begin(next.get())) return;
    finished_ = failed_ = true;
    status_ = StreamStatus::Error;
}

void CurlStream::becomeGet() {
    curl_easy_setopt(easy_.get(), CURLOPT_HTTPGET, 1L);
    curl_easy_setopt(easy_.get(), CURLOPT_CUSTOMREQUEST, "GET");
}

}  // namespace

std::unique_ptr<HttpStream> createHttpStream(const HttpRequest& request) {
    std::unique_ptr<CurlStream> stream(new (std::nothrow) CurlStream(request));
    if (!stream || !stream->prepare()) return nullptr;
    return stream;
}

}  // namespace velnor::platform
