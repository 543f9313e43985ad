// Quoting and running shell commands.
#include "support/shell.h"

#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "support/format.h"
#include "support/memory.h"
#include "support/owned.h"

namespace {

bool isPlain(const char* text) {
    static constexpr char kPlain[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-./+,:@%=";
    return *text != '\0' && text[std::strspn(text, kPlain)] == '\0';
}

char* put(char* out, const char* text) {
    while (*text != '\0') *out++ = *text++;
    return out;
}

}  // namespace

char* velnor::shellWord(const char* text) {
    static constexpr char kQuoteInQuotes[] = "'\\''";
    size_t size = sizeof "''";
    for (const char* c = text; *c != '\0'; ++c) size += *c == '\'' ? sizeof kQuoteInQuotes - 1 : 1;
    auto* word = static_cast<char*>(_vn_malloc(static_cast<uint32_t>(size)));
    if (word == nullptr) return nullptr;
    if (isPlain(text)) {
        *put(word, text) = '\0';
        return word;
    }
    char* end = put(word, "'");
    for (const char* c = text; *c != '\0'; ++c) {
        if (*c == '\'') {
            end = put(end, kQuoteInQuotes);
        } else {
            *end++ = *c;
        }
    }
    *put(end, "'") = '\0';
    return word;
}

int velnor::runShell(const char* format, ...) {
    OwnedText command;
    va_list arguments;
    va_start(arguments, format);
    const int32_t length = _vn_vsnprintf(command.out(), 0, format, arguments);
    va_end(arguments);
    return length > 0 ? std::system(command.get()) : -1;
}
