// Copies of texts.
#ifndef VELNOR_SUPPORT_TEXT_COPY_H
#define VELNOR_SUPPORT_TEXT_COPY_H

#include "support/owned.h"

namespace velnor {

/// A copy of a text, or of what is between `begin` and `end`. Empty with code 4 when there is no
/// memory.
OwnedText copyText(const char* text);
OwnedText copyText(const char* begin, const char* end);

}  // namespace velnor

#endif
