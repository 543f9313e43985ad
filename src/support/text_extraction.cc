#include "support/text_extraction.h"

#include <cctype>
#include <cstdlib>
#include <cstring>

#include "api/result/last_error.h"
#include "support/owned.h"
#include "support/text.h"
#include "velnor/capi.h"

namespace velnor {
namespace {

char unescaped(char escape) {
    switch (escape) {
        case 'b':
            return '\b';
        case 'f':
            return '\f';
        case 'n':
            return '\n';
        case 'r':
            return '\r';
        case 't':
            return '\t';
        default:
            return escape;
    }
}

// _vn_findJSONValue, which also tells whether there was no memory for the search.
const char* findValue(const char* json, const char* key, bool* outOfMemory) {
    if (isMissing(json) || isMissing(key)) {
        _vn_setLastError(INSTALL_ERROR_INVALIDARGUMENT);
        return nullptr;
    }
    OwnedText quotedKey;
    const int32_t length = _vn_snprintf(quotedKey.out(), 0, "\"%s\"", key);
    if (length == 0) {
        *outOfMemory = true;
        return nullptr;
    }
    const char* found = std::strstr(json, quotedKey.get());
    // A match at the first byte is none: an object begins with "{".
    if (found == nullptr || found == json) return nullptr;
    found += length;
    while (std::isspace(static_cast<unsigned char>(*found)) || *found == ':') ++found;
    return found;
}

}  // namespace

std::optional<std::string_view> lineValue(const char* text, const char* key) {
    const char* found = std::strstr(text, key);
    if (found == nullptr) return std::nullopt;
    const char* value = found + std::strlen(key);
    const char* end = std::strpbrk(value, "\n\r");
    // A value on a last line without its end is not found: it may have been cut off.
    if (end == nullptr) return std::nullopt;
    return std::string_view(value, static_cast<size_t>(end - value));
}

JSONReply::JSONReply(const char* json)
    : copy_(_vn_copyStringAndUnescape(json)), outOfMemory_(!copy_ && !isMissing(json)) {}

const char* JSONReply::find(const char* key) const {
    return copy_ ? findValue(copy_.get(), key, &outOfMemory_) : nullptr;
}

bool JSONReply::valueBegins(const char* key, const char* prefix) const {
    const char* value = find(key);
    return value != nullptr && beginsWith(value, prefix);
}

Found JSONReply::text(const char* key, OwnedText* value) const {
    *value = OwnedText();
    const char* found = find(key);
    const char* end = found != nullptr && *found == '"' ? std::strchr(found + 1, '"') : nullptr;
    if (end != nullptr) {
        *value = copyText({found + 1, end});
        outOfMemory_ |= !*value;
    }
    if (outOfMemory_) return Found::NoMemory;
    return *value ? Found::Here : Found::Absent;
}

int64_t JSONReply::number(const char* key) const {
    const char* value = find(key);
    // A sign is no digit, so a negative number counts as none: fixed by the interface.
    if (value == nullptr || *value < '0' || *value > '9') return 0;
    return std::atoll(value);
}

}  // namespace velnor

char* _vn_pluckString(const char* text, const char* key) {
    const auto value = velnor::lineValue(text, key);
    return value ? velnor::copyText(*value).release() : nullptr;
}

int32_t _vn_pluckInt(const char* text, const char* key, int64_t* result) {
    const char* found = std::strstr(text, key);
    if (found == nullptr) return 0;
    *result = std::atoll(found + std::strlen(key));
    return 1;
}

char* _vn_copyStringAndUnescape(const char* text) {
    if (velnor::isMissing(text)) {
        _vn_setLastError(INSTALL_ERROR_INVALIDARGUMENT);
        return nullptr;
    }
    velnor::OwnedText copy = velnor::copyText(text);
    if (!copy) return nullptr;
    char* end = copy.get();
    while (*text != '\0') {
        if (*text != '\\') {
            *end++ = *text++;
        } else if (*++text != '\0') {
            *end++ = velnor::unescaped(*text++);
        }
    }
    *end = '\0';
    return copy.release();
}

const char* _vn_findJSONValue(const char* json, const char* key) {
    bool outOfMemory = false;
    return velnor::findValue(json, key, &outOfMemory);
}

int32_t _vn_pluckJSONBool(const char* json, const char* key) {
    return velnor::JSONReply(json).isTrue(key) ? 1 : 0;
}

int32_t _vn_pluckJSONNull(const char* json, const char* key) {
    return velnor::JSONReply(json).isNull(key) ? 1 : 0;
}

char* _vn_easyPluckJSONString(const char* json, const char* key) {
    velnor::OwnedText value;
    velnor::JSONReply(json).text(key, &value);
    return value.release();
}

int64_t _vn_easyPluckJSONInt(const char* json, const char* key) {
    return velnor::JSONReply(json).number(key);
}
