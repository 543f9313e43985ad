// Texts: copies, and comparisons that every room needs.
#ifndef VELNOR_SUPPORT_TEXT_H
#define VELNOR_SUPPORT_TEXT_H

#include <string_view>

#include "support/owned.h"

namespace velnor {

/// A copy of a text with a NUL byte behind it. Empty with code 4 when there is no memory.
OwnedText copyText(std::string_view text);

/// Whether there is no text: a null pointer, or nothing before the NUL byte.
inline bool isMissing(const char* text) { return text == nullptr || *text == '\0'; }
inline bool isMissing(const OwnedText& text) { return isMissing(text.get()); }

/// Whether `text` begins with `prefix`, byte by byte.
bool beginsWith(const char* text, const char* prefix);

/// Whether two texts are equal but for the case of ASCII letters, whatever the application's locale
/// says of the letter "I".
bool equalIgnoringCase(const char* a, const char* b);

}  // namespace velnor

#endif
