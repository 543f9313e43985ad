// The characters of a URL.
#include "net/url_text.h"

#include <cctype>
#include <cstring>

namespace velnor {

bool isUrlText(const char* text) {
    static constexpr char kPunctuation[] = "-._~:/?#[]@!$&'()*+,;=%";
    for (const char* c = text; *c != '\0'; ++c) {
        const auto byte = static_cast<unsigned char>(*c);
        if (byte > 0x7f || (!std::isalnum(byte) && std::strchr(kPunctuation, byte) == nullptr)) {
            return false;
        }
        if (byte == '%' && !(std::isxdigit(static_cast<unsigned char>(c[1])) &&
                             std::isxdigit(static_cast<unsigned char>(c[2])))) {
            return false;
        }
    }
    return *text != '\0';
}

}  // namespace velnor
