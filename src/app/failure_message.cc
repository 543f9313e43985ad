// Looking texts up and filling them.
#include "app/failure_message.h"

#include <algorithm>
#include <cstring>

#include "api/result_codes.h"
#include "app/readable_text.h"

namespace velnor {
namespace {

constexpr char kPlace[] = "%s";

bool hasDetail(uint32_t code) { return code >= kFirstDetailCode && code <= kLastDetailCode; }

bool isMissing(const char* text) { return text == nullptr || *text == '\0'; }

// `text` in the first place that `format` leaves for one. Null when there is no memory.
OwnedText filled(const char* format, const char* text) {
    const char* place = std::strstr(format, kPlace);
    const size_t formatLength = std::strlen(format);
    const size_t size = formatLength + std::strlen(text) + 1;
    OwnedText result(static_cast<char*>(_vn_malloc(static_cast<uint32_t>(size))));
    if (!result) return result;
    const size_t before = place != nullptr ? static_cast<size_t>(place - format) : formatLength;
    char* end = std::copy_n(format, before, result.get());
    if (place != nullptr) end = stpcpy(stpcpy(end, text), place + sizeof kPlace - 1);
    *end = '\0';
    return result;
}

OwnedText filledWithDetail(const char* format, const char* detail) {
    const OwnedText readable = readableText(detail);
    return readable ? filled(format, readable.get()) : OwnedText();
}

}  // namespace

const char* failureMessage(uint32_t code, const char* detail, TextLookup textOf,
                           OwnedText& buffer) {
    const char* format = textOf("FAILED_TO_INSTALL");
    const char* error = textOf(resultKey(code));
    if (isMissing(format) || isMissing(error)) return nullptr;
    OwnedText detailed;
    if (hasDetail(code) && detail != nullptr) detailed = filledWithDetail(error, detail);
    buffer = filled(format, detailed ? detailed.get() : error);
    return buffer ? buffer.get() : format;
}

}  // namespace velnor
