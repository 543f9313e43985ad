#include "support/encodings.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "api/result/last_error.h"
#include "support/owned.h"
#include "velnor/capi.h"

namespace velnor {
namespace {

constexpr char kDigits[] = "0123456789abcdef";

char* putHex(char* out, uint8_t byte) {
    *out++ = kDigits[byte >> 4];
    *out++ = kDigits[byte & 0x0f];
    return out;
}

bool isBetween(uint8_t byte, char first, char last) { return byte >= first && byte <= last; }

}  // namespace
}  // namespace velnor

int32_t _vn_convertHexDigitToInt(int32_t character) {
    const auto byte = static_cast<uint8_t>(character);
    if (velnor::isBetween(byte, '0', '9')) return byte - '0';
    if (velnor::isBetween(byte, 'a', 'f')) return byte - 'a' + 10;
    if (velnor::isBetween(byte, 'A', 'F')) return byte - 'A' + 10;
    return character;
}

int32_t _vn_fromHex(const char* hex, uint8_t* out, uint32_t* count) {
    if (hex == nullptr || *hex == '\0' || out == nullptr || count == nullptr) {
        _vn_setLastError(INSTALL_ERROR_INVALIDARGUMENT);
        return 0;
    }
    const size_t pairs = std::min<size_t>(std::strlen(hex) / 2, *count);
    for (size_t i = 0; i < pairs; ++i) {
        const int32_t high = _vn_convertHexDigitToInt(hex[2 * i]);
        const int32_t low = _vn_convertHexDigitToInt(hex[2 * i + 1]);
        out[i] = static_cast<uint8_t>(high * 16 + low);
    }
    *count = static_cast<uint32_t>(pairs);
    return 1;
}

char* _vn_toHex(const uint8_t* bytes, uint32_t count) {
    if (bytes == nullptr || count == 0) {
        _vn_setLastError(INSTALL_ERROR_INVALIDARGUMENT);
        return nullptr;
    }
    if (count > (std::numeric_limits<uint32_t>::max() - 1) / 2) {
        _vn_setLastError(INSTALL_ERROR_INSUFFICIENTMEMORY);
        return nullptr;
    }
    auto* text = static_cast<char*>(_vn_malloc(2 * count + 1));
    if (text == nullptr) return nullptr;
    char* end = text;
    for (uint32_t i = 0; i < count; ++i) end = velnor::putHex(end, bytes[i]);
    *end = '\0';
    return text;
}

int32_t _vn_isLegalURLChar(int32_t character) {
    const auto byte = static_cast<uint8_t>(character);
    if (velnor::isBetween(byte, 'A', 'Z') || velnor::isBetween(byte, 'a', 'z') ||
        velnor::isBetween(byte, '0', '9'))
        return 1;
    return character == '.' || character == '_' || character == '-' ? 1 : 0;
}

char* _vn_urlEncode(const char* text) {
    if (text == nullptr) {
        _vn_setLastError(INSTALL_ERROR_INVALIDARGUMENT);
        return nullptr;
    }
    size_t size = 1;
    for (const char* c = text; *c != '\0'; ++c) size += _vn_isLegalURLChar(*c) ? 1 : 3;
    if (size > std::numeric_limits<uint32_t>::max()) {
        _vn_setLastError(INSTALL_ERROR_INSUFFICIENTMEMORY);
        return nullptr;
    }
    auto* encoded = static_cast<char*>(_vn_malloc(static_cast<uint32_t>(size)));
    if (encoded == nullptr) return nullptr;
    char* end = encoded;
    for (const char* c = text; *c != '\0'; ++c) {
        if (_vn_isLegalURLChar(*c)) {
            *end++ = *c;
        } else {
            *end++ = '%';
            end = velnor::putHex(end, static_cast<uint8_t>(*c));
        }
    }
    *end = '\0';
    return encoded;
}
