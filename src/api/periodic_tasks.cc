// Asking the client to do its periodic tasks.
#include "api/handle.h"
#include "api/last_error.h"
#include "api/letter_case.h"
#include "api/outcome.h"
#include "api/request_path.h"
#include "support/owned.h"
#include "support/text_extraction.h"

namespace {

constexpr char kResult[] = "result";
constexpr char kThrottled[] = "Running of periodic tasks is throttled";

InstallResult codeOf(const velnor::JSONReply& reply) {
    if (reply.isNull(kResult)) return INSTALL_ERROR_OK;
    const velnor::OwnedText text = reply.text(kResult);
    const bool throttled = text && velnor::equalIgnoringCase(text.get(), kThrottled);
    return throttled ? INSTALL_ERROR_THROTTLED : INSTALL_ERROR_INTERNAL;
}

}  // namespace

int32_t vn_runPeriodicTasks(ApiHandle* handle, int32_t cid, uint32_t reserved) {
    if (handle == nullptr || cid < 0 || reserved != 0) return velnor::refuseArguments();
    _vn_setLastError(INSTALL_ERROR_INTERNAL);
    const velnor::RequestPath request("runPeriodicTasks", cid);
    const velnor::OwnedText reply(_vn_makeAPIRequest(handle, cid, request.get()));
    return reply ? velnor::conclude(codeOf(velnor::JSONReply(reply.get()))) : -1;
}
