#include "vnctl/client.h"

#include "vnctl/failure.h"

namespace vnctl {

Client::Client(int32_t cid) : cid_(cid) { check(vn_initialize(kUserAgent, &handle_)); }

bool clientAnswers() {
    ApiHandle* client = nullptr;
    if (vn_initialize(kUserAgent, &client) != 0) return false;
    vn_uninitialize(client, 0);
    return true;
}

uint32_t Download::ask() {
    const int32_t result =
        vn_getFileAttributes(client_.handle(), client_.cid(), url_.c_str(), &file_, 0);
    return result == 0 ? uint32_t{INSTALL_ERROR_OK} : vn_getLastError();
}

void Download::askOrThrow() {
    const uint32_t code = ask();
    if (code != INSTALL_ERROR_OK) throw failureOf(code);
}

}  // namespace vnctl
