// Texts: copies, comparisons that every room needs, and formatting into heap buffers that grow
// until the text fits.
#ifndef VELNOR_SUPPORT_TEXT_H
#define VELNOR_SUPPORT_TEXT_H

#include <cstdarg>
#include <cstdint>
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

/// Formats as printf(3) into a new heap block stored in `*out` (not released first), owned by the
/// caller. `size` is the first size to try in bytes, 0 for 256. Returns the length without the
/// terminator. When there is no memory it returns 0, stores null and leaves code 4; an empty text
/// returns 0 as well, with `*out` set.
int32_t _vn_snprintf(char** out, int32_t size, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

/// The same for an argument list, which the caller ends.
int32_t _vn_vsnprintf(char** out, int32_t size, const char* format, va_list arguments)
    __attribute__((format(printf, 3, 0)));

#endif
