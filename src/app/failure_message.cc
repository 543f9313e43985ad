#include "app/failure_message.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "api/result/result_codes.h"
#include "support/text.h"

namespace velnor {
namespace {

constexpr uint32_t kReplacement = 0xFFFD;
constexpr char kReplacementText[] = "\xEF\xBF\xBD";
constexpr char kEllipsis[] = "\xE2\x80\xA6";

// Characters that stay at the beginning and at the end of a text that is too long.
constexpr size_t kHead = 160;
constexpr size_t kTail = 80;

struct Character {
    uint32_t code;
    size_t length;  // in bytes
};

// The replacement's code for a byte that begins no character.
constexpr Character kBadByte{kReplacement, 1};

// Longer than it needs to be, half of a pair, or beyond the last one.
bool isForged(const Character& character) {
    constexpr std::array<uint32_t, 5> smallest{0, 0, 0x80, 0x800, 0x10000};
    const uint32_t code = character.code;
    return code < smallest[character.length] || (code >= 0xD800 && code <= 0xDFFF) ||
           code > 0x10FFFF;
}

Character characterAt(const char* text) {
    const auto byte = [text](size_t index) { return static_cast<unsigned char>(text[index]); };
    const auto length = static_cast<size_t>(std::countl_one(byte(0)));
    if (length == 0) return {byte(0), 1};
    if (length == 1 || length > 4) return kBadByte;
    Character character{byte(0) & (0x7FU >> length), length};
    for (size_t i = 1; i < length; ++i) {
        // The end of the text is none of these either.
        if ((byte(i) & 0xC0U) != 0x80) return kBadByte;
        character.code = character.code << 6 | (byte(i) & 0x3FU);
    }
    return isForged(character) ? kBadByte : character;
}

bool isShown(uint32_t code) {
    const bool isControl = code < 0x20 || (code >= 0x7F && code < 0xA0);
    const bool breaksLine = code == 0x2028 || code == 0x2029;
    const bool turnsLine = (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
    return code != kReplacement && !isControl && !breaksLine && !turnsLine;
}

size_t countCharacters(const char* text) {
    size_t count = 0;
    for (; *text != '\0'; text += characterAt(text).length) ++count;
    return count;
}

bool hasDetail(uint32_t code) { return code >= kFirstDetailCode && code <= kLastDetailCode; }

// `text` in the first place that `format` leaves for one. Empty when there is no memory.
OwnedText filled(const char* format, const char* text) {
    const char* place = std::strstr(format, "%s");
    if (place == nullptr) return copyText(format);
    OwnedText result;
    _vn_snprintf(result.out(), 0, "%.*s%s%s", static_cast<int>(place - format), format, text,
                 place + 2);
    return result;
}

}  // namespace

OwnedText readableText(const char* text) {
    const size_t count = countCharacters(text);
    const bool isLong = count > kHead + kTail;
    // No character takes more bytes than the replacement of each of its bytes.
    const size_t size = (sizeof kReplacementText - 1) * std::strlen(text) + sizeof kEllipsis;
    OwnedText result(static_cast<char*>(_vn_malloc(static_cast<uint32_t>(size))));
    if (!result) return result;
    char* end = result.get();
    for (size_t index = 0; *text != '\0'; ++index) {
        const Character next = characterAt(text);
        if (isLong && index == kHead) end = stpcpy(end, kEllipsis);
        if (!isLong || index < kHead || index >= count - kTail) {
            end = isShown(next.code) ? std::copy_n(text, next.length, end)
                                     : stpcpy(end, kReplacementText);
        }
        text += next.length;
    }
    *end = '\0';
    return result;
}

const char* failureMessage(uint32_t code, const char* detail, TextLookup textOf,
                           OwnedText& buffer) {
    const char* format = textOf("FAILED_TO_INSTALL");
    const char* error = textOf(resultKey(code));
    if (isMissing(format) || isMissing(error)) return nullptr;
    OwnedText detailed;
    if (hasDetail(code) && detail != nullptr) {
        const OwnedText readable = readableText(detail);
        if (readable) detailed = filled(error, readable.get());
    }
    buffer = filled(format, detailed ? detailed.get() : error);
    return buffer ? buffer.get() : format;
}

}  // namespace velnor
