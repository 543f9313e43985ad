// Challenge files.
#include "api/challenge.h"

#include <cstdio>
#include <cstring>

#include "api/handle.h"
#include "api/last_error.h"
#include "support/files.h"
#include "support/owned.h"
#include "support/text_extraction.h"

using velnor::OwnedText;

namespace {

constexpr char kPrefix[] = "Challenge:";
constexpr size_t kPrefixLength = sizeof kPrefix - 1;

bool isChallenge(const OwnedText& text) {
    return text && std::strncmp(text.get(), kPrefix, kPrefixLength) == 0;
}

// False when there is no memory; a file that cannot be written is no matter.
bool writeChallenge(const char* path, const char* challenge) {
    const velnor::File file = velnor::openFile(path, "w");
    if (!file || *challenge == '\0') return true;
    // A second time, deliberately: a challenge is escaped text within the escaped reply.
    const OwnedText unescaped(_vn_copyStringAndUnescape(challenge));
    if (!unescaped) return false;
    std::fputs(unescaped.get(), file.get());
    return true;
}

}  // namespace

char* _vn_answerChallenge(ApiHandle* handle, int32_t cid, const char* url, const char* requestPath,
                          char* reply, const char* challengeFilePath) {
    OwnedText first(reply);
    const OwnedText text = velnor::JSONReply(first.get()).text(url);
    if (!text && _vn_getLastError() == INSTALL_ERROR_INSUFFICIENTMEMORY) return nullptr;
    if (!isChallenge(text)) return first.release();
    if (!writeChallenge(challengeFilePath, text.get() + kPrefixLength)) return nullptr;
    return _vn_makeAPIRequest(handle, cid, requestPath);
}
