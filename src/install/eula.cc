// accepteula.txt: a line for each acceptance.
#include <cstring>

#include "api/result/last_error.h"
#include "support/files.h"
#include "support/owned.h"
#include "support/paths.h"
#include "support/product.h"
#include "support/text.h"
#include "velnor/capi.h"

namespace velnor {
namespace {

constexpr int32_t kMaxRecordLength = 1024;

bool isValidText(const char* text) {
    return text != nullptr && *text != '\0' && std::strpbrk(text, "\n\r") == nullptr;
}

}  // namespace
}  // namespace velnor

int32_t vn_acceptEULA(int32_t cid, const char* eulaText, uint32_t reserved) {
    if (cid < 0 || !velnor::isValidText(eulaText) || reserved != 0) {
        _vn_setLastError(INSTALL_ERROR_INVALIDARGUMENT);
        return -1;
    }
    _vn_setLastError(INSTALL_ERROR_INTERNAL);
    const velnor::OwnedText path(_vn_getInstallPathForFile(velnor::kEulaFile));
    if (!path) return -1;
    velnor::OwnedText record;
    // CR LF, where the registry has a line feed: fixed by the interface.
    const int32_t length = _vn_snprintf(record.out(), 0, "%d_%s%s", cid, eulaText, "\r\n");
    if (length == 0 || length > velnor::kMaxRecordLength) return -1;
    if (!_vn_writeFile(path.get(), record.get(), static_cast<uint32_t>(length), "a")) return -1;
    _vn_setLastError(INSTALL_ERROR_OK);
    return 0;
}
