// accepteula.txt: a line for each acceptance of an EULA.
#include <cstring>

#include "api/last_error.h"
#include "support/files.h"
#include "support/format.h"
#include "support/owned.h"
#include "support/paths.h"
#include "velnor/capi.h"

namespace {

constexpr int32_t kMaxRecordLength = 1024;

bool isValidText(const char* text) {
    return text != nullptr && *text != '\0' && std::strpbrk(text, "\n\r") == nullptr;
}

}  // namespace

int32_t vn_acceptEULA(int32_t cid, const char* eulaText, uint32_t reserved) {
    if (cid < 0 || !isValidText(eulaText) || reserved != 0) {
        _vn_setLastError(INSTALL_ERROR_INVALIDARGUMENT);
        return -1;
    }
    _vn_setLastError(INSTALL_ERROR_INTERNAL);
    const velnor::OwnedText path(_vn_getInstallPathForFile("accepteula.txt"));
    if (!path) return -1;
    velnor::OwnedText record;
    // CR LF, unlike the registry's line feed, deliberately: the two formats differ.
    const int32_t length = _vn_snprintf(record.out(), 0, "%d_%s%s", cid, eulaText, "\r\n");
    if (length == 0 || length > kMaxRecordLength) return -1;
    if (!_vn_writeFile(path.get(), record.get(), static_cast<uint32_t>(length), "a")) return -1;
    _vn_setLastError(INSTALL_ERROR_OK);
    return 0;
}
