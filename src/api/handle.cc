// Handles, and framed requests over their connection.
#include "api/handle.h"

#include <cstdlib>
#include <ctime>
#include <utility>

#include "api/client_interface.h"
#include "api/last_error.h"
#include "api/outcome.h"
#include "net/socket.h"
#include "net/socket_http.h"
#include "support/format.h"
#include "support/memory.h"
#include "support/owned.h"
#include "support/text_copy.h"

using velnor::OwnedText;

namespace {

// Not the address that is connected to, deliberately: clients have always been called so here.
constexpr char kHostName[] = "localhost";

void disconnect(ApiHandle* handle) {
    const velnor::Socket closing(std::exchange(handle->socket, -1));
}

bool connect(ApiHandle* handle) {
    // More than the last reply announced came after it. It would be taken for the next reply, and
    // that one for the one after it.
    if (handle->socket >= 0 && velnor::hasUnread(handle->socket)) disconnect(handle);
    if (handle->socket >= 0) return true;
    handle->socket = _vn_openSocket(velnor::kClientHost, velnor::kClientPort);
    if (handle->socket >= 0) return true;
    _vn_setLastError(INSTALL_ERROR_NOTINSTALLED);
    return false;
}

}  // namespace

int32_t _vn_ping(const char* userAgent) {
    OwnedText url;
    if (_vn_snprintf(url.out(), 0, "http://127.0.0.1:%d/api?function=ping", velnor::kClientPort) ==
        0) {
        return 1;
    }
    const OwnedText body(_vn_downloadURL(userAgent, url.get(), nullptr, nullptr, nullptr));
    return body ? 0 : 1;
}

char* _vn_makeAPIRequest(ApiHandle* handle, int32_t /*cid*/, const char* requestPath) {
    if (requestPath == nullptr || !connect(handle)) return nullptr;
    char* body = _vn_downloadPathFromSocket(handle->userAgent, requestPath, kHostName,
                                            handle->socket, nullptr, nullptr);
    // Not repeated on a new connection, deliberately: the client may have carried it out.
    if (body == nullptr) disconnect(handle);
    return body;
}

int32_t vn_initialize(const char* userAgent, ApiHandle** handleOut) {
    if (userAgent == nullptr || handleOut == nullptr) return velnor::refuseArguments();
    _vn_setLastError(INSTALL_ERROR_INTERNAL);
    // Promised to applications, although nothing here draws from it.
    std::srand(static_cast<unsigned>(std::time(nullptr)));
    if (_vn_ping(userAgent) != 0) {
        _vn_setLastError(INSTALL_ERROR_NOTINSTALLED);
        return -1;
    }
    velnor::Owned<ApiHandle> handle(static_cast<ApiHandle*>(_vn_malloc(sizeof(ApiHandle))));
    OwnedText copy = handle ? velnor::copyText(userAgent) : OwnedText();
    if (!copy) return -1;
    *handle.get() = {copy.release(), -1};
    *handleOut = handle.release();
    _vn_setLastError(INSTALL_ERROR_OK);
    return 0;
}

int32_t vn_uninitialize(ApiHandle* handle, uint32_t reserved) {
    if (handle == nullptr || reserved != 0) return velnor::refuseArguments();
    disconnect(handle);
    _vn_free(&handle->userAgent);
    _vn_free(&handle);
    return 0;
}
