// Formatting into heap buffers that grow until the text fits.
#ifndef VELNOR_SUPPORT_FORMAT_H
#define VELNOR_SUPPORT_FORMAT_H

#include <cstdarg>
#include <cstdint>

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
