// Last errors of finished operations.
#include "api/outcome.h"

#include "api/last_error.h"
#include "api/response_check.h"
#include "support/text_extraction.h"

int32_t velnor::conclude(InstallResult code) {
    if (_vn_getLastError() == INSTALL_ERROR_INSUFFICIENTMEMORY) return -1;
    _vn_setLastError(code);
    return code == INSTALL_ERROR_OK ? 0 : -1;
}

int32_t velnor::concludeFor(const char* url, const char* reply) {
    const bool done = JSONReply(reply).isNull(url);
    return conclude(done ? INSTALL_ERROR_OK : _vn_responseCheck(url, reply));
}

int32_t velnor::refuseArguments() {
    _vn_setLastError(INSTALL_ERROR_INVALIDARGUMENT);
    return -1;
}
