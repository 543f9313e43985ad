#include "support/text.h"

#include <cstdint>
#include <cstring>
#include <limits>

#include "api/result/last_error.h"
#include "velnor/capi.h"

namespace velnor {
namespace {

char upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

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
