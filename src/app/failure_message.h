// What the alert says about a failed installation.
#ifndef VELNOR_APP_FAILURE_MESSAGE_H
#define VELNOR_APP_FAILURE_MESSAGE_H

#include <cstdint>

#include "support/owned.h"

namespace velnor {

/// `text`, which comes from outside, as valid UTF-8: U+FFFD stands for every byte that is no part
/// of a character and for characters that would break or turn the line. Of more than 240 characters
/// the middle is left out for an ellipsis, because the beginning names the host and the end the
/// file. Null with code 4 when there is no memory.
OwnedText readableText(const char* text);

/// Finds the UTF-8 text of a key in the user's language; null or empty when there is none.
using TextLookup = const char* (*)(const char* key);

/// The message for result code `code`. The error text of a code that comes with a detail has
/// `detail`, made readable, in the place of its "%s"; without a detail (null) the "%s" stays. Texts
/// are filled by replacing alone: whatever else looks like a conversion is shown as it is.
///
/// Null when the lookup has no text for the message or for the code. Otherwise the message is in
/// `buffer`, or, when there is no memory for that, it is the lookup's own text, not filled.
const char* failureMessage(uint32_t code, const char* detail, TextLookup textOf, OwnedText& buffer);

}  // namespace velnor

#endif
