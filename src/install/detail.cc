#include "install/detail.h"

#include <cstring>

#include "api/result/last_error.h"

namespace velnor {
namespace {

InstallResult plainCode(InstallResult code) {
    switch (code) {
        case INSTALL_ERROR_DOWNLOAD_FAILURE:
        // To a caller without a detail, an artifact that is not the maker's did not arrive.
        case INSTALL_ERROR_VERIFICATION_FAILURE:
            return INSTALL_ERROR_NETWORK;
        case INSTALL_ERROR_INI_PATH_NOT_FOUND:
        case INSTALL_ERROR_INI_PARSE_ERR:
            return INSTALL_ERROR_INI;
        default:
            return INSTALL_ERROR_DISK;
    }
}

}  // namespace

void setDetailError(InstallContext* context, InstallResult code, const char* detail) {
    if (context == nullptr || context->errorDetail == nullptr) {
        _vn_setLastError(plainCode(code));
        return;
    }
    const size_t length = strnlen(detail, VN_ERROR_DETAIL_SIZE - 1);
    std::memcpy(context->errorDetail, detail, length);
    context->errorDetail[length] = '\0';
    _vn_setLastError(code);
}

}  // namespace velnor
