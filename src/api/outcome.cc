#include "api/outcome.h"

#include <array>
#include <span>

#include "api/result/last_error.h"
#include "support/owned.h"
#include "support/text.h"

namespace velnor {
namespace {

struct Meaning {
    const char* text;
    InstallResult code;
};

constexpr char kInvalidUrl[] = "Invalid URL.";

// Without the full stop that the client puts there: so "File not found." in reply to these requests
// is an internal failure, which applications have come to know it as.
constexpr std::array<Meaning, 3> kRequestTexts{{
    {"file not found", INSTALL_ERROR_FILE_NOT_FOUND},
    {kInvalidUrl, INSTALL_ERROR_INVALIDARGUMENT},
    {"cannot pause file already completed", INSTALL_ERROR_ALREADY_DOWNLOADED},
}};

constexpr std::array<Meaning, 2> kAttributesTexts{{
    {"File not found.", INSTALL_ERROR_FILE_NOT_FOUND},
    {kInvalidUrl, INSTALL_ERROR_INVALIDARGUMENT},
}};

InstallResult meaningOf(const JSONReply& reply, const char* url,
                        std::span<const Meaning> meanings) {
    OwnedText text;
    if (reply.text(url, &text) == Found::NoMemory) return INSTALL_ERROR_INSUFFICIENTMEMORY;
    for (const Meaning& meaning : meanings) {
        if (text && equalIgnoringCase(text.get(), meaning.text)) return meaning.code;
    }
    return INSTALL_ERROR_INTERNAL;
}

InstallResult requestFailure(const JSONReply& reply, const char* url) {
    if (isMissing(url)) return INSTALL_ERROR_INTERNAL;
    OwnedText error;
    const Found found = reply.text("error", &error);
    if (found == Found::NoMemory) return INSTALL_ERROR_INSUFFICIENTMEMORY;
    if (found == Found::Here) return INSTALL_ERROR_INVALIDARGUMENT;
    return meaningOf(reply, url, kRequestTexts);
}

}  // namespace

int32_t conclude(InstallResult code) {
    _vn_setLastError(code);
    return code == INSTALL_ERROR_OK ? 0 : -1;
}

int32_t refuseArguments() { return conclude(INSTALL_ERROR_INVALIDARGUMENT); }

int32_t concludeFor(const char* url, const JSONReply& reply) {
    const bool done = reply.isNull(url);
    if (reply.outOfMemory()) return conclude(INSTALL_ERROR_INSUFFICIENTMEMORY);
    return conclude(done ? INSTALL_ERROR_OK : requestFailure(reply, url));
}

InstallResult attributesFailure(const JSONReply& reply, const char* url) {
    return meaningOf(reply, url, kAttributesTexts);
}

}  // namespace velnor

InstallResult _vn_responseCheck(const char* url, const char* reply) {
    if (velnor::isMissing(url) || velnor::isMissing(reply)) return INSTALL_ERROR_INTERNAL;
    return velnor::requestFailure(velnor::JSONReply(reply), url);
}
