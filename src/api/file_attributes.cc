// The state of one download.
#include <cstddef>
#include <cstring>

#include "api/file_status.h"
#include "api/handle.h"
#include "api/last_error.h"
#include "api/outcome.h"
#include "api/request_path.h"
#include "api/response_check.h"
#include "support/memory.h"
#include "support/owned.h"
#include "support/text_copy.h"
#include "support/text_extraction.h"

using velnor::JSONReply;
using velnor::OwnedText;

// The layout is known to programs that are already built.
static_assert(sizeof(void*) != 8 ||
              (sizeof(FileAttributes) == 104 && offsetof(FileAttributes, reserved) == 0 &&
               offsetof(FileAttributes, cid) == 8 && offsetof(FileAttributes, url) == 16 &&
               offsetof(FileAttributes, status) == 24 && offsetof(FileAttributes, path) == 32 &&
               offsetof(FileAttributes, size) == 40 && offsetof(FileAttributes, uniquerecv) == 48 &&
               offsetof(FileAttributes, progress) == 56 &&
               offsetof(FileAttributes, downloadrate) == 64 &&
               offsetof(FileAttributes, errorstring) == 72 &&
               offsetof(FileAttributes, error) == 80 && offsetof(FileAttributes, suberror) == 88 &&
               offsetof(FileAttributes, verifiedcontentmd5) == 96));

namespace {

constexpr struct {
    const char* key;
    int64_t FileAttributes::*member;
} kNumbers[] = {
    {"size", &FileAttributes::size},         {"uniquerecv", &FileAttributes::uniquerecv},
    {"progress", &FileAttributes::progress}, {"downloadrate", &FileAttributes::downloadrate},
    {"error", &FileAttributes::error},       {"suberror", &FileAttributes::suberror},
};

constexpr struct {
    const char* key;
    char* FileAttributes::*member;
} kTexts[] = {
    {"path", &FileAttributes::path},
    {"errorstring", &FileAttributes::errorstring},
    {"verifiedcontentmd5", &FileAttributes::verifiedcontentmd5},
};

void clear(FileAttributes* attributes) {
    _vn_free(&attributes->url);
    for (const auto& [key, member] : kTexts) _vn_free(&(attributes->*member));
    std::memset(attributes, 0, sizeof *attributes);
}

void fill(FileAttributes* attributes, int32_t cid, const char* url, const char* status,
          const JSONReply& reply) {
    _vn_fileStatusFromKeyword(status, &attributes->status);
    attributes->cid = cid;
    attributes->url = velnor::copyText(url).release();
    for (const auto& [key, member] : kTexts) attributes->*member = reply.text(key).release();
    for (const auto& [key, member] : kNumbers) attributes->*member = reply.number(key);
}

InstallResult read(FileAttributes* attributes, int32_t cid, const char* url,
                   const JSONReply& reply) {
    if (reply.isTrue("resetdownload")) return INSTALL_ERROR_DOWNLOAD_RESET;
    const OwnedText status = reply.text("status");
    if (!status) return velnor::attributesFailure(reply, url);
    fill(attributes, cid, url, status.get(), reply);
    return INSTALL_ERROR_OK;
}

}  // namespace

int32_t vn_getFileAttributes(ApiHandle* handle, int32_t cid, const char* url,
                             FileAttributes* attributes, uint32_t reserved) {
    if (handle == nullptr || cid < 0 || url == nullptr || attributes == nullptr || reserved != 0) {
        return velnor::refuseArguments();
    }
    _vn_setLastError(INSTALL_ERROR_INTERNAL);
    clear(attributes);
    velnor::RequestPath request("getFileAttributes", cid, url);
    request.add("&complete");
    const OwnedText reply(_vn_makeAPIRequest(handle, cid, request.get()));
    if (!reply) return -1;
    const InstallResult code = read(attributes, cid, url, JSONReply(reply.get()));
    if (velnor::conclude(code) == 0) return 0;
    clear(attributes);
    return -1;
}

int32_t vn_cleanFileAttributes(ApiHandle* handle, FileAttributes* attributes, uint32_t reserved) {
    if (handle == nullptr || attributes == nullptr || reserved != 0) {
        return velnor::refuseArguments();
    }
    clear(attributes);
    return 0;
}
