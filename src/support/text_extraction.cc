// Values out of raw text by substring search.
#include "support/text_extraction.h"

#include <cctype>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "api/last_error.h"
#include "support/format.h"
#include "support/memory.h"
#include "support/owned.h"
#include "velnor/capi.h"

using velnor::OwnedText;

namespace {

char* copyRange(const char* begin, const char* end) {
    const auto length = static_cast<size_t>(end - begin);
    if (length >= std::numeric_limits<uint32_t>::max()) {
        _vn_setLastError(INSTALL_ERROR_INSUFFICIENTMEMORY);
        return nullptr;
    }
    auto* copy = static_cast<char*>(_vn_malloc(static_cast<uint32_t>(length + 1)));
    if (copy == nullptr) return nullptr;
    std::memcpy(copy, begin, length);
    copy[length] = '\0';
    return copy;
}

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

// An unescaped copy of a reply and the place of one value in it.
class JSONValue {
  public:
    JSONValue(const char* json, const char* key)
        : copy_(_vn_copyStringAndUnescape(json)),
          value_(copy_ ? _vn_findJSONValue(copy_.get(), key) : nullptr) {}

    const char* text() const { return value_; }
    bool beginsWith(const char* prefix) const {
        return value_ != nullptr && std::strncmp(value_, prefix, std::strlen(prefix)) == 0;
    }

  private:
    OwnedText copy_;
    const char* value_;
};

}  // namespace

char* _vn_pluckString(const char* text, const char* key) {
    const char* found = std::strstr(text, key);
    if (found == nullptr) return nullptr;
    const char* value = found + std::strlen(key);
    const char* end = std::strpbrk(value, "\n\r");
    // A value on an unterminated last line is not found, deliberately: it may have been cut off.
    return end != nullptr ? copyRange(value, end) : nullptr;
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
    char* copy = copyRange(text, text + std::strlen(text));
    if (copy == nullptr) return nullptr;
    char* end = copy;
    while (*text != '\0') {
        if (*text != '\\') {
            *end++ = *text++;
        } else if (*++text != '\0') {
            *end++ = unescaped(*text++);
        }
    }
    *end = '\0';
    return copy;
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

int32_t _vn_pluckJSONBool(const char* json, const char* key) {
    return JSONValue(json, key).beginsWith("true") ? 1 : 0;
}

int32_t _vn_pluckJSONNull(const char* json, const char* key) {
    return JSONValue(json, key).beginsWith("null") ? 1 : 0;
}

char* _vn_easyPluckJSONString(const char* json, const char* key) {
    const JSONValue value(json, key);
    if (!value.beginsWith("\"")) return nullptr;
    const char* begin = value.text() + 1;
    const char* end = std::strchr(begin, '"');
    return end != nullptr ? copyRange(begin, end) : nullptr;
}

int64_t _vn_easyPluckJSONInt(const char* json, const char* key) {
    const JSONValue value(json, key);
    const char* text = value.text();
    // A sign is no digit, deliberately: a negative number counts as none.
    if (text == nullptr || *text < '0' || *text > '9') return 0;
    return std::atoll(text);
}
