// Values out of raw text by substring search.
#include "support/text_extraction.h"

#include <cctype>
#include <cstdlib>
#include <cstring>

#include "api/last_error.h"
#include "support/format.h"
#include "support/owned.h"
#include "support/text_copy.h"
#include "velnor/capi.h"

using velnor::OwnedText;

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

}  // namespace

char* _vn_pluckString(const char* text, const char* key) {
    const char* found = std::strstr(text, key);
    if (found == nullptr) return nullptr;
    const char* value = found + std::strlen(key);
    const char* end = std::strpbrk(value, "\n\r");
    // A value on an unterminated last line is not found, deliberately: it may have been cut off.
    return end != nullptr ? velnor::copyText(value, end).release() : nullptr;
}

int32_t _vn_pluckInt(const char* text, const char* key, int64_t* result) {
    const char* found = std::strstr(text, key);
    if (found == nullptr) return 0;
    *result = std::atoll(found + std::strlen(key));
    return 1;
}

char* _vn_copyStringAndUnescape(const char* text) {
    if (text == nullptr || *text == '\0') {
        _vn_setLastError(INSTALL_ERROR_INVALIDARGUMENT);
        return nullptr;
    }
    OwnedText copy = velnor::copyText(text);
    if (!copy) return nullptr;
    char* end = copy.get();
    while (*text != '\0') {
        if (*text != '\\') {
            *end++ = *text++;
        } else if (*++text != '\0') {
            *end++ = unescaped(*text++);
        }
    }
    *end = '\0';
    return copy.release();
}

const char* _vn_findJSONValue(const char* json, const char* key) {
    if (json == nullptr || *json == '\0' || key == nullptr || *key == '\0') {
        _vn_setLastError(INSTALL_ERROR_INVALIDARGUMENT);
        return nullptr;
    }
    OwnedText quotedKey;
    const int32_t length = _vn_snprintf(quotedKey.out(), 0, "\"%s\"", key);
    if (length == 0) return nullptr;
    const char* found = std::strstr(json, quotedKey.get());
    // A match at the first byte is none, deliberately: an object begins with "{".
    if (found == nullptr || found == json) return nullptr;
    found += length;
    while (std::isspace(static_cast<unsigned char>(*found)) || *found == ':') ++found;
    return found;
}

const char* velnor::JSONReply::find(const char* key) const {
    return copy_ ? _vn_findJSONValue(copy_.get(), key) : nullptr;
}

bool velnor::JSONReply::beginsWith(const char* key, const char* prefix) const {
    const char* value = find(key);
    return value != nullptr && std::strncmp(value, prefix, std::strlen(prefix)) == 0;
}

OwnedText velnor::JSONReply::text(const char* key) const {
    const char* value = find(key);
    if (value == nullptr || *value != '"') return {};
    const char* begin = value + 1;
    const char* end = std::strchr(begin, '"');
    return end != nullptr ? copyText(begin, end) : OwnedText();
}

int64_t velnor::JSONReply::number(const char* key) const {
    const char* value = find(key);
    // A sign is no digit, deliberately: a negative number counts as none.
    if (value == nullptr || *value < '0' || *value > '9') return 0;
    return std::atoll(value);
}

int32_t _vn_pluckJSONBool(const char* json, const char* key) {
    return velnor::JSONReply(json).isTrue(key) ? 1 : 0;
}

int32_t _vn_pluckJSONNull(const char* json, const char* key) {
    return velnor::JSONReply(json).isNull(key) ? 1 : 0;
}

char* _vn_easyPluckJSONString(const char* json, const char* key) {
    return velnor::JSONReply(json).text(key).release();
}

int64_t _vn_easyPluckJSONInt(const char* json, const char* key) {
    return velnor::JSONReply(json).number(key);
}
