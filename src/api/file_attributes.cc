#include <cstddef>
#include <cstring>

#include "api/handle.h"
#include "api/outcome.h"
#include "api/request_path.h"
#include "api/result/last_error.h"
#include "support/owned.h"
#include "support/text.h"
#include "support/text_extraction.h"

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

namespace velnor {
namespace {

// The states of a download: value, the client's keyword, English text.
constexpr struct {
    int32_t value;
    const char* keyword;
    const char* text;
} kStatuses[] = {
    {FILE_STATUS_SEARCHING, "SEARCHING", "Searching"},
    {FILE_STATUS_WAITING, "WAITING", "Waiting"},
    {FILE_STATUS_DOWNLOADING, "DOWNLOADING", "Downloading"},
    {FILE_STATUS_PAUSED, "PAUSED", "Paused"},
    {FILE_STATUS_COMPLETE, "COMPLETE", "Complete"},
    {FILE_STATUS_INSUFFICIENTDISKSPACE, "INSUFFICIENTDISKSPACE", "Insufficient Disk Space"},
    {FILE_STATUS_DISCONNECTED, "DISCONNECTED", "Disconnected"},
    {FILE_STATUS_NOTFOUND, "NOTFOUND", "Not Found"},
    {FILE_STATUS_FORBIDDEN, "FORBIDDEN", "Forbidden"},
    {FILE_STATUS_MOVING, "MOVING", "Moving"},
};

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

// In any letter case; FILE_STATUS_UNKNOWN for a keyword that is none.
int32_t statusFromKeyword(const char* keyword) {
    for (const auto& known : kStatuses) {
        if (equalIgnoringCase(keyword, known.keyword)) return known.value;
    }
    return FILE_STATUS_UNKNOWN;
}

// False when there is no memory for a text.
bool fill(FileAttributes* attributes, int32_t cid, const char* url, const char* status,
          const JSONReply& reply) {
    attributes->status = statusFromKeyword(status);
    attributes->cid = cid;
    for (const auto& [key, member] : kNumbers) attributes->*member = reply.number(key);
    for (const auto& [key, member] : kTexts) {
        OwnedText text;
        if (reply.text(key, &text) == Found::NoMemory) return false;
        attributes->*member = text.release();
    }
    attributes->url = copyText(url).release();
    return attributes->url != nullptr;
}

InstallResult read(FileAttributes* attributes, int32_t cid, const char* url,
                   const JSONReply& reply) {
    if (reply.isTrue("resetdownload")) return INSTALL_ERROR_DOWNLOAD_RESET;
    OwnedText status;
    const Found found = reply.text("status", &status);
    if (found == Found::Absent) return attributesFailure(reply, url);
    const bool filled = found == Found::Here && fill(attributes, cid, url, status.get(), reply);
    return filled ? INSTALL_ERROR_OK : INSTALL_ERROR_INSUFFICIENTMEMORY;
}

}  // namespace
}  // namespace velnor

const char* vn_fileStatusToString(int32_t status) {
    for (const auto& known : velnor::kStatuses) {
        if (known.value == status) return known.text;
    }
    return "Unknown State";
}

int32_t vn_getFileAttributes(ApiHandle* handle, int32_t cid, const char* url,
                             FileAttributes* attributes, uint32_t reserved) {
    if (handle == nullptr || cid < 0 || url == nullptr || attributes == nullptr || reserved != 0) {
        return velnor::refuseArguments();
    }
    _vn_setLastError(INSTALL_ERROR_INTERNAL);
    velnor::clear(attributes);
    velnor::RequestPath request("getFileAttributes", cid, url);
    request.add("&complete");
    const auto reply = velnor::ask(handle, cid, request.get());
    if (!reply) return -1;
    InstallResult code = velnor::read(attributes, cid, url, reply->json);
    if (reply->json.outOfMemory()) code = INSTALL_ERROR_INSUFFICIENTMEMORY;
    if (code != INSTALL_ERROR_OK) velnor::clear(attributes);
    return velnor::conclude(code);
}

int32_t vn_cleanFileAttributes(ApiHandle* handle, FileAttributes* attributes, uint32_t reserved) {
    if (handle == nullptr || attributes == nullptr || reserved != 0) {
        return velnor::refuseArguments();
    }
    velnor::clear(attributes);
    return 0;
}
