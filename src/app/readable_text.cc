// Decoding, replacing and shortening.
#include "app/readable_text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

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

size_t lengthAfter(unsigned char lead) {
    if (lead < 0x80) return 1;
    if (lead < 0xC2 || lead > 0xF4) return 0;
    if (lead < 0xE0) return 2;
    return lead < 0xF0 ? 3 : 4;
}

// Longer than it needs to be, half of a pair, or beyond the last one.
bool isForged(uint32_t code, size_t length) {
    constexpr std::array<uint32_t, 5> smallest{0, 0, 0x80, 0x800, 0x10000};
    return code < smallest[length] || (code >= 0xD800 && code <= 0xDFFF) || code > 0x10FFFF;
}

Character characterAt(const char* text) {
    const auto byte = [text](size_t index) { return static_cast<unsigned char>(text[index]); };
    const size_t length = lengthAfter(byte(0));
    if (length <= 1) return {length == 1 ? byte(0) : kReplacement, 1};
    uint32_t code = byte(0) & (0x7FU >> length);
    for (size_t i = 1; i < length; ++i) {
        // The end of the text is none of these either.
        if ((byte(i) & 0xC0U) != 0x80) return {kReplacement, 1};
        code = code << 6 | (byte(i) & 0x3FU);
    }
    return isForged(code, length) ? Character{kReplacement, 1} : Character{code, length};
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

}  // namespace velnor
