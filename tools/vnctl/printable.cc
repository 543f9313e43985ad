// Escaping by the user's locale.
#include "vnctl/printable.h"

#include <array>
#include <clocale>
#include <cstdio>
#include <cwchar>
#include <cwctype>

namespace vnctl {
namespace {

std::string escaped(char byte) {
    std::array<char, 5> text{};
    std::snprintf(text.data(), text.size(), "\\x%02x",
                  static_cast<unsigned>(static_cast<unsigned char>(byte)));
    return text.data();
}

// Length in bytes of the character at `position` when the user's locale can print it, else 0.
size_t printableLength(const std::string& text, size_t position) {
    std::mbstate_t state{};
    wchar_t character = 0;
    const size_t length =
        std::mbrtowc(&character, text.data() + position, text.size() - position, &state);
    const bool isCharacter = length > 0 && length <= text.size() - position;
    return isCharacter && std::iswprint(static_cast<wint_t>(character)) ? length : 0;
}

}  // namespace

std::string printable(const std::string& text) {
    std::setlocale(LC_CTYPE, "");
    std::string result;
    for (size_t position = 0; position < text.size();) {
        const size_t length = printableLength(text, position);
        result += length > 0 ? text.substr(position, length) : escaped(text[position]);
        position += length > 0 ? length : 1;
    }
    return result;
}

}  // namespace vnctl
