#include "support/shell.h"

#include <sys/select.h>
#include <sys/wait.h>

#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "support/owned.h"
#include "support/text.h"

namespace velnor {
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

char* shellWord(const char* text) {
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

int runShell(const char* format, ...) {
    OwnedText command;
    va_list arguments;
    va_start(arguments, format);
    const int32_t length = _vn_vsnprintf(command.out(), 0, format, arguments);
    va_end(arguments);
    if (length == 0) return kNotRun;
    errno = 0;
    const int status = std::system(command.get());
    if (status == -1) return errno == ECHILD ? 0 : kNotRun;
    // A shell that there was no process for is reported as one that found no command.
    const bool noProcess =
        WIFEXITED(status) && WEXITSTATUS(status) == 127 && (errno == EAGAIN || errno == ENOMEM);
    return noProcess ? kNotRun : status;
}

}  // namespace velnor

int32_t _vn_sleep(uint32_t seconds) {
    timeval timeout{static_cast<time_t>(seconds), 0};
    return select(0, nullptr, nullptr, nullptr, &timeout);
}
