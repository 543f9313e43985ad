#include "net/socket_http.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "api/result/last_error.h"
#include "net/socket.h"
#include "support/owned.h"
#include "support/text.h"
#include "support/text_extraction.h"
#include "support/url.h"
#include "velnor/capi.h"

namespace velnor {
namespace {

constexpr uint32_t kHeadSize = 4096;
constexpr uint32_t kShortestReply = 9;
// "HTTP/1.1 " and what else is as long.
constexpr uint32_t kStatusOffset = 9;
constexpr int64_t kMaxLength = 0xA00000;
constexpr uint32_t kFirstRoom = 1024 * 1024;
constexpr int32_t kDefaultPort = 80;
constexpr char kBlankLine[] = "\r\n\r\n";

// What came in up to the blank line and in the same reads.
struct Head {
    char text[kHeadSize + 1] = {};
    uint32_t size = 0;
    uint32_t headerLength = 0;  // with the blank line

    const char* body() const { return text + headerLength; }
    uint32_t bodySize() const { return size - headerLength; }
};

struct Reply {
    OwnedText headers;
    OwnedText body;
    uint32_t length = 0;
};

bool fail(InstallResult code) {
    _vn_setLastError(code);
    return false;
}

// A line break would end the header line, and what follows would be a header of its own.
bool isOneLine(const char* text) {
    return text != nullptr && text[std::strcspn(text, "\r\n")] == '\0';
}

bool sendRequest(int32_t socket, const char* userAgent, const char* path, const char* hostName) {
    if (!isOneLine(userAgent) || !isOneLine(path) || !isOneLine(hostName)) {
        return fail(INSTALL_ERROR_INVALIDARGUMENT);
    }
    char request[kLongestHttpRequest + 1];
    const int length = std::snprintf(
        request, sizeof request,
        "GET /%s HTTP/1.0\r\nHost: %s\r\nUser-Agent: %s\r\nConnection: keep-alive\r\n\r\n", path,
        hostName, userAgent);
    return length > 0 && static_cast<size_t>(length) < sizeof request &&
           sendAll(socket, request, static_cast<uint32_t>(length));
}

bool receiveHead(int32_t socket, Head* head) {
    const char* end = nullptr;
    while ((end = std::strstr(head->text, kBlankLine)) == nullptr && head->size < kHeadSize) {
        const int64_t count = receive(socket, head->text + head->size, kHeadSize - head->size);
        if (count < 1) break;
        head->size += static_cast<uint32_t>(count);
    }
    if (end == nullptr || head->size < kShortestReply) return fail(INSTALL_ERROR_NETWORK);
    head->headerLength = static_cast<uint32_t>(end - head->text) + sizeof kBlankLine - 1;
    return true;
}

bool copyHeaders(const Head& head, OwnedText* headers) {
    if (!headers->resize(head.headerLength + 1)) return false;
    std::memcpy(headers->get(), head.text, head.headerLength);
    headers->get()[head.headerLength] = '\0';
    return true;
}

bool receiveUntilClosed(int32_t socket, const Head& head, Reply* reply) {
    uint32_t size = head.bodySize();
    uint32_t room = size + kFirstRoom;
    if (!reply->body.resize(room)) return false;
    std::memcpy(reply->body.get(), head.body(), size);
    for (;;) {
        bool silent = false;
        size += receiveUpToSize(socket, reply->body.get() + size, room - size, &silent);
        if (silent) return fail(INSTALL_ERROR_NETWORK);
        if (size < room) break;  // it was closed, or failed, which counts as the end
        if (room > std::numeric_limits<uint32_t>::max() / 2) {
            return fail(INSTALL_ERROR_INSUFFICIENTMEMORY);
        }
        room *= 2;
        if (!reply->body.resize(room)) return false;
    }
    reply->body.get()[size] = '\0';
    reply->length = size;
    return true;
}

bool receiveLength(int32_t socket, const Head& head, int64_t announced, Reply* reply) {
    // The memory code for every length that is not accepted, 0 included, is fixed by the interface:
    // it stands for a reply that cannot be held.
    if (announced < 1 || announced > kMaxLength) return fail(INSTALL_ERROR_INSUFFICIENTMEMORY);
    const auto length = static_cast<uint32_t>(announced);
    const uint32_t present = std::min(head.bodySize(), length);
    if (!reply->body.resize(length + 1)) return false;
    std::memcpy(reply->body.get(), head.body(), present);
    const uint32_t rest = length - present;
    if (_vn_recvUpToSize(socket, reply->body.get() + present, rest) != rest) {
        return fail(INSTALL_ERROR_NETWORK);
    }
    reply->body.get()[length] = '\0';
    reply->length = length;
    return true;
}

bool exchange(int32_t socket, const char* userAgent, const char* path, const char* hostName,
              bool wantsHeaders, Reply* reply) {
    Head head;
    if (!sendRequest(socket, userAgent, path, hostName) || !receiveHead(socket, &head)) {
        return false;
    }
    if (wantsHeaders && !copyHeaders(head, &reply->headers)) return false;
    int64_t announced = 0;
    // Looked for in all that has come so far, whatever the line it is on, and in this letter case
    // only: the client writes it so.
    return _vn_pluckInt(head.text, "Content-Length: ", &announced)
               ? receiveLength(socket, head, announced, reply)
               : receiveUntilClosed(socket, head, reply);
}

long statusOf(const char* headers) {
    const bool hasStatus = std::strlen(headers) >= kStatusOffset;
    return hasStatus ? std::strtol(headers + kStatusOffset, nullptr, 10) : 0;
}

// Fetches one URL, whatever its status. True with the reply, and the socket in `socketOut`.
bool fetch(const char* userAgent, const char* url, Reply* reply, int32_t* socketOut) {
    if (url == nullptr || !isHttpUrlWithPath(url)) {
        return fail(INSTALL_ERROR_INVALIDARGUMENT);
    }
    OwnedText copy;
    char* host = nullptr;
    int32_t port = kDefaultPort;
    char* path = nullptr;
    if (!_vn_getHostName(url, copy.out(), &host, &port, &path)) return false;
    Socket socket(_vn_openSocket(host, port));
    if (!socket) return false;
    limitWaits(socket.get());
    if (!exchange(socket.get(), userAgent, path, host, true, reply)) return false;
    *socketOut = socket.release();
    return true;
}

// Follows redirects to the end of the chain, which has no limit that the interface would allow; in
// a loop, so that a circle of them costs time and no stack.
char* download(const char* userAgent, const char* url, int32_t* socketOut, uint32_t* lengthOut) {
    OwnedText redirect;
    for (;;) {
        Reply reply;
        int32_t descriptor = -1;
        if (!fetch(userAgent, redirect ? redirect.get() : url, &reply, &descriptor)) return nullptr;
        Socket socket(descriptor);
        const long status = statusOf(reply.headers.get());
        if (status == 200) {
            if (socketOut != nullptr) *socketOut = socket.release();
            if (lengthOut != nullptr) *lengthOut = reply.length;
            return reply.body.release();
        }
        if (status < 300 || status > 399) return nullptr;
        redirect = OwnedText(_vn_pluckString(reply.headers.get(), "Location: "));
        if (!redirect) return nullptr;
    }
}

}  // namespace
}  // namespace velnor

char* _vn_downloadPathFromSocket(const char* userAgent, const char* path, const char* hostName,
                                 int32_t socket, char** headersOut, uint32_t* lengthOut) {
    if (headersOut != nullptr) *headersOut = nullptr;
    velnor::Reply reply;
    if (!velnor::exchange(socket, userAgent, path, hostName, headersOut != nullptr, &reply))
        return nullptr;
    if (headersOut != nullptr) *headersOut = reply.headers.release();
    if (lengthOut != nullptr) *lengthOut = reply.length;
    return reply.body.release();
}

char* _vn_downloadURL(const char* userAgent, const char* url, int32_t* socketOut,
                      uint32_t* lengthOut, void* /*reserved*/) {
    if (socketOut != nullptr) *socketOut = -1;
    return velnor::download(userAgent, url, socketOut, lengthOut);
}
