// Hexadecimal text and percent-encoding, both lower case and lenient.
#ifndef VELNOR_SUPPORT_ENCODINGS_H
#define VELNOR_SUPPORT_ENCODINGS_H

#include <cstdint>

/// Value of a hexadecimal digit in either letter case. Any other character is returned unchanged:
/// there is no error value.
int32_t _vn_convertHexDigitToInt(int32_t character);

/// Decodes pairs of hexadecimal digits into `out`. `*count` is its capacity in bytes on entry and
/// the number of bytes written on return; more pairs than fit are cut off, a trailing odd digit is
/// ignored, and characters that are no digits give bytes without meaning. Returns 1, or 0 with code
/// 1 when an argument is null or `hex` is empty.
int32_t _vn_fromHex(const char* hex, uint8_t* out, uint32_t* count);

/// `count` bytes as 2 x `count` lower-case digits, owned by the caller. Null with code 1 for no
/// bytes or a null buffer, 4 without memory.
char* _vn_toHex(const uint8_t* bytes, uint32_t count);

/// 1 for the characters that stand unencoded in a URL here (letters, digits, ".", "_", "-"), else
/// 0. "~" is not among them although RFC 3986 leaves it unreserved.
int32_t _vn_isLegalURLChar(int32_t character);

/// `text` with every other byte as "%" and two lower-case digits; a blank becomes "%20". Owned by
/// the caller. Null with code 1 for a null text, 4 without memory.
char* _vn_urlEncode(const char* text);

#endif
