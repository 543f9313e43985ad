// Text from outside, made fit for a panel.
#ifndef VELNOR_APP_READABLE_TEXT_H
#define VELNOR_APP_READABLE_TEXT_H

#include "support/owned.h"

namespace velnor {

/// `text` as valid UTF-8: U+FFFD stands for every byte that is no part of a character and for
/// characters that would break or turn the line. Of more than 240 characters the middle is left out
/// for an ellipsis, because the beginning names the host and the end the file. Null with code 4
/// when there is no memory.
OwnedText readableText(const char* text);

}  // namespace velnor

#endif
