// Texts copied byte by byte.
#include "support/text_copy.h"

#include <cstdint>
#include <cstring>
#include <limits>

#include "api/last_error.h"
#include "velnor/capi.h"

velnor::OwnedText velnor::copyText(const char* text) {
    return copyText(text, text + std::strlen(text));
}

velnor::OwnedText velnor::copyText(const char* begin, const char* end) {
    const auto length = static_cast<size_t>(end - begin);
    if (length >= std::numeric_limits<uint32_t>::max()) {
        _vn_setLastError(INSTALL_ERROR_INSUFFICIENTMEMORY);
        return {};
    }
    OwnedText copy(static_cast<char*>(_vn_malloc(static_cast<uint32_t>(length + 1))));
    if (!copy) return copy;
    std::memcpy(copy.get(), begin, length);
    copy.get()[length] = '\0';
    return copy;
}
