#include "support/text.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>

#include "api/result/last_error.h"
#include "velnor/capi.h"

namespace velnor {
namespace {

char upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

constexpr int32_t kDefaultSize = 256;

__attribute__((format(printf, 3, 0))) int32_t formatOnce(char* block, int32_t size,
                                                         const char* format, va_list arguments) {
    va_list copy;
    va_copy(copy, arguments);
    const int length = std::vsnprintf(block, static_cast<size_t>(size), format, copy);
    va_end(copy);
    return length;
}

// The size to try after `length` did not fit, or 0 when there is none.
int32_t nextSize(int32_t size, int32_t length) {
    constexpr int32_t kLimit = std::numeric_limits<int32_t>::max();
    if (length >= 0) return length < kLimit ? length + 1 : 0;
    // -1 is one way of C libraries to say "does not fit", and others report every failure so. It
    // can come for ever (a bad multibyte argument), so the doubling ends where sizes end.
    if (length == -1) return size <= kLimit / 2 ? size * 2 : 0;
    return size;
}

}  // namespace

OwnedText copyText(std::string_view text) {
    if (text.size() >= std::numeric_limits<uint32_t>::max()) {
        _vn_setLastError(INSTALL_ERROR_INSUFFICIENTMEMORY);
        return {};
    }
    OwnedText copy(static_cast<char*>(_vn_malloc(static_cast<uint32_t>(text.size() + 1))));
    if (!copy) return copy;
    std::memcpy(copy.get(), text.data(), text.size());
    copy.get()[text.size()] = '\0';
    return copy;
}

bool beginsWith(const char* text, const char* prefix) {
    return std::strncmp(text, prefix, std::strlen(prefix)) == 0;
}

bool equalIgnoringCase(const char* a, const char* b) {
    while (*a != '\0' && upper(*a) == upper(*b)) ++a, ++b;
    return upper(*a) == upper(*b);
}

}  // namespace velnor

int32_t _vn_vsnprintf(char** out, int32_t size, const char* format, va_list arguments) {
    velnor::OwnedText block;
    for (int32_t room = size > 0 ? size : velnor::kDefaultSize; room != 0;) {
        *block.out() = static_cast<char*>(_vn_malloc(static_cast<uint32_t>(room)));
        if (!block) break;
        const int32_t length = velnor::formatOnce(block.get(), room, format, arguments);
        if (length >= 0 && length < room) {
            *out = block.release();
            return length;
        }
        room = velnor::nextSize(room, length);
    }
    *out = nullptr;
    _vn_setLastError(INSTALL_ERROR_INSUFFICIENTMEMORY);
    return 0;
}

int32_t _vn_snprintf(char** out, int32_t size, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int32_t length = _vn_vsnprintf(out, size, format, arguments);
    va_end(arguments);
    return length;
}
