#include <openssl/evp.h>

#include <cstddef>
#include <cstring>

#include "api/handle.h"
#include "api/outcome.h"
#include "api/request_path.h"
#include "api/result/last_error.h"
#include "support/owned.h"
#include "support/text.h"

// The layout is known to programs that are already built.
static_assert(
    sizeof(void*) != 8 ||
    (sizeof(DownloadOptions) == 80 && offsetof(DownloadOptions, reserved0) == 0 &&
     offsetof(DownloadOptions, flags) == 4 && offsetof(DownloadOptions, reserved1) == 24 &&
     offsetof(DownloadOptions, reserved2) == 68 && offsetof(DownloadOptions, targetSpeed) == 8 &&
     offsetof(DownloadOptions, path) == 16 && offsetof(DownloadOptions, cookieString) == 32 &&
     offsetof(DownloadOptions, queryAuth) == 40 && offsetof(DownloadOptions, basicAuthUser) == 48 &&
     offsetof(DownloadOptions, basicAuthPassword) == 56 &&
     offsetof(DownloadOptions, httpDelay) == 64 &&
     offsetof(DownloadOptions, keepPhysicalFileOnDelete) == 72));

namespace velnor {
namespace {

// A second reset is not followed by a third pass: a client that can do nothing but reset would be
// asked for ever.
constexpr int kPasses = 2;
// Base64 (RFC 4648, section 4) with its terminator.
constexpr size_t kBase64Size = (velnor::kLongestLogin + 2) / 3 * 4 + 1;
// A flag of ours beside the public ones.
constexpr uint32_t kResetDownload = 1u << 31;

// What the query is made of.
struct Query {
    uint32_t flags = 0;
    DownloadOptions options{};
    char basicAuth[kBase64Size] = {};  // empty for none
};

// A piece of the query, there when its flag is set or its text is.
struct Fragment {
    const char* name;
    uint32_t flag;
    int32_t DownloadOptions::*number = nullptr;
    const char* (*text)(const Query& query) = nullptr;
};

// In the order that the client expects.
constexpr Fragment kFragments[] = {
    {"&targetspeed=", VN_DOWNLOAD_TARGET_SPEED, &DownloadOptions::targetSpeed},
    {"&delayhttp=", VN_DOWNLOAD_HTTP_DELAY, &DownloadOptions::httpDelay},
    {"&checkcontentmd5", VN_DOWNLOAD_CHECK_CONTENT_MD5},
    {"&path=", 0, nullptr, [](const Query& query) { return query.options.path; }},
    {"&backgroundDownload=1", VN_DOWNLOAD_BACKGROUND},
    {"&cookiestring=", 0, nullptr, [](const Query& query) { return query.options.cookieString; }},
    {"&queryauth=", 0, nullptr, [](const Query& query) { return query.options.queryAuth; }},
    {"&basicauth=", 0, nullptr,
     [](const Query& query) { return *query.basicAuth != '\0' ? query.basicAuth : nullptr; }},
    {"&wait=1", VN_DOWNLOAD_WAIT},
    {"&originonly", VN_DOWNLOAD_ORIGIN_ONLY},
    {"&resetdownload=1", kResetDownload},
};

void add(const Fragment& fragment, const Query& query, RequestPath* request) {
    const char* text = fragment.text != nullptr ? fragment.text(query) : nullptr;
    if (text == nullptr && (query.flags & fragment.flag) == 0) return;
    request->add(fragment.name);
    if (text != nullptr) request->addEncoded(text);
    if (fragment.number != nullptr) request->addNumber(query.options.*fragment.number);
}

RequestPath requestFor(int32_t cid, const char* url, const Query& query) {
    RequestPath request("downloadFile", cid, url);
    for (const Fragment& fragment : kFragments) add(fragment, query, &request);
    return request;
}

bool encodeBasicAuth(Query* query) {
    const DownloadOptions& options = query->options;
    if (options.basicAuthUser == nullptr || options.basicAuthPassword == nullptr) return true;
    OwnedText joined;
    const int32_t length =
        _vn_snprintf(joined.out(), 0, "%s:%s", options.basicAuthUser, options.basicAuthPassword);
    if (length == 0) return false;
    if (static_cast<size_t>(length) > velnor::kLongestLogin) {
        _vn_setLastError(INSTALL_ERROR_INVALIDARGUMENT);
        return false;
    }
    EVP_EncodeBlock(reinterpret_cast<unsigned char*>(query->basicAuth),
                    reinterpret_cast<const unsigned char*>(joined.get()), length);
    return true;
}

bool prepare(const DownloadOptions* options, Query* query) {
    if (options == nullptr) return true;
    query->options = *options;
    query->flags = options->flags & ~kResetDownload;
    return encodeBasicAuth(query);
}

// The client's reply; the one that followed on a challenge, if it made one.
std::optional<Reply> request(ApiHandle* handle, int32_t cid, const char* url, Query query) {
    const RequestPath path = requestFor(cid, url, query);
    std::optional<Reply> reply = ask(handle, cid, path.get());
    if (!reply || query.options.path == nullptr) return reply;
    // The order to begin anew went out with the first request.
    query.flags &= ~kResetDownload;
    const RequestPath repeated = requestFor(cid, url, query);
    return answerChallenge(handle, cid, url, repeated.get(), *std::move(reply), query.options.path);
}

// Whether the client tells the download's state; else with the code.
bool hasState(ApiHandle* handle, int32_t cid, const char* url) {
    FileAttributes attributes{};
    if (vn_getFileAttributes(handle, cid, url, &attributes, 0) != 0) return false;
    vn_cleanFileAttributes(handle, &attributes, 0);
    return true;
}

// The reply that the call is judged by; nothing, with the code, when it has failed before that.
std::optional<Reply> download(ApiHandle* handle, int32_t cid, const char* url, Query query) {
    for (int pass = 1;; ++pass) {
        _vn_setLastError(INSTALL_ERROR_INTERNAL);
        std::optional<Reply> reply = request(handle, cid, url, query);
        if (!reply || hasState(handle, cid, url)) return reply;
        if (_vn_getLastError() != INSTALL_ERROR_DOWNLOAD_RESET) return std::nullopt;
        if (pass == kPasses) return reply;
        query.flags |= kResetDownload;
    }
}

}  // namespace
}  // namespace velnor

int32_t vn_downloadFile(ApiHandle* handle, int32_t cid, const char* url,
                        const DownloadOptions* options) {
    if (handle == nullptr || cid < 0 || url == nullptr) return velnor::refuseArguments();
    velnor::Query query;
    _vn_setLastError(INSTALL_ERROR_INTERNAL);
    if (!velnor::prepare(options, &query)) return -1;
    const auto reply = velnor::download(handle, cid, url, query);
    return reply ? velnor::concludeFor(url, reply->json) : -1;
}
