// ASCII letters in either case.
#include "api/letter_case.h"

namespace {

char upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

}  // namespace

bool velnor::equalIgnoringCase(const char* a, const char* b) {
    while (*a != '\0' && upper(*a) == upper(*b)) ++a, ++b;
    return upper(*a) == upper(*b);
}
