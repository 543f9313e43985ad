// What applications ask of the client besides downloads and attributes: to pause a download, to
// delete one, and to do its periodic tasks.
#include "api/handle.h"
#include "api/outcome.h"
#include "api/request_path.h"
#include "api/result/last_error.h"
#include "support/shell.h"
#include "support/text.h"

namespace velnor {
namespace {

constexpr int kDeleteAttempts = 5;
constexpr char kInUse[] = "File is in use.";
constexpr char kResult[] = "result";
constexpr char kThrottled[] = "Running of periodic tasks is throttled";

// The code for a reply that is asked for once more (12), or that there is no memory to look at (4);
// else 0.
InstallResult obstacleIn(const JSONReply& reply, const char* url) {
    OwnedText text;
    if (reply.text(url, &text) == Found::NoMemory) return INSTALL_ERROR_INSUFFICIENTMEMORY;
    return text && beginsWith(text.get(), kInUse) ? INSTALL_ERROR_FILEINUSE : INSTALL_ERROR_OK;
}

// Finds out where the file of a download is; `path` stays empty when the client does not say.
// Returns 0, or -1 with the code when it cannot be deleted.
int32_t findFile(ApiHandle* handle, int32_t cid, const char* url, OwnedText* path) {
    RequestPath request("getFileAttributes", cid, url);
    request.add("&complete");
    const auto attributes = ask(handle, cid, request.get());
    if (!attributes) return -1;
    OwnedText failure;
    if (attributes->json.text(url, &failure) != Found::Absent) {
        return conclude(attributesFailure(attributes->json, url));
    }
    const bool told = attributes->json.text("path", path) != Found::NoMemory;
    return told ? 0 : conclude(INSTALL_ERROR_INSUFFICIENTMEMORY);
}

// Asks until the file is no longer in use. Nothing, with the code, without an answer to go by.
std::optional<Reply> requestDeletion(ApiHandle* handle, int32_t cid, const char* url,
                                     const char* path) {
    for (int attempt = 1;; ++attempt) {
        std::optional<Reply> reply = ask(handle, cid, path);
        const InstallResult obstacle = reply ? obstacleIn(reply->json, url) : INSTALL_ERROR_OK;
        if (obstacle == INSTALL_ERROR_OK) return reply;
        if (obstacle != INSTALL_ERROR_FILEINUSE || attempt == kDeleteAttempts) {
            _vn_setLastError(obstacle);
            return std::nullopt;
        }
        _vn_sleep(1);
    }
}

// Nothing is made of the client's text: the download was there a moment ago, so whatever keeps it
// from being deleted now is none of the failures that have codes.
InstallResult meaningOfDeletion(const JSONReply& reply, const char* url) {
    const bool done = reply.isNull(url);
    if (reply.outOfMemory()) return INSTALL_ERROR_INSUFFICIENTMEMORY;
    return done ? INSTALL_ERROR_OK : INSTALL_ERROR_INTERNAL;
}

InstallResult meaningOfTasks(const JSONReply& reply) {
    if (reply.isNull(kResult)) return INSTALL_ERROR_OK;
    OwnedText text;
    if (reply.text(kResult, &text) == Found::NoMemory) return INSTALL_ERROR_INSUFFICIENTMEMORY;
    const bool throttled = text && equalIgnoringCase(text.get(), kThrottled);
    return throttled ? INSTALL_ERROR_THROTTLED : INSTALL_ERROR_INTERNAL;
}

}  // namespace
}  // namespace velnor

int32_t vn_deleteFile(ApiHandle* handle, int32_t cid, const char* url,
                      const DownloadOptions* options) {
    if (handle == nullptr || cid < 0 || url == nullptr) return velnor::refuseArguments();
    _vn_setLastError(INSTALL_ERROR_INTERNAL);
    velnor::OwnedText file;
    if (velnor::findFile(handle, cid, url, &file) != 0) return -1;
    const bool keepsFile = options != nullptr && options->keepPhysicalFileOnDelete != 0;
    velnor::RequestPath request("deleteFile", cid, url);
    request.add(keepsFile ? "&keepphysicalfileondelete=true" : "&keepphysicalfileondelete=false");
    auto reply = velnor::requestDeletion(handle, cid, url, request.get());
    if (reply && file) {
        reply =
            velnor::answerChallenge(handle, cid, url, request.get(), *std::move(reply), file.get());
    }
    return reply ? velnor::conclude(velnor::meaningOfDeletion(reply->json, url)) : -1;
}

int32_t vn_pauseFile(ApiHandle* handle, int32_t cid, const char* url, uint32_t reserved) {
    if (handle == nullptr || cid < 0 || url == nullptr || reserved != 0) {
        return velnor::refuseArguments();
    }
    _vn_setLastError(INSTALL_ERROR_INTERNAL);
    const velnor::RequestPath request("pauseFile", cid, url);
    const auto reply = velnor::ask(handle, cid, request.get());
    return reply ? velnor::concludeFor(url, reply->json) : -1;
}

int32_t vn_runPeriodicTasks(ApiHandle* handle, int32_t cid, uint32_t reserved) {
    if (handle == nullptr || cid < 0 || reserved != 0) return velnor::refuseArguments();
    _vn_setLastError(INSTALL_ERROR_INTERNAL);
    const velnor::RequestPath request("runPeriodicTasks", cid);
    const auto reply = velnor::ask(handle, cid, request.get());
    return reply ? velnor::conclude(velnor::meaningOfTasks(reply->json)) : -1;
}
