// Taking a download off the client.
#include <cstring>

#include "api/challenge.h"
#include "api/handle.h"
#include "api/last_error.h"
#include "api/outcome.h"
#include "api/request_path.h"
#include "api/response_check.h"
#include "support/owned.h"
#include "support/text_extraction.h"
#include "support/wait.h"

using velnor::JSONReply;
using velnor::OwnedText;
using velnor::RequestPath;

namespace {

constexpr int kAttempts = 5;
constexpr char kInUse[] = "File is in use.";

bool isInUse(const char* reply, const char* url) {
    const OwnedText text = JSONReply(reply).text(url);
    return text && std::strncmp(text.get(), kInUse, sizeof kInUse - 1) == 0;
}

// Finds out where the file of a download is; `path` stays empty when the client does not say.
// Returns 0, or -1 with the code when it cannot be deleted.
int32_t findFile(ApiHandle* handle, int32_t cid, const char* url, OwnedText* path) {
    RequestPath request("getFileAttributes", cid, url);
    request.add("&complete");
    const OwnedText reply(_vn_makeAPIRequest(handle, cid, request.get()));
    if (!reply) return -1;
    const JSONReply attributes(reply.get());
    if (attributes.text(url)) return velnor::conclude(velnor::attributesFailure(attributes, url));
    *path = attributes.text("path");
    return _vn_getLastError() != INSTALL_ERROR_INSUFFICIENTMEMORY ? 0 : -1;
}

// Asks until the file is no longer in use. Empty, with its code, without an answer to go by.
OwnedText requestDeletion(ApiHandle* handle, int32_t cid, const char* url, const char* request) {
    for (int attempt = 1;; ++attempt) {
        OwnedText reply(_vn_makeAPIRequest(handle, cid, request));
        if (!reply || !isInUse(reply.get(), url)) return reply;
        if (attempt == kAttempts) break;
        _vn_sleep(1);
    }
    _vn_setLastError(INSTALL_ERROR_FILEINUSE);
    return {};
}

}  // namespace

int32_t vn_deleteFile(ApiHandle* handle, int32_t cid, const char* url,
                      const DownloadOptions* options) {
    if (handle == nullptr || cid < 0 || url == nullptr) return velnor::refuseArguments();
    _vn_setLastError(INSTALL_ERROR_INTERNAL);
    OwnedText path;
    if (findFile(handle, cid, url, &path) != 0) return -1;
    const bool keepsFile = options != nullptr && options->keepPhysicalFileOnDelete != 0;
    RequestPath request("deleteFile", cid, url);
    request.add(keepsFile ? "&keepphysicalfileondelete=true" : "&keepphysicalfileondelete=false");
    OwnedText reply = requestDeletion(handle, cid, url, request.get());
    if (reply && path) {
        reply = OwnedText(
            _vn_answerChallenge(handle, cid, url, request.get(), reply.release(), path.get()));
    }
    if (!reply) return -1;
    // Nothing more is made of the client's text, deliberately: the download was there a moment ago.
    return velnor::conclude(JSONReply(reply.get()).isNull(url) ? INSTALL_ERROR_OK
                                                               : INSTALL_ERROR_INTERNAL);
}
