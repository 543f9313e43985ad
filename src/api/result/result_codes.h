// Localization keys of the result codes, for programs that show them to a person.
#ifndef VELNOR_API_RESULT_RESULT_CODES_H
#define VELNOR_API_RESULT_RESULT_CODES_H

#include <cstdint>

namespace velnor {

/// Codes 0 to kResultKeyCount - 1 have a key of their own.
inline constexpr uint32_t kResultKeyCount = 22;

/// Codes whose text holds one "%s" for the detail.
inline constexpr uint32_t kFirstDetailCode = 15;
inline constexpr uint32_t kLastDetailCode = 21;

/// Key under which the string tables hold the text of `code`; "INSTALL_ERROR_UNKNOWN" for a code of
/// kResultKeyCount or more. Static storage.
const char* resultKey(uint32_t code);

}  // namespace velnor

#endif
