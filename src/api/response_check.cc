// The client's error texts.
#include "api/response_check.h"

#include <array>
#include <span>

#include "api/letter_case.h"
#include "support/owned.h"

using velnor::OwnedText;

namespace {

struct Meaning {
    const char* text;
    InstallResult code;
};

constexpr char kInvalidUrl[] = "Invalid URL.";

// Without the full stop that the client puts there, deliberately: so "File not found." in reply to
// these requests is an internal failure, which applications have come to know it as.
constexpr std::array<Meaning, 3> kRequestTexts{{
    {"file not found", INSTALL_ERROR_FILE_NOT_FOUND},
    {kInvalidUrl, INSTALL_ERROR_INVALIDARGUMENT},
    {"cannot pause file already completed", INSTALL_ERROR_ALREADY_DOWNLOADED},
}};

constexpr std::array<Meaning, 2> kAttributesTexts{{
    {"File not found.", INSTALL_ERROR_FILE_NOT_FOUND},
    {kInvalidUrl, INSTALL_ERROR_INVALIDARGUMENT},
}};

InstallResult meaningOf(const OwnedText& text, std::span<const Meaning> meanings) {
    for (const Meaning& meaning : meanings) {
        if (text && velnor::equalIgnoringCase(text.get(), meaning.text)) return meaning.code;
    }
    return INSTALL_ERROR_INTERNAL;
}

}  // namespace

InstallResult _vn_responseCheck(const char* url, const char* reply) {
    if (url == nullptr || *url == '\0' || reply == nullptr || *reply == '\0') {
        return INSTALL_ERROR_INTERNAL;
    }
    const velnor::JSONReply json(reply);
    if (json.text("error")) return INSTALL_ERROR_INVALIDARGUMENT;
    return meaningOf(json.text(url), kRequestTexts);
}

InstallResult velnor::attributesFailure(const JSONReply& reply, const char* url) {
    return meaningOf(reply.text(url), kAttributesTexts);
}
