#include "api/handle.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <utility>

#include "api/outcome.h"
#include "api/result/last_error.h"
#include "net/socket.h"
#include "net/socket_http.h"
#include "support/files.h"
#include "support/owned.h"
#include "support/product.h"
#include "support/text.h"

namespace velnor {
namespace {

// Not the address that is connected to: clients have always been called so here.
constexpr char kHostName[] = "localhost";
constexpr char kChallenge[] = "Challenge:";

void disconnect(ApiHandle* handle) { const Socket closing(std::exchange(handle->socket, -1)); }

bool connect(ApiHandle* handle) {
    // More than the last reply announced came after it. It would be taken for the next reply, and
    // that one for the one after it.
    if (handle->socket >= 0 && hasUnread(handle->socket)) disconnect(handle);
    if (handle->socket >= 0) return true;
    handle->socket = _vn_openSocket(kClientHost, kClientPort);
    if (handle->socket < 0) {
        _vn_setLastError(INSTALL_ERROR_NOTINSTALLED);
        return false;
    }
    limitWaits(handle->socket);
    return true;
}

// False with code 4 when there is no memory; that a file cannot be written is no failure.
bool writeChallenge(const char* path, const char* challenge) {
    const File file = openFile(path, "w");
    if (!file || *challenge == '\0') return true;
    // A second time, because a challenge is escaped text within the escaped reply.
    const OwnedText unescaped(_vn_copyStringAndUnescape(challenge));
    if (!unescaped) return false;
    std::fputs(unescaped.get(), file.get());
    return true;
}

// Writes the file that a reply asks for; false when it is no challenge. Nothing, with code 4, when
// there is no memory.
std::optional<bool> meetChallenge(const JSONReply& reply, const char* url, const char* path) {
    OwnedText text;
    if (reply.text(url, &text) == Found::NoMemory) {
        _vn_setLastError(INSTALL_ERROR_INSUFFICIENTMEMORY);
        return std::nullopt;
    }
    if (!text || !beginsWith(text.get(), kChallenge)) return false;
    if (!writeChallenge(path, text.get() + sizeof kChallenge - 1)) return std::nullopt;
    return true;
}

}  // namespace

std::optional<Reply> ask(ApiHandle* handle, int32_t cid, const char* path) {
    OwnedText text(_vn_makeAPIRequest(handle, cid, path));
    if (!text) return std::nullopt;
    return Reply(std::move(text));
}

std::optional<Reply> answerChallenge(ApiHandle* handle, int32_t cid, const char* url,
                                     const char* path, Reply first, const char* challengeFilePath) {
    const std::optional<bool> met = meetChallenge(first.json, url, challengeFilePath);
    if (!met) return std::nullopt;
    return *met ? ask(handle, cid, path) : std::move(first);
}

}  // namespace velnor

int32_t _vn_ping(const char* userAgent) {
    velnor::OwnedText url;
    if (_vn_snprintf(url.out(), 0, "%sapi?function=ping", velnor::kClientUrl) == 0) return 1;
    const velnor::OwnedText body(_vn_downloadURL(userAgent, url.get(), nullptr, nullptr, nullptr));
    return body ? 0 : 1;
}

char* _vn_makeAPIRequest(ApiHandle* handle, int32_t /*cid*/, const char* requestPath) {
    if (requestPath == nullptr || !velnor::connect(handle)) return nullptr;
    char* body = _vn_downloadPathFromSocket(handle->userAgent, requestPath, velnor::kHostName,
                                            handle->socket, nullptr, nullptr);
    // Not repeated on a new connection: the client may have carried it out.
    if (body == nullptr) velnor::disconnect(handle);
    return body;
}

char* _vn_answerChallenge(ApiHandle* handle, int32_t cid, const char* url, const char* requestPath,
                          char* reply, const char* challengeFilePath) {
    velnor::OwnedText first(reply);
    const auto met = velnor::meetChallenge(velnor::JSONReply(reply), url, challengeFilePath);
    if (!met) return nullptr;
    return *met ? _vn_makeAPIRequest(handle, cid, requestPath) : first.release();
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
    velnor::OwnedText copy = handle ? velnor::copyText(userAgent) : velnor::OwnedText();
    if (!copy) return -1;
    *handle.get() = {copy.release(), -1};
    *handleOut = handle.release();
    _vn_setLastError(INSTALL_ERROR_OK);
    return 0;
}

int32_t vn_uninitialize(ApiHandle* handle, uint32_t reserved) {
    if (handle == nullptr || reserved != 0) return velnor::refuseArguments();
    velnor::disconnect(handle);
    _vn_free(&handle->userAgent);
    _vn_free(&handle);
    return 0;
}
