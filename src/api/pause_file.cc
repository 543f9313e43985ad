// Pausing a download.
#include "api/handle.h"
#include "api/last_error.h"
#include "api/outcome.h"
#include "api/request_path.h"
#include "support/owned.h"

int32_t vn_pauseFile(ApiHandle* handle, int32_t cid, const char* url, uint32_t reserved) {
    if (handle == nullptr || cid < 0 || url == nullptr || reserved != 0) {
        return velnor::refuseArguments();
    }
    _vn_setLastError(INSTALL_ERROR_INTERNAL);
    const velnor::RequestPath request("pauseFile", cid, url);
    const velnor::OwnedText reply(_vn_makeAPIRequest(handle, cid, request.get()));
    return reply ? velnor::concludeFor(url, reply.get()) : -1;
}
