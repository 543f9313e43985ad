// Comparing texts without regard to letter case.
#ifndef VELNOR_API_LETTER_CASE_H
#define VELNOR_API_LETTER_CASE_H

namespace velnor {

/// Whether two texts are equal but for the case of ASCII letters, whatever the application's locale
/// says of the letter "I".
bool equalIgnoringCase(const char* a, const char* b);

}  // namespace velnor

#endif
